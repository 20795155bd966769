// Textures of every format and shape, written and read again in both kinds of files.

#include "frame/host/devices/KtxTestFile.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/FormatFacts.h>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <set>

namespace Kavra::Tests {
namespace {

using namespace Devices;

TextureShape Shape(EFormat format, ETextureType type, int width, int height, int depth, int levels, int elements = 1) {
    TextureShape shape;
    shape.format = format;
    shape.type = type;
    shape.width = width;
    shape.height = height;
    shape.depth = depth;
    shape.levels = levels;
    shape.elements = elements;
    return shape;
}

// --- Facts of shapes.

TEST(TextureShapes, BytesFollowFromFormatAndSize) {
    // 9 x 6: 3 x 2 blocks; 4 x 3: 1; 2 x 1: 1; 1 x 1: 1.
    const TextureShape blocks = Shape(kBC7, kTexture2D, 9, 6, 1, 4);
    EXPECT_EQ(TextureLevelBytes(blocks, 0), 96U);
    EXPECT_EQ(TextureLevelBytes(blocks, 3), 16U);
    EXPECT_EQ(TextureLevelBytes(blocks, 4), 0U) << "no such level";
    EXPECT_EQ(TextureLevelBytes(blocks, -1), 0U);
    EXPECT_EQ(TextureBytes(blocks), 144U);
    // 5 x 4 x 3, 2 x 2 x 1: 8 bytes a pixel.
    const TextureShape volume = Shape(kR16G16B16A16F, kTextureVolume, 5, 4, 3, 2);
    EXPECT_EQ(TextureLevelBytes(volume, 0), 480U);
    EXPECT_EQ(TextureBytes(volume), 512U);
}

TEST(TextureShapes, ElementsLieBehindEachOtherThenFacesThenLevels) {
    // 4 x 4 and 2 x 2 pixels of 4 bytes: 80 a face, 480 an element.
    const TextureShape cubes = Shape(kR8G8B8A8, kTextureCube, 4, 4, 1, 2, 3);
    EXPECT_EQ(TextureBytes(cubes), 1440U);
    EXPECT_EQ(TextureLevelOffset(cubes, 0, 0, 1), 64U);
    EXPECT_EQ(TextureLevelOffset(cubes, 0, 1, 0), 80U);
    EXPECT_EQ(TextureLevelOffset(cubes, 2, 5, 1), 2 * 480 + 5 * 80 + 64U);
    for (const auto& [element, face, level] :
         {std::array{3, 0, 0}, {0, 6, 0}, {0, 0, 2}, {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}})
        EXPECT_EQ(TextureLevelOffset(cubes, element, face, level), 1440U) << "there is none such";
}

TEST(TextureShapes, SizesBeyondThirtyTwoBitsDoNotWrap) {
    const TextureShape largest = Shape(kR32G32B32A32F, kTextureVolume, 1 << 20, 1 << 20, 1 << 16, 1);
    EXPECT_EQ(TextureBytes(largest), std::uint64_t{1} << 60);
    const TextureShape most = Shape(kR32G32B32A32F, kTextureCube, 1 << 20, 1 << 20, 1, 1, 1 << 16);
    EXPECT_EQ(TextureBytes(most), std::uint64_t{6} << 60);
}

TEST(TextureShapes, LevelsHalveDownToOne) {
    EXPECT_EQ(FullTextureLevels(1, 1), 1);
    EXPECT_EQ(FullTextureLevels(9, 6), 4);
    EXPECT_EQ(FullTextureLevels(2, 2, 16), 5);
    int width = 0, height = 0, depth = 0;
    GetTextureLevelSize(Shape(kL8, kTextureVolume, 9, 6, 3, 1), 2, width, height, depth);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(depth, 1);
}

TEST(TextureShapes, WhatCannotBeHasNoBytes) {
    const TextureShape good = Shape(kL8, kTexture2D, 4, 4, 1, 3, 2);
    EXPECT_TRUE(IsSaneTexture(good));
    std::vector<TextureShape> bad(16, good);
    bad[0].format = kUnknown;
    bad[1].format = kReserved50;
    bad[2].type = kTexture1D;
    bad[3].type = static_cast<ETextureType>(99);
    bad[4].width = 0;
    bad[5].height = -1;
    bad[6].width = (1 << 20) + 1;
    bad[7].depth = 2;
    bad[8].levels = 0;
    bad[9].levels = 4;
    bad[10].elements = 0;
    bad[11].elements = (1 << 16) + 1;
    bad[12].type = kTextureVolume;
    bad[13].alpha = static_cast<ETextureAlpha>(5);
    bad[14].type = kTextureCube;
    bad[14].height = 2;
    bad[15].depth = 0;
    for (std::size_t i = 0; i < bad.size(); ++i) {
        EXPECT_FALSE(IsSaneTexture(bad[i])) << i;
        EXPECT_EQ(TextureBytes(bad[i]), 0U) << i;
    }
}

TEST(TextureShapes, FieldsThatACallerDoesNotKnowAreAsTheyStand) {
    TextureShape old = Shape(kL8, kTexture2D, 4, 4, 1, 1, 7);
    old.size = offsetof(TextureShape, elements);
    EXPECT_EQ(TextureBytes(old), 16U) << "one element";
}

// --- Both kinds, all formats and shapes.

std::vector<EFormat> AllFormats() {
    std::vector<EFormat> formats;
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format))
        formats.push_back(format);
    return formats;
}

