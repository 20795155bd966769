#include "frame/host/devices/EveryVectorWidth.h"
#include "support/ResamplePictures.h"

#include <kavra/devices/Resampler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::EmptyPicture;
using Tests::MakePicture;
using Tests::Pattern;
using Tests::Picture;
using Tests::Resampled;

constexpr std::array kElements = {ElementType::kUInt8, ElementType::kUInt16, ElementType::kHalf, ElementType::kFloat};
constexpr std::array kFilters = {kResampleNearest,  kResampleBilinear,   kResampleBox,     kResampleTriangle,
                                 kResampleMitchell, kResampleCatmullRom, kResampleLanczos3};

Picture Pixels(ElementType element, int channels, int width, int height, std::vector<float> values) {
    Picture picture = EmptyPicture(element, channels, width, height);
    for (std::size_t i = 0; i < values.size(); ++i)
        picture.Set(i, values[i]);
    return picture;
}

std::vector<float> ValuesOf(const Picture& picture) {
    std::vector<float> values;
    for (std::size_t i = 0; i < picture.Values(); ++i)
        values.push_back(picture.Value(i));
    return values;
}

// --- The twin --------------------------------------------------------------------------------------------------------

/// The weight of the two filters that the twin knows, in double precision, `x` in pixels of the result.
double Weight(EResampleFilter filter, double x) {
    x = std::abs(x);
    if (filter == kResampleTriangle) return std::max(0.0, 1 - x);
    if (x >= 2) return 0;
    if (x >= 1) return (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6;
    return (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6;
}

/// One value the plain way: all pixels under the filter, each as often as it stands at the edge.
double PlainValue(const Picture& from, int width, int height, EResampleFilter filter, int x, int y, int channel) {
    const double across = static_cast<double>(width) / from.width, down = static_cast<double>(height) / from.height;
    const double shrinkX = std::min(1.0, across), shrinkY = std::min(1.0, down);
    const double centreX = (x + 0.5) / across, centreY = (y + 0.5) / down;
    double sum = 0, total = 0;
    for (int j = static_cast<int>(centreY - 3 / shrinkY); j <= centreY + 3 / shrinkY; ++j) {
        for (int i = static_cast<int>(centreX - 3 / shrinkX); i <= centreX + 3 / shrinkX; ++i) {
            const double weight =
                Weight(filter, (i + 0.5 - centreX) * shrinkX) * Weight(filter, (j + 0.5 - centreY) * shrinkY);
            total += weight;
            sum += weight * static_cast<double>(
                                from.At(std::clamp(i, 0, from.width - 1), std::clamp(j, 0, from.height - 1), channel));
        }
    }
    return sum / total;
}

/// The twin's values within half a step of the integers, and within what single precision gives of the others.
void ExpectAsTheTwin(const Picture& from, int width, int height, EResampleFilter filter) {
    const Picture to = Resampled(from, width, height, {.filter = filter});
    const bool isInteger = from.element == ElementType::kUInt8 || from.element == ElementType::kUInt16;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < from.channels; ++c) {
                double expected = PlainValue(from, width, height, filter, x, y, c);
                if (from.element == ElementType::kUInt8) expected = std::clamp(expected, 0.0, 255.0);
                if (from.element == ElementType::kUInt16) expected = std::clamp(expected, 0.0, 65535.0);
                double allowed = from.element == ElementType::kUInt16 ? 1.2 : 0.505;
                if (!isInteger)
                    allowed = from.element == ElementType::kHalf ? 6e-4 : 1e-5;  // positions are rounded, too
                ASSERT_NEAR(static_cast<double>(to.At(x, y, c)), expected, allowed) << x << ", " << y << ", " << c;
            }
        }
    }
}

TEST(Resampler, AgreesWithThePlainTwinInEveryVectorWidth) {
    Tests::ForEveryVectorWidth([] {
        for (const ElementType element : kElements) {
            for (int channels = 1; channels <= 4; ++channels) {
                for (const EResampleFilter filter : {kResampleMitchell, kResampleTriangle}) {
                    const Picture from = MakePicture(element, channels, 83, 61, Pattern::kNoise);
                    ExpectAsTheTwin(from, 29, 17, filter);
                    ExpectAsTheTwin(from, 101, 97, filter);
                }
            }
        }
    });
}

