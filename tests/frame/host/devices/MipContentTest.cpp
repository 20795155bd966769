#include "frame/host/devices/MipTextures.h"

#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::Chain;
using Tests::FactsOf;
using Tests::MipTexture;
using Tests::Noise;
using Tests::ShapeOf;

using Values = std::vector<double>;

MipOptions Keeping(float threshold) {
    MipOptions options;
    options.keepCoverage = threshold;
    return options;
}

// --- Coverage --------------------------------------------------------------------------------------------------------

/// Level 1 of alphas in two squares of four.
Values Alphas(const std::array<double, 4>& left, const std::array<double, 4>& right, float threshold = 0.5F) {
    const Values pixels = {left[0], left[1], right[0], right[1], left[2], left[3], right[2], right[3]};
    return Chain(ShapeOf(kA8, 4, 2), pixels, Keeping(threshold)).Values(1);
}

TEST(MipCoverage, AlphaGrowsJustSoThatTheShareIsSeen) {
    // Two of eight are seen, and one of two comes nearest: 63.75 becomes 127.5, which is 128, and 50 becomes 100.
    EXPECT_EQ(Alphas({255, 0, 0, 0}, {200, 0, 0, 0}), (Values{128, 100}));
}

TEST(MipCoverage, AlphaShrinksJustSoThatTheRestIsNotSeen) {
    // Two of eight are seen, and both means are: 152.5 becomes what is just below 127.5, 153.75 in proportion 128.545.
    EXPECT_EQ(Alphas({120, 120, 120, 255}, {120, 250, 120, 120}), (Values{129, 127}));
}

TEST(MipCoverage, AlphaStaysWhereTheShareIsRight) {
    EXPECT_EQ(Alphas({255, 255, 255, 0}, {0, 0, 0, 0}), (Values{191, 0}));
    EXPECT_EQ(Alphas({0, 0, 0, 0}, {0, 0, 0, 0}), (Values{0, 0}));
    EXPECT_EQ(Alphas({255, 255, 255, 255}, {255, 255, 255, 255}), (Values{255, 255}));
}

TEST(MipCoverage, EqualAlphasAreSeenTogether) {
    EXPECT_EQ(Alphas({255, 0, 0, 0}, {255, 0, 0, 0}), (Values{128, 128}));  // none or both are as near to one
}

TEST(MipCoverage, WhatHasNoAlphaIsNeverSeen) {
    EXPECT_EQ(Alphas({255, 255, 255, 255}, {0, 0, 255, 0}, 1), (Values{255, 64}));
    EXPECT_EQ(Alphas({64, 64, 64, 64}, {0, 0, 0, 0}, 0.25F), (Values{64, 0}));
}

TEST(MipCoverage, NothingIsSeenWhereHardlyAnythingWas) {
    // One of eight, and of one pixel none comes nearest: 75.625 becomes what is just below 50.5.
    const MipTexture texture = Chain(ShapeOf(kA8, 4, 2), Values{255, 50, 50, 50, 50, 50, 50, 50}, Keeping(0.2F));
    EXPECT_EQ(texture.Values(2), Values{50});
}

TEST(MipCoverage, FloatsDoNotGrowBeyondOne) {
    // Three of four are seen, and two of two come nearest: 0.3 becomes the threshold, and 0.6 is 1.
    const MipTexture texture = Chain(ShapeOf(kR32G32B32A32F, 1, 4),
                                     Values{7, 7, 7, 0.6, 7, 7, 7, 0.6, 7, 7, 7, 0.6, 7, 7, 7, 0}, Keeping(0.5F));
    const Values level = texture.Values(1);
    EXPECT_NEAR(level[3], 1, 1e-6);
    EXPECT_NEAR(level[7], 0.5, 1e-6);
    EXPECT_EQ(level[0], 7);
}

/// A cut-out with alpha in its second half: blots with soft edges.
Values Blots(const TextureShape& shape, double full) {
    Values pixels;
    for (int y = 0; y < shape.height; ++y) {
        for (int x = 0; x < shape.width; ++x) {
            const double wave =
                std::sin(x * 0.7 + 2 * std::sin(y * 0.23)) + std::sin(y * 0.61 + 1.7 * std::sin(x * 0.31));
            const double alpha = std::clamp(0.5 + 2 * (wave - 0.6), 0.0, 1.0);
            for (int c = 1; c < FactsOf(shape.format).channels; ++c)
                pixels.push_back(full / 2);
            pixels.push_back(full > 1 ? std::floor(alpha * full + 0.5) : alpha);
        }
    }
    return pixels;
}

double ShareSeen(const Values& pixels, std::size_t channels, float from, double full) {
    double seen = 0;
    for (std::size_t i = channels - 1; i < pixels.size(); i += channels)
        seen += static_cast<float>(pixels[i] / full) >= from ? 1 : 0;
    return seen * static_cast<double>(channels) / static_cast<double>(pixels.size());
}

