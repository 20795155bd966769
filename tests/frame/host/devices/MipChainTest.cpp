#include "frame/host/devices/EveryVectorWidth.h"
#include "frame/host/devices/MipTextures.h"

#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <thread>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::ByteVector;
using Tests::Chain;
using Tests::FactsOf;
using Tests::MipTexture;
using Tests::Noise;
using Tests::Packed;
using Tests::PixelFormats;
using Tests::ShapeOf;
using Tests::TwinChain;

using Values = std::vector<double>;

constexpr std::array kFilters = {kResampleBox, kResampleTriangle, kResampleMitchell, kResampleCatmullRom,
                                 kResampleLanczos3};

MipOptions WithFilter(EResampleFilter filter, EMipEdges edges = kMipClamp) {
    MipOptions options;
    options.filter = filter;
    options.edges = edges;
    return options;
}

MipOptions Linear() {
    MipOptions options;
    options.linearLight = true;
    return options;
}

MipOptions Weighted() {
    MipOptions options;
    options.alphaWeighted = true;
    return options;
}

/// Level 1 of floats of one channel.
Values Halved(int width, int height, const Values& pixels, const MipOptions& options = {}, int depth = 1) {
    return Chain(ShapeOf(kR32F, width, height, depth), pixels, options).Values(1);
}

// --- Sizes -----------------------------------------------------------------------------------------------------------

TEST(MipChain, AChosenNumberOfLevelsAreTheFirstOfAll) {
    TextureShape shape = ShapeOf(kR8G8B8A8, 37, 16);
    const Values pixels = Noise(shape);
    const MipTexture all = Chain(shape, pixels);
    shape.levels = 3;
    const MipTexture three = Chain(shape, pixels);
    for (int level = 0; level < 3; ++level)
        EXPECT_EQ(three.Level(level), all.Level(level));
}

TEST(MipChain, LevelZeroIsCopied) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 3, 5);
    const ByteVector pixels = Packed(shape.format, Noise(shape));
    EXPECT_EQ(Chain(shape, pixels, Linear()).Level(0), pixels);
    EXPECT_EQ(Chain(ShapeOf(kR8, 1, 1), ByteVector{77}).bytes, ByteVector{77});
}

// --- By hand ---------------------------------------------------------------------------------------------------------

TEST(MipChain, BlackAndWhiteAreAMiddleGreyOfLightWhereColoursAreSrgb) {
    // Half of the light is 0.735357 by the curve, and 187.516 of 255.
    const TextureShape shape = ShapeOf(kL8, 2, 2);
    EXPECT_EQ(Chain(shape, Values{0, 255, 255, 0}, Linear()).Values(1), Values{188});
    EXPECT_EQ(Chain(shape, Values{0, 255, 255, 0}).Values(1), Values{128});
    EXPECT_EQ(Chain(ShapeOf(kL16, 2, 1), Values{0, 65535}, Linear()).Values(1), Values{48192});
}

TEST(MipChain, AlphaHasNoCurve) {
    const Values two = {0, 0, 0, 0, 255, 255, 255, 255};
    EXPECT_EQ(Chain(ShapeOf(kR8G8B8A8, 2, 1), two, Linear()).Values(1), (Values{188, 188, 188, 128}));
    EXPECT_EQ(Chain(ShapeOf(kB8G8R8A8, 2, 1), two, Linear()).Values(1), (Values{188, 188, 188, 128}));
    EXPECT_EQ(Chain(ShapeOf(kA8, 2, 1), Values{0, 255}, Linear()).Values(1), Values{128});
}

TEST(MipChain, TransparentPixelsLendNoColourWhereAlphaCounts) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 2, 2);
    const Values one = {200, 0, 0, 255, 0, 100, 0, 0, 0, 100, 0, 0, 0, 100, 0, 0};
    EXPECT_EQ(Chain(shape, one, Weighted()).Values(1), (Values{200, 0, 0, 64}));
    EXPECT_EQ(Chain(shape, one).Values(1), (Values{50, 75, 0, 64}));
    // Half as opaque counts half as much.
    const Values two = {90, 0, 0, 200, 0, 90, 0, 100};
    EXPECT_EQ(Chain(ShapeOf(kR8G8B8A8, 2, 1), two, Weighted()).Values(1), (Values{60, 30, 0, 150}));
}

TEST(MipChain, WhollyTransparentColoursAreTheMean) {
    const Values two = {100, 0, 20, 0, 50, 10, 20, 0};
    EXPECT_EQ(Chain(ShapeOf(kR8G8B8A8, 2, 1), two, Weighted()).Values(1), (Values{75, 5, 20, 0}));
}

