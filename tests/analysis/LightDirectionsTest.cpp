#include "analysis/TestMap.h"
#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>

namespace Kavra::Tests {
namespace {

using namespace Devices;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kUntouched = 77;

struct Light {
    Direction direction;
    Rgb colour;
    bool operator==(const Light&) const = default;
};

/// The lights found; checks that nothing behind them was written.
std::vector<Light> Find(const ImageDescription& desc, const void* data, unsigned maxCount = 8) {
    const vec3<float> untouched = {kUntouched, kUntouched, kUntouched};
    std::vector<vec3<float>> directions(maxCount + 1, untouched), colours(maxCount + 1, untouched);
    OIIOImageHandler handler;
    const unsigned count = handler.FindIBLLightDirections(desc, data, directions.data(), colours.data(), maxCount);
    EXPECT_LE(count, maxCount);
    for (std::size_t i = count; i <= maxCount; ++i) {
        EXPECT_EQ(directions[i].x + directions[i].y + directions[i].z, 3 * kUntouched);
        EXPECT_EQ(colours[i].x + colours[i].y + colours[i].z, 3 * kUntouched);
    }
    std::vector<Light> lights;
    for (std::size_t i = 0; i < count; ++i) {
        lights.push_back(
            {{directions[i].x, directions[i].y, directions[i].z}, {colours[i].x, colours[i].y, colours[i].z}});
    }
    return lights;
}

std::vector<Light> Find(const TestMap& map, unsigned maxCount = 8) {
    return Find(map.desc, map.Data(), maxCount);
}

double AngleBetween(const Direction& a, const Direction& b) {
    return std::acos(std::clamp(Dot(Normalised(a), Normalised(b)), -1.0, 1.0)) / kDegree;
}

void ExpectLight(const Light& light, const Direction& direction, const Rgb& colour, double degrees = 1) {
    EXPECT_LT(AngleBetween(light.direction, direction), degrees)
        << light.direction[0] << " " << light.direction[1] << " " << light.direction[2];
    EXPECT_NEAR(Dot(light.direction, light.direction), 1, 1e-6);
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(light.colour[c], colour[c], 1e-4F * (1 + colour[c]));
}

struct Disc {
    Direction centre;
    double degrees;
    Rgb colour;
};

TestMap Discs(const std::vector<Disc>& discs, int width = 400, EFormat format = kR32G32B32A32F) {
    return MakeSphere(width, width / 2, format, [&](const Direction& direction) {
        for (const Disc& disc : discs) {
            if (InDisc(direction, disc.centre, disc.degrees)) return disc.colour;
        }
        return Rgb{};
    });
}

TEST(LightDirections, OfADiscPointAtItsMiddleWithItsColour) {
    for (const Direction& centre : {Direction{0, 1, 0},
                                    {0, -1, 0},
                                    {1, 0, 0},
                                    {-1, 0, 0},
                                    {0, 0, 1},
                                    {0, 0, -1},
                                    Normalised({1, 2, -3}),
                                    Normalised({-3, -1, 2})}) {
        const auto lights = Find(Discs({{centre, 12, {4, 2, 1}}}));
        ASSERT_EQ(lights.size(), 1U);
        ExpectLight(lights[0], centre, {4, 2, 1});
    }
}

TEST(LightDirections, QuarterColumnsLookBehindLeftAheadAndRight) {
    const std::array<Direction, 4> expected = {{{0, 0, 1}, {-1, 0, 0}, {0, 0, -1}, {1, 0, 0}}};
    for (int quarter = 0; quarter < 4; ++quarter) {
        const TestMap map = MakeMap(200, 100, kR32G32B32A32F, [quarter](int x, int y) {
            const int distance = (x - 50 * quarter + 205) % 200;
            return distance < 10 && y >= 45 && y < 55 ? Rgb{1, 1, 1} : Rgb{};
        });
        const auto lights = Find(map);
        ASSERT_EQ(lights.size(), 1U) << quarter;
        ExpectLight(lights[0], expected[static_cast<std::size_t>(quarter)], {1, 1, 1}, 0.1);
    }
}

TEST(LightDirections, TheFirstRowIsUpAndTheLastIsDown) {
    for (const bool up : {true, false}) {
        const TestMap map = MakeMap(200, 100, kR32G32B32A32F, [up](int, int y) {
            return (y < 8) == up && (y >= 92) != up ? Rgb{1, 1, 1} : Rgb{};
        });
        const auto lights = Find(map);
        ASSERT_EQ(lights.size(), 1U);
        ExpectLight(lights[0], {0, up ? 1.0 : -1.0, 0}, {1, 1, 1}, 0.1);
    }
}

TEST(LightDirections, OfOneBrightPixelIsTheOneSampleInIt) {
    // 8 x 4 pixels: 8 samples on each of the rings y = 3/4, 1/4, -1/4, -3/4, one in each pixel.
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 8; ++column) {
            const TestMap map = MakeMap(8, 4, kR32G32B32A32F,
                                        [&](int x, int y) { return x == column && y == row ? Rgb{3, 5, 7} : Rgb{}; });
            const double y = 0.75 - 0.5 * row;
            const double azimuth = 2 * std::numbers::pi * (column + 0.5) / 8;
            const double radius = std::sqrt(1 - y * y);
            const auto lights = Find(map);
            ASSERT_EQ(lights.size(), 1U);
            ExpectLight(lights[0], {-radius * std::sin(azimuth), y, radius * std::cos(azimuth)}, {3, 5, 7}, 0.05);
        }
    }
}

