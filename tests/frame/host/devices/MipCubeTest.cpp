#include "frame/host/devices/MipTextures.h"

#include <kavra/devices/CubeFaces.h>
#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::Chain;
using Tests::MipTexture;
using Tests::ShapeOf;

using Values = std::vector<double>;

constexpr std::array kFilters = {kResampleBox, kResampleTriangle, kResampleMitchell, kResampleLanczos3};
constexpr int kRight = 0, kAbove = 2, kAhead = 4;  // faces

MipOptions WithFilter(EResampleFilter filter) {
    MipOptions options;
    options.filter = filter;
    return options;
}

TextureShape CubeOf(EFormat format, int side) {
    return ShapeOf(format, side, side, 1, kTextureCube);
}

/// Where a pixel of a face stands in its rows.
std::size_t PixelAt(int x, int y, int side) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x);
}

// --- By hand ---------------------------------------------------------------------------------------------------------

/// Level 1 of a cube of 4 x 4, under a triangle, that is 0 but for 64 at one pixel of the face ahead.
MipTexture Impulse(std::size_t pixel) {
    Values pixels(6 * 16, 0.0);
    pixels[kAhead * 16 + pixel] = 64;
    return Chain(CubeOf(kR32F, 4), pixels, WithFilter(kResampleTriangle));
}

TEST(MipCube, FiltersReachOverEdges) {
    // Weights of 1, 3, 3 and 1 eighths along both sides. The second pixel of the last column ahead is beyond the left
    // edge of the face at the right, in its second row.
    const MipTexture atRight = Impulse(1 * 4 + 3);
    EXPECT_EQ(atRight.Values(1, kRight), (Values{3, 0, 1, 0}));
    EXPECT_EQ(atRight.Values(1, kAhead)[1], 9);  // and beyond its own edge there is nothing of itself
    EXPECT_EQ(atRight.Values(1, kAbove), (Values{0, 0, 0, 0}));
    // The second pixel of the first row is below the last row of the face above, in its second column.
    const MipTexture above = Impulse(1);
    EXPECT_EQ(above.Values(1, kAbove), (Values{0, 0, 3, 1}));
    EXPECT_EQ(above.Values(1, 5), (Values{0, 0, 0, 0}));
}

TEST(MipCube, BeyondACornerIsTheMeanOfThree) {
    // The last pixel of the first row: beyond an edge of both others, and a third of what is beyond each corner.
    const MipTexture corner = Impulse(3);
    EXPECT_NEAR(corner.Values(1, kAhead)[1], 9 + 1.0 / 3, 1e-5);
    EXPECT_NEAR(corner.Values(1, kRight)[0], 3 + 1.0 / 3, 1e-5);
    EXPECT_NEAR(corner.Values(1, kAbove)[3], 3 + 1.0 / 3, 1e-5);
}

TEST(MipCube, ABoxOfEvenSidesStaysWithinItsFace) {
    Values pixels(6 * 4, 0.0);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t face = i / 4;
        pixels[i] = static_cast<double>(face * 10 + i % 4);
    }
    const MipTexture texture = Chain(CubeOf(kR32F, 2), pixels);
    for (int face = 0; face < kCubeFaces; ++face)
        EXPECT_EQ(texture.Values(1, face), Values{face * 10 + 1.5});
}

// --- All edges -------------------------------------------------------------------------------------------------------

TEST(MipCube, OneColourStaysOneColour) {
    for (const EResampleFilter filter : kFilters) {
        for (const int side : {1, 2, 3, 5, 16, 33}) {
            const TextureShape shape = CubeOf(kR8G8B8A8, side);
            const MipTexture texture =
                Chain(shape, Values(static_cast<std::size_t>(24 * side * side), 77), WithFilter(filter));
            EXPECT_TRUE(std::ranges::all_of(texture.bytes, [](unsigned char byte) { return byte == 77; }));
        }
    }
}

vec3<float> Unit(int face, int x, int y, int side) {
    const auto middle = [side](int i) { return (2 * static_cast<float>(i) + 1) / static_cast<float>(side) - 1; };
    const vec3<float> d = CubeDirection({face, middle(x), middle(y)});
    const float length = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    return {d.x / length, d.y / length, d.z / length};
}