TEST(Resampler, LargePicturesAgreeWithThePlainTwinToo) {
    // More rows and columns than are worked on at a time, and too many pixels to be summed in one pass.
    for (const ElementType element : kElements) {
        const Picture from = MakePicture(element, 4, 700, 900, Pattern::kPhotograph);
        const Picture to = Resampled(from, 350, 450);
        for (const auto& [x, y] : {std::array{0, 0}, {349, 449}, {127, 128}, {128, 15}, {200, 448}, {349, 16}}) {
            const double expected = PlainValue(from, 350, 450, kResampleMitchell, x, y, 1);
            const double allowed = element == ElementType::kUInt8    ? 0.501
                                   : element == ElementType::kUInt16 ? 0.55
                                                                     : 6e-4;
            EXPECT_NEAR(static_cast<double>(to.At(x, y, 1)), expected, allowed) << x << ", " << y;
        }
    }
}

// --- By hand ---------------------------------------------------------------------------------------------------------

TEST(Resampler, ABoxTakesTheMean) {
    const Picture four = Pixels(ElementType::kFloat, 1, 2, 2, {1, 2, 3, 6});
    EXPECT_EQ(ValuesOf(Resampled(four, 1, 1, {.filter = kResampleBox})), std::vector<float>{3});
}

TEST(Resampler, TiesOfBytesAreRoundedUp) {
    const Picture two = Pixels(ElementType::kUInt8, 1, 2, 1, {0, 1});
    EXPECT_EQ(ValuesOf(Resampled(two, 1, 1, {.filter = kResampleBox})), std::vector<float>{128});  // of 127.5
}

TEST(Resampler, TheNearestPixelIsCopiedBitByBit) {
    Picture halves = EmptyPicture(ElementType::kHalf, 1, 2, 1);
    const std::array<std::uint16_t, 2> bits = {0x7C01, 0x8001};  // a signalling NaN, the smallest negative number
    std::memcpy(halves.bytes.data(), bits.data(), sizeof(bits));
    const Picture to = Resampled(halves, 4, 1, {.filter = kResampleNearest});
    const std::array<std::uint16_t, 4> expected = {0x7C01, 0x7C01, 0x8001, 0x8001};
    EXPECT_EQ(std::memcmp(to.bytes.data(), expected.data(), sizeof(expected)), 0);
}

TEST(Resampler, ValuesThatAreNoNumberSpreadNoFurtherThanTheFilter) {
    Picture from = MakePicture(ElementType::kFloat, 1, 400, 400, Pattern::kNoise);
    from.Set(200 * 400 + 200, std::numeric_limits<float>::infinity());
    const Picture to = Resampled(from, 200, 200);
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            const bool isFar = std::abs(x - 100) > 3 || std::abs(y - 100) > 3;
            ASSERT_TRUE(!isFar || std::isfinite(to.At(x, y, 0))) << x << ", " << y;
        }
    }
    EXPECT_FALSE(std::isfinite(to.At(100, 100, 0)));
}

TEST(Resampler, PitchesLeaveTheGapsAlone) {
    const std::array<unsigned char, 8> from = {10, 20, 99, 99, 30, 40, 99, 99};
    std::array<unsigned char, 6> to = {7, 7, 7, 7, 7, 7};
    ASSERT_TRUE(
        ResamplePicture({ElementType::kUInt8, 1}, from.data(), 4, 2, 2, to.data(), 3, 1, 2, {.filter = kResampleBox}));
    EXPECT_EQ(to, (std::array<unsigned char, 6>{15, 7, 7, 35, 7, 7}));
}

// --- Options ---------------------------------------------------------------------------------------------------------

TEST(Resampler, WhatIsTransparentLendsNoColour) {
    const Picture two = Pixels(ElementType::kUInt8, 4, 2, 1, {1, 0, 0, 0, 1, 1, 1, 1});  // clear red, white
    EXPECT_EQ(ValuesOf(Resampled(two, 1, 1, {.filter = kResampleBox, .alphaWeighted = true})),
              (std::vector<float>{255, 255, 255, 128}));
    EXPECT_EQ(ValuesOf(Resampled(two, 1, 1, {.filter = kResampleBox})), (std::vector<float>{255, 128, 128, 128}));
}

TEST(Resampler, WhereAllIsTransparentColoursAreThoseOfThePlainFilter) {
    for (const ElementType element : kElements) {
        const Picture two = Pixels(element, 4, 2, 1, {1, 0, 0.5F, 0, 0, 1, 0.5F, 0});
        const Picture weighted = Resampled(two, 1, 1, {.filter = kResampleBox, .alphaWeighted = true});
        const Picture plain = Resampled(two, 1, 1, {.filter = kResampleBox});
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(weighted.At(0, 0, c), plain.At(0, 0, c), 1e-3 * std::max(1.0F, plain.At(0, 0, 0))) << c;
    }
}

