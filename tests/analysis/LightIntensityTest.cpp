#include "analysis/TestMap.h"
#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>

namespace Kavra::Tests {
namespace {

using namespace Devices;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Answer {
    vec3<float> intensity;
    vec3<float> average;
};

Answer Ask(const ImageDescription& desc, const void* data, bool upperHemisphere) {
    OIIOImageHandler handler;
    Answer answer{{}, {7, 8, 9}};
    answer.intensity = handler.GetIBLIntensity(desc, data, upperHemisphere, &answer.average);
    return answer;
}

Answer Ask(const TestMap& map, bool upperHemisphere = false) {
    return Ask(map.desc, map.Data(), upperHemisphere);
}

std::array<std::uint32_t, 6> Bits(const Answer& answer) {
    return std::bit_cast<std::array<std::uint32_t, 6>>(answer);
}

void ExpectIntensity(const Answer& answer, float x, float y, float z) {
    EXPECT_EQ(answer.intensity.x, x);
    EXPECT_EQ(answer.intensity.y, y);
    EXPECT_EQ(answer.intensity.z, z);
}

void ExpectRefused(const Answer& answer) {
    ExpectIntensity(answer, -999.0F, -999.0F, -999.0F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(answer.intensity.x), 0xC479C000U);
    EXPECT_EQ(answer.average.x, 7);
    EXPECT_EQ(answer.average.y, 8);
    EXPECT_EQ(answer.average.z, 9);
}

void ExpectAllNaN(const Answer& answer) {
    for (const std::uint32_t bits : Bits(answer))
        EXPECT_TRUE(std::isnan(std::bit_cast<float>(bits)));
}

/// One after the other in double precision, as the definition has it, over the floats of a float map without padding.
Answer AddOneByOne(const TestMap& map, bool upperHemisphere) {
    const int width = map.desc.width;
    const int height = map.desc.height;
    double sumW = 0, sumR = 0, sumG = 0, sumB = 0, sumMax = 0;
    const unsigned char* pixel = map.bytes.data();
    for (int y = 0; y < (upperHemisphere ? height / 2 : height); ++y) {
        const double phi = ((height - y - 0.5) / height - 0.5) * 3.141592653589793;
        const double w = upperHemisphere ? std::cos(phi) * std::cos(1.5707963267948966 - phi) : std::cos(phi);
        for (int x = 0; x < width; ++x, pixel += 16) {
            float c[3];
            std::memcpy(c, pixel, sizeof c);
            sumW += w;
            sumR += c[0] * w;
            sumG += c[1] * w;
            sumB += c[2] * w;
            sumMax += std::max(std::max(c[0], c[1]), c[2]) * w;
        }
    }
    const auto mean = [sumW](double sum) { return static_cast<float>(sum / sumW); };
    return {
        {mean(std::max({sumR, sumG, sumB})), mean(sumMax), mean(0.212671 * sumR + 0.71516 * sumG + 0.072169 * sumB)},
        {mean(sumR), mean(sumG), mean(sumB)}};
}

TEST(LightIntensity, OfAUniformMapIsItsValueWhateverTheHeight) {
    for (int height = 1; height < 40; ++height) {
        const TestMap map =
            MakeMap(3, height, kR8G8B8A8, [](int, int) { return Rgb{128 / 255.0F, 128 / 255.0F, 128 / 255.0F}; });
        ASSERT_EQ(map.bytes[0], 128);
        const float grey = 128.0F / 255.0F;
        ExpectIntensity(Ask(map), grey, grey, grey);
        if (height > 1) ExpectIntensity(Ask(map, true), grey, grey, grey);
    }
}

TEST(LightIntensity, EveryByteValueIsScaledInSinglePrecision) {
    for (int v = 0; v < 256; ++v) {
        const TestMap map =
            MakeMap(4, 4, kR8G8B8A8, [v](int, int) { return Rgb{static_cast<float>(v) / 255.0F, 0, 0}; });
        ASSERT_EQ(map.bytes[0], v);
        EXPECT_EQ(Ask(map).average.x, static_cast<float>(v) * std::bit_cast<float>(0x3B808081U)) << v;
    }
}

TEST(LightIntensity, ARowCountsByTheSolidAngleItCovers) {
    // Row y lies at the angle (y + 1/2) / H x 180 degrees from the zenith, whose sine is the radius of its circle.
    constexpr int kHeight = 7;
    double total = 0;
    for (int y = 0; y < kHeight; ++y)
        total += std::sin(std::numbers::pi * (y + 0.5) / kHeight);
    for (int bright = 0; bright < kHeight; ++bright) {
        const TestMap map =
            MakeMap(5, kHeight, kR32G32B32A32F, [bright](int, int y) { return y == bright ? Rgb{1, 0, 0} : Rgb{}; });
        EXPECT_NEAR(Ask(map).intensity.x, std::sin(std::numbers::pi * (bright + 0.5) / kHeight) / total, 1e-7)
            << bright;
    }
}

TEST(LightIntensity, OfTheUpperHemisphereWeighsByTheCosineFromTheZenithAtTheLatitudesOfTheWholeMap) {
    for (const int height : {6, 7}) {
        double total = 0;
        for (int y = 0; y < 3; ++y)
            total += std::sin(2 * std::numbers::pi * (y + 0.5) / height);  // twice sine times cosine
        for (int bright = 0; bright < height; ++bright) {
            const TestMap map =
                MakeMap(2, height, kR32G32B32A32F, [bright](int, int y) { return y == bright ? Rgb{0, 1, 0} : Rgb{}; });
            const double expected = bright < 3 ? std::sin(2 * std::numbers::pi * (bright + 0.5) / height) / total : 0;
            EXPECT_NEAR(Ask(map, true).intensity.x, expected, 1e-7) << height << " " << bright;
        }
    }
}

TEST(LightIntensity, OfTheUpperHemisphereLeavesTheMiddleRowOfAnOddHeightOut) {
    const TestMap map =
        MakeMap(3, 5, kR32G32B32A32F, [](int, int y) { return y < 2 ? Rgb{0.5F, 0.5F, 0.5F} : Rgb{kNaN, kNaN, kNaN}; });
    ExpectIntensity(Ask(map, true), 0.5F, 0.5F, 0.5F);
}

TEST(LightIntensity, OfAWhiteUpperHalfIsOneAboveAndOneHalfAllAround) {
    for (const int height : {2, 8, 100}) {
        const TestMap map =
            MakeMap(6, height, kR8G8B8A8, [height](int, int y) { return y < height / 2 ? Rgb{1, 1, 1} : Rgb{}; });
        ExpectIntensity(Ask(map, true), 1, 1, 1);
        EXPECT_NEAR(Ask(map).intensity.x, 0.5F, 1e-7);
    }
}

/// max(0, cosine of the angle to `axis`), which is 1/4 on the average over the sphere.
TestMap CosineLobe(int height, const Direction& axis) {
    return MakeSphere(2 * height, height, kR32G32B32A32F, [&axis](const Direction& direction) {
        const auto value = static_cast<float>(std::max(0.0, Dot(direction, axis)));
        return Rgb{value, value, value};
    });
}

TEST(LightIntensity, OfACosineLobeIsAQuarter) {
    for (const Direction& axis :
         {Direction{0, 1, 0}, Direction{0, -1, 0}, Direction{1, 0, 0}, Direction{0, 0, -1}, Normalised({1, 2, -2})}) {
        EXPECT_NEAR(Ask(CosineLobe(128, axis)).intensity.z, 0.25, 5e-5);
    }
}

TEST(LightIntensity, OfACosineLobeAtTheZenithIsTwoThirdsAbove) {
    // The integral of cosine squared times sine over that of cosine times sine, from 0 to 90 degrees.
    EXPECT_NEAR(Ask(CosineLobe(128, {0, 1, 0}), true).intensity.z, 2.0 / 3, 1e-4);
    // At the horizon: the integral of cos x sin^2 x / pi over 1/2.
    EXPECT_NEAR(Ask(CosineLobe(128, {1, 0, 0}), true).intensity.z, 2.0 / (3 * std::numbers::pi), 1e-4);
}

TEST(LightIntensity, ChangesLessThanTheQuadratureErrorAtTwiceTheResolution) {
    const Direction axis = Normalised({2, 1, 1});
    const double coarse = Ask(CosineLobe(32, axis)).intensity.x;
    const double fine = Ask(CosineLobe(64, axis)).intensity.x;
    const double finest = Ask(CosineLobe(128, axis)).intensity.x;
    EXPECT_LT(std::abs(finest - fine), std::abs(coarse - 0.25));
    EXPECT_LT(std::abs(finest - 0.25), std::abs(coarse - 0.25) / 4);
}

TEST(LightIntensity, IsTheBrightestMeanTheMeanBrightestAndTheLuminance) {
    const TestMap map =
        MakeMap(4, 3, kR32G32B32A32F, [](int x, int) { return x % 2 == 0 ? Rgb{1, 0, 0.25F} : Rgb{0, 0.5F, 0.25F}; });
    const Answer answer = Ask(map);
    EXPECT_FLOAT_EQ(answer.average.x, 0.5F);
    EXPECT_FLOAT_EQ(answer.average.y, 0.25F);
    EXPECT_FLOAT_EQ(answer.average.z, 0.25F);
    EXPECT_FLOAT_EQ(answer.intensity.x, 0.5F);
    EXPECT_FLOAT_EQ(answer.intensity.y, 0.75F);
    EXPECT_NEAR(answer.intensity.z, 0.212671 * 0.5 + 0.71516 * 0.25 + 0.072169 * 0.25, 1e-7);
}

TEST(LightIntensity, EachColourHasItsExactLuminanceWeight) {
    ExpectIntensity(Ask(MakeUniform(3, 3, {1, 0, 0})), 1, 1, 0.212671F);
    ExpectIntensity(Ask(MakeUniform(3, 3, {0, 1, 0})), 1, 1, 0.71516F);
    ExpectIntensity(Ask(MakeUniform(3, 3, {0, 0, 1})), 1, 1, 0.072169F);
}

TEST(LightIntensity, TakesSevenFormats) {
    const auto colour = [](int x, int y) {
        return Rgb{static_cast<float>(x * 40) / 255, static_cast<float>(y * 30) / 255, 200 / 255.0F};
    };
    const Answer exact = Ask(MakeMap(6, 8, kR32G32B32A32F, colour));
    for (const EFormat format : kMapFormats) {
        const Answer answer = Ask(MakeMap(6, 8, format, colour));
        const double precision = format == kR16G16B16A16F ? 1.0 / 2048 : 1e-6;
        EXPECT_NEAR(answer.average.x, exact.average.x, precision) << format;
        EXPECT_NEAR(answer.average.y, exact.average.y, precision) << format;
        EXPECT_NEAR(answer.average.z, exact.average.z, precision) << format;
        EXPECT_NEAR(answer.intensity.y, exact.intensity.y, precision) << format;
    }
}

TEST(LightIntensity, BlueBytesOfABlueFirstMapAreTheThirdColour) {
    const unsigned char pixels[] = {255, 0, 0, 0, 255, 0, 0, 0};
    ImageDescription desc = MakeMap(2, 1, kB8G8R8A8, [](int, int) { return Rgb{}; }).desc;
    const Answer answer = Ask(desc, pixels, false);
    EXPECT_EQ(answer.average.x, 0);
    EXPECT_EQ(answer.average.z, 1);
    EXPECT_EQ(answer.intensity.z, 0.072169F);
    desc.format = kR8G8B8A8;
    EXPECT_EQ(Ask(desc, pixels, false).average.x, 1);
}

TEST(LightIntensity, FloatsAndHalvesAreNeitherScaledNorLimited) {
    for (const EFormat format : {kR16G16B16A16F, kR32G32B32A32F}) {
        const Answer answer = Ask(MakeMap(3, 3, format, [](int, int) { return Rgb{4096, -2, 0.5F}; }));
        EXPECT_EQ(answer.average.x, 4096);
        EXPECT_EQ(answer.average.y, -2);
        EXPECT_EQ(answer.average.z, 0.5F);
    }
}

TEST(LightIntensity, ExchangingRedAndBlueExchangesTheAnswer) {
    const auto value = [](int x, int y, int c) { return static_cast<float>((x * 7 + y * 5 + c * 11) % 13); };
    const Answer one = Ask(MakeMap(9, 8, kR32G32B32A32F,
                                   [&](int x, int y) { return Rgb{value(x, y, 0), value(x, y, 1), value(x, y, 2)}; }));
    const Answer other = Ask(MakeMap(
        9, 8, kR32G32B32A32F, [&](int x, int y) { return Rgb{value(x, y, 2), value(x, y, 1), value(x, y, 0)}; }));
    EXPECT_EQ(one.average.x, other.average.z);
    EXPECT_EQ(one.average.y, other.average.y);
    EXPECT_EQ(one.average.z, other.average.x);
    EXPECT_EQ(one.intensity.x, other.intensity.x);
    EXPECT_EQ(one.intensity.y, other.intensity.y);
}

TEST(LightIntensity, NeitherPaddingNorAlignmentChangesAnything) {
    const auto colour = [](int x, int y) {
        return Rgb{static_cast<float>(x) / 8, static_cast<float>(y) / 16, static_cast<float>(x ^ y) / 16};
    };
    for (const EFormat format : kMapFormats) {
        const Answer tight = Ask(MakeMap(7, 12, format, colour));
        for (const MapLayout layout :
             {MapLayout{.padding = 1}, {.padding = 17, .offset = 1}, {.padding = 64, .offset = 3}}) {
            EXPECT_EQ(Bits(Ask(MakeMap(7, 12, format, colour, layout))), Bits(tight))
                << format << " " << layout.padding;
        }
    }
}

TEST(LightIntensity, FollowsANegativePitchUpwards) {
    const auto colour = [](int x, int y) { return Rgb{static_cast<float>(x), static_cast<float>(y * y), 1}; };
    const TestMap map = MakeMap(3, 4, kR32G32B32A32F, colour);
    const TestMap flipped = MakeMap(3, 4, kR32G32B32A32F, [&](int x, int y) { return colour(x, 3 - y); });
    ImageDescription upwards = flipped.desc;
    upwards.rowPitch = -upwards.rowPitch;
    const auto* lastRow = static_cast<const unsigned char*>(flipped.Data()) + 3 * map.desc.rowPitch;
    EXPECT_EQ(Bits(Ask(upwards, lastRow, true)), Bits(Ask(map, true)));
}

TEST(LightIntensity, RotatingTheMapChangesNothingInBytes) {
    const auto colour = [](int x, int y) { return Rgb{static_cast<float>((x * 37 + y) % 256) / 255, 0.5F, 0}; };
    const TestMap map = MakeMap(64, 32, kR8G8B8A8, colour);
    const TestMap rotated = MakeMap(64, 32, kR8G8B8A8, [&](int x, int y) { return colour((x + 19) % 64, y); });
    EXPECT_EQ(Bits(Ask(map)), Bits(Ask(rotated)));
}

TEST(LightIntensity, EqualsTheSumTakenPixelByPixel) {
    std::mt19937 random(2026);
    std::uniform_real_distribution<float> exponent(-12, 6);
    for (int round = 0; round < 300; ++round) {
        const int width = 1 + static_cast<int>(random() % 97);
        const int height = 1 + static_cast<int>(random() % 60);
        const TestMap map = MakeMap(width, height, kR32G32B32A32F, [&](int, int) {
            return Rgb{std::exp2(exponent(random)), std::exp2(exponent(random)), std::exp2(exponent(random))};
        });
        for (const bool upperHemisphere : {false, true}) {
            if (upperHemisphere && height == 1) continue;
            EXPECT_EQ(Bits(Ask(map, upperHemisphere)), Bits(AddOneByOne(map, upperHemisphere)))
                << round << ": " << width << " x " << height;
        }
    }
}

TEST(LightIntensity, OfALargeMapInParallelEqualsTheSumTakenPixelByPixel) {
    std::mt19937 random(5);
    const TestMap map = MakeMap(601, 900, kR32G32B32A32F, [&](int, int) {
        const auto bits = random();
        return Rgb{static_cast<float>(bits & 0x3FF), static_cast<float>(bits >> 10 & 0x3FF),
                   static_cast<float>(bits >> 22)};
    });
    for (const bool upperHemisphere : {false, true})
        EXPECT_EQ(Bits(Ask(map, upperHemisphere)), Bits(AddOneByOne(map, upperHemisphere)));
}

TEST(LightIntensity, SumsInDoublePrecision) {
    // In single precision a million tenths are 100958 and not 100000.
    const float tenth = 0.1F;
    ExpectIntensity(Ask(MakeUniform(2048, 512, {tenth, tenth, tenth})), tenth, tenth, tenth);
}

TEST(LightIntensity, ANaNStaysInItsChannel) {
    const Answer answer =
        Ask(MakeMap(2, 2, kR32G32B32A32F, [](int x, int y) { return Rgb{1, x + y == 0 ? kNaN : 2.0F, 3}; }));
    EXPECT_EQ(answer.average.x, 1);
    EXPECT_TRUE(std::isnan(answer.average.y));
    EXPECT_EQ(answer.average.z, 3);
    EXPECT_EQ(answer.intensity.x, 3);
    EXPECT_EQ(answer.intensity.y, 3);
    EXPECT_TRUE(std::isnan(answer.intensity.z));
}

TEST(LightIntensity, AnEmptyMapHasNoMean) {
    const float nothing[4] = {};
    for (const auto& [width, height] :
         {std::array{0, 4}, {4, 0}, {0, 0}, {-3, 4}, {4, -3}, {4, std::numeric_limits<int>::min()}}) {
        ImageDescription desc = MakeUniform(1, 1, {}).desc;
        desc.width = width;
        desc.height = height;
        ExpectAllNaN(Ask(desc, nothing, false));
        ExpectAllNaN(Ask(desc, nothing, true));
    }
}

TEST(LightIntensity, ASingleRowHasNoUpperHemisphere) {
    ExpectAllNaN(Ask(MakeUniform(4, 1, {1, 1, 1}), true));
}

TEST(LightIntensity, OtherTextureTypesAreRefused) {
    TestMap map = MakeUniform(4, 24, {1, 1, 1});
    for (const ETextureType type :
         {kTextureUnknown, kTexture1D, kTextureCube, kTextureVolume, static_cast<ETextureType>(-1)}) {
        map.desc.textureType = type;
        ExpectRefused(Ask(map));
    }
}

TEST(LightIntensity, OtherFormatsAreRefused) {
    TestMap map = MakeUniform(4, 4, {1, 1, 1});
    for (int format = -2; format < 100; ++format) {
        if (std::ranges::find(kMapFormats, format) != kMapFormats.end()) continue;
        map.desc.format = static_cast<EFormat>(format);
        ExpectRefused(Ask(map));
    }
}

TEST(LightIntensity, NoPixelsAreRefused) {
    ExpectRefused(Ask(MakeUniform(4, 4, {1, 1, 1}).desc, nullptr, false));
    ImageDescription empty = MakeUniform(1, 1, {}).desc;
    empty.height = 0;
    ExpectRefused(Ask(empty, nullptr, false));
}

TEST(LightIntensity, NeedsNoPlaceForTheAverageAndSaysNothing) {
    OIIOImageHandler handler;
    const MessageRecorder messages;
    const TestMap map = MakeUniform(4, 4, {0.25F, 0.25F, 0.25F});
    EXPECT_EQ(handler.GetIBLIntensity(map.desc, map.Data(), false, nullptr).x, 0.25F);
    handler.GetIBLIntensity(map.desc, nullptr, false, nullptr);
    EXPECT_TRUE(messages.Texts().empty());
}

}  // namespace
}  // namespace Kavra::Tests
