// The arithmetic of colours: curves, alpha, backgrounds and tone maps, each against its published formula.

#include "ColourChange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace Kavra::App;
using namespace Kavra::Devices;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr Transfer kLinear{.kind = kTransferLinear};
constexpr Transfer kSrgb{};

/// IEC 61966-2-1.
double Encoded(double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

Pixel Through(const ColourChange& change, Pixel pixel, ColourFindings* findings = nullptr) {
    ColourFindings ignored;
    ColourSteps(change, 0).Run({&pixel, 1}, findings != nullptr ? *findings : ignored);
    return pixel;
}

void ExpectNear(const Pixel& pixel, const Pixel& expected) {
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(pixel[i], expected[i], 2e-6) << i;
}

}  // namespace

TEST(Transfer, TheCurveOfSrgbIsThatOfItsStandard) {
    for (int i = 0; i <= 100000; ++i) {
        const double light = i / 100000.0;
        ASSERT_NEAR(EncodeSrgb(static_cast<float>(light)), Encoded(light), 1e-6) << light;
    }
    EXPECT_EQ(EncodeSrgb(0), 0);
    EXPECT_EQ(EncodeSrgb(1), 1);
}

TEST(Transfer, TheInverseTakesEveryIntegerOf16BitsBack) {
    for (int i = 0; i <= 65535; ++i) {
        const float back = EncodeSrgb(DecodeSrgb(static_cast<float>(i) / 65535));
        ASSERT_EQ(std::lround(static_cast<double>(back) * 65535), i);
    }
}

TEST(Transfer, TheCurveRises) {
    float last = 0;
    for (float light = 0; light < 1; light = std::nextafter(light * 1.00001F, 2.0F)) {
        const float value = EncodeSrgb(light);
        ASSERT_GE(value, last) << light;
        last = value;
    }
}

TEST(Transfer, WhatNoScreenShowsIsBlackOrWhite) {
    EXPECT_EQ(EncodeSrgb(-1), 0);
    EXPECT_EQ(EncodeSrgb(kNan), 0);
    EXPECT_EQ(EncodeSrgb(-kInf), 0);
    EXPECT_EQ(EncodeSrgb(kInf), 1);
    EXPECT_EQ(EncodeSrgb(1.5F), 1);
    EXPECT_GT(EncodeSrgb(1e-30F), 0);
}

TEST(Transfer, APowerIsDecodedByItsExponent) {
    const Transfer square{.kind = kTransferGamma, .gamma = 2};
    EXPECT_FLOAT_EQ(Decode(square, 0.5F), 0.25F);
    EXPECT_FLOAT_EQ(Decode(square, -0.5F), -0.5F);
    EXPECT_TRUE(std::isnan(Decode(square, kNan)));
    EXPECT_FALSE(square.IsForDisplay());
    EXPECT_TRUE((Transfer{.kind = kTransferGamma, .gamma = 1 / 0.45455}.IsForDisplay()));
}

TEST(ToneMap, TheFilmicCurveIsHables) {
    // A 0.15, B 0.5, C 0.1, D 0.2, E 0.02, F 0.3, W 11.2, bias 2.
    EXPECT_NEAR(Filmic(0.18F), 0.128338, 1e-5);
    EXPECT_NEAR(Filmic(1), 0.492919, 1e-5);
    EXPECT_FLOAT_EQ(Filmic(5.6F), 1);
    EXPECT_FLOAT_EQ(Filmic(kInf), 1);
    EXPECT_NEAR(Filmic(0), 0, 1e-7);
}

TEST(ColourSteps, NothingToDoChangesNoBit) {
    const Pixel odd = {-3, kInf, 1e-42F, -0.5F};
    EXPECT_EQ(Through({}, odd), odd);
    EXPECT_TRUE(ColourChange{}.IsNothing());
}