TEST(Resampler, OpaquePicturesAreWeightedAsTheyAreFiltered) {
    Picture from = MakePicture(ElementType::kUInt8, 4, 200, 150, Pattern::kChecks);
    for (std::size_t i = 3; i < from.bytes.size(); i += 4)
        from.bytes[i] = 255;
    for (const EResampleFilter filter : {kResampleBox, kResampleMitchell})
        EXPECT_EQ(Resampled(from, 100, 75, {.filter = filter, .alphaWeighted = true}).bytes,
                  Resampled(from, 100, 75, {.filter = filter}).bytes);
}

TEST(Resampler, GreyWithAlphaIsWeightedToo) {
    const Picture two = Pixels(ElementType::kUInt8, 2, 2, 1, {1, 0, 0, 1});  // clear white, black
    EXPECT_EQ(ValuesOf(Resampled(two, 1, 1, {.filter = kResampleBox, .alphaWeighted = true})),
              (std::vector<float>{0, 128}));
}

TEST(Resampler, BoundedLightIsNeverNegativeNorBrighterThanItsSource) {
    for (const ElementType element : {ElementType::kHalf, ElementType::kFloat}) {
        Picture sun = EmptyPicture(element, 3, 64, 64);
        for (std::size_t i = 0; i < sun.Values(); ++i)
            sun.Set(i, 0.25F);
        for (int c = 0; c < 3; ++c)
            sun.Set(static_cast<std::size_t>((32 * 64 + 32) * 3 + c), 5000.0F);
        for (const EResampleFilter filter : {kResampleMitchell, kResampleCatmullRom, kResampleLanczos3}) {
            const std::vector<float> plain = ValuesOf(Resampled(sun, 48, 48, {.filter = filter}));
            ASSERT_LT(*std::ranges::min_element(plain), 0);
            const std::vector<float> bounded = ValuesOf(Resampled(sun, 48, 48, {.filter = filter, .bounded = true}));
            EXPECT_EQ(*std::ranges::min_element(bounded), 0.25F);
            EXPECT_LE(*std::ranges::max_element(bounded), 5000.0F);
        }
    }
}

TEST(Resampler, TheFourAroundAPointAreFourWithOptionsToo) {
    // From six pixels to two: the centres lie at 1.5 and 4.5, on the second and the fifth pixel.
    const Picture six = Pixels(ElementType::kUInt8, 4, 6, 1, {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1,  //
                                                              1, 0, 0, 1, 0, 1, 1, 1, 0, 0, 1, 1});
    EXPECT_EQ(ValuesOf(Resampled(six, 2, 1, {.filter = kResampleBilinear, .alphaWeighted = true})),
              (std::vector<float>{0, 255, 0, 255, 0, 255, 255, 255}));
}

TEST(Resampler, WithoutAnAlphaNothingIsWeighted) {
    for (const EResampleFilter filter : kFilters) {
        const Picture from = MakePicture(ElementType::kUInt8, 3, 90, 70, Pattern::kChecks);
        EXPECT_EQ(Resampled(from, 31, 29, {.filter = filter, .alphaWeighted = true}).bytes,
                  Resampled(from, 31, 29, {.filter = filter}).bytes);
    }
}

TEST(Resampler, IntegersKeepTheirOvershootWhenBounded) {
    const Picture from = MakePicture(ElementType::kUInt8, 4, 90, 70, Pattern::kChecks);
    EXPECT_EQ(Resampled(from, 60, 50, {.filter = kResampleLanczos3, .bounded = true}).bytes,
              Resampled(from, 60, 50, {.filter = kResampleLanczos3}).bytes);
}

TEST(Resampler, LinearLightMixesLightAndLeavesAlphaAlone) {
    // Half of the light of white is 0.5 on the curve's linear side: 1.055 x 0.5^(1/2.4) - 0.055 = 0.735357.
    const Picture two = Pixels(ElementType::kUInt8, 4, 2, 1, {0, 0, 0, 0, 1, 1, 1, 1});
    EXPECT_EQ(ValuesOf(Resampled(two, 1, 1, {.filter = kResampleBox, .linearLight = true})),
              (std::vector<float>{188, 188, 188, 128}));  // 187.5 and 127.5
    const Picture words = Pixels(ElementType::kUInt16, 1, 2, 1, {0, 1});
    EXPECT_NEAR(Resampled(words, 1, 1, {.filter = kResampleBox, .linearLight = true}).At(0, 0, 0), 48192, 1);
    const Picture floats = Pixels(ElementType::kFloat, 1, 2, 1, {0, 1});
    EXPECT_EQ(Resampled(floats, 1, 1, {.filter = kResampleBox, .linearLight = true}).At(0, 0, 0), 0.5F);
}

