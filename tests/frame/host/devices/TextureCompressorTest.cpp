// Pictures as blocks: what is taken, and what comes out.

#include "common/blocks/Bc6hLayout.h"
#include "frame/host/devices/EveryVectorWidth.h"
#include "frame/host/devices/TexturePictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <thread>

namespace Kavra::Tests {
namespace {

using namespace Devices;

// --- Sizes and arguments ---------------------------------------------------------------------------------------------

TEST(TextureCompressor, BlocksAreCountedAsTheyAreBegun) {
    EXPECT_EQ(BlockBytes(kBC1, 4, 4), 8U);
    EXPECT_EQ(BlockBytes(kBC7Srgb, 5, 1), 32U);
    EXPECT_EQ(BlockBytes(kBC4, 1 << 20, 1 << 20), std::uint64_t{8} << 36);
    EXPECT_EQ(BlockBytes(kR8G8B8A8, 4, 4), 0U);
    EXPECT_EQ(BlockBytes(kReserved16, 4, 4), 0U);
    EXPECT_EQ(BlockBytes(kBC1, 0, 4), 0U);
    EXPECT_EQ(BlockBytes(kBC1, 4, -1), 0U);
    EXPECT_EQ(BlockBytes(static_cast<EFormat>(12345), 4, 4), 0U);
}

TEST(TextureCompressor, WhatIsNoPictureOrNoBlocksIsRefusedAndNothingWritten) {
    const Bytes pixels(64);
    Bytes blocks(16, 77);
    const auto compress = [&](EFormat from, const void* in, std::size_t pitch, int width, int height, EFormat to,
                              void* out) { return CompressPicture(from, in, pitch, width, height, to, out); };
    EXPECT_FALSE(compress(kR8G8B8A8, nullptr, 16, 4, 4, kBC7, blocks.data()));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 16, 4, 4, kBC7, nullptr));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 15, 4, 4, kBC7, blocks.data()));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 16, 0, 4, kBC7, blocks.data()));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 16, 4, -1, kBC7, blocks.data()));
    EXPECT_FALSE(compress(kBC1, pixels.data(), 16, 4, 4, kBC7, blocks.data()));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 16, 4, 4, kR8G8B8A8, blocks.data()));
    EXPECT_FALSE(compress(kR8G8B8A8, pixels.data(), 16, 4, 4, kReserved16, blocks.data()));
    EXPECT_FALSE(compress(kUnknown, pixels.data(), 16, 4, 4, kBC7, blocks.data()));
    EXPECT_FALSE(compress(static_cast<EFormat>(-5), pixels.data(), 16, 4, 4, kBC7, blocks.data()));
    EXPECT_EQ(blocks, Bytes(16, 77));
}

TEST(TextureCompressor, OnlyBlocksAreDecompressed) {
    const Bytes blocks(16);
    Bytes pixels(64, 77);
    EXPECT_FALSE(DecompressPicture(kR8G8B8A8, blocks.data(), 4, 4, pixels.data(), 16));
    EXPECT_FALSE(DecompressPicture(kReserved77, blocks.data(), 4, 4, pixels.data(), 16));
    EXPECT_FALSE(DecompressPicture(kBC1, nullptr, 4, 4, pixels.data(), 16));
    EXPECT_FALSE(DecompressPicture(kBC1, blocks.data(), 4, 4, nullptr, 16));
    EXPECT_FALSE(DecompressPicture(kBC1, blocks.data(), 4, 4, pixels.data(), 15));
    EXPECT_FALSE(DecompressPicture(kBC1, blocks.data(), 4, 0, pixels.data(), 16));
    EXPECT_EQ(pixels, Bytes(64, 77));
    EXPECT_EQ(DecodedFormat(kR8G8B8A8), kUnknown);
    EXPECT_EQ(DecodedFormat(kReserved16), kUnknown);
}

TEST(TextureCompressor, OptionsThatAreNoneAreTheUsualOnes) {
    const Picture picture = Smooth(16, 16);
    const Bytes usual = Compressed(picture, kBC7);
    CompressionOptions options;
    options.effort = static_cast<ECompressionEffort>(99);
    options.weights[0] = -1;
    options.weights[1] = std::numeric_limits<float>::quiet_NaN();
    options.weights[2] = 0;
    options.weights[3] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Compressed(picture, kBC7, options), usual);
}