TEST(ColourSteps, PremultipliedLightIsDividedBeforeTheCurve) {
    const ColourChange change{
        .from = kLinear, .to = kSrgb, .alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaStraight};
    ExpectNear(Through(change, {0.125F, 0.25F, 0.5F, 0.5F}),
               {static_cast<float>(Encoded(0.25)), static_cast<float>(Encoded(0.5)), 1, 0.5F});
}

TEST(ColourSteps, StraightColoursBecomeLightBeforeTheyAreMultiplied) {
    const ColourChange change{
        .from = kSrgb, .to = kLinear, .alphaFrom = kAlphaStraight, .alphaTo = kAlphaPremultiplied};
    const auto half = static_cast<float>(Encoded(0.5));
    ExpectNear(Through(change, {half, 1, 0, 0.25F}), {0.125F, 0.25F, 0, 0.25F});
    ExpectNear(Through(change, {half, 1, 0, 0}), {0, 0, 0, 0});
}

// As TIFF files of 8 bits have them: multiplied as they are stored.
TEST(ColourSteps, EncodedColoursAreDividedAsTheyAreEncoded) {
    const ColourChange straight{.alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaStraight};
    ExpectNear(Through(straight, {0.2F, 0.1F, 0, 0.5F}), {0.4F, 0.2F, 0, 0.5F});
    const ColourChange light{
        .from = kSrgb, .to = kLinear, .alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaPremultiplied};
    const auto half = static_cast<float>(Encoded(0.5));
    ExpectNear(Through(light, {half / 4, 0, 0.25F, 0.25F}), {0.125F, 0, 0.25F, 0.25F});
}

TEST(ColourSteps, AnAlphaThatIsNoneStillGivesSaneColours) {
    const ColourChange change{
        .from = kLinear, .to = kLinear, .alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaStraight};
    ExpectNear(Through(change, {0.5F, 0.25F, 0, 0}), {0.5F, 0.25F, 0, 0});
    ExpectNear(Through(change, {0.5F, 0.25F, 0, -1}), {0.5F, 0.25F, 0, -1});
    ExpectNear(Through(change, {0.5F, 0.25F, 0, 1.5F}), {0.5F, 0.25F, 0, 1.5F});
    const Pixel unknown = Through(change, {0.5F, 0.25F, 0, kNan});
    EXPECT_EQ(unknown[0], 0.5F);
    const Pixel tiny = Through(change, {1e30F, 0, 0, 1e-30F});
    EXPECT_EQ(tiny[0], std::numeric_limits<float>::max());
    const Pixel infinite = Through(change, {kInf, 0, 0, 0.5F});
    EXPECT_EQ(infinite[0], std::numeric_limits<float>::max());
}

TEST(ColourSteps, LightWithoutAlphaIsAddedToABackground) {
    ColourChange change{.from = kLinear, .to = kLinear, .alphaFrom = kAlphaPremultiplied};
    change.background = Light{0.25F, 0.5F, 0};
    ExpectNear(Through(change, {0.5F, 0, 0, 0}), {0.75F, 0.5F, 0, 1});
    ExpectNear(Through(change, {0.5F, 0, 0, 0.5F}), {0.625F, 0.25F, 0, 1});
    change.from = kSrgb;  // which takes a division on its way
    ExpectNear(Through(change, {static_cast<float>(Encoded(0.5)), 0, 0, 0}), {0.75F, 0.5F, 0, 1});
}

TEST(ColourSteps, ABackgroundShowsThroughAsLightMixes) {
    ColourChange change{.from = kSrgb, .to = kSrgb, .alphaFrom = kAlphaStraight};
    change.background = Light{1, 1, 1};
    const auto half = static_cast<float>(Encoded(0.5));
    ExpectNear(Through(change, {1, 0, 0, 0.5F}), {1, half, half, 1});
    ExpectNear(Through(change, {1, 0, 0, 0}), {1, 1, 1, 1});
    ExpectNear(Through(change, {half, 0, 0, 1}), {half, 0, 0, 1});
}

