// Blocks decoded as the image library decodes them, and by hand where it has another view.

#include "common/blocks/Bc6hLayout.h"
#include "common/blocks/Bc7Packing.h"
#include "frame/host/devices/TexturePictures.h"
#include "load/DdsFile.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace Kavra::Tests {
namespace {

using namespace Devices;

constexpr int kBlocksAlong = 48;
constexpr int kSide = 4 * kBlocksAlong;

/// Random bits; the first byte of each block is `firstOf(number, byte)`.
template <class FirstOf>
Bytes RandomBlocks(std::size_t blockBytes, const FirstOf& firstOf) {
    std::mt19937 random(7);
    Bytes blocks(blockBytes * kBlocksAlong * kBlocksAlong);
    for (unsigned char& byte : blocks)
        byte = static_cast<unsigned char>(random());
    for (std::size_t i = 0; i < blocks.size() / blockBytes; ++i)
        blocks[i * blockBytes] = static_cast<unsigned char>(firstOf(i, blocks[i * blockBytes]));
    return blocks;
}

Bytes AnyBlocks(std::size_t blockBytes) {
    return RandomBlocks(blockBytes, [](std::size_t, unsigned byte) { return byte; });
}

/// All eight modes and the reserved one in turn.
Bytes Bc7Blocks() {
    return RandomBlocks(16, [](std::size_t i, unsigned byte) {
        const unsigned mode = i % 9;
        return mode == 8 ? 0 : (byte & ~((2U << mode) - 1)) | 1U << mode;
    });
}

/// All fourteen modes and the reserved ones.
Bytes Bc6hBlocks() {
    return RandomBlocks(16, [](std::size_t i, unsigned byte) { return (byte & ~31U) | (i % 32); });
}

/// What the image library makes of a file of blocks.
Bytes ByLibrary(const DdsFile& file, int channels, OIIO::TypeDesc type) {
    const TemporaryFolder folder;
    const auto input = OIIO::ImageInput::open(folder.Write("blocks.dds", file.Bytes()).string());
    if (!input) return {};
    Bytes pixels(static_cast<std::size_t>(kSide) * kSide * static_cast<std::size_t>(channels) * type.size());
    if (input->spec().nchannels != channels || !input->read_image(0, 0, 0, channels, type, pixels.data())) return {};
    return pixels;
}

DdsFile FileOf(std::uint32_t dxgi, Bytes blocks) {
    DdsFile file;
    file.width = file.height = kSide;
    file.Dxgi(dxgi);
    file.data = std::move(blocks);
    return file;
}

TEST(TextureDecompression, Bc7IsAsTheImageLibraryHasItInEveryMode) {
    const Bytes blocks = Bc7Blocks();
    const Bytes expected = ByLibrary(FileOf(98, blocks), 4, OIIO::TypeUInt8);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(Decompressed(blocks, kBC7, kSide, kSide), expected);
    EXPECT_EQ(Decompressed(blocks, kBC7Srgb, kSide, kSide), expected);
}

TEST(TextureDecompression, Bc6hIsAsTheImageLibraryHasItInEveryMode) {
    for (const bool isSigned : {false, true}) {
        const Bytes blocks = Bc6hBlocks();
        const Bytes expected = ByLibrary(FileOf(isSigned ? 96 : 95, blocks), 3, OIIO::TypeHalf);
        ASSERT_FALSE(expected.empty());
        const Bytes shown = Decompressed(blocks, isSigned ? kBC6HSigned : kBC6H, kSide, kSide);
        ASSERT_EQ(shown.size() / 8, expected.size() / 6);
        for (std::size_t i = 0; i < shown.size() / 8; ++i) {
            ASSERT_EQ(std::memcmp(&shown[8 * i], &expected[6 * i], 6), 0) << i;
            ASSERT_EQ(shown[8 * i + 6] | shown[8 * i + 7] << 8, 0x3C00) << i;
        }
    }
}

TEST(TextureDecompression, Bc1ToBc5AreAsTheImageLibraryHasThem) {
    struct Kind {
        EFormat format;
        std::uint32_t dxgi;
        int channels;
    };
    for (const Kind& kind : {Kind{kBC1, 71, 4}, Kind{kBC2, 74, 4}, Kind{kBC3, 77, 4}, Kind{kBC4, 80, 1}}) {
        const Bytes blocks = AnyBlocks(kind.format == kBC1 || kind.format == kBC4 ? 8 : 16);
        EXPECT_EQ(Decompressed(blocks, kind.format, kSide, kSide),
                  ByLibrary(FileOf(kind.dxgi, blocks), kind.channels, OIIO::TypeUInt8))
            << kind.format;
    }
    const Bytes blocks = AnyBlocks(16);
    const Bytes pairs = ByLibrary(FileOf(83, blocks), 2, OIIO::TypeUInt8),
                shown = Decompressed(blocks, kBC5, kSide, kSide);
    ASSERT_EQ(shown.size(), 2 * pairs.size());
    for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
        ASSERT_EQ(shown[4 * i], pairs[2 * i]);
        ASSERT_EQ(shown[4 * i + 1], pairs[2 * i + 1]);
        ASSERT_EQ(shown[4 * i + 2], 0);
        ASSERT_EQ(shown[4 * i + 3], 255);
    }
}