TEST(TextureCompressor, WhatAnOlderUserDoesNotKnowIsAsItStands) {
    const Picture picture = Smooth(16, 16);
    CompressionOptions options;
    options.size = offsetof(CompressionOptions, weights);
    options.weights[0] = 100;
    options.withAlpha = false;
    EXPECT_EQ(Compressed(picture, kBC7, options), Compressed(picture, kBC7));
}

// --- Edges, rows and formats -----------------------------------------------------------------------------------------

TEST(TextureCompressor, PixelsBeyondTheEdgesAreTheLastRowAndColumnAgain) {
    const Picture small = Smooth(5, 3);
    const Picture whole = Made(8, 4, [&](int x, int y, std::size_t c) {
        return small.pixels[static_cast<std::size_t>(std::min(y, 2) * 5 + std::min(x, 4)) * 4 + c];
    });
    for (const EFormat format : kBlockFormats)
        EXPECT_EQ(Compressed(small, format), Compressed(whole, format)) << format;
}

TEST(TextureCompressor, APictureOfOnePixelIsABlock) {
    const Picture shown = Shown(Flat({200, 100, 50, 255}, 1, 1), kBC7);
    EXPECT_NEAR(shown.pixels[0], 200, 1);
    EXPECT_NEAR(shown.pixels[1], 100, 1);
    EXPECT_NEAR(shown.pixels[2], 50, 1);
    EXPECT_EQ(shown.pixels[3], 255);
}

TEST(TextureCompressor, RowsMayLieFurtherApart) {
    const Picture picture = Smooth(8, 8);
    Bytes wide(8 * 50, 99);
    for (std::size_t y = 0; y < 8; ++y)
        std::ranges::copy_n(picture.pixels.begin() + static_cast<std::ptrdiff_t>(y * 32), 32,
                            wide.begin() + static_cast<std::ptrdiff_t>(y * 50));
    Bytes blocks(BlockBytes(kBC3, 8, 8));
    ASSERT_TRUE(CompressPicture(kR8G8B8A8, wide.data(), 50, 8, 8, kBC3, blocks.data()));
    EXPECT_EQ(blocks, Compressed(picture, kBC3));

    Bytes rows(8 * 40, 99);
    ASSERT_TRUE(DecompressPicture(kBC3, blocks.data(), 7, 8, rows.data(), 40));
    const Bytes packed = Decompressed(blocks, kBC3, 8, 8);
    for (std::size_t y = 0; y < 8; ++y) {
        EXPECT_TRUE(std::equal(&packed[y * 32], &packed[y * 32] + 28, &rows[y * 40])) << y;
        EXPECT_EQ(std::count(&rows[y * 40] + 28, &rows[y * 40] + 40, 99), 12) << y;
    }
}

TEST(TextureCompressor, BlueFirstAndMeaninglessBytesAreTakenAsSuch) {
    const Picture picture = Smooth(8, 8);
    Bytes blueFirst = picture.pixels, opaque = picture.pixels;
    for (std::size_t i = 0; i < picture.Count(); ++i) {
        std::swap(blueFirst[4 * i], blueFirst[4 * i + 2]);
        opaque[4 * i + 3] = 255;
    }
    const auto compressed = [&](EFormat from, const Bytes& pixels) {
        Bytes blocks(BlockBytes(kBC3, 8, 8));
        EXPECT_TRUE(CompressPicture(from, pixels.data(), 32, 8, 8, kBC3, blocks.data()));
        return blocks;
    };
    const Bytes usual = compressed(kR8G8B8A8, picture.pixels), solid = compressed(kR8G8B8A8, opaque);
    EXPECT_EQ(compressed(kB8G8R8A8, blueFirst), usual);
    EXPECT_EQ(compressed(kR8G8B8A8Alt, picture.pixels), usual);
    EXPECT_EQ(compressed(kR8G8B8X8, picture.pixels), solid);
    EXPECT_EQ(compressed(kB8G8R8X8, blueFirst), solid);
    EXPECT_NE(usual, solid);
}