TEST(LightDirections, TwoPixelsBesideTheSeamAreOneLightBehind) {
    const TestMap map = MakeMap(100, 50, kR32G32B32A32F, [](int x, int y) {
        return (x == 0 || x == 99) && (y == 24 || y == 25) ? Rgb{2, 2, 2} : Rgb{};
    });
    const auto lights = Find(map);
    ASSERT_EQ(lights.size(), 1U);
    ExpectLight(lights[0], {0, 0, 1}, {2, 2, 2}, 0.1);
}

TEST(LightDirections, ComeFromTheBrightestDown) {
    const Direction right = Normalised({1, 0.2, -0.1}), left = Normalised({-1, 0.5, 0}),
                    down = Normalised({0, -1, 0.1});
    const auto lights = Find(Discs({{left, 10, {20, 20, 18}}, {right, 10, {40, 38, 30}}, {down, 8, {10, 30, 5}}}));
    ASSERT_EQ(lights.size(), 3U);
    ExpectLight(lights[0], right, {40, 38, 30});
    ExpectLight(lights[1], down, {10, 30, 5});  // its green outshines the left one's
    ExpectLight(lights[2], left, {20, 20, 18});
}

TEST(LightDirections, OfEqualLightsTheFirstInTheGridComesFirst) {
    const Direction higher = Normalised({1, 0.6, 0}), lower = Normalised({-1, -0.6, 0.0});
    const auto lights = Find(Discs({{lower, 8, {1, 1, 1}}, {higher, 8, {1, 1, 1}}}));
    ASSERT_EQ(lights.size(), 2U);
    EXPECT_LT(AngleBetween(lights[0].direction, higher), 1);
    // At one height the smaller u is first: -x is at u = 1/4, +x at 3/4.
    const auto level = Find(Discs({{{1, 0, 0}, 8, {1, 1, 1}}, {{-1, 0, 0}, 8, {1, 1, 1}}}));
    ASSERT_EQ(level.size(), 2U);
    EXPECT_LT(AngleBetween(level[0].direction, {-1, 0, 0}), 1);
}

