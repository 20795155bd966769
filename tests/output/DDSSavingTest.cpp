#include "output/DDSSaving.h"
#include "output/SavingFixture.h"
#include "output/SmallDisk.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/objects/IMemoryWrapper.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Tests::ReadAll;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::Texture;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using DDSSaving = Kavra::Tests::Saving;

/// A legacy header is the magic number and 124 bytes; the pixels follow.
constexpr std::size_t kLegacyHeader = 128;

/// The pixels of a file with a legacy header.
std::vector<unsigned char> Payload(const std::filesystem::path& path) {
    const std::vector<unsigned char> bytes = ReadAll(path);
    if (bytes.size() < kLegacyHeader) return {};
    return {bytes.begin() + kLegacyHeader, bytes.end()};
}

TEST_F(DDSSaving, APackedTextureIsWrittenAsItIs) {
    const Texture texture(5, 3, kR8G8B8A8);
    ASSERT_TRUE(Save("x.dds", texture));
    EXPECT_EQ(Payload(folder / "x.dds"), texture.bytes);
    EXPECT_EQ(Read("x.dds").pixels, texture.bytes);
}

TEST_F(DDSSaving, BlueFirstStaysBlueFirst) {
    Texture texture(1, 1, kB8G8R8A8);
    texture.bytes = {10, 20, 30, 40};
    ASSERT_TRUE(Save("x.DDS", texture));
    EXPECT_EQ(Payload(folder / "x.DDS"), texture.bytes);
    EXPECT_THAT(Read("x.DDS").pixels, ElementsAre(30, 20, 10, 40));
}

TEST_F(DDSSaving, ALongPitchIsTakenOut) {
    Texture texture(2, 2, kL8);
    texture.desc.rowPitch = 3;
    texture.bytes = {1, 2, 99, 3, 4};  // no gap after the last row
    ASSERT_TRUE(Save("x.dds", texture));
    EXPECT_THAT(Payload(folder / "x.dds"), ElementsAre(1, 2, 3, 4));
}

TEST_F(DDSSaving, AShortPitchLeavesTheEndOfEachRowZero) {
    Texture texture(3, 2, kL8);
    texture.desc.rowPitch = 2;
    texture.bytes = {1, 2, 3, 4};
    ASSERT_TRUE(Save("x.dds", texture));
    EXPECT_THAT(Payload(folder / "x.dds"), ElementsAre(1, 2, 0, 3, 4, 0));
}

TEST_F(DDSSaving, ACubeIsWrittenWithAllSixFaces) {
    Texture texture(64, 64, kR8G8B8A8, 6);
    texture.desc.textureType = kTextureCube;
    ASSERT_TRUE(Save("x.dds", texture));
    EXPECT_EQ(Payload(folder / "x.dds"), texture.bytes);
}

TEST_F(DDSSaving, ACubeWithALongPitchIsRepackedOverAllFaces) {
    constexpr std::size_t kRows = 6 * 64;
    Texture texture(64, 64, kR8G8B8A8);
    texture.desc.textureType = kTextureCube;
    texture.desc.rowPitch = 300;
    texture.Fill((kRows - 1) * 300 + 256);
    ASSERT_TRUE(Save("x.dds", texture));
    const std::vector<unsigned char> payload = Payload(folder / "x.dds");
    ASSERT_EQ(payload.size(), kRows * 256);
    for (std::size_t row = 0; row < kRows; ++row)
        ASSERT_EQ(std::memcmp(&payload[row * 256], &texture.bytes[row * 300], 256), 0) << row;
}

TEST_F(DDSSaving, AVolumeIsWrittenWithAllItsSlices) {
    Texture texture(4, 2, kR16, 3);
    texture.desc.textureType = kTextureVolume;
    texture.desc.depth = 3;
    ASSERT_TRUE(Save("x.dds", texture));
    DDSReader reader;
    ASSERT_TRUE(reader.Load(Wide(folder / "x.dds")));
    EXPECT_EQ(reader.TextureType(), kTextureVolume);
    EXPECT_EQ(reader.Depth(), 3);
    ImageDescription desc;
    const std::unique_ptr<IMemoryWrapper<void>> block(reader.Load(desc, 4, 2, 3));
    ASSERT_TRUE(block);
    EXPECT_EQ(std::memcmp(block->mData, texture.bytes.data(), texture.bytes.size()), 0);
}

TEST_F(DDSSaving, AVolumeWithoutDepthHasOneSlice) {
    Texture texture(4, 2, kL8);
    texture.desc.textureType = kTextureVolume;
    for (const int depth : {0, -3}) {
        texture.desc.depth = depth;
        ASSERT_TRUE(Save("x.dds", texture));
        EXPECT_EQ(Payload(folder / "x.dds"), texture.bytes);
    }
}

