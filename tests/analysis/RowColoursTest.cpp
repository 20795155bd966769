#include "analysis/RowColours.h"
#include "analysis/TestMap.h"
#include "frame/host/devices/EveryVectorWidth.h"

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace Kavra::Tests {
namespace {

using namespace Analysis;
using namespace Devices;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

PixelKind KindOf(EFormat format) {
    if (format == kR32G32B32A32F) return PixelKind::kFloats;
    if (format == kR16G16B16A16F) return PixelKind::kHalves;
    return format == kB8G8R8A8 || format == kB8G8R8X8 ? PixelKind::kBlueFirstBytes : PixelKind::kRedFirstBytes;
}

ColourSums Sum(const TestMap& row) {
    return SumRow(static_cast<const unsigned char*>(row.Data()), static_cast<std::size_t>(row.desc.width),
                  KindOf(row.desc.format));
}

TestMap FloatRow(const std::vector<Rgb>& pixels) {
    return MakeMap(static_cast<int>(pixels.size()), 1, kR32G32B32A32F,
                   [&](int x, int) { return pixels[static_cast<std::size_t>(x)]; });
}

std::array<std::uint64_t, 4> Bits(const ColourSums& sums) {
    return std::bit_cast<std::array<std::uint64_t, 4>>(sums);
}

/// The four sums of each channel, added as (0 + 1) + (2 + 3).
ColourSums SumByLanes(const std::vector<Rgb>& pixels) {
    double lanes[4][4] = {};
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        const auto& [r, g, b] = pixels[x];
        const float brightest = std::max(std::max(r, g), b);
        const float values[4] = {r, g, b, brightest};
        for (int c = 0; c < 4; ++c)
            lanes[x % 4][c] += static_cast<double>(values[c]);
    }
    const auto total = [&](int c) { return (lanes[0][c] + lanes[1][c]) + (lanes[2][c] + lanes[3][c]); };
    return {total(0), total(1), total(2), total(3)};
}

TEST(RowColours, AddUpTheThreeColoursAndTheBrightestOfEachPixel) {
    const ColourSums sums = Sum(FloatRow({{1, 2, 4}, {8, 0, -1}, {0.25F, 0.5F, 0}}));
    EXPECT_EQ(sums.red, 9.25);
    EXPECT_EQ(sums.green, 2.5);
    EXPECT_EQ(sums.blue, 3);
    EXPECT_EQ(sums.brightest, 12.5);
}

TEST(RowColours, OfNoPixelsAreZero) {
    const unsigned char nothing{};
    const ColourSums sums = SumRow(&nothing, 0, PixelKind::kFloats);
    EXPECT_EQ(Bits(sums), Bits(ColourSums{}));
}

TEST(RowColours, OfFloatsComeInTheSameOrderOnEveryVectorWidth) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> exponent(-30, 30);
    for (const int width : {1, 2, 3, 4, 5, 7, 8, 31, 1000, 1003}) {
        std::vector<Rgb> pixels;
        for (int i = 0; i < width; ++i)
            pixels.push_back({std::exp2(exponent(random)), -std::exp2(exponent(random)), std::exp2(exponent(random))});
        const ColourSums expected = SumByLanes(pixels);
        const TestMap row = FloatRow(pixels);
        ForEveryVectorWidth([&] { EXPECT_EQ(Bits(Sum(row)), Bits(expected)) << width; });
    }
}

TEST(RowColours, EveryByteIsTimesTheSinglePrecisionScale) {
    const auto scale = std::bit_cast<float>(0x3B808081);
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8}) {
        for (int v = 0; v < 256; ++v) {
            const unsigned char pixel[4] = {static_cast<unsigned char>(v), 1, 2, 255};
            const float first = static_cast<float>(v) * scale;
            ForEveryVectorWidth([&] {
                const ColourSums sums = SumRow(reinterpret_cast<const unsigned char*>(pixel), 1, KindOf(format));
                EXPECT_EQ(format == kR8G8B8A8 ? sums.red : sums.blue, static_cast<double>(first)) << v;
                EXPECT_EQ(sums.green, static_cast<double>(1 * scale));
                EXPECT_EQ(format == kR8G8B8A8 ? sums.blue : sums.red, static_cast<double>(2 * scale));
                EXPECT_EQ(sums.brightest, static_cast<double>(std::max(first, 2 * scale)));
            });
        }
    }
}