TEST(ColourSteps, ADroppedAlphaIsOpaqueAndColoursStay) {
    ColourChange change;
    change.dropsAlpha = true;
    ExpectNear(Through(change, {0.3F, 0.2F, 0.1F, 0}), {0.3F, 0.2F, 0.1F, 1});
}

TEST(ColourSteps, BrightnessIsOfLight) {
    ColourChange change{.from = kSrgb, .to = kSrgb};
    change.brightness = 2;
    ExpectNear(Through(change, {static_cast<float>(Encoded(0.25)), 0, 1, 1}),
               {static_cast<float>(Encoded(0.5)), 0, 1, 1});
    ColourChange premultiplied{
        .from = kLinear, .to = kLinear, .alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaPremultiplied};
    premultiplied.brightness = 2;
    ExpectNear(Through(premultiplied, {0.25F, 8, -1, 0.5F}), {0.5F, 16, -2, 0.5F});
}

TEST(ColourSteps, IntegersTakeTheSameWayByTheirTable) {
    const ColourChange change{.from = kSrgb, .to = kLinear};
    for (const unsigned max : {255U, 65535U}) {
        const ColourSteps steps(change, max);
        ColourFindings ignored;
        for (unsigned i = 0; i <= max; ++i) {
            const float value = static_cast<float>(i) / static_cast<float>(max);
            Pixel pixel = {value, 0, 1, 1};
            steps.Run({&pixel, 1}, ignored);
            ASSERT_EQ(pixel[0], DecodeSrgb(value));
        }
    }
}

TEST(ColourSteps, WhatIsBrighterThanWhiteAndSeenIsCounted) {
    const ColourChange change{
        .from = kLinear, .to = kSrgb, .alphaFrom = kAlphaPremultiplied, .alphaTo = kAlphaStraight};
    ColourFindings findings;
    for (const Pixel& pixel : {Pixel{1, 1, 1, 1}, Pixel{2, 0, 0, 1}, Pixel{0.6F, 0, 0, 0.5F}, Pixel{0.4F, 0, 0, 0.5F}})
        Through(change, pixel, &findings);
    EXPECT_EQ(findings.pixels, 4U);
    EXPECT_EQ(findings.bright, 2U);
    EXPECT_EQ(findings.glowing, 0U);
    Through(change, {5, 0, 0, 0}, &findings);
    EXPECT_EQ(findings.bright, 2U);
    EXPECT_EQ(findings.glowing, 1U);
    Through(change, {0.0005F, 0, 0, 0.001F}, &findings);  // an edge: nothing that 8 bits would show
    EXPECT_EQ(findings.glowing, 1U);
}

TEST(ColourSteps, ReinhardsOperatorIsEquation4OfHisPaper) {
    ColourChange change{.from = kLinear, .to = kLinear};
    change.tone = ToneMap::kReinhard;
    ColourSteps steps(change, 0);
    ASSERT_TRUE(steps.LooksFirst());
    std::vector<Pixel> pixels = {{0.1F, 0.1F, 0.1F, 1}, {10, 10, 10, 1}, {kNan, -1, 0, 1}};
    std::vector<Pixel> seen = pixels;
    Exposure exposure;
    float brightest = 0;
    steps.Look(seen, exposure, brightest);
    steps.SetExposure(exposure, brightest);
    ColourFindings ignored;
    steps.Run(pixels, ignored);
    const auto mapped = [](double luminance) {
        const double l = 0.18 * luminance / std::sqrt(0.1 * 10), white = 0.18 * 10 / std::sqrt(0.1 * 10);
        return static_cast<float>(l * (1 + l / (white * white)) / (1 + l));
    };
    ExpectNear(pixels[0], {mapped(0.1), mapped(0.1), mapped(0.1), 1});
    ExpectNear(pixels[1], {1, 1, 1, 1});
    ExpectNear(pixels[2], {0, 0, 0, 1});
}
