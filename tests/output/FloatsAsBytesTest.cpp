#include "output/FloatsAsBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using Kavra::Devices::FloatRows;
using Kavra::Devices::FloatsAsBytes;
using Kavra::Devices::ShownBytes;
using testing::Each;
using testing::ElementsAre;

namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::nanf("");

std::vector<unsigned char> Shown(const std::vector<float>& values, std::size_t channels, bool stretch,
                                 std::size_t height = 1) {
    const std::size_t width = values.size() / channels / height;
    const FloatRows rows{.first = reinterpret_cast<const unsigned char*>(values.data()),
                         .pitch = width * channels * sizeof(float),
                         .width = width,
                         .height = height,
                         .channels = channels};
    const auto block = FloatsAsBytes(rows, stretch);
    return {block.get(), block.get() + width * height * ShownBytes(channels)};
}

TEST(FloatsAsBytes, ZeroToOneIsTruncatedNotRounded) {
    EXPECT_THAT(Shown({0.0F, 0.25F, 0.75F, 1.0F}, 1, false), ElementsAre(0, 63, 191, 255));
    EXPECT_THAT(Shown({0.25F, 0.5F, 0.75F}, 1, false), ElementsAre(63, 127, 191));
    EXPECT_THAT(Shown({std::nextafterf(1.0F, 0.0F)}, 1, false), ElementsAre(254));
}

TEST(FloatsAsBytes, ValuesOutsideWidenTheRange) {
    EXPECT_THAT(Shown({-1.0F, 0.0F, 1.0F}, 1, false), ElementsAre(0, 127, 255));
    EXPECT_THAT(Shown({0.0F, 1.0F, 2.0F}, 1, false), ElementsAre(0, 127, 255));
    EXPECT_THAT(Shown({4.0F, 2.0F}, 1, false), ElementsAre(255, 127));           // from 0, though 2 is the least
    EXPECT_THAT(Shown({-3.0F, -2.0F}, 1, false), ElementsAre(0, 63));            // to 1, though -2 is the greatest
    EXPECT_THAT(Shown({-1.0F, 0.5F, 3.0F}, 1, false), ElementsAre(0, 95, 255));  // 1.5 x 255 / 4 = 95.6
}

TEST(FloatsAsBytes, StretchingMakesTheLeast0AndTheGreatest255) {
    EXPECT_THAT(Shown({0.25F, 0.5F, 0.75F}, 1, true), ElementsAre(0, 127, 255));
    EXPECT_THAT(Shown({-8.0F, 8.0F, 0.0F}, 1, true), ElementsAre(0, 255, 127));
    EXPECT_THAT(Shown({1000.0F, 1001.0F}, 1, true), ElementsAre(0, 255));
}

TEST(FloatsAsBytes, AStretchedConstantKeepsItsValueInsideZeroToOne) {
    EXPECT_THAT(Shown({0.5F, 0.5F}, 1, true), ElementsAre(127, 127));
    EXPECT_THAT(Shown({0.0F}, 1, true), ElementsAre(0));
    EXPECT_THAT(Shown({1.0F}, 1, true), ElementsAre(255));
    EXPECT_THAT(Shown({3.0F, 3.0F}, 1, true), ElementsAre(0, 0));
    EXPECT_THAT(Shown({-0.25F}, 1, true), ElementsAre(0));
    EXPECT_THAT(Shown({std::nextafterf(1.0F, 2.0F)}, 1, true), ElementsAre(0));
}

TEST(FloatsAsBytes, AnUnstretchedConstantIsOneOfZeroToOneLikeAnyOther) {
    EXPECT_THAT(Shown({3.0F, 3.0F}, 1, false), ElementsAre(255, 255));
    EXPECT_THAT(Shown({-3.0F}, 1, false), ElementsAre(0));
    EXPECT_THAT(Shown({0.5F}, 1, false), ElementsAre(127));
}

TEST(FloatsAsBytes, EachChannelHasARangeOfItsOwn) {
    EXPECT_THAT(Shown({0.0F, 10.0F, 1.0F, 20.0F}, 2, true), ElementsAre(0, 0, 0, 255, 255, 255, 0, 255));
    EXPECT_THAT(Shown({0.0F, 10.0F, -5.0F, 1.0F, 2.0F, 20.0F, -10.0F, 1.0F}, 4, true),
                ElementsAre(0, 0, 255, 255, 255, 255, 0, 255));
    EXPECT_THAT(Shown({0.0F, 10.0F, -5.0F, 2.0F, 2.0F, 20.0F, -10.0F, 2.0F}, 4, true),
                ElementsAre(0, 0, 255, 0, 255, 255, 0, 0));
    EXPECT_THAT(Shown({0.5F, 2.0F, 1.0F, 1.0F}, 2, false), ElementsAre(127, 255, 0, 255, 255, 127, 0, 255));
}