TEST(RowColours, EveryHalfIsItsValue) {
    for (unsigned bits = 0; bits < 65536; bits += 1) {
        half pixel[4] = {half(0.5F), half(0.0F), half(-1.0F), half(0.0F)};
        pixel[1].setBits(static_cast<std::uint16_t>(bits));
        const auto value = static_cast<double>(static_cast<float>(pixel[1]));
        const ColourSums sums = SumRow(reinterpret_cast<const unsigned char*>(pixel), 1, PixelKind::kHalves);
        if (std::isnan(value)) {
            ASSERT_TRUE(std::isnan(sums.green)) << bits;
        } else {
            ASSERT_EQ(sums.green, value) << bits;
            ASSERT_EQ(sums.brightest, std::max(0.5, value)) << bits;
        }
    }
}

TEST(RowColours, InfiniteAndNaNHalvesStayWhatTheyAreOnEveryVectorWidth) {
    const TestMap row = MakeMap(2, 1, kR16G16B16A16F,
                                [](int x, int) { return x == 0 ? Rgb{kInfinity, kNaN, -kInfinity} : Rgb{1, 1, 1}; });
    ForEveryVectorWidth([&] {
        const ColourSums sums = Sum(row);
        EXPECT_EQ(sums.red, static_cast<double>(kInfinity));
        EXPECT_TRUE(std::isnan(sums.green));
        EXPECT_EQ(sums.blue, static_cast<double>(-kInfinity));
        EXPECT_EQ(sums.brightest, static_cast<double>(kInfinity));
    });
}

TEST(RowColours, ANaNIsTheBrightestWhereItIsRedAndIsPassedOverElsewhere) {
    const TestMap red = FloatRow({{kNaN, 1, 2}});
    const TestMap green = FloatRow({{1, kNaN, 2}});
    const TestMap blue = FloatRow({{1, 2, kNaN}});
    ForEveryVectorWidth([&] {
        EXPECT_TRUE(std::isnan(Sum(red).brightest));
        EXPECT_EQ(Sum(green).brightest, 2);
        EXPECT_EQ(Sum(blue).brightest, 2);
    });
}

TEST(RowColours, ReadNothingButTheirPixelsAtAnyAddress) {
    // The block ends with the row: reading on is an error that the sanitized build finds.
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kR16G16B16A16F, kR32G32B32A32F}) {
        for (int width = 1; width < 20; ++width) {
            for (int offset = 0; offset < 5; ++offset) {
                const TestMap row =
                    MakeMap(width, 1, format, [](int x, int) { return Rgb{1, 0, static_cast<float>(x % 2)}; },
                            {.offset = offset});
                ForEveryVectorWidth([&] {
                    const ColourSums sums = Sum(row);
                    EXPECT_EQ(sums.red, width);
                    EXPECT_EQ(sums.green, 0);
                    EXPECT_EQ(sums.blue, width / 2);
                    EXPECT_EQ(sums.brightest, width);
                });
            }
        }
    }
}

TEST(RowColours, OfBytesAreExactWhateverTheirOrder) {
    std::mt19937 random(3);
    std::vector<unsigned char> pixels(4 * 70001);
    for (unsigned char& value : pixels)
        value = static_cast<unsigned char>(random());
    long double expected = 0;  // 64 bits of mantissa hold these sums exactly
    for (std::size_t i = pixels.size(); i > 0; i -= 4)
        expected += static_cast<float>(pixels[i - 4]) * kByteScale;
    const ColourSums sums =
        SumRow(reinterpret_cast<const unsigned char*>(pixels.data()), pixels.size() / 4, PixelKind::kRedFirstBytes);
    EXPECT_EQ(static_cast<long double>(sums.red), expected);
}

}  // namespace
}  // namespace Kavra::Tests