TEST(MipCube, ASmoothSkyIsTheSameSkyAtEveryEdge) {
    constexpr int kSide = 64;
    const TextureShape shape = CubeOf(kR32G32B32F, kSide);
    Values pixels;
    for (int face = 0; face < kCubeFaces; ++face) {
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const vec3<float> d = Unit(face, x, y, kSide);
                for (const float part : {d.x, d.y, d.z})
                    pixels.push_back(static_cast<double>(part));
            }
        }
    }
    for (const EResampleFilter filter : {kResampleTriangle, kResampleMitchell, kResampleLanczos3}) {
        const MipTexture texture = Chain(shape, pixels, WithFilter(filter));
        for (int level = 1; level <= 3; ++level) {
            const int side = kSide >> level;
            // The sky turns by less than 2 / side a pixel; folding a neighbour flat moves what lies beyond an edge by a
            // part of a pixel, of which filters take a part again.
            const double allowed = 0.6 / side;
            for (int face = 0; face < kCubeFaces; ++face) {
                const Values values = texture.Values(level, face);
                for (int y = 0; y < side; ++y) {
                    for (int x = 0; x < side; ++x) {
                        const vec3<float> d = Unit(face, x, y, side);
                        const std::size_t at = PixelAt(x, y, side) * 3;
                        ASSERT_NEAR(values[at], static_cast<double>(d.x), allowed)
                            << filter << level << face << " " << x << " " << y;
                        ASSERT_NEAR(values[at + 1], static_cast<double>(d.y), allowed) << filter << level << face;
                        ASSERT_NEAR(values[at + 2], static_cast<double>(d.z), allowed) << filter << level << face;
                    }
                }
            }
        }
    }
}

TEST(MipCube, FacesThatDifferMeetAtTheirEdges) {
    // Each face of its own grey: with filters that reach over, steps at edges are those of any edge in a picture.
    constexpr int kSide = 32;
    const TextureShape shape = CubeOf(kR32F, kSide);
    Values pixels;
    for (int face = 0; face < kCubeFaces; ++face)
        pixels.insert(pixels.end(), kSide * kSide, face);
    const auto step = [&](const MipTexture& texture, int level) {
        const int side = kSide >> level, row = side / 2;
        const Values ahead = texture.Values(level, kAhead), right = texture.Values(level, kRight);
        return ahead[PixelAt(side - 1, row, side)] - right[PixelAt(0, row, side)];
    };
    const MipTexture box = Chain(shape, pixels), wide = Chain(shape, pixels, WithFilter(kResampleTriangle));
    EXPECT_EQ(step(box, 3), kAhead - kRight);
    EXPECT_EQ(step(wide, 0), kAhead - kRight);
    for (int level = 1; level <= 3; ++level)
        EXPECT_NEAR(step(wide, level), 0.75 * (kAhead - kRight), 1e-5);  // an eighth of the other on both sides
}

TEST(MipCube, FacesSmallerThanTheFilterAreNeighboursOfThemselves) {
    for (const EResampleFilter filter : kFilters) {
        for (const int side : {2, 3}) {
            Values pixels;
            for (int i = 0; i < 6 * side * side; ++i)
                pixels.push_back(i % 7);
            const MipTexture texture = Chain(CubeOf(kR32F, side), pixels, WithFilter(filter));
            for (int face = 0; face < kCubeFaces; ++face) {
                EXPECT_GT(texture.Values(1, face)[0], -2);
                EXPECT_LT(texture.Values(1, face)[0], 8);
            }
        }
    }
}

TEST(MipCube, EdgesOfATileAreNotThoseOfACube) {
    const TextureShape shape = CubeOf(kR8, 8);
    const Values pixels = Tests::Noise(shape);
    MipOptions options = WithFilter(kResampleLanczos3);
    const MipTexture plain = Chain(shape, pixels, options);
    options.edges = kMipWrap;
    EXPECT_EQ(Chain(shape, pixels, options).bytes, plain.bytes);
}

}  // namespace
}  // namespace Kavra::Devices