TEST_F(DDSSaving, OtherTextureTypesAreOneImageWhateverTheirDepth) {
    Texture texture(4, 2, kL8);
    texture.desc.depth = 5;
    for (const int type : {0, 1, 2, 3, 4}) {
        texture.desc.textureType = static_cast<ETextureType>(type);
        ASSERT_TRUE(Save("x.dds", texture)) << type;
        EXPECT_EQ(Payload(folder / "x.dds"), texture.bytes) << type;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

/// A block-compressed texture as the reader describes one: no rows.
Texture Compressed(EFormat format, int width, int height, std::size_t bytes) {
    Texture texture(width, height, format);
    EXPECT_EQ(texture.desc.rowPitch, 0);
    texture.Fill(bytes);
    return texture;
}

TEST_F(DDSSaving, BlockCompressedDataIsWrittenAndReadBackUnchanged) {
    struct Case {
        EFormat format;
        std::size_t blockBytes;
    };
    for (const Case& entry : {Case{kBC1, 8}, Case{kBC2, 16}, Case{kBC3Srgb, 16}, Case{kBC4, 8}, Case{kBC5, 16},
                              Case{kBC6H, 16}, Case{kBC7, 16}, Case{kBC7Srgb, 16}}) {
        const Texture texture = Compressed(entry.format, 10, 6, 3 * 2 * entry.blockBytes);
        ASSERT_TRUE(Save("x.dds", texture)) << entry.format;
        DDSReader reader;
        ASSERT_TRUE(reader.Load(Wide(folder / "x.dds"))) << entry.format;
        EXPECT_EQ(reader.Format(), entry.format);
        ImageDescription desc;
        const std::unique_ptr<IMemoryWrapper<void>> block(reader.Load(desc, 10, 6, 1));
        ASSERT_TRUE(block) << entry.format;
        ASSERT_EQ(desc.dataSize, texture.bytes.size()) << entry.format;
        EXPECT_EQ(std::memcmp(block->mData, texture.bytes.data(), texture.bytes.size()), 0) << entry.format;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(DDSSaving, APitchSaysNothingAboutBlockCompressedData) {
    Texture texture = Compressed(kBC1, 8, 8, 32);
    for (const int pitch : {0, 16, -1, 1000}) {
        texture.desc.rowPitch = pitch;
        ASSERT_TRUE(Save("x.dds", texture)) << pitch;
        const std::vector<unsigned char> bytes = ReadAll(folder / "x.dds");
        ASSERT_GE(bytes.size(), texture.bytes.size());
        EXPECT_TRUE(std::equal(texture.bytes.begin(), texture.bytes.end(), bytes.end() - 32)) << pitch;
    }
}

TEST_F(DDSSaving, WhatTheWriterDoesNotTakeIsWarnedAbout) {
    Texture texture(4, 4, kR32G32B32A32F);
    for (const int format : {0, 16, 17, 77, 78, 12345, -1}) {
        texture.desc.format = static_cast<EFormat>(format);
        messages.Clear();
        EXPECT_FALSE(Save("x.dds", texture)) << format;
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(Kavra::Tests::MessageRecorder::Entry{Kavra::Objects::EMessageKind::kWarning,
                                                                     L"fail to construct DDSWriter", false}))
            << format;
    }
    EXPECT_FALSE(Exists("x.dds"));
}

TEST_F(DDSSaving, ACubeMustBeSquare) {
    Texture texture(4, 2, kL8, 6);
    texture.desc.textureType = kTextureCube;
    EXPECT_FALSE(Save("x.dds", texture));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"fail to construct DDSWriter"));
}

TEST_F(DDSSaving, APitchBelowOneIsRefusedSilently) {
    Texture texture(4, 4, kR8G8B8A8);
    for (const int pitch : {0, -16, std::numeric_limits<int>::min()}) {
        texture.desc.rowPitch = pitch;
        EXPECT_FALSE(Save("x.dds", texture)) << pitch;
    }
    EXPECT_FALSE(Exists("x.dds"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(DDSSaving, BytesBeyondTheWritersArgumentAreRefusedBeforeAnythingIsRead) {
    Texture texture(1, 1, kR32G32B32A32F);
    texture.desc.textureType = kTextureVolume;
    for (const int side : {16384, 1 << 20, std::numeric_limits<int>::max()}) {
        texture.desc.width = texture.desc.height = texture.desc.depth = side;
        texture.desc.rowPitch = 16;
        EXPECT_FALSE(Save("x.dds", texture)) << side;
    }
    texture.desc.width = texture.desc.depth = 1;
    texture.desc.height = 1 << 28;  // one byte more than fits: 2^32
    EXPECT_FALSE(Save("x.dds", texture));
    EXPECT_FALSE(Exists("x.dds"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(DDSSaving, AFullDiskIsAFailure) {
    const Texture texture(64, 64, kR8G8B8A8);
    const SmallDisk disk(600);
    EXPECT_FALSE(Save("x.dds", texture));
    EXPECT_FALSE(Exists("x.dds"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(DDSSaving, AFolderIsNoFile) {
    std::filesystem::create_directory(folder / "folder.dds");
    EXPECT_FALSE(Save("folder.dds", Texture(2, 2, kL8)));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "folder.dds"));
}

}  // namespace