TEST(LightDirections, TwoEqualSpotsSixtyDegreesApartAreOneLightBetweenThem) {
    // The test is against the growing sum: with two members gathered its dot product with the other spot passes 0.95.
    const double half = 30 * kDegree;
    const Direction a = {std::sin(half), 0, -std::cos(half)}, b = {-std::sin(half), 0, -std::cos(half)};
    const auto lights = Find(Discs({{a, 8, {1, 1, 1}}, {b, 8, {1, 1, 1}}}));
    ASSERT_EQ(lights.size(), 1U);
    ExpectLight(lights[0], {0, 0, -1}, {1, 1, 1});
}

TEST(LightDirections, SpotsAQuarterTurnAndMoreApartStayTwo) {
    for (const double degrees : {110.0, 130.0, 180.0}) {
        const double half = degrees / 2 * kDegree;
        const Direction a = {std::sin(half), 0, -std::cos(half)}, b = {-std::sin(half), 0, -std::cos(half)};
        EXPECT_EQ(Find(Discs({{a, 8, {1, 1, 1}}, {b, 8, {1, 1, 1}}})).size(), 2U) << degrees;
    }
}

TEST(LightDirections, ALoneSampleReachesEighteenDegrees) {
    // Two samples alone are gathered by the angle between them: acos(0.95) is 18.19 degrees.
    for (const auto& [columns, expected] : {std::pair{9, 1U}, {11, 2U}}) {
        // On a ring of 200 samples next to the horizon a step is 1.8 degrees.
        const int apart = columns;
        const TestMap map = MakeMap(200, 100, kR32G32B32A32F, [apart](int x, int y) {
            return y == 49 && (x == 100 || x == 100 + apart) ? Rgb{1, 1, 1} : Rgb{};
        });
        const auto lights = Find(map);
        ASSERT_EQ(lights.size(), expected) << columns;
    }
}

TEST(LightDirections, ColoursAreTheMeanOfTheMembers) {
    // Four pixels round the middle of the map, one sample in each.
    const TestMap map = MakeMap(200, 100, kR32G32B32A32F, [](int x, int y) {
        if ((y != 49 && y != 50) || (x != 99 && x != 100)) return Rgb{};
        return Rgb{static_cast<float>(x == 99 ? 8 : 0), 8, static_cast<float>(y == 49 ? 4 : 12)};
    });
    std::size_t lit = 0;
    const auto lights = Find(map);
    for (const Light& light : lights)
        lit += light.colour[1] > 0 ? 1 : 0;
    ASSERT_EQ(lit, 1U);
    EXPECT_FLOAT_EQ(lights[0].colour[0], 4);
    EXPECT_FLOAT_EQ(lights[0].colour[1], 8);
    EXPECT_FLOAT_EQ(lights[0].colour[2], 8);
}

TEST(LightDirections, OfAUniformMapAreThereWhateverItsValue) {
    for (int v = 0; v < 256; ++v) {
        const TestMap map =
            MakeMap(200, 2, kR8G8B8A8, [v](int, int) { return Rgb{v / 255.0F, v / 255.0F, v / 255.0F}; });
        const auto lights = Find(map, 2);
        ASSERT_EQ(lights.size(), 2U) << v;
        EXPECT_NEAR(lights[0].colour[0], v / 255.0F, 1e-3) << v;
    }
}

TEST(LightDirections, OfAUniformMapBeginAtTheFirstColumnBelowTheZenith) {
    // Two samples to the right and left of the horizon, more than 18 degrees apart.
    const auto two = Find(MakeUniform(2, 1, {1, 1, 1}));
    ASSERT_EQ(two.size(), 2U);
    EXPECT_NEAR(two[0].direction[0], -1, 1e-6);
    EXPECT_NEAR(two[1].direction[0], 1, 1e-6);
    // Of the whole sphere the first light is the one that grows from the zenith.
    EXPECT_GT(Find(MakeUniform(200, 100, {1, 1, 1}))[0].direction[1], 0.99);
}

TEST(LightDirections, OfAMapThatIsMostlyBrightAreNone) {
    EXPECT_TRUE(Find(MakeMap(10, 5, kR32G32B32A32F, [](int x, int) { return x == 3 ? Rgb{} : Rgb{1, 1, 1}; })).empty());
}