TEST(MipChain, ABoxTakesOfAPixelThePartThatItCovers) {
    const MipTexture five = Chain(ShapeOf(kR32F, 5, 1), Values{10, 20, 30, 40, 50});
    EXPECT_EQ(five.Values(1), (Values{18, 42}));  // (2 x 10 + 2 x 20 + 30) / 5
    EXPECT_EQ(five.Values(2), Values{30});
    const Values seven = Halved(1, 7, {7, 0, 7, 0, 14, 0, 0});
    EXPECT_NEAR(seven[0], 3 + 1, 1e-6);      // weights of 3, 3 and 1 sevenths
    EXPECT_NEAR(seven[1], 2 + 0 + 4, 1e-6);  // 2, 3 and 2
    EXPECT_NEAR(seven[2], 2, 1e-6);          // 1, 3 and 3
    EXPECT_EQ(Halved(3, 1, {3, 6, 9}), Values{6});
}

TEST(MipChain, TheLastLevelOfABoxIsTheMeanOfAll) {
    for (const auto& [width, height] : {std::array{64, 16}, {5, 5}, {3, 3}}) {
        const TextureShape shape = ShapeOf(kR32F, width, height);
        const Values pixels = Noise(shape);
        double sum = 0;
        for (const double value : pixels)
            sum += value;
        EXPECT_NEAR(Chain(shape, pixels).Values(shape.levels - 1)[0], sum / static_cast<double>(pixels.size()), 1e-6);
    }
}

TEST(MipChain, FiltersReachOverTheEdgeToTheOtherSideOfATile) {
    // Weights of 1, 3, 3 and 1 eighths.
    EXPECT_EQ(Halved(4, 1, {8, 0, 0, 0}, WithFilter(kResampleTriangle)), (Values{4, 0}));
    EXPECT_EQ(Halved(4, 1, {8, 0, 0, 0}, WithFilter(kResampleTriangle, kMipWrap)), (Values{3, 1}));
    EXPECT_EQ(Halved(1, 4, {8, 0, 0, 0}, WithFilter(kResampleTriangle, kMipWrap)), (Values{3, 1}));
    EXPECT_EQ(Halved(1, 1, {8, 0, 0, 0}, WithFilter(kResampleTriangle, kMipWrap), 4), (Values{3, 1}));
    EXPECT_EQ(Halved(1, 1, {8, 0, 0, 0}, WithFilter(kResampleTriangle), 4), (Values{4, 0}));
}

TEST(MipChain, TexturesOnePixelWideAreFilteredAlongTheOtherSide) {
    const MipTexture column = Chain(ShapeOf(kR32F, 1, 4), Values{1, 2, 3, 6});
    EXPECT_EQ(column.Values(1), (Values{1.5, 4.5}));
    EXPECT_EQ(column.Values(2), Values{3});
    for (const EResampleFilter filter : kFilters) {
        const Values flat(300, 0.25);
        for (const auto& shape : {ShapeOf(kR32F, 300, 1), ShapeOf(kR32F, 1, 300), ShapeOf(kR32F, 1, 1, 300)}) {
            const MipTexture texture = Chain(shape, flat, WithFilter(filter, kMipWrap));
            for (int level = 0; level < shape.levels; ++level)
                for (const double value : texture.Values(level))
                    ASSERT_NEAR(value, 0.25, 1e-6) << filter;
        }
    }
}

TEST(MipChain, VolumesAreFilteredInThreeDirections) {
    EXPECT_EQ(Halved(2, 2, {1, 2, 3, 4, 5, 6, 7, 8}, {}, 2), Values{4.5});
    const MipTexture deep = Chain(ShapeOf(kR32F, 2, 1, 4), Values{0, 8, 4, 4, 2, 6, 1, 1});
    EXPECT_EQ(deep.Values(1), (Values{4, 2.5}));  // of two slices each
    EXPECT_EQ(deep.Values(2), Values{3.25});
    EXPECT_EQ(Halved(1, 1, {3, 6, 9}, {}, 3), Values{6});
}

TEST(MipChain, ElementsOfAnArrayHaveTheirOwnLevels) {
    TextureShape shape = ShapeOf(kL8, 2, 2);
    shape.elements = 2;
    const MipTexture both = Chain(shape, Values{10, 10, 20, 20, 100, 100, 200, 200});
    EXPECT_EQ(both.bytes, (ByteVector{10, 10, 20, 20, 15, 100, 100, 200, 200, 150}));
}