// Ends 127 and -127: 1 and -1; then 5/7, 3/7, 1/7 and so on. -128 is as -127.
TEST(TextureDecompression, SignedChannelsAreHalvesOfMinusOneToOne) {
    const Bytes block = {0x7F, 0x81, 0x88, 0xC6, 0xFA, 0, 0, 0};  // 0 1 2 3, 4 5 6 7
    const Bytes shown = Decompressed(block, kBC4Snorm, 4, 4);
    const std::uint16_t expected[] = {0x3C00, 0xBC00, 0x39B7, 0x36DB, 0x3092, 0xB092, 0xB6DB, 0xB9B7};
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(shown[2 * i] | shown[2 * i + 1] << 8, expected[i]) << i;
    const Bytes lowest = {0x80, 0x81, 0x88, 0xC6, 0xFA, 0, 0, 0};
    EXPECT_EQ(Decompressed(lowest, kBC4Snorm, 1, 1), (Bytes{0x00, 0xBC}));
    const Bytes ends = Decompressed(lowest, kBC4Snorm, 4, 4);
    EXPECT_EQ(ends[2 * 6 + 1], 0xBC) << "a block of the second kind has both ends of all";
    EXPECT_EQ(ends[2 * 7 + 1], 0x3C);
}

TEST(TextureDecompression, PairsOfSignedChannelsLieSideBySide) {
    Bytes blocks(16);
    blocks[0] = 0x7F, blocks[8] = 0x81;
    const Bytes shown = Decompressed(blocks, kBC5Snorm, 4, 4);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(shown[4 * i + 1], 0x3C);
        EXPECT_EQ(shown[4 * i + 3], 0xBC);
    }
}

TEST(TextureDecompression, BlocksThatWereUnpackedArePackedAsTheyWere) {
    const Bytes seven = Bc7Blocks(), six = Bc6hBlocks();
    for (std::size_t i = 0; i < seven.size(); i += 16) {
        Bytes packed(16);
        if (const auto block = Common::UnpackBc7(&seven[i])) {
            Common::PackBc7(*block, packed.data());
            ASSERT_EQ(std::memcmp(packed.data(), &seven[i], 16), 0) << i;
        }
        for (const bool isSigned : {false, true}) {
            const auto block = Common::UnpackBc6h(&six[i], isSigned);
            if (!block) continue;
            Common::PackBc6h(*block, packed.data());
            ASSERT_EQ(std::memcmp(packed.data(), &six[i], 16), 0) << i;
        }
    }
}

TEST(TextureDecompression, PicturesAreCutAtTheirEdges) {
    const Bytes blocks = AnyBlocks(16);
    const Bytes whole = Decompressed(Bytes(blocks.begin(), blocks.begin() + 64), kBC7, 8, 8);
    Bytes cut(7 * 40, 99);
    ASSERT_TRUE(DecompressPicture(kBC7, blocks.data(), 6, 7, cut.data(), 40));
    for (std::size_t y = 0; y < 7; ++y) {
        EXPECT_TRUE(std::equal(&cut[y * 40], &cut[y * 40] + 24, &whole[y * 32])) << y;
        EXPECT_EQ(std::count(&cut[y * 40] + 24, &cut[y * 40] + 40, 99), 16) << y;
    }
}

}  // namespace
}  // namespace Kavra::Tests