TEST(LightDirections, OfAHalfBrightMapEqualTheBoundAndStay) {
    // Mean and deviation are 1/2 each, in exact arithmetic and in this one.
    const auto lights =
        Find(MakeMap(8, 4, kR32G32B32A32F, [](int x, int) { return x < 4 ? Rgb{0, 1 / 0.71516F, 0} : Rgb{}; }));
    ASSERT_FALSE(lights.empty());
    EXPECT_LT(lights[0].direction[0], 0);
}

TEST(LightDirections, NoMoreAreFoundThanWanted) {
    const TestMap map = Discs({{{1, 0, 0}, 8, {3, 3, 3}},
                               {Normalised({-1, 0, -1.7}), 8, {2, 2, 2}},
                               {Normalised({-1, 0, 1.7}), 8, {1.5F, 1.5F, 1.5F}}});
    const auto all = Find(map);
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(Find(map, 1), std::vector(all.begin(), all.begin() + 1));
    EXPECT_EQ(Find(map, 2), std::vector(all.begin(), all.begin() + 2));
    EXPECT_EQ(Find(map, 100), all);
}

TEST(LightDirections, ANaNIsTakenFirstOnlyInTheFirstPlace) {
    const auto first =
        Find(MakeMap(2, 1, kR32G32B32A32F, [](int x, int) { return x == 0 ? Rgb{kNaN, 1, 1} : Rgb{1, 1, 1}; }));
    ASSERT_EQ(first.size(), 2U);
    EXPECT_TRUE(std::isnan(first[0].colour[0]));
    EXPECT_EQ(first[1].colour, (Rgb{1, 1, 1}));
    const auto second =
        Find(MakeMap(2, 1, kR32G32B32A32F, [](int x, int) { return x == 1 ? Rgb{kNaN, 1, 1} : Rgb{1, 1, 1}; }));
    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].colour, (Rgb{1, 1, 1}));
    EXPECT_TRUE(std::isnan(second[1].colour[0]));
}

TEST(LightDirections, RotatingTheMapRotatesThem) {
    const std::vector<Disc> discs = {{Normalised({1, 0.4, -0.5}), 10, {9, 9, 9}},
                                     {Normalised({-0.4, -0.3, 1}), 12, {6, 5, 4}}};
    const TestMap map = Discs(discs, 200);
    const auto* pixels = static_cast<const float*>(map.Data());
    const auto lights = Find(map);
    ASSERT_EQ(lights.size(), 2U);
    for (const int columns : {1, 37, 50, 100, 199}) {
        const TestMap rotated = MakeMap(200, 100, kR32G32B32A32F, [&](int x, int y) {
            const float* pixel = pixels + 4 * (200 * y + (x + 200 - columns) % 200);
            return Rgb{pixel[0], pixel[1], pixel[2]};
        });
        const auto found = Find(rotated);
        ASSERT_EQ(found.size(), 2U) << columns;
        const double angle = 2 * std::numbers::pi * columns / 200;
        for (std::size_t i = 0; i < 2; ++i) {
            // From +z by way of -x.
            const auto& [x, y, z] = lights[i].direction;
            const Direction expected = {x * std::cos(angle) - z * std::sin(angle), y,
                                        z * std::cos(angle) + x * std::sin(angle)};
            EXPECT_LT(AngleBetween(found[i].direction, expected), 0.2) << columns;
            EXPECT_NEAR(found[i].colour[0], lights[i].colour[0], 1e-4);
        }
    }
}

TEST(LightDirections, AreTheSameInEveryFormat) {
    const std::vector<Disc> discs = {{Normalised({1, 0.4, -0.5}), 10, {1, 0.8F, 0.6F}},
                                     {Normalised({-0.4, -0.3, 1}), 12, {0.5F, 0.5F, 0.25F}}};
    const auto exact = Find(Discs(discs));
    ASSERT_EQ(exact.size(), 2U);
    for (const EFormat format : kMapFormats) {
        const auto lights = Find(Discs(discs, 400, format));
        ASSERT_EQ(lights.size(), 2U) << format;
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_LT(AngleBetween(lights[i].direction, exact[i].direction), 0.01) << format;
            for (std::size_t c = 0; c < 3; ++c)
                EXPECT_NEAR(lights[i].colour[c], exact[i].colour[c], 1.0 / 500) << format;
        }
    }
}