/// What a file without a word for a format has in its place, with the same bytes.
EFormat ReadBack(EFormat format, ETextureFileKind kind, bool isArray) {
    if (format == kR8G8B8A8Alt) return kR8G8B8A8;
    const bool isKtx = kind == kTextureFileKTX2;
    if (format == kR8G8B8X8 && (isKtx || isArray)) return kR8G8B8A8;
    if (format == kB8G8R8X8 && isKtx) return kB8G8R8A8;
    if (format == kL8 && !isKtx && isArray) return kR8;
    if (format == kL16 && !isKtx && isArray) return kR16;
    return format;
}

class EveryTexture : public testing::TestWithParam<EFormat> {
protected:
    void ExpectBack(const TextureShape& shape, ETextureFileKind kind, int zstdLevel) const {
        const TemporaryFolder folder;
        const Bytes data = Noise(TextureBytes(shape));
        TextureWriteOptions options;
        options.kind = kind;
        options.zstdLevel = zstdLevel;
        std::string reason;
        ASSERT_TRUE(WriteTextureFile(Wide(folder / "t"), shape, data.data(), data.size(), options, &reason)) << reason;
        const ReadTexture read = ReadTextureFile(folder / "t");
        ASSERT_TRUE(read.isWhole) << read.reason;
        EXPECT_EQ(read.shape.format, ReadBack(shape.format, kind, shape.elements > 1));
        EXPECT_EQ(read.shape.type, shape.type);
        EXPECT_EQ(read.shape.width, shape.width);
        EXPECT_EQ(read.shape.height, shape.height);
        EXPECT_EQ(read.shape.depth, shape.depth);
        EXPECT_EQ(read.shape.levels, shape.levels);
        EXPECT_EQ(read.shape.elements, shape.elements);
        EXPECT_TRUE(read.isAsStored);
        EXPECT_FALSE(read.isBottomUp);
        EXPECT_TRUE(read.bytes == data);
    }
};

TEST_P(EveryTexture, ComesBackInEveryShapeFromBothKinds) {
    const TextureShape shapes[] = {
        Shape(GetParam(), kTexture2D, 9, 6, 1, 4),     Shape(GetParam(), kTexture2D, 1, 1, 1, 1),
        Shape(GetParam(), kTextureCube, 5, 5, 1, 3),   Shape(GetParam(), kTextureVolume, 5, 4, 3, 3),
        Shape(GetParam(), kTexture2D, 3, 7, 1, 2, 4),  Shape(GetParam(), kTextureCube, 6, 6, 1, 2, 2),
        Shape(GetParam(), kTextureVolume, 2, 2, 1, 1),
    };
    for (const TextureShape& shape : shapes) {
        ExpectBack(shape, kTextureFileDDS, 0);
        ExpectBack(shape, kTextureFileKTX2, 0);
        ExpectBack(shape, kTextureFileKTX2, 3);
    }
}