TEST(Resampler, FlatColoursStayWhatTheyAreWithEveryOption) {
    for (int value = 0; value < 256; ++value) {
        Picture flat = EmptyPicture(ElementType::kUInt8, 4, 7, 5);
        std::ranges::fill(flat.bytes, static_cast<unsigned char>(value));
        const Picture to = Resampled(flat, 3, 9, {.alphaWeighted = true, .bounded = true, .linearLight = true});
        EXPECT_TRUE(std::ranges::all_of(to.bytes, [&](unsigned char byte) { return byte == value; })) << value;
    }
}

// --- Row by row ------------------------------------------------------------------------------------------------------

class RowsOfPicture final : public IRowSource {
public:
    explicit RowsOfPicture(const Picture& picture) : mPicture(picture) {}
    bool ReadRows(void* rows, int count) override {
        const std::size_t bytes = static_cast<std::size_t>(count) * mPicture.RowBytes();
        if (mAt + bytes > mEnd * mPicture.RowBytes()) return false;
        std::memcpy(rows, mPicture.bytes.data() + mAt, bytes);
        mAt += bytes;
        return true;
    }
    void EndAfter(int rows) { mEnd = static_cast<std::size_t>(rows); }

private:
    const Picture& mPicture;
    std::size_t mAt = 0, mEnd = 1 << 20;
};

class RowsToPicture final : public IRowSink {
public:
    explicit RowsToPicture(Picture& picture) : mPicture(picture) {}
    bool WriteRows(const void* rows, int count) override {
        if (mRows == mEnd) return false;
        std::memcpy(mPicture.bytes.data() + static_cast<std::size_t>(mRows) * mPicture.RowBytes(), rows,
                    static_cast<std::size_t>(count) * mPicture.RowBytes());
        mRows += count;
        return true;
    }
    int Count() const { return mRows; }
    void EndAfterTheFirst() { mEnd = 0; }

private:
    Picture& mPicture;
    int mRows = 0, mEnd = -1;
};

TEST(ResamplerRows, AreThoseOfThePictureInParallel) {
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        const int fromWidth = 1 + static_cast<int>(random() % 200), fromHeight = 1 + static_cast<int>(random() % 900);
        const int width = 1 + static_cast<int>(random() % 200), height = 1 + static_cast<int>(random() % 300);
        const Picture from = MakePicture(kElements[random() % 4], 1 + static_cast<int>(random() % 4), fromWidth,
                                         fromHeight, Pattern::kNoise);
        ResampleOptions options{.filter = kFilters[random() % 7]};
        options.alphaWeighted = random() % 3 == 0;
        options.bounded = random() % 3 == 0;
        const Picture whole = Resampled(from, width, height, options);
        Picture rows = EmptyPicture(from.element, from.channels, width, height);
        RowsOfPicture source(from);
        RowsToPicture sink(rows);
        const int alpha = from.channels % 2 == 0 ? from.channels - 1 : -1;
        ASSERT_TRUE(ResampleRows({from.element, from.channels, alpha}, source, fromWidth, fromHeight, sink, width,
                                 height, options));
        ASSERT_EQ(sink.Count(), height);
        ASSERT_TRUE(rows.bytes == whole.bytes)
            << fromWidth << " x " << fromHeight << " to " << width << " x " << height << ", filter " << options.filter;
    }
}

/// A picture of which the rows under the filter are too many to be kept, where it becomes three rows high.
constexpr int kWide = 2700, kTall = 2400;
Picture TallPicture(ElementType element) {
    return MakePicture(element, 4, kWide, kTall, Pattern::kRamps);
}

TEST(ResamplerRows, RowsThatAreAddedUpAgreeWithThePlainTwin) {
    for (const ElementType element : kElements) {
        const Picture from = TallPicture(element);
        const Picture to = Resampled(from, 30, 3);
        for (int y = 0; y < 3; ++y) {
            for (const int x : {0, 13, 29}) {
                const double expected = PlainValue(from, 30, 3, kResampleMitchell, x, y, 2);
                const bool isWord = element == ElementType::kUInt16, isByte = element == ElementType::kUInt8;
                EXPECT_NEAR(static_cast<double>(to.At(x, y, 2)), expected,
                            isByte   ? 0.51
                            : isWord ? 3.0
                                     : 5e-4)
                    << x << ", " << y;
            }
        }
    }
}