TEST(MipCoverage, TheShareOfEachLevelIsThatOfTheFirstButForOnePixel) {
    for (const float threshold : {0.25F, 0.5F, 0.8F}) {
        for (const auto& [format, full] : {std::pair{kR8G8B8A8, 255.0},
                                           {kA8, 255.0},
                                           {kR16G16B16A16, 65535.0},
                                           {kR16G16B16A16F, 1.0},
                                           {kR32G32B32A32F, 1.0}}) {
            const TextureShape shape = ShapeOf(format, 200, 150);
            const auto channels = static_cast<std::size_t>(FactsOf(format).channels);
            const Values pixels = Blots(shape, full);
            const double share = ShareSeen(pixels, channels, threshold, full);
            const MipTexture kept = Chain(shape, pixels, Keeping(threshold)), plain = Chain(shape, pixels);
            double worst = 0;
            for (int level = 1; level < shape.levels; ++level) {
                const Values values = kept.Values(level);
                // Means of four bytes have only a thousand values, so that some are equal and seen together.
                const int together = full == 255.0 ? 4 : 1;
                const double one = together * static_cast<double>(channels) / static_cast<double>(values.size());
                EXPECT_NEAR(ShareSeen(values, channels, threshold, full), share, one)
                    << FactsOf(format).name << " " << level;
                worst =
                    std::max(worst, std::abs(ShareSeen(plain.Values(level), channels, threshold, full) - share) / one);
            }
            EXPECT_GT(worst, 5);  // there was something to keep
        }
    }
}

TEST(MipCoverage, ColoursStayAsTheyAre) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 64, 64);
    const Values pixels = Noise(shape);
    MipOptions options = Keeping(0.5F);
    options.alphaWeighted = options.linearLight = true;
    const Values kept = Chain(shape, pixels, options).Values(2);
    options.keepCoverage = 0;
    const Values plain = Chain(shape, pixels, options).Values(2);
    ASSERT_NE(kept, plain);
    for (std::size_t i = 0; i < kept.size(); ++i)
        ASSERT_TRUE(i % 4 == 3 || kept[i] == plain[i]) << i;
}

TEST(MipCoverage, FormatsWithoutAlphaHaveNone) {
    for (const EFormat format : {kL8, kR8G8B8X8, kR16G16F}) {
        const TextureShape shape = ShapeOf(format, 16, 16);
        const Values pixels = Noise(shape);
        EXPECT_EQ(Chain(shape, pixels, Keeping(0.5F)).bytes, Chain(shape, pixels).bytes);
    }
}

TEST(MipCoverage, WhatIsNoNumberIsNotSeen) {
    // One of four is seen, and of two one comes nearest: the one that can be.
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const Values four = {0, 0, 0, kNaN, 0, 0, 0, 1, 0, 0, 0, 0.25, 0, 0, 0, 0.25};
    const Values level = Chain(ShapeOf(kR32G32B32A32F, 4, 1), four, Keeping(0.5F)).Values(1);
    EXPECT_TRUE(std::isnan(level[3]));
    EXPECT_EQ(level[7], 0.5);
}

TEST(MipCoverage, FacesAreCountedTogether) {
    // A quarter of one face is seen of six: 1 of 24 pixels, and of 6 none, though of its own face it would be one of one.
    const TextureShape shape = ShapeOf(kA8, 2, 2, 1, kTextureCube);
    Values pixels(24, 0.0);
    for (int i = 0; i < 4; ++i)
        pixels[static_cast<std::size_t>(i)] = i == 0 ? 255 : 120;
    EXPECT_EQ(Chain(shape, pixels, Keeping(0.5F)).Values(1), Values{127});
}

// --- Normals ---------------------------------------------------------------------------------------------------------

MipOptions Normals(EMipContent content = kMipNormals) {
    MipOptions options;
    options.content = content;
    return options;
}

constexpr double kHalfRoot = 0.70710678;

void ExpectNear(const Values& values, const Values& expected, double allowed = 1e-6) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], expected[i], allowed) << i;
}

TEST(MipNormals, MeansAreMadeUnitAgain) {
    const MipTexture texture = Chain(ShapeOf(kR32G32B32F, 2, 1), Values{1, 0, 0, 0, 1, 0}, Normals());
    ExpectNear(texture.Values(1), {kHalfRoot, kHalfRoot, 0});
    // 255, 127.5 and 127.5 are x; 0.7071 is 217.66 of 255.
    const MipTexture bytes = Chain(ShapeOf(kR8G8B8A8, 2, 1), Values{255, 128, 128, 9, 128, 255, 128, 20}, Normals());
    ExpectNear(bytes.Values(1), {218, 218, 128, 15}, 0);
}

