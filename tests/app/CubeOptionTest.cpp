// Cube maps as flat pictures, and flat pictures as cube maps.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <span>

using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;
using Direction = std::array<double, 3>;

constexpr int kSide = 64;  // of the faces of cube.dds

/// A face of cube.dds, as four bytes a pixel.
Bytes Face(const Bytes& block, int face) {
    constexpr std::ptrdiff_t kBytes = kSide * kSide * 4;
    return {block.begin() + face * kBytes, block.begin() + (face + 1) * kBytes};
}

/// Squares of a picture of `columns` squares in a row.
Bytes Square(const Bytes& picture, int columns, int column, int row) {
    Bytes square;
    for (int y = 0; y < kSide; ++y) {
        const auto first = picture.begin() + ((row * kSide + y) * columns + column) * kSide * 4;
        square.insert(square.end(), first, first + kSide * 4);
    }
    return square;
}

/// Half a turn.
Bytes Turned(const Bytes& square) {
    Bytes turned(square.size());
    for (std::size_t i = 0; i < square.size(); i += 4)
        std::memcpy(turned.data() + square.size() - 4 - i, square.data() + i, 4);
    return turned;
}

std::vector<float> Floats(const Bytes& block) {
    std::vector<float> floats(block.size() / 4);
    std::memcpy(floats.data(), block.data(), block.size());
    return floats;
}

/// A map of floats whose colours say what direction they lie in: 0 to 1 for -1 to 1 along x, y and z; +z is in the middle.
std::filesystem::path DirectionMap(const std::filesystem::path& path, int width) {
    OIIO::ImageBuf image(OIIO::ImageSpec(width, width / 2, 3, OIIO::TypeDesc::FLOAT));
    for (OIIO::ImageBuf::Iterator<float> pixel(image); !pixel.done(); ++pixel) {
        const double azimuth = (2 * (pixel.x() + 0.5) / width - 1) * std::numbers::pi;
        const double polar = (pixel.y() + 0.5) * 2 / width * std::numbers::pi;
        const Direction d = {std::sin(polar) * std::sin(azimuth), std::cos(polar), std::sin(polar) * std::cos(azimuth)};
        for (std::size_t c = 0; c < 3; ++c)
            pixel[static_cast<int>(c)] = static_cast<float>((d[c] + 1) / 2);
    }
    EXPECT_TRUE(image.write(path.string())) << image.geterror();
    return path;
}

}  // namespace

TEST(CubeOption, ACrossHasFrontLeftRightBackInARowUpAboveAndDownBelow) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cube.dds"), folder / "cross.png", "--cube", "cross"});
    const Bytes cube = Dumped(Sample("cube.dds")), cross = Dumped(folder / "cross.png");
    ASSERT_EQ(cross.size(), 12U * kSide * kSide * 4);
    const auto at = [&](int column, int row) { return Square(cross, 4, column, row); };
    EXPECT_EQ(at(1, 1), Face(cube, 4)) << "+z";
    EXPECT_EQ(at(0, 1), Face(cube, 1)) << "-x";
    EXPECT_EQ(at(2, 1), Face(cube, 0)) << "+x";
    EXPECT_EQ(at(3, 1), Face(cube, 5)) << "-z";
    EXPECT_EQ(at(1, 0), Face(cube, 2)) << "+y";
    EXPECT_EQ(at(1, 2), Face(cube, 3)) << "-y";
    EXPECT_EQ(at(0, 0), Bytes(kSide * kSide * 4)) << "nothing";
}

TEST(CubeOption, AStripHasTheFacesInTheirOrder) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cube.dds"), folder / "strip.png", "--cube", "strip"});
    const Bytes cube = Dumped(Sample("cube.dds")), strip = Dumped(folder / "strip.png");
    for (int face = 0; face < 6; ++face)
        EXPECT_EQ(Square(strip, 6, face, 0), Face(cube, face)) << face;
}

TEST(CubeOption, WhatWasLaidOutBecomesTheSameCubeMapAgain) {
    const TemporaryFolder folder;
    const Bytes cube = Dumped(Sample("cube.dds"));
    for (const std::string form : {"cross", "strip"}) {
        ExpectDone({"convert", Sample("cube.dds"), folder / "flat.png", "--cube", form});
        ExpectDone({"convert", folder / "flat.png", folder / "again.dds", "--cube", form});
        EXPECT_EQ(Dumped(folder / "again.dds"), cube) << form;
        EXPECT_EQ(Described(folder / "again.dds")["textureType"], Described(Sample("cube.dds"))["textureType"]);
    }
}