TEST(MipChain, BoundedLightHasNoRings) {
    for (const EFormat format : {kR32F, kR16F, kR32G32B32F}) {
        const auto channels = static_cast<std::size_t>(FactsOf(format).channels);
        for (const TextureShape& shape : {ShapeOf(format, 64, 64), ShapeOf(format, 16, 16, 16)}) {
            Values pixels(4096 * channels, 0.25);
            std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(2080 * channels), channels, 500.0);
            MipOptions options = WithFilter(kResampleLanczos3);
            const Values rings = Chain(shape, pixels, options).Values(1);
            EXPECT_LT(*std::ranges::min_element(rings), 0);
            options.bounded = true;
            const MipTexture bounded = Chain(shape, pixels, options);
            for (int level = 1; level < shape.levels; ++level) {
                const Values values = bounded.Values(level);
                EXPECT_GE(*std::ranges::min_element(values), 0.25);
                EXPECT_LE(*std::ranges::max_element(values), 500);
            }
            const Values first = bounded.Values(1);
            EXPECT_GT(*std::ranges::max_element(first), 1);
        }
    }
    // Integers keep the overshoot.
    const TextureShape shape = ShapeOf(kL8, 32, 32);
    const Values pixels = Noise(shape);
    MipOptions options = WithFilter(kResampleLanczos3);
    const MipTexture crisp = Chain(shape, pixels, options);
    options.bounded = true;
    EXPECT_EQ(Chain(shape, pixels, options).bytes, crisp.bytes);
}

// --- The twin --------------------------------------------------------------------------------------------------------

/// Integers within half a step and a little, others within what single precision, or that of halves, gives. Colours that
/// hardly anything opaque stands behind have no digits.
void ExpectAsTheTwin(const TextureShape& shape, const MipOptions& options) {
    const Values pixels = Noise(shape);
    const MipTexture texture = Chain(shape, pixels, options);
    const auto twin = TwinChain(shape, pixels, options);
    const FormatFacts facts = FactsOf(shape.format);
    const bool isByte = facts.element == ElementType::kUInt8, isWord = facts.element == ElementType::kUInt16;
    const double full = isByte ? 255 : isWord ? 65535 : 0;
    for (int level = 1; level < shape.levels; ++level) {
        const Values values = texture.Values(level);
        for (std::size_t i = 0; i < values.size(); ++i) {
            double expected = twin[static_cast<std::size_t>(level)][i];
            if (full > 0) expected = std::clamp(expected, 0.0, full);
            const double size = std::max(1.0, std::abs(expected));
            const double allowed = isByte                                ? 0.501
                                   : isWord                              ? 0.56
                                   : facts.element == ElementType::kHalf ? 6e-4 * size
                                                                         : 2e-6 * size;
            ASSERT_NEAR(values[i], expected, allowed)
                << facts.name << " filter " << options.filter << " level " << level << " value " << i;
        }
    }
}

TEST(MipChain, AgreesWithThePlainTwinInEveryFormat) {
    for (const EFormat format : PixelFormats()) {
        for (const EResampleFilter filter : kFilters) {
            ExpectAsTheTwin(ShapeOf(format, 23, 14), WithFilter(filter));
            ExpectAsTheTwin(ShapeOf(format, 16, 9), WithFilter(filter, kMipWrap));
        }
        ExpectAsTheTwin(ShapeOf(format, 7, 6, 5), WithFilter(kResampleMitchell));
        ExpectAsTheTwin(ShapeOf(format, 6, 5, 9), WithFilter(kResampleLanczos3, kMipWrap));
        ExpectAsTheTwin(ShapeOf(format, 16, 16), Linear());
    }
}

TEST(MipChain, AgreesWithThePlainTwinWhereAlphaCounts) {
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kR16G16B16A16, kA8}) {
        MipOptions options = Weighted();
        ExpectAsTheTwin(ShapeOf(format, 16, 8), options);
        options.linearLight = true;
        ExpectAsTheTwin(ShapeOf(format, 13, 21), options);
    }
}

TEST(MipChain, LargePicturesAgreeWithThePlainTwinToo) {
    // Wider than what is worked on at a time, in rows and in columns.
    for (const EResampleFilter filter : {kResampleBox, kResampleLanczos3}) {
        ExpectAsTheTwin(ShapeOf(kR8G8B8A8, 301, 90), WithFilter(filter, kMipWrap));
        ExpectAsTheTwin(ShapeOf(kR32G32B32F, 190, 205), WithFilter(filter));
        ExpectAsTheTwin(ShapeOf(kR16, 1025, 33), WithFilter(filter));
    }
}