TEST(TextureCompressor, GreyIsRedGreenAndBlue) {
    Bytes grey(16), wide(32);
    for (std::size_t i = 0; i < 16; ++i) {
        grey[i] = static_cast<unsigned char>(i * 17);
        wide[2 * i] = wide[2 * i + 1] = grey[i];  // v * 257
    }
    const Picture colours = Made(4, 4, [](int x, int y, std::size_t c) { return c == 3 ? 255 : (4 * y + x) * 17; });
    for (const EFormat to : {kBC1, kBC4, kBC7}) {
        Bytes blocks(BlockBytes(to, 4, 4));
        ASSERT_TRUE(CompressPicture(kL8, grey.data(), 4, 4, 4, to, blocks.data()));
        EXPECT_EQ(blocks, Compressed(colours, to)) << to;
        ASSERT_TRUE(CompressPicture(kR16, wide.data(), 8, 4, 4, to, blocks.data()));
        EXPECT_EQ(blocks, Compressed(colours, to)) << to;
    }
}

TEST(TextureCompressor, FloatsBeyondZeroToOneAreLimitedWhereTheFormatIs) {
    const std::array<float, 16> light = {0.5F, 0.5F, 0.5F, 1, 2, 1, -1, 1, std::numeric_limits<float>::quiet_NaN(),
                                         0.5F, 0.5F, 1,    0, 0, 0, 1};
    const Bytes bytes = {128, 128, 128, 255, 255, 255, 0, 255, 0, 128, 128, 255, 0, 0, 0, 255};
    Bytes fromFloats(16), fromBytes(16);
    ASSERT_TRUE(CompressPicture(kR32G32B32A32F, light.data(), 64, 4, 1, kBC7, fromFloats.data()));
    ASSERT_TRUE(CompressPicture(kR8G8B8A8, bytes.data(), 16, 4, 1, kBC7, fromBytes.data()));
    const Bytes a = Decompressed(fromFloats, kBC7, 4, 1), b = Decompressed(fromBytes, kBC7, 4, 1);
    for (std::size_t i = 0; i < a.size(); ++i)
        EXPECT_NEAR(a[i], b[i], 2) << i;
}

// --- Alpha -----------------------------------------------------------------------------------------------------------

TEST(TextureCompressor, WhatIsOpaqueStaysSoInEveryFormatAndEffort) {
    Picture picture = Noise(32, 32);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        picture.pixels[i] = 255;
    for (const EFormat format : {kBC1, kBC2, kBC3, kBC7}) {
        for (const ECompressionEffort effort : kEfforts) {
            const Picture shown = Shown(picture, format, With(effort));
            EXPECT_EQ(ErrorOf(picture, shown, 3, 1), 0) << format << " " << effort;
        }
    }
}

TEST(TextureCompressor, AlphaThatDoesNotMatterIsOpaque) {
    CompressionOptions options;
    options.withAlpha = false;
    for (const EFormat format : {kBC1, kBC2, kBC3, kBC7}) {
        const Picture shown = Shown(Smooth(16, 16), format, options);
        for (std::size_t i = 3; i < shown.pixels.size(); i += 4)
            ASSERT_EQ(shown.pixels[i], 255) << format;
    }
}

TEST(TextureCompressor, Bc1IsTransparentBelowTheCutoffAndOpaqueElsewhere) {
    const Picture picture = Made(4, 4, [](int x, int y, std::size_t c) { return c == 3 ? (4 * y + x) * 17 : 200; });
    for (const float cutoff : {0.5F, 0.2F, 0.0F, 1.0F}) {
        CompressionOptions options;
        options.cutoff = cutoff;
        const Picture shown = Shown(picture, kBC1, options);
        for (std::size_t i = 0; i < 16; ++i) {
            const bool isSolid = static_cast<float>(i * 17) >= cutoff * 255;
            EXPECT_EQ(shown.pixels[4 * i + 3], isSolid ? 255 : 0) << i << " " << cutoff;
            EXPECT_NEAR(shown.pixels[4 * i], isSolid ? 200 : 0, 3) << i << " " << cutoff;
        }
    }
}