TEST(CubeOption, AHighCrossHasTheBackUpsideDownAndAHighStripAllBelowOneAnother) {
    const TemporaryFolder folder;
    const Bytes cube = Dumped(Sample("cube.dds"));
    const std::array<std::array<int, 2>, 6> places = {{{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {1, 3}}};
    OIIO::ImageBuf cross(OIIO::ImageSpec(3 * kSide, 4 * kSide, 4, OIIO::TypeDesc::UINT8));
    for (int face = 0; face < 6; ++face) {
        const Bytes pixels = face == 5 ? Turned(Face(cube, face)) : Face(cube, face);
        const auto [column, row] = places[static_cast<std::size_t>(face)];
        cross.set_pixels(OIIO::ROI(column * kSide, (column + 1) * kSide, row * kSide, (row + 1) * kSide),
                         OIIO::TypeDesc::UINT8, pixels.data());
    }
    ASSERT_TRUE(cross.write((folder / "cross.tga").string()));
    ExpectDone({"convert", folder / "cross.tga", folder / "cross.dds", "--cube", "cross"});
    EXPECT_EQ(Dumped(folder / "cross.dds"), cube);

    OIIO::ImageBuf strip(OIIO::ImageSpec(kSide, 6 * kSide, 4, OIIO::TypeDesc::UINT8));
    strip.set_pixels(strip.roi(), OIIO::TypeDesc::UINT8, cube.data());
    ASSERT_TRUE(strip.write((folder / "strip.tga").string()));
    ExpectDone({"convert", folder / "strip.tga", folder / "strip.dds", "--cube", "strip"});
    EXPECT_EQ(Dumped(folder / "strip.dds"), cube);
}

TEST(CubeOption, EachFaceOfAMapLooksWhereItsAxisPoints) {
    const TemporaryFolder folder;
    constexpr int kFace = 32;
    const auto map = DirectionMap(folder / "map.exr", 4 * kFace);
    ExpectDone({"convert", map, folder / "cube.dds", "--cube", "equirect"});
    const std::vector<float> cube = Floats(Dumped(folder / "cube.dds", {"--format", "rgba32f"}));
    ASSERT_EQ(cube.size(), 6U * kFace * kFace * 4);
    // The middle of each face, and where the middles of its right and lower edges lie (nearly: half a pixel inside).
    struct Case {
        Direction middle, right, below;
    };
    const std::array<Case, 6> cases = {{{{1, 0, 0}, {0, 0, -1}, {0, -1, 0}},
                                        {{-1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
                                        {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}},
                                        {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}},
                                        {{0, 0, 1}, {1, 0, 0}, {0, -1, 0}},
                                        {{0, 0, -1}, {-1, 0, 0}, {0, -1, 0}}}};
    for (std::size_t face = 0; face < cases.size(); ++face) {
        for (const auto [x, y] :
             {std::array{16, 16}, std::array{31, 16}, std::array{16, 31}, std::array{31, 31}, std::array{0, 0}}) {
            const double s = 2 * (x + 0.5) / kFace - 1, t = 2 * (y + 0.5) / kFace - 1;
            const double length = std::sqrt(1 + s * s + t * t);
            const float* const pixel =
                cube.data() + ((face * kFace + static_cast<std::size_t>(y)) * kFace + static_cast<std::size_t>(x)) * 4;
            for (std::size_t c = 0; c < 3; ++c) {
                const double along = cases[face].middle[c] + s * cases[face].right[c] + t * cases[face].below[c];
                EXPECT_NEAR(2 * pixel[c] - 1, along / length, 0.02) << "face " << face << " at " << x << "," << y;
            }
        }
    }
}

TEST(CubeOption, AMapBecomesAMapAgain) {
    const TemporaryFolder folder;
    const auto map = DirectionMap(folder / "map.exr", 256);
    ExpectDone({"convert", map, folder / "cube.dds", "--cube", "equirect"});
    ExpectDone({"convert", folder / "cube.dds", folder / "again.exr", "--cube", "equirect"});
    const std::vector<float> before = Floats(Dumped(map, {"--format", "rgba32f"}));
    const std::vector<float> after = Floats(Dumped(folder / "again.exr", {"--format", "rgba32f"}));
    ASSERT_EQ(before.size(), after.size());
    double largest = 0;
    for (std::size_t i = 0; i < before.size(); ++i)
        largest = std::max(largest, std::abs(static_cast<double>(before[i]) - after[i]));
    EXPECT_LT(largest, 0.02) << "of a range of 1, also at the poles and where the map closes";
}

TEST(CubeOption, ThePoleOfAMapOfStripesIsTheirMean) {
    const TemporaryFolder folder;
    constexpr int kWidth = 256, kFace = kWidth / 4;
    std::vector<float> stripes(std::size_t{kWidth} * kWidth / 2 * 3);
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = i / 3 % 2 == 0 ? 1.0F : 0.0F;
    const auto map = WriteFloats(folder / "map.exr", kWidth, kWidth / 2, 3, stripes);
    ExpectDone({"convert", map, folder / "cube.dds", "--cube", "equirect"});
    const std::vector<float> cube = Floats(Dumped(folder / "cube.dds", {"--format", "rgba32f"}));
    for (const int face : {2, 3}) {
        for (int y = kFace / 2 - 8; y < kFace / 2 + 8; ++y) {
            for (int x = kFace / 2 - 8; x < kFace / 2 + 8; ++x)
                ASSERT_NEAR(cube[static_cast<std::size_t>((face * kFace + y) * kFace + x) * 4], 0.5, 0.05)
                    << x << "," << y;
        }
    }
}

TEST(CubeOption, ValuesGoOnFromFaceToFace) {
    const TemporaryFolder folder;
    // +x is white, all else black; faces of two pixels, whose middles lie 27 degrees from the edge.
    OIIO::ImageBuf strip(OIIO::ImageSpec(12, 2, 3, OIIO::TypeDesc::FLOAT));
    for (OIIO::ImageBuf::Iterator<float> pixel(strip); !pixel.done(); ++pixel) {
        for (int c = 0; c < 3; ++c)
            pixel[c] = pixel.x() < 2 ? 1.0F : 0.0F;
    }
    ASSERT_TRUE(strip.write((folder / "strip.exr").string()));
    ExpectDone({"convert", folder / "strip.exr", folder / "cube.dds", "--cube", "strip"});
    ExpectDone({"convert", folder / "cube.dds", folder / "map.exr", "--cube", "equirect"});
    const std::vector<float> map = Floats(Dumped(folder / "map.exr", {"--format", "rgba32f"}));
    // Columns 5 and 6 of 8 look at +x, which ends between 4 and 5: a sample that is nearest to that edge is in between.
    const auto at = [&](std::size_t column) { return map[(std::size_t{2} * 8 + column) * 4]; };
    EXPECT_GT(at(4), 0.1F);
    EXPECT_LT(at(5), 0.9F);
}

TEST(CubeOption, AnEvenMapStaysEvenAtEverySize) {
    const TemporaryFolder folder;
    for (const int width : {4, 6, 100}) {
        const auto map = WriteFloats(folder / "map.exr", width, width / 2, 3,
                                     std::vector<float>(static_cast<std::size_t>(width * width / 2 * 3), 0.5F));
        ExpectDone({"convert", map, folder / "cube.dds", "--cube", "equirect"});
        for (const float value : Floats(Dumped(folder / "cube.dds", {"--format", "rgba32f"})))
            ASSERT_TRUE(std::abs(value - 0.5F) < 1e-4F || value == 1.0F) << width;
    }
}

TEST(CubeOption, WhatHasNotTheShapeIsRefusedWithTheShape) {
    const TemporaryFolder folder;
    const auto flat = WritePicture(folder / "flat.png", 30, 20, [](int, int) { return Colour{1, 2, 3}; });
    const auto expect = [&](const std::string& form, const std::string& shape) {
        ExpectFailed({"convert", flat, folder / "out.dds", "--cube", form},
                     ErrorLine(flat, "30 x 20 pixels, and a picture of the form " + form + " is " + shape));
    };
    expect("cross", "4 x 3 or 3 x 4 squares");
    expect("strip", "6 x 1 or 1 x 6 squares");
    expect("equirect", "twice as wide as high, and 4 pixels or more");
    ExpectFailed({"convert", Sample("volume.dds"), folder / "out.png", "--cube", "cross"},
                 ErrorLine(Sample("volume.dds"), "a volume, and no cube map"));
    const auto map = WritePicture(folder / "map.png", 8, 4, [](int, int) { return Colour{1, 2, 3}; });
    ExpectFailed(
        {"convert", map, folder / "out.png", "--cube", "equirect"},
        ErrorLine(folder / "out.png",
                  "cannot be written: it is a cube map, and of the files that are written .dds and .ktx2 hold one"));
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"flat.png", "map.png"}));
}
