#include "analysis/LightSamples.h"
#include "analysis/TestMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <set>

namespace Kavra::Tests {
namespace {

using namespace Analysis;
using namespace Devices;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::vector<LightSample> Sample(const TestMap& map) {
    return SampleMap(EnvironmentMapOf(map.desc, map.Data()).value());
}

/// A map whose pixels tell their place: column in red, row in green.
TestMap Places(int width, int height) {
    return MakeMap(width, height, kR32G32B32A32F,
                   [](int x, int y) { return Rgb{static_cast<float>(x), static_cast<float>(y), 0}; });
}

std::vector<LightSample> WithLuminances(const std::vector<float>& luminances) {
    std::vector<LightSample> samples;
    for (const float luminance : luminances)
        samples.push_back({{static_cast<float>(samples.size()), 0, 0}, {}, luminance});
    return samples;
}

/// The places, in the array as it was, of the samples that stay.
std::vector<int> Kept(const std::vector<float>& luminances) {
    std::vector<LightSample> samples = WithLuminances(luminances);
    KeepBrightSamples(samples);
    std::vector<int> places;
    for (const LightSample& sample : samples)
        places.push_back(static_cast<int>(sample.direction.x));
    return places;
}

TEST(LightSamples, AreAsManyAsTheWidthTimesHalfOfIt) {
    EXPECT_EQ(Sample(Places(2, 1)).size(), 2U * 1);
    EXPECT_EQ(Sample(Places(3, 9)).size(), 3U * 1);
    EXPECT_EQ(Sample(Places(4, 4)).size(), 4U * 2);
    EXPECT_EQ(Sample(Places(5, 2)).size(), 5U * 2);
    EXPECT_EQ(Sample(Places(64, 1)).size(), 64U * 32);
    EXPECT_EQ(Sample(Places(199, 2)).size(), 199U * 99);
    EXPECT_EQ(Sample(Places(200, 2)).size(), 200U * 100);
}

TEST(LightSamples, AreAtMostTwoHundredByAHundred) {
    EXPECT_EQ(Sample(Places(201, 2)).size(), 20000U);
    EXPECT_EQ(Sample(Places(5000, 3)).size(), 20000U);
}

TEST(LightSamples, OfAMapOneWideOrEmptyAreNone) {
    for (const auto& [width, height] : {std::array{1, 4},
                                        {0, 4},
                                        {-5, 4},
                                        {std::numeric_limits<int>::min(), 4},
                                        {4, 0},
                                        {4, -1},
                                        {4, std::numeric_limits<int>::min()}}) {
        TestMap map = Places(1, 1);
        map.desc.width = width;
        map.desc.height = height;
        EXPECT_TRUE(Sample(map).empty()) << width << " " << height;
    }
}

TEST(LightSamples, LieEvenlyInTheCosineFromTheZenithAndRoundTheVertical) {
    const std::vector<LightSample> samples = Sample(Places(200, 100));
    ASSERT_EQ(samples.size(), 20000U);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double y = 1 - 2 * (static_cast<double>(i / 200) + 0.5) / 100;
        const double azimuth = 2 * std::numbers::pi * (static_cast<double>(i % 200) + 0.5) / 200;
        const double radius = std::sqrt(1 - y * y);
        const auto& [direction, colour, luminance] = samples[i];
        ASSERT_NEAR(direction.x, -radius * std::sin(azimuth), 5e-5) << i;
        ASSERT_NEAR(direction.y, y, 1e-5) << i;
        ASSERT_NEAR(direction.z, radius * std::cos(azimuth), 5e-5) << i;
    }
}

TEST(LightSamples, TakeThePixelThatShowsTheirDirection) {
    for (const auto& [width, height] : {std::array{200, 100}, {400, 50}, {1000, 777}, {30, 15}}) {
        const int columns = std::min(width, 200);
        for (const LightSample& sample : Sample(Places(width, height))) {
            double turn =
                std::atan2(-static_cast<double>(sample.direction.x), sample.direction.z) / (2 * std::numbers::pi);
            if (turn < 0) turn += 1;
            const double row = std::acos(static_cast<double>(sample.direction.y)) / std::numbers::pi * height;
            // A sample on the line between two pixels may take either.
            ASSERT_NEAR(sample.colour.x + 0.5, width * turn, 0.502) << columns;
            ASSERT_NEAR(sample.colour.y + 0.5, row, 0.502);
        }
    }
}

TEST(LightSamples, GoRoundFromBehindByTheLeft) {
    // The quarters of the horizon, as four columns: +z to -x, -x to -z, -z to +x, +x to +z.
    const std::vector<LightSample> samples = Sample(Places(4, 1));
    ASSERT_EQ(samples.size(), 8U);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const int column = static_cast<int>(i % 4);
        EXPECT_EQ(samples[i].colour.x, static_cast<float>(column));
        EXPECT_EQ(samples[i].direction.x < 0, column < 2) << column;
        EXPECT_EQ(samples[i].direction.z > 0, column == 0 || column == 3) << column;
        EXPECT_EQ(samples[i].direction.y > 0, i < 4);
    }
}