TEST(MipChain, WideFiltersAreAsCrispAsOneOverLevelZero) {
    // Each filter loses its own of the contrast, but not again from level to level.
    constexpr int kSide = 128;
    const TextureShape shape = ShapeOf(kR32F, kSide, kSide);
    const Values pixels = Noise(shape);
    std::vector<float> floats(pixels.begin(), pixels.end());
    const auto contrast = [](const auto& values) {
        double sum = 0;
        for (std::size_t i = 1; i < values.size(); ++i)
            sum += std::pow(static_cast<double>(values[i]) - static_cast<double>(values[i - 1]), 2);
        return std::sqrt(sum);
    };
    for (const EResampleFilter filter : {kResampleTriangle, kResampleMitchell, kResampleLanczos3}) {
        const MipTexture texture = Chain(shape, pixels, WithFilter(filter));
        for (int level = 1; level <= 4; ++level) {
            const int side = kSide >> level;
            std::vector<float> direct(static_cast<std::size_t>(side * side));
            ASSERT_TRUE(ResamplePicture({ElementType::kFloat, 1, -1}, floats.data(), kSide * sizeof(float), kSide,
                                        kSide, direct.data(), static_cast<std::size_t>(side) * sizeof(float), side,
                                        side, {.filter = filter}));
            EXPECT_NEAR(contrast(texture.Values(level)) / contrast(direct), 1, 0.05) << filter << " " << level;
        }
    }
}

TEST(MipChain, ColoursThatStayTheSameKeepTheirNumbersUnderTheCurve) {
    // Every integer, each as a square of four.
    for (const auto& [format, side] : {std::pair{kL8, 16}, {kL16, 256}}) {
        const TextureShape shape = ShapeOf(format, 2 * side, 2 * side);
        Values pixels, all(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
        std::iota(all.begin(), all.end(), 0.0);
        for (int y = 0; y < 2 * side; ++y)
            for (int x = 0; x < 2 * side; ++x)
                pixels.push_back(all[static_cast<std::size_t>(y / 2) * static_cast<std::size_t>(side) +
                                     static_cast<std::size_t>(x / 2)]);
        EXPECT_EQ(Chain(shape, pixels, Linear()).Values(1), all);
    }
}

// --- The same on every machine ---------------------------------------------------------------------------------------

std::vector<MipOptions> ManyOptions() {
    std::vector<MipOptions> all;
    for (const EResampleFilter filter : kFilters) {
        MipOptions options = WithFilter(filter, kMipWrap);
        all.push_back(options);
        options.linearLight = options.alphaWeighted = true;
        options.keepCoverage = 0.4F;
        options.bounded = true;
        all.push_back(options);
    }
    return all;
}

TEST(MipChain, EveryVectorWidthGivesTheSameBytes) {
    for (const EFormat format : PixelFormats()) {
        for (const TextureShape& shape : {ShapeOf(format, 71, 30), ShapeOf(format, 9, 11, 6)}) {
            const ByteVector pixels = Packed(format, Noise(shape));
            for (const MipOptions& options : ManyOptions()) {
                const MipTexture expected = Chain(shape, pixels, options);
                Tests::ForEveryVectorWidth([&] { ASSERT_EQ(Chain(shape, pixels, options).bytes, expected.bytes); });
            }
        }
    }
}

TEST(MipChain, AnyNumberOfThreadsGivesTheSameBytes) {
    const TextureShape shape = ShapeOf(kR16G16B16A16F, 517, 300);
    const ByteVector pixels = Packed(shape.format, Noise(shape));
    for (const MipOptions& options : ManyOptions()) {
        const MipTexture many = Chain(shape, pixels, options);
        const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
        ASSERT_EQ(Chain(shape, pixels, options).bytes, many.bytes);
    }
}

TEST(MipChain, ThreadsMakeChainsSideBySide) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 200, 150);
    const Values pixels = Noise(shape);
    const MipTexture expected = Chain(shape, pixels, Linear());
    std::array<ByteVector, 3> results;
    {
        std::vector<std::jthread> threads;
        threads.reserve(results.size());
        for (ByteVector& result : results)
            threads.emplace_back([&] { result = Chain(shape, pixels, Linear()).bytes; });
    }
    for (const ByteVector& result : results)
        EXPECT_EQ(result, expected.bytes);
}

}  // namespace
}  // namespace Kavra::Devices