TEST(TextureCompressor, Bc2HasSixteenLevelsOfAlpha) {
    const Picture picture = Made(4, 4, [](int x, int y, std::size_t c) { return c == 3 ? (4 * y + x) * 16 + 3 : 9; });
    const Picture shown = Shown(picture, kBC2);
    for (std::size_t i = 0; i < 16; ++i) {
        const double nearest = std::round((static_cast<double>(i) * 16 + 3) / 17) * 17;
        EXPECT_EQ(shown.pixels[4 * i + 3], nearest) << i;
    }
}

// --- Every block is legal --------------------------------------------------------------------------------------------

TEST(TextureCompressor, NoBlockIsOfAReservedMode) {
    for (const ECompressionEffort effort : kEfforts) {
        const Bytes seven = Compressed(Noise(64, 64), kBC7, With(effort));
        for (std::size_t i = 0; i < seven.size(); i += 16)
            ASSERT_NE(seven[i], 0);
        for (const EFormat format : {kBC6H, kBC6HSigned}) {
            const Bytes six = Compressed(Noise(64, 64), format, With(effort));
            for (std::size_t i = 0; i < six.size(); i += 16)
                ASSERT_TRUE(Common::UnpackBc6h(&six[i], format == kBC6HSigned));
        }
    }
}

// Old programs read all blocks of BC2 and BC3 as four colours, and of BC1 only those whose first end is greater.
TEST(TextureCompressor, OpaqueBlocksOfBc1HaveNoIndexThatIsTransparent) {
    Picture picture = Noise(64, 64);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        picture.pixels[i] = 255;
    for (const ECompressionEffort effort : kEfforts) {
        const Bytes blocks = Compressed(picture, kBC1, With(effort));
        for (std::size_t i = 0; i < blocks.size(); i += 8) {
            const unsigned first = blocks[i] | blocks[i + 1] << 8, last = blocks[i + 2] | blocks[i + 3] << 8;
            for (std::size_t k = 4; first <= last && k < 8; ++k)
                for (int shift = 0; shift < 8; shift += 2)
                    ASSERT_NE(blocks[i + k] >> shift & 3, 3);
        }
    }
}

// --- The same bytes --------------------------------------------------------------------------------------------------

TEST(TextureCompressor, BlocksAreTheSameWithEveryVectorWidth) {
    for (const ECompressionEffort effort : kEfforts) {
        const int side = effort == kCompressionBest ? 20 : 52;
        for (const Picture& picture : {Smooth(side, side), Noise(side, side)}) {
            for (const EFormat format : kBlockFormats) {
                const Bytes usual = Compressed(picture, format, With(effort));
                ForEveryVectorWidth([&] { EXPECT_EQ(Compressed(picture, format, With(effort)), usual) << format; });
            }
        }
    }
}

TEST(TextureCompressor, ABlockIsTheSameWhateverStandsBesideIt) {
    const Picture picture = Noise(36, 4);
    for (const EFormat format : kBlockFormats) {
        const Bytes all = Compressed(picture, format);
        const std::size_t blockBytes = all.size() / 9;
        for (int i = 0; i < 9; ++i) {
            const Picture one = Made(4, 4, [&](int x, int y, std::size_t c) {
                return picture.pixels[static_cast<std::size_t>(y * 36 + 4 * i + x) * 4 + c];
            });
            const auto begin = all.begin() + i * static_cast<std::ptrdiff_t>(blockBytes);
            EXPECT_TRUE(std::ranges::equal(Compressed(one, format), std::span(begin, blockBytes)))
                << format << " " << i;
        }
    }
}

TEST(TextureCompressor, ThreadsGiveTheSameBlocksAndPixels) {
    const Picture picture = Smooth(64, 200);
    const Bytes usual = Compressed(picture, kBC7, With(kCompressionFast));
    const Bytes shown = Decompressed(usual, kBC7, 64, 200);
    std::array<Bytes, 4> blocks, pixels;
    {
        std::vector<std::jthread> threads;
        threads.reserve(blocks.size());
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            threads.emplace_back([&, i] {
                blocks[i] = Compressed(picture, kBC7, With(kCompressionFast));
                pixels[i] = Decompressed(blocks[i], kBC7, 64, 200);
            });
        }
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(blocks[i], usual);
        EXPECT_EQ(pixels[i], shown);
    }
}

}  // namespace
}  // namespace Kavra::Tests
