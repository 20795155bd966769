// How near blocks are to the pictures that they were made of.
#include "frame/host/devices/TexturePictures.h"

#include <gtest/gtest.h>
#include <hwy/base.h>

#include <algorithm>
#include <array>
#include <limits>

namespace Kavra::Tests {
namespace {

using namespace Devices;

float FloatOf(std::uint16_t half) {
    return hwy::F32FromF16(hwy::BitCastScalar<hwy::float16_t>(half));
}

/// Halves of a picture's blocks.
std::vector<float> Light(const Bytes& pixels) {
    std::vector<float> values(pixels.size() / 2);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = FloatOf(static_cast<std::uint16_t>(pixels[2 * i] | pixels[2 * i + 1] << 8));
    return values;
}

/// The least error that the colour at a third of the way between two ends leaves, the ends having so many bits.
int LeastError(int value, int bits) {
    const int last = (1 << bits) - 1;
    int least = 255;
    for (int a = 0; a <= last; ++a) {
        for (int b = 0; b <= last; ++b) {
            const int x = (a * 510 + last) / (2 * last), y = (b * 510 + last) / (2 * last);
            least = std::min(least, std::abs((2 * x + y + 1) / 3 - value));
        }
    }
    return least;
}

TEST(CompressionError, OneColourIsAsNearAsTheFormatCan) {
    for (int value = 0; value < 256; value += 3) {
        const auto byte = static_cast<unsigned char>(value);
        const Picture one = Shown(Flat({byte, byte, byte, 255}), kBC1, With(kCompressionGood));
        EXPECT_LE(std::abs(one.pixels[0] - value), LeastError(value, 5)) << value;
        EXPECT_LE(std::abs(one.pixels[1] - value), LeastError(value, 6)) << value;
        const Picture seven = Shown(Flat({byte, 90, 17, 255}), kBC7);
        EXPECT_LE(std::abs(seven.pixels[0] - value), 1) << value;
        const Bytes four = Decompressed(Compressed(Flat({byte, 0, 0, 255}), kBC4), kBC4, 4, 4);
        EXPECT_EQ(four[0], value);
    }
}

TEST(CompressionError, TwoValuesOfAChannelAreExact) {
    for (const int low : {0, 1, 100, 254}) {
        for (const int high : {1, 7, 128, 255}) {
            const Picture picture = Made(4, 4, [&](int x, int y, std::size_t c) {
                return c == 3 ? 255 : (x + y) % 2 == 0 ? low : high;
            });
            const Bytes one = Decompressed(Compressed(picture, kBC4), kBC4, 4, 4);
            for (int i = 0; i < 16; ++i)
                EXPECT_EQ(one[static_cast<std::size_t>(i)], (i % 4 + i / 4) % 2 == 0 ? low : high)
                    << low << " " << high;
        }
    }
}

TEST(CompressionError, BlackAndWhiteAreKeptBesideTheValuesBetween) {
    const std::array<unsigned char, 16> values = {0,   255, 100, 110, 120, 100, 0,   255,
                                                  255, 0,   110, 105, 115, 100, 120, 0};
    const Picture picture = Made(4, 4, [&](int x, int y, std::size_t) {
        return values[static_cast<std::size_t>(y) * 4 + static_cast<std::size_t>(x)];
    });
    const Bytes shown = Decompressed(Compressed(picture, kBC4), kBC4, 4, 4);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(shown[i], values[i], values[i] == 0 || values[i] == 255 ? 0 : 3) << i;
}

// Four colours of five and six bits: a line that the format holds.
TEST(CompressionError, ABlockThatTheFormatHoldsComesOutAsItIs) {
    const Bytes block = {0xFF, 0xFF, 0x63, 0x19, 0xE4, 0xE4, 0x1B, 0x1B};
    Picture picture(4, 4);
    picture.pixels = Decompressed(block, kBC1, 4, 4);
    for (const ECompressionEffort effort : {kCompressionGood, kCompressionBest})
        EXPECT_EQ(ErrorOf(picture, Shown(picture, kBC1, With(effort))), 0) << effort;
}

TEST(CompressionError, MoreEffortIsNeverFurtherOff) {
    for (const Picture& picture : {Smooth(64, 64), Noise(32, 32)}) {
        for (const EFormat format : {kBC1, kBC2, kBC3, kBC5, kBC7}) {
            const std::size_t channels = format == kBC5 ? 2 : 3;
            CompressionOptions fast = With(kCompressionFast), good = With(kCompressionGood),
                               best = With(kCompressionBest);
            fast.withAlpha = good.withAlpha = best.withAlpha = false;
            const double first = ErrorOf(picture, Shown(picture, format, fast), 0, channels);
            const double second = ErrorOf(picture, Shown(picture, format, good), 0, channels);
            const double third = ErrorOf(picture, Shown(picture, format, best), 0, channels);
            EXPECT_LE(second, first) << format;
            EXPECT_LE(third, second) << format;
        }
    }
}

TEST(CompressionError, SmoothPicturesAreNear) {
    const Picture picture = Made(64, 64, [](int x, int y, std::size_t c) {
        return 127.5 + (120 - 20 * static_cast<double>(c)) * std::sin(0.1 * x + 0.07 * y);
    });
    EXPECT_GT(Psnr(picture, Shown(picture, kBC3)), 37);
    EXPECT_GT(Psnr(picture, Shown(picture, kBC3), 3, 1), 45);
    EXPECT_GT(Psnr(picture, Shown(picture, kBC5), 0, 2), 45);
    EXPECT_GT(Psnr(picture, Shown(picture, kBC7), 0, 4), 48);
}

TEST(CompressionError, AWeightedChannelIsNearer) {
    const Picture picture = Noise(32, 32);
    CompressionOptions plain, green;
    plain.withAlpha = green.withAlpha = false;
    green.weights[1] = 20;
    for (const EFormat format : {kBC1, kBC7}) {
        const double before = ErrorOf(picture, Shown(picture, format, plain), 1, 1);
        EXPECT_LT(ErrorOf(picture, Shown(picture, format, green), 1, 1), before / 2) << format;
    }
}

// --- Signed values and light -----------------------------------------------------------------------------------------

TEST(CompressionError, SignedChannelsTakeFloatsOfMinusOneToOne) {
    std::vector<float> vectors;
    for (int i = 0; i < 16; ++i)
        vectors.insert(vectors.end(), {static_cast<float>(i) / 7.5F - 1, i % 2 == 0 ? -1.0F : 1.0F});
    Bytes blocks(16);
    ASSERT_TRUE(CompressPicture(kR32G32F, vectors.data(), 32, 4, 4, kBC5Snorm, blocks.data()));
    const std::vector<float> shown = Light(Decompressed(blocks, kBC5Snorm, 4, 4));
    ASSERT_EQ(shown.size(), 32U);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(shown[2 * i], vectors[2 * i], 0.15) << i;
        EXPECT_EQ(shown[2 * i + 1], vectors[2 * i + 1]) << i;
    }
}

TEST(CompressionError, SignedChannelsTakeIntegersAroundTheirMiddle) {
    const Bytes ends = {0, 255, 0, 255};
    Bytes block(8);
    ASSERT_TRUE(CompressPicture(kL8, ends.data(), 4, 4, 1, kBC4Snorm, block.data()));
    const std::vector<float> shown = Light(Decompressed(block, kBC4Snorm, 4, 1));
    EXPECT_EQ(shown, (std::vector<float>{-1, 1, -1, 1}));
}

TEST(CompressionError, LightIsNearByItsSize) {
    std::vector<float> light;
    for (int i = 0; i < 16 * 16; ++i)
        for (int c = 0; c < 4; ++c)
            light.push_back(std::exp2(static_cast<float>(i) / 64 - 8 + static_cast<float>(c) / 3));
    for (const ECompressionEffort effort : kEfforts) {
        Bytes blocks(BlockBytes(kBC6H, 16, 16));
        ASSERT_TRUE(CompressPicture(kR32G32B32A32F, light.data(), 256, 16, 16, kBC6H, blocks.data(), With(effort)));
        const std::vector<float> shown = Light(Decompressed(blocks, kBC6H, 16, 16));
        for (std::size_t i = 0; i < shown.size(); ++i) {
            if (i % 4 == 3) {
                ASSERT_EQ(shown[i], 1) << "there is no alpha";
            } else {
                ASSERT_NEAR(shown[i] / light[i], 1, 0.05) << i << " effort " << effort;
            }
        }
    }
}

TEST(CompressionError, LightThatHalvesDoNotHoldIsLimited) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::array<float, 4> values = {kInfinity, 1e9F, -5, std::numeric_limits<float>::quiet_NaN()};
    const std::array<float, 4> unsignedLight = {65504, 65504, 0, 0}, signedLight = {65504, 65504, -5, 0};
    for (std::size_t i = 0; i < values.size(); ++i) {
        Bytes block(16);
        ASSERT_TRUE(CompressPicture(kR32F, &values[i], 4, 1, 1, kBC6H, block.data()));
        EXPECT_EQ(Light(Decompressed(block, kBC6H, 1, 1))[0], unsignedLight[i]) << i;
        ASSERT_TRUE(CompressPicture(kR32F, &values[i], 4, 1, 1, kBC6HSigned, block.data()));
        EXPECT_NEAR(Light(Decompressed(block, kBC6HSigned, 1, 1))[0], signedLight[i], 0.01) << i;
    }
}

}  // namespace
}  // namespace Kavra::Tests