TEST(LightDirections, RedFirstAndBlueFirstBytesOfOnePictureGiveOneAnswer) {
    const std::vector<Disc> discs = {{Normalised({1, 1, 1}), 15, {1, 0.3F, 0.1F}}};
    EXPECT_EQ(Find(Discs(discs, 200, kR8G8B8A8)), Find(Discs(discs, 200, kB8G8R8A8)));
    EXPECT_EQ(Find(Discs(discs, 200, kR8G8B8X8)), Find(Discs(discs, 200, kB8G8R8X8)));
}

TEST(LightDirections, NeitherPaddingNorAlignmentChangesAnything) {
    const auto colour = [](int x, int y) { return x > 20 && x < 30 && y > 5 && y < 12 ? Rgb{1, 0.5F, 0.25F} : Rgb{}; };
    for (const EFormat format : kMapFormats) {
        const auto tight = Find(MakeMap(60, 30, format, colour));
        ASSERT_FALSE(tight.empty());
        EXPECT_EQ(Find(MakeMap(60, 30, format, colour, {.padding = 3, .offset = 1})), tight) << format;
    }
}

/// The definition word by word, on a float map without padding.
std::vector<Light> FindWordByWord(const TestMap& map, unsigned maxCount) {
    struct Sample {
        float x, y, z, r, g, b, l;
    };
    std::vector<Sample> samples;
    const int width = map.desc.width;
    const int height = map.desc.height;
    const int n = std::min(width, 200);
    const float du = 1.0F / static_cast<float>(n);
    const float dv = 1.0F / static_cast<float>(n / 2);
    float sum = 0, sum2 = 0;
    for (float v = dv / 2; v < 1; v += dv) {
        const float y = 1 - 2 * v;
        const float s = std::sqrt(std::max(0.0F, 1 - y * y));
        const int row = static_cast<int>(
            std::min(std::acos(y) * 0.31830987F * static_cast<float>(height), static_cast<float>(height - 1)));
        for (float u = du / 2; u < 1; u += du) {
            const float phi = u * 6.2831855F;
            const float x = -s * std::sin(phi);
            const float z = s * std::cos(phi);
            float a = std::atan2(-x, z) * 0.15915494F;
            if (a < 0) a += 1;
            const int column = static_cast<int>(std::min(static_cast<float>(width) * a, static_cast<float>(width - 1)));
            float p[3];
            std::memcpy(p, &map.bytes[static_cast<std::size_t>(row * width + column) * 16], sizeof p);
            const float l = 0.71516F * p[1] + 0.212671F * p[0] + 0.072169F * p[2];
            samples.push_back({x, y, z, p[0], p[1], p[2], l});
            sum += l;
            sum2 += l * l;
        }
    }
    const auto count = static_cast<float>(samples.size());
    const float mean = sum / count;
    const float threshold = mean + std::sqrt(sum2 / count - mean * mean);
    for (std::size_t i = samples.size(); i-- > 0;) {
        if (samples[i].l < threshold) samples.erase(samples.begin() + static_cast<std::ptrdiff_t>(i));
    }
    std::vector<Light> lights;
    while (!samples.empty() && lights.size() < maxCount) {
        auto best = samples.begin();
        for (auto i = samples.begin(); i != samples.end(); ++i) {
            if (i->l > best->l) best = i;
        }
        Sample light = *best;
        samples.erase(best);
        float members = 1;
        for (auto i = samples.begin(); i != samples.end();) {
            if (!(i->x * light.x + i->y * light.y + i->z * light.z > 0.95F)) {
                ++i;
                continue;
            }
            light = {light.x + i->x, light.y + i->y, light.z + i->z, light.r + i->r, light.g + i->g, light.b + i->b, 0};
            members += 1;
            i = samples.erase(i);
        }
        const float length = std::sqrt(light.x * light.x + light.y * light.y + light.z * light.z);
        lights.push_back({{light.x / length, light.y / length, light.z / length},
                          {light.r / members, light.g / members, light.b / members}});
    }
    return lights;
}