TEST(MipNormals, VectorsThatCancelOutLookAhead) {
    ExpectNear(Chain(ShapeOf(kR32G32B32F, 2, 1), Values{1, 0, 0, -1, 0, 0}, Normals()).Values(1), {0, 0, 1}, 0);
    ExpectNear(Chain(ShapeOf(kR8G8B8A8, 1, 2), Values{128, 128, 128, 7, 128, 128, 128, 7}, Normals()).Values(1),
               {128, 128, 255, 7}, 0);
    ExpectNear(Chain(ShapeOf(kB8G8R8A8, 1, 2), Values{127, 128, 127, 7, 128, 127, 128, 7}, Normals()).Values(1),
               {255, 128, 128, 7}, 0);
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(),
                     kInfinity = std::numeric_limits<double>::infinity();
    ExpectNear(Chain(ShapeOf(kR32G32B32F, 2, 1), Values{1, 0, 0, 1, kNaN, 0}, Normals()).Values(1), {0, 0, 1}, 0);
    ExpectNear(Chain(ShapeOf(kR32G32B32F, 2, 1), Values{1, 0, 0, 1, kInfinity, 0}, Normals()).Values(1), {0, 0, 1}, 0);
}

TEST(MipNormals, VectorsThatDifferCountLessInTheLevelsToCome) {
    const Values four = {1, 0, 0, -1, 0, 0, 0, 1, 0, 0, 1, 0};
    const MipTexture texture = Chain(ShapeOf(kR32G32B32F, 4, 1), four, Normals());
    ExpectNear(texture.Values(1), {0, 0, 1, 0, 1, 0}, 0);
    ExpectNear(texture.Values(2), {0, 1, 0}, 0);
}

TEST(MipNormals, OfTwoChannelsTheThirdIsWhatMakesThemUnit) {
    for (const EMipContent content : {kMipNormals, kMipNormalsXY}) {
        // (0.6, 0, 0.8) and (0, 0.6, 0.8): the mean is 0.905539 long.
        ExpectNear(Chain(ShapeOf(kR32G32F, 2, 1), Values{0.6, 0, 0, 0.6}, Normals(content)).Values(1),
                   {0.331295, 0.331295});
        ExpectNear(Chain(ShapeOf(kR32G32F, 1, 2), Values{0.6, 0, -0.6, 0}, Normals(content)).Values(1), {0, 0});
        ExpectNear(Chain(ShapeOf(kR32G32F, 1, 2), Values{2, 0, 2, 0}, Normals(content)).Values(1), {1, 0});
    }
    // 65535 and 32768 are (1, 0), and so is what stands between them.
    ExpectNear(Chain(ShapeOf(kR16G16, 2, 1), Values{65535, 32768, 65535, 32767}, Normals()).Values(1), {65535, 32768},
               0);
}

TEST(MipNormals, OfMoreChannelsTheThirdIsMadeWhereThatIsAsked) {
    const Values two = {0.6, 0, 5, 1, 0, 0.6, -5, 3};
    ExpectNear(Chain(ShapeOf(kR32G32B32A32F, 2, 1), two, Normals(kMipNormalsXY)).Values(1),
               {0.331295, 0.331295, 0.883452, 2});
    // Blue first: (1, 0) by its last and second byte.
    ExpectNear(
        Chain(ShapeOf(kB8G8R8X8, 2, 1), Values{3, 128, 255, 10, 200, 127, 255, 20}, Normals(kMipNormalsXY)).Values(1),
        {128, 128, 255, 15}, 1);
}

TEST(MipNormals, AllLevelsAreUnitButForRounding) {
    for (const auto& [format, full] : {std::pair{kR8G8B8A8, 255.0}, {kR16G16B16A16, 65535.0}, {kR16G16B16A16F, 0.0}}) {
        const TextureShape shape = ShapeOf(format, 45, 32);
        for (const EResampleFilter filter : {kResampleBox, kResampleLanczos3}) {
            MipOptions options = Normals();
            options.filter = filter;
            const MipTexture texture = Chain(shape, Noise(shape), options);
            for (int level = 1; level < shape.levels; ++level) {
                const Values values = texture.Values(level);
                for (std::size_t i = 0; i < values.size(); i += 4) {
                    double square = 0;
                    for (std::size_t part = i; part < i + 3; ++part) {
                        const double v = full > 0 ? values[part] * 2 / full - 1 : values[part];
                        square += v * v;
                    }
                    // Half a step of each part.
                    ASSERT_NEAR(std::sqrt(square), 1, full > 0 ? 1.74 / full : 5e-4) << FactsOf(format).name << level;
                }
            }
        }
    }
}

TEST(MipNormals, NeitherCurveNorAlphaChangesVectors) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 16, 16);
    const Values pixels = Noise(shape);
    MipOptions options = Normals();
    const MipTexture plain = Chain(shape, pixels, options);
    options.linearLight = options.alphaWeighted = true;
    EXPECT_EQ(Chain(shape, pixels, options).bytes, plain.bytes);
}

}  // namespace
}  // namespace Kavra::Devices