TEST(FloatsAsBytes, NaNIs0AndTakesNoPartInTheRange) {
    EXPECT_THAT(Shown({kNaN, 2.0F, 4.0F, 3.0F}, 1, true), ElementsAre(0, 0, 255, 127));
    EXPECT_THAT(Shown({0.5F, kNaN}, 1, false), ElementsAre(127, 0));
    EXPECT_THAT(Shown({0.5F, kNaN}, 1, true), ElementsAre(127, 0));
    for (const bool stretch : {false, true})
        EXPECT_THAT(Shown({kNaN, 1.0F, -kNaN, 0.0F}, 2, stretch), ElementsAre(0, 255, 0, 255, 0, 0, 0, 255));
}

TEST(FloatsAsBytes, AChannelWithAnInfinityIs0) {
    for (const bool stretch : {false, true}) {
        for (const float infinity : {kInf, -kInf}) {
            EXPECT_THAT(Shown({infinity, 0.0F, 1.0F, 0.5F}, 1, stretch), Each(0));
            EXPECT_THAT(Shown({infinity, infinity}, 1, stretch), Each(0));
            EXPECT_THAT(Shown({infinity, kNaN}, 1, stretch), Each(0));
        }
        EXPECT_THAT(Shown({kInf, -kInf}, 1, stretch), Each(0));
    }
    EXPECT_THAT(Shown({kInf, 0.0F, 1.0F, 1.0F}, 2, false), ElementsAre(0, 0, 0, 255, 0, 255, 0, 255));
}

TEST(FloatsAsBytes, TheLargestAndSmallestNumbersAreNumbers) {
    constexpr float kMax = std::numeric_limits<float>::max(), kDenormal = std::numeric_limits<float>::denorm_min();
    EXPECT_THAT(Shown({-kMax, 0.0F, kMax}, 1, true), ElementsAre(0, 127, 255));
    EXPECT_THAT(Shown({kDenormal, 2 * kDenormal, 3 * kDenormal}, 1, true), ElementsAre(0, 127, 255));
}

/// What the rule says, value by value.
unsigned char Expected(float value, double minimum, double maximum) {
    return static_cast<unsigned char>(static_cast<long long>((value - minimum) * 255 / (maximum - minimum)));
}

TEST(FloatsAsBytes, EveryValueIsRoundedAsTheFormulaInDoublePrecisionRoundsIt) {
    // Ends that no quotient of 255 meets exactly, and rows that end inside every kind of vector.
    for (std::size_t width = 1; width < 70; ++width) {
        std::vector<float> values;
        unsigned state = static_cast<unsigned>(width);
        for (std::size_t i = 0; i < 3 * width; ++i) {
            state = state * 1664525U + 1013904223U;
            values.push_back(static_cast<float>(state >> 8) / 3.7e6F - 1.3F);
        }
        values[0] = -1.5F;
        values[1] = 3.3F;
        std::vector<unsigned char> expected;
        for (const float value : values)
            expected.push_back(Expected(value, -1.5, 3.3F));
        ASSERT_EQ(Shown(values, 1, true, 3), expected) << width;
        ASSERT_EQ(Shown(values, 1, false, 3), expected) << width;
    }
}

TEST(FloatsAsBytes, EveryByteHasItsSteps) {
    std::vector<float> values;
    for (int byte = 0; byte <= 255; ++byte) {
        const float step = static_cast<float>(byte) / 255.0F;
        values.insert(values.end(), {step, std::nextafterf(step, 0.0F), std::nextafterf(step, 1.0F)});
    }
    std::vector<unsigned char> expected;
    for (const float value : values)
        expected.push_back(Expected(value, 0, 1));
    EXPECT_EQ(Shown(values, 1, false), expected);
}

TEST(FloatsAsBytes, LargePicturesAreSplitWithoutASeam) {
    constexpr std::size_t kSide = 700;
    for (const std::size_t channels : {1, 2, 4}) {
        std::vector<float> values(kSide * kSide * channels);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<float>(i / channels % 1001) / 1000.0F;
        const auto bytes = Shown(values, channels, true, kSide);
        for (std::size_t pixel = 0; pixel < kSide * kSide; ++pixel) {
            const unsigned char expected = Expected(values[pixel * channels], 0, 1);
            ASSERT_EQ(bytes[pixel * ShownBytes(channels)], expected) << pixel;
            if (channels == 2) {
                ASSERT_EQ(bytes[pixel * 4 + 1], expected);
                ASSERT_EQ(bytes[pixel * 4 + 2], 0);
                ASSERT_EQ(bytes[pixel * 4 + 3], 255);
            }
        }
    }
}

TEST(FloatsAsBytes, NothingGivesAnEmptyBlock) {
    EXPECT_TRUE(FloatsAsBytes({.first = nullptr, .pitch = 0, .width = 0, .height = 3, .channels = 4}, true));
}

}  // namespace