TEST_P(EveryTexture, SrgbAndAlphaComeBackWhereTheKindHasAWord) {
    for (const ETextureFileKind kind : {kTextureFileDDS, kTextureFileKTX2}) {
        for (int alpha = 0; alpha <= kTextureAlphaCustom; ++alpha) {
            TextureShape shape = Shape(GetParam(), kTexture2D, 4, 4, 1, 1);
            shape.isSrgb = true;
            shape.alpha = static_cast<ETextureAlpha>(alpha);
            if (!CanWriteTexture(shape, kind)) continue;
            const TemporaryFolder folder;
            const Bytes data = Noise(TextureBytes(shape));
            TextureWriteOptions options;
            options.kind = kind;
            ASSERT_TRUE(WriteTextureFile(Wide(folder / "t"), shape, data.data(), data.size(), options));
            const ReadTexture read = ReadTextureFile(folder / "t");
            ASSERT_TRUE(read.isWhole) << read.reason;
            EXPECT_TRUE(read.shape.isSrgb);
            EXPECT_TRUE(read.bytes == data);
            FormatFacts facts;
            ASSERT_TRUE(GetFormatFacts(GetParam(), facts));
            if (!facts.hasAlpha) continue;
            const bool isSaid = kind == kTextureFileDDS || alpha == kTextureAlphaPremultiplied ||
                                (alpha == kTextureAlphaOpaque && GetParam() != kA8);
            EXPECT_EQ(read.shape.alpha, isSaid ? alpha : kTextureAlphaStraight) << kind;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(TextureFile, EveryTexture, testing::ValuesIn(AllFormats()),
                         [](const auto& test) { return std::to_string(test.param); });

TEST(TextureFile, DdsHasSrgbForTheFormatsWithSuchNumbersAlone) {
    std::set<EFormat> formats;
    for (const EFormat format : AllFormats()) {
        TextureShape shape = Shape(format, kTexture2D, 4, 4, 1, 1);
        shape.isSrgb = true;
        std::string reason;
        if (CanWriteTexture(shape, kTextureFileDDS, &reason)) formats.insert(format);
        EXPECT_EQ(reason.empty(), formats.contains(format));
        EXPECT_TRUE(CanWriteTexture(shape, kTextureFileKTX2, &reason)) << reason;
    }
    EXPECT_EQ(formats, (std::set<EFormat>{kBC1, kBC1Srgb, kBC2, kBC2Srgb, kBC3, kBC3Srgb, kBC7, kBC7Srgb, kR8G8B8A8,
                                          kR8G8B8A8Alt, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8}));
}

TEST(TextureFile, APlainFormatThatIsSaidToBeSrgbIsItsSrgbTwin) {
    const TemporaryFolder folder;
    TextureShape shape = Shape(kBC7, kTexture2D, 4, 4, 1, 1);
    shape.isSrgb = true;
    const Bytes data = Noise(16);
    for (const char* const name : {"a.dds", "a.ktx2"}) {
        ASSERT_TRUE(WriteTextureFile(Wide(folder / name), shape, data.data(), data.size()));
        EXPECT_EQ(ReadTextureFile(folder / name).shape.format, kBC7Srgb);
    }
}

TEST(TextureFile, OneElementReadsAsItLiesInTheWhole) {
    const TemporaryFolder folder;
    const TextureShape shape = Shape(kBC1, kTextureCube, 8, 8, 1, 4, 3);
    const Bytes data = Noise(TextureBytes(shape));
    TextureWriteOptions options;
    for (const int zstdLevel : {0, 22}) {
        options.zstdLevel = zstdLevel;
        ASSERT_TRUE(WriteTextureFile(Wide(folder / "a.ktx2"), shape, data.data(), data.size(), options));
        TextureFileReader reader;
        ASSERT_TRUE(reader.Open(Wide(folder / "a.ktx2")));
        Bytes level(32);
        ASSERT_TRUE(reader.ReadLevel(2, 4, 0, level.data()));
        const std::size_t offset = TextureLevelOffset(shape, 2, 4, 0);
        EXPECT_EQ(level, Bytes(data.begin() + offset, data.begin() + offset + 32));
        EXPECT_FALSE(reader.ReadLevel(3, 0, 0, level.data()));
        EXPECT_STREQ(reader.Reason(), "there is no level 0 of face 0 of element 3");
        EXPECT_TRUE(reader.ReadLevel(0, 0, 3, level.data()));
        EXPECT_STREQ(reader.Reason(), "");
    }
}

// --- What is refused, and what is left behind.

std::size_t FilesIn(const TemporaryFolder& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

std::string WhyNot(const std::filesystem::path& path, const TextureShape& shape, std::uint64_t bytes,
                   const TextureWriteOptions& options = {}) {
    const Bytes data(64);
    std::string reason;
    EXPECT_FALSE(WriteTextureFile(Wide(path), shape, data.data(), bytes, options, &reason));
    EXPECT_FALSE(WriteTextureFile(Wide(path), shape, data.data(), bytes, options)) << "nobody asks why";
    return reason;
}

TEST(TextureFile, AFailedWriteSaysWhyAndLeavesNothing) {
    const TemporaryFolder folder;
    const TextureShape shape = Shape(kL8, kTexture2D, 4, 4, 1, 1);
    TextureWriteOptions packed;
    packed.zstdLevel = 3;
    TextureWriteOptions beyond;
    beyond.zstdLevel = 23;
    EXPECT_EQ(WhyNot(folder / "a.dds", shape, 15), "15 bytes are given for a texture of 16");
    EXPECT_EQ(WhyNot(folder / "a.png", shape, 16), "it is neither to be a DDS nor a KTX2 file");
    EXPECT_EQ(WhyNot(folder / "a.dds", shape, 16, packed), "DDS files are not packed by Zstandard");
    EXPECT_EQ(WhyNot(folder / "a.ktx2", shape, 16, beyond), "there is no level 23 of Zstandard");
    EXPECT_EQ(WhyNot(folder / "a.dds", Shape(kL8, kTexture2D, 4, 4, 1, 9), 16), "there is no texture of such a shape");
    EXPECT_EQ(WhyNot(folder / "no" / "a.dds", shape, 16), "it cannot be written: No such file or directory");
    EXPECT_EQ(WhyNot(folder / "no" / "a.ktx2", shape, 16), "it cannot be written: No such file or directory");
    std::string reason;
    EXPECT_FALSE(WriteTextureFile(Wide(folder / "a.dds"), shape, nullptr, 16, {}, &reason));
    std::filesystem::create_directory(folder / "b.dds");
    EXPECT_EQ(WhyNot(folder / "b.dds", shape, 16), "what has this name is no regular file");
    EXPECT_EQ(FilesIn(folder), 1U);
}

TEST(TextureFile, AFileThatCannotGrowIsAFailureAndTheOldOneStays) {
    const TemporaryFolder folder;
    folder.Write("a.ktx2", std::string("old"));
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const TextureShape shape = Shape(kL8, kTexture2D, 256, 256, 1, 1);
    const Bytes data = Noise(TextureBytes(shape));
    std::string reason;
    const bool isWritten = WriteTextureFile(Wide(folder / "a.ktx2"), shape, data.data(), data.size(), {}, &reason);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(reason, "it cannot be written: File too large");
    EXPECT_EQ(ReadAll(folder / "a.ktx2"), (Bytes{'o', 'l', 'd'}));
    EXPECT_EQ(FilesIn(folder), 1U);
}

TEST(TextureFile, WithoutAFileThereIsNothing) {
    const TemporaryFolder folder;
    TextureFileReader reader;
    Bytes bytes(64);
    EXPECT_EQ(reader.Kind(), kTextureFileUnknown);
    EXPECT_EQ(reader.Shape().format, kUnknown);
    EXPECT_FALSE(reader.HasFace(0));
    EXPECT_FALSE(reader.ReadAll(bytes.data()));
    EXPECT_STREQ(reader.Reason(), "no file is open");
    EXPECT_FALSE(reader.Open(Wide(folder / "none")));
    EXPECT_STREQ(reader.Reason(), "it cannot be opened: No such file or directory");
    EXPECT_FALSE(reader.Open(Wide(folder.Write("empty", std::string()))));
    EXPECT_STREQ(reader.Reason(), "it is neither a DDS nor a KTX2 file");
    ASSERT_TRUE(reader.Open(Wide(folder.Write("good", DdsFile(1, 1).Masks(0x20000, 8, 0xFF).Counting(1).All()))));
    EXPECT_EQ(reader.Kind(), kTextureFileDDS);
    EXPECT_FALSE(reader.Open(Wide(folder / "empty")));
    EXPECT_EQ(reader.Kind(), kTextureFileUnknown) << "the one before is closed";
}

}  // namespace
}  // namespace Kavra::Tests