TEST(LightDirections, EqualTheDefinitionWordByWordToTheLastBit) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        const int width = 2 + static_cast<int>(random() % 260);
        const int height = 1 + static_cast<int>(random() % 130);
        const int spots = static_cast<int>(random() % 6);
        std::vector<Disc> discs;
        std::normal_distribution<double> normal;
        for (int i = 0; i < spots; ++i) {
            const auto strength = static_cast<float>(1 + random() % 50);
            discs.push_back({Normalised({normal(random), normal(random), normal(random)}),
                             3.0 + static_cast<double>(random() % 20),
                             {strength, strength / 2, static_cast<float>(random() % 40)}});
        }
        const TestMap map = MakeSphere(width, height, kR32G32B32A32F, [&](const Direction& direction) {
            const auto noise = static_cast<float>(random() % 1000) / 1000;
            for (const Disc& disc : discs) {
                if (InDisc(direction, disc.centre, disc.degrees))
                    return Rgb{disc.colour[0] + noise, disc.colour[1], disc.colour[2]};
            }
            return Rgb{noise, noise, noise / 2};
        });
        ASSERT_EQ(Find(map, 50), FindWordByWord(map, 50)) << round << ": " << width << " x " << height;
    }
}

TEST(LightDirections, OfAMapOneWideOrEmptyAreNone) {
    const float nothing[4] = {1, 1, 1, 1};
    for (const auto& [width, height] : {std::array{1, 1}, {0, 4}, {-4, 4}, {4, 0}, {4, -4}}) {
        ImageDescription desc = MakeUniform(1, 1, {}).desc;
        desc.width = width;
        desc.height = height;
        EXPECT_TRUE(Find(desc, nothing).empty());
    }
}

TEST(LightDirections, OtherTextureTypesAndFormatsAreRefused) {
    TestMap map = MakeUniform(4, 24, {1, 1, 1});
    ASSERT_FALSE(Find(map).empty());
    for (const ETextureType type : {kTextureUnknown, kTexture1D, kTextureCube, kTextureVolume}) {
        map.desc.textureType = type;
        EXPECT_TRUE(Find(map).empty()) << type;
    }
    map.desc.textureType = kTexture2D;
    for (int format = -2; format < 100; ++format) {
        map.desc.format = static_cast<EFormat>(format);
        EXPECT_EQ(Find(map).empty(), std::ranges::find(kMapFormats, format) == kMapFormats.end()) << format;
    }
}

TEST(LightDirections, WithoutPixelsOrPlaceAreNone) {
    const TestMap map = MakeUniform(4, 2, {1, 1, 1});
    vec3<float> place[8] = {};
    OIIOImageHandler handler;
    const MessageRecorder messages;
    EXPECT_EQ(handler.FindIBLLightDirections(map.desc, nullptr, place, place, 8), 0U);
    EXPECT_EQ(handler.FindIBLLightDirections(map.desc, map.Data(), nullptr, place, 8), 0U);
    EXPECT_EQ(handler.FindIBLLightDirections(map.desc, map.Data(), place, nullptr, 8), 0U);
    EXPECT_EQ(handler.FindIBLLightDirections(map.desc, map.Data(), place, place, 0), 0U);
    EXPECT_EQ(handler.FindIBLLightDirections(map.desc, map.Data(), nullptr, nullptr, 0), 0U);
    EXPECT_TRUE(messages.Texts().empty());
}

}  // namespace
}  // namespace Kavra::Tests