TEST(LightSamples, OfASmallMapMeetEveryRowButTheNarrowestAtThePoles) {
    std::set<float> rows;
    for (const LightSample& sample : Sample(Places(200, 100)))
        rows.insert(sample.colour.y);
    // The first ring lies at acos(0.99), 8.1 degrees from the zenith, in the fifth row of 1.8 degrees.
    EXPECT_EQ(*rows.begin(), 4);
    EXPECT_EQ(*rows.rbegin(), 95);
    // Where the sine of that angle is above 0.64 the rings are closer than the rows.
    for (float row = 25; row < 75; ++row)
        EXPECT_TRUE(rows.contains(row)) << row;
}

TEST(LightSamples, LuminanceIsGreenThenRedThenBlueInSinglePrecision) {
    for (const Rgb& colour : {Rgb{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.3F, 0.7F, 0.9F}, {1e5F, 3.3F, 1e-3F}}) {
        const float green = 0.71516F * colour[1];
        const float red = 0.212671F * colour[0];
        const float blue = 0.072169F * colour[2];
        const float greenAndRed = green + red;
        for (const LightSample& sample : Sample(MakeUniform(2, 1, colour)))
            EXPECT_EQ(sample.luminance, greenAndRed + blue);
    }
}

TEST(LightSamples, AreReadInEveryFormatAndOrder) {
    const Rgb colour = {51 / 255.0F, 102 / 255.0F, 1};
    for (const EFormat format : kMapFormats) {
        const TestMap map = MakeMap(8, 4, format, [&](int, int) { return colour; }, {.padding = 5, .offset = 1});
        for (const LightSample& sample : Sample(map)) {
            EXPECT_NEAR(sample.colour.x, colour[0], 1e-4) << format;
            EXPECT_NEAR(sample.colour.y, colour[1], 2e-4) << format;
            EXPECT_EQ(sample.colour.z, 1) << format;
        }
    }
}

TEST(BrightSamples, AreThoseFromTheMeanPlusOneDeviationOn) {
    // Mean 2, mean of squares 8, deviation 2: the bound is 4.
    EXPECT_EQ(Kept({1, 1, 1, 1, 1, 4, 1, 1, 1, 8}), (std::vector{9}));  // mean 2, mean of squares 8.8
    EXPECT_EQ(Kept({0, 0, 0, 4, 4, 4}), (std::vector{3, 4, 5}));        // mean 2, mean of squares 8: the bound is 4
}

TEST(BrightSamples, IncludeOneThatEqualsTheBound) {
    // Mean 1/2 and deviation 1/2.
    EXPECT_EQ(Kept({0, 1, 0, 1}), (std::vector{1, 3}));
    EXPECT_EQ(Kept({0, std::nextafter(1.0F, 0.0F), 0, 1}), (std::vector{3}));
}

TEST(BrightSamples, AreNoneWhereMostIsBright) {
    // Mean 0.9 and deviation 0.3: the bound is beyond the brightest.
    EXPECT_EQ(Kept({1, 1, 1, 1, 0, 1, 1, 1, 1, 1}), std::vector<int>{});
}

TEST(BrightSamples, AreAllOfEquallyBrightOnesWhateverTheRounding) {
    // In single precision the bound of twenty thousand times 0.3 or 0.1 comes out above it.
    for (const float luminance : {0.5F, 0.3F, 0.1F, 0.0F, -2.0F, 1e30F}) {
        std::vector<LightSample> samples = WithLuminances(std::vector<float>(20000, luminance));
        KeepBrightSamples(samples);
        EXPECT_EQ(samples.size(), 20000U) << luminance;
    }
}

TEST(BrightSamples, AreAllWhereTheBoundIsNaN) {
    EXPECT_EQ(Kept({1, kNaN, 5}), (std::vector{0, 1, 2}));
    EXPECT_EQ(Kept({kNaN, kNaN}), (std::vector{0, 1}));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Kept({1, infinity, 2}), (std::vector{0, 1, 2}));
    EXPECT_EQ(Kept({infinity, infinity}), (std::vector{0, 1}));
}

TEST(BrightSamples, AreAllWhereRoundingMakesTheVarianceNegative) {
    // Three nearly equal values: the mean of their squares comes out below the square of their mean.
    const float above = std::nextafter(4099.0F, 5000.0F);
    std::vector<float> luminances;
    float sum = 0;
    float squares = 0;
    float variance = 0;
    while (variance >= 0 && luminances.size() < 1000) {
        luminances.push_back(luminances.empty() ? above : 4099.0F);
        sum += luminances.back();
        squares += luminances.back() * luminances.back();
        const auto count = static_cast<float>(luminances.size());
        variance = luminances.size() < 2 ? 0 : squares / count - sum / count * (sum / count);
    }
    ASSERT_LT(variance, 0);
    EXPECT_EQ(Kept(luminances).size(), luminances.size());
}

TEST(BrightSamples, AreNoneWhereTheMeanOfTheSquaresOverflowsAndAllWhereTheSquareOfTheMeanDoesToo) {
    EXPECT_EQ(Kept({0, 0, 0, 2e19F}), std::vector<int>{});
    EXPECT_EQ(Kept({0, 0, 0, 1e30F}), (std::vector{0, 1, 2, 3}));
}

TEST(BrightSamples, OfNoneAreNone) {
    EXPECT_EQ(Kept({}), std::vector<int>{});
}

}  // namespace
}  // namespace Kavra::Tests
