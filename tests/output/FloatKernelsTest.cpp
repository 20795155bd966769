#include "output/FloatKernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using namespace Kavra::Devices;
using testing::ElementsAre;

namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::nanf("");

/// The values at an address that is no float's.
std::vector<unsigned char> Misaligned(const std::vector<float>& values) {
    std::vector<unsigned char> bytes(1 + values.size() * sizeof(float));
    std::memcpy(bytes.data() + 1, values.data(), values.size() * sizeof(float));
    return bytes;
}

FloatMapping Mapping(double minimum, double span) {
    FloatMapping mapping;
    mapping.minimum.fill(minimum);
    mapping.span.fill(span);
    return mapping;
}

std::vector<unsigned char> Shown(const FloatMapping& mapping, const std::vector<float>& values) {
    std::vector<unsigned char> out(values.size());
    ShowFloats(mapping, Misaligned(values).data() + 1, values.size(), out.data());
    return out;
}

TEST(FloatKernels, ExtremesGrowAtTheirPlaceInTheGroup) {
    FloatExtremes extremes;
    extremes.minimum.fill(kInf);
    extremes.maximum.fill(-kInf);
    // A whole group and a part of one: value 16 is at place 0 again.
    std::vector<float> values(19);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(i);
    values[18] = -5;
    WidenExtremes(extremes, Misaligned(values).data() + 1, values.size());
    EXPECT_EQ(extremes.minimum[0], 0);
    EXPECT_EQ(extremes.maximum[0], 16);
    EXPECT_EQ(extremes.minimum[2], -5);
    EXPECT_EQ(extremes.maximum[2], 2);
    EXPECT_EQ(extremes.minimum[3], 3);
    EXPECT_EQ(extremes.maximum[15], 15);
}

TEST(FloatKernels, NaNIsNoExtremeButInfinitiesAre) {
    for (std::size_t place = 0; place < kFloatGroup; ++place) {
        FloatExtremes extremes;
        extremes.minimum.fill(1);
        extremes.maximum.fill(2);
        std::vector<float> values(kFloatGroup, 1.5F);
        values[place] = kNaN;
        WidenExtremes(extremes, Misaligned(values).data() + 1, values.size());
        EXPECT_EQ(extremes.minimum[place], 1);
        EXPECT_EQ(extremes.maximum[place], 2);
        values[place] = -kInf;
        WidenExtremes(extremes, Misaligned(values).data() + 1, values.size());
        EXPECT_EQ(extremes.minimum[place], -kInf);
    }
}

TEST(FloatKernels, BytesAreTruncatedAndLimited) {
    EXPECT_THAT(Shown(Mapping(0, 1), {0.25F, 1.0F, 1.5F, -0.5F, kNaN, kInf, -kInf}),
                ElementsAre(63, 255, 255, 0, 0, 255, 0));
    EXPECT_THAT(Shown(Mapping(-1, 3), {-1.0F, 0.5F, 2.0F, 1e38F, -1e38F}), ElementsAre(0, 127, 255, 255, 0));
}

TEST(FloatKernels, ARangeWithoutEndIs0) {
    for (const double span : {static_cast<double>(kInf), std::nan("")})
        EXPECT_THAT(Shown(Mapping(0, span), {0.0F, 1.0F, kInf, -kInf, kNaN}), ElementsAre(0, 0, 0, 0, 0));
    EXPECT_THAT(Shown(Mapping(-static_cast<double>(kInf), kInf), {0.0F, kInf, -kInf}), ElementsAre(0, 0, 0));
}

TEST(FloatKernels, EveryPlaceHasItsOwnMapping) {
    FloatMapping mapping;
    for (std::size_t i = 0; i < kFloatGroup; ++i) {
        mapping.minimum[i] = static_cast<double>(i);
        mapping.span[i] = 255.0 / static_cast<double>(i + 1);
    }
    const std::vector<unsigned char> shown = Shown(mapping, std::vector<float>(2 * kFloatGroup + 3, 16.0F));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const std::size_t place = i % kFloatGroup;
        // (16 - place) x (place + 1), but for what the quotient loses.
        EXPECT_NEAR(shown[i], static_cast<double>((16 - place) * (place + 1)), 1) << i;
    }
}

TEST(FloatKernels, PowersOfTwoGiveWhatTheDivisionGives) {
    std::vector<float> values;
    for (int i = 0; i < 3000; ++i)
        values.push_back(static_cast<float>(i) / 1500.0F - 0.5F);
    for (const int exponent : {-149, -20, -1, 0, 1, 5, 120}) {
        const double span = std::ldexp(1.0, exponent), minimum = -span / 4;
        std::vector<float> scaled;
        std::vector<unsigned char> expected;
        for (const float value : values) {
            scaled.push_back(static_cast<float>(value * span));
            const double byte = (static_cast<double>(scaled.back()) - minimum) * 255 / span;
            expected.push_back(static_cast<unsigned char>(std::clamp(byte, 0.0, 255.0)));
        }
        EXPECT_EQ(Shown(Mapping(minimum, span), scaled), expected) << exponent;
    }
}

}  // namespace