TEST(ResamplerRows, RowsThatAreAddedUpAreThoseOfThePicture) {
    for (const ElementType element : {ElementType::kUInt8, ElementType::kFloat}) {
        const Picture from = TallPicture(element);
        const ResampleOptions options{.alphaWeighted = true, .bounded = true};
        const Picture whole = Resampled(from, 30, 3, options);
        Picture rows = EmptyPicture(element, 4, 30, 3);
        RowsOfPicture source(from);
        RowsToPicture sink(rows);
        ASSERT_TRUE(ResampleRows({element, 4, 3}, source, kWide, kTall, sink, 30, 3, options));
        EXPECT_TRUE(rows.bytes == whole.bytes);
    }
}

TEST(ResamplerRows, RowsThatAreAddedUpKeepTheOptions) {
    Picture from = TallPicture(ElementType::kFloat);
    for (std::size_t i = 0; i < from.Values(); i += 4)
        from.Set(i + 3, i % 8 == 0 ? 0.0F : 1.0F);
    for (std::size_t i = 0; i < from.Values(); i += 8) {  // what is transparent is bright
        for (std::size_t c = 0; c < 3; ++c)
            from.Set(i + c, 1000.0F);
    }
    const Picture to = Resampled(from, 30, 3, {.alphaWeighted = true, .bounded = true});
    for (std::size_t i = 0; i < to.Values(); i += 4)
        EXPECT_LT(to.Value(i), 1.01F) << i;
    from.Set((1200 * kWide + 1350) * 4 + 4, 1e6F);
    from.Set((1200 * kWide + 1350) * 4 + 7, 1.0F);
    const Picture bounded = Resampled(from, 30, 3, {.filter = kResampleLanczos3, .bounded = true});
    for (std::size_t i = 0; i < bounded.Values(); ++i)
        EXPECT_GE(bounded.Value(i), 0.0F) << i;
}

TEST(ResamplerRows, EndWhereTheSourceOrTheSinkEnds) {
    const Picture from = MakePicture(ElementType::kUInt8, 4, 50, 500, Pattern::kRamps);
    Picture to = EmptyPicture(ElementType::kUInt8, 4, 25, 250);
    RowsOfPicture shortSource(from), source(from);
    shortSource.EndAfter(300);
    RowsToPicture sink(to), shortSink(to);
    shortSink.EndAfterTheFirst();
    EXPECT_FALSE(ResampleRows({}, shortSource, 50, 500, sink, 25, 250));
    EXPECT_LT(sink.Count(), 250);
    EXPECT_FALSE(ResampleRows({}, source, 50, 500, shortSink, 25, 250));
}

// --- What is none ----------------------------------------------------------------------------------------------------

TEST(Resampler, RefusesWhatIsNoPicture) {
    std::array<unsigned char, 64> from{}, to{};
    const auto refused = [&](ResamplePixels pixels, std::size_t pitch, int width, int height, int toWidth,
                             ResampleOptions options = {}) {
        return !ResamplePicture(pixels, from.data(), pitch, width, height, to.data(), 16, toWidth, 2, options);
    };
    EXPECT_FALSE(refused({}, 16, 4, 4, 2));
    EXPECT_TRUE(refused({ElementType::kNone, 4}, 16, 4, 4, 2));
    EXPECT_TRUE(refused({ElementType::kUInt8, 0}, 16, 4, 4, 2));
    EXPECT_TRUE(refused({ElementType::kUInt8, 5}, 32, 4, 2, 2));
    EXPECT_TRUE(refused({ElementType::kUInt8, 4, 4}, 16, 4, 4, 2));
    EXPECT_TRUE(refused({}, 15, 4, 4, 2));
    EXPECT_TRUE(refused({}, 16, 0, 4, 2));
    EXPECT_TRUE(refused({}, 16, 4, -1, 2));
    EXPECT_TRUE(refused({}, 16, 4, 4, 0));
    EXPECT_TRUE(refused({}, 16, 4, 4, 5));  // wider than its pitch
    EXPECT_TRUE(refused({}, 16, 4, 4, 2, {.filter = static_cast<EResampleFilter>(7)}));
    EXPECT_FALSE(ResamplePicture({}, nullptr, 16, 4, 4, to.data(), 16, 2, 2));
    EXPECT_EQ(to, (std::array<unsigned char, 64>{}));
}

TEST(Resampler, ResamplesOnManyThreadsAtOnce) {
    const Picture from = MakePicture(ElementType::kUInt8, 4, 900, 700, Pattern::kNoise);
    const Picture once = Resampled(from, 300, 200);
    std::array<Picture, 4> results;
    {
        std::vector<std::jthread> threads;
        for (Picture& result : results)
            threads.emplace_back([&] { result = Resampled(from, 300, 200); });
    }
    for (const Picture& result : results)
        EXPECT_TRUE(result.bytes == once.bytes);
}

}  // namespace
}  // namespace Kavra::Devices
