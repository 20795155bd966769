// The size, row and column order of a loaded texture.

#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;
using OIIO::ImageSpec;

class TextureGeometry : public ::testing::Test {
protected:
    /// A grey TIFF whose pixels count up from 0.
    std::filesystem::path Counting(int width, int height, int exifOrientation = 1) {
        Bytes pixels(static_cast<std::size_t>(width * height));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<unsigned char>(i);
        ImageSpec spec(width, height, 1, OIIO::TypeUInt8);
        spec.attribute("Orientation", exifOrientation);
        return WritePicture(folder / "counting.tif", spec, pixels);
    }
    TemporaryFolder folder;
    MessageRecorder messages;
};

// --- Size ------------------------------------------------------------------------------------------------------------

TEST_F(TextureGeometry, SizesBelowOneMeanTheFilesOwn) {
    for (const auto& [width, height] : {std::pair(0, 0), {-5, 0}, {0, -1}}) {
        const LoadedTexture texture = LoadFile(Counting(4, 3), {.width = width, .height = height});
        ASSERT_TRUE(texture);
        EXPECT_EQ(texture.desc.width, 4);
        EXPECT_EQ(texture.desc.height, 3);
        EXPECT_EQ(texture.desc.dataSize, 12U);
    }
}

TEST_F(TextureGeometry, AnImageIsNeverEnlarged) {
    const LoadedTexture texture = LoadFile(Counting(4, 3), {.width = 100, .height = 0x7FFFFFFF});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 4);
    EXPECT_EQ(texture.desc.height, 3);
    EXPECT_EQ(texture.bytes, (Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST_F(TextureGeometry, AShrunkImageIsDescribedAsItIs) {
    // 20 x 10 to 10 x 5 is too small to filter: the nearest pixel of each cell, its lower right one.
    Bytes pixels;
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 20; ++x)
            pixels.push_back(static_cast<unsigned char>(y / 2 * 10 + x / 2));
    }
    const auto path = WritePicture(folder / "a.tif", ImageSpec(20, 10, 1, OIIO::TypeUInt8), pixels);
    const LoadedTexture texture = LoadFile(path, {.width = 10, .height = 5, .format = kR8G8B8A8});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 10);
    EXPECT_EQ(texture.desc.height, 5);
    EXPECT_EQ(texture.desc.rowPitch, 40);
    EXPECT_EQ(texture.desc.dataSize, 200U);
    Bytes expected;
    for (unsigned char i = 0; i < 50; ++i)
        expected.insert(expected.end(), {i, i, i, 255});
    EXPECT_EQ(texture.bytes, expected);
}

TEST_F(TextureGeometry, OneSideMayShrinkAlone) {
    const LoadedTexture texture = LoadFile(Counting(8, 8), {.width = 2});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 2);
    EXPECT_EQ(texture.desc.height, 8);
    EXPECT_EQ(texture.desc.rowPitch, 2);
    EXPECT_EQ(texture.bytes.size(), 16U);
}

TEST_F(TextureGeometry, HighQualityFiltersEvenASmallChange) {
    Bytes pixels;
    for (int i = 0; i < 40 * 40; ++i)
        pixels.push_back(i % 40 % 2 == 0 ? 0 : 255);
    const auto path = WritePicture(folder / "stripes.tif", ImageSpec(40, 40, 1, OIIO::TypeUInt8), pixels);
    const auto hasGrey = [](const Bytes& bytes) {
        return std::ranges::any_of(bytes, [](unsigned char value) { return value > 20 && value < 235; });
    };
    const LoadedTexture sampled = LoadFile(path, {.width = 39});
    const LoadedTexture filtered = LoadFile(path, {.width = 39, .highQuality = true});
    ASSERT_TRUE(sampled && filtered);
    EXPECT_FALSE(hasGrey(sampled.bytes));
    EXPECT_TRUE(hasGrey(filtered.bytes));
}

TEST_F(TextureGeometry, ACroppedPictureShrinksToItsOwnPixels) {
    ImageSpec spec(40, 40, 4, OIIO::TypeFloat);
    spec.x = 100, spec.y = 200;
    spec.full_width = 1000, spec.full_height = 1000;
    Floats pixels;
    for (int i = 0; i < 40 * 40; ++i)
        pixels.insert(pixels.end(), {0.5F, 0.25F, 2, 1});
    const auto path = WritePicture(folder / "cropped.exr", spec, pixels);
    for (const bool highQuality : {false, true}) {
        const LoadedTexture texture = LoadFile(path, {.width = 20, .height = 20, .highQuality = highQuality}, OpenEXR);
        ASSERT_TRUE(texture);
        const Floats shrunk = texture.As<float>();
        ASSERT_EQ(shrunk.size(), 20U * 20 * 4);
        for (const std::size_t pixel : {0, 19, 210, 399}) {
            EXPECT_FLOAT_EQ(shrunk[4 * pixel], 0.5F) << pixel;
            EXPECT_FLOAT_EQ(shrunk[4 * pixel + 2], 2) << pixel;
        }
    }
}

TEST_F(TextureGeometry, ACroppedPictureTurnsAboutItsOwnPixels) {
    ImageSpec spec(2, 1, 3, OIIO::TypeFloat);
    spec.x = 5, spec.y = 7;
    spec.full_width = 50, spec.full_height = 60;
    const auto path = WritePicture<float>(folder / "cropped.exr", spec, {1, 2, 3, 4, 5, 6});
    const LoadedTexture texture = LoadFile(path, {.orientation = kRightTop}, OpenEXR);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 1);
    EXPECT_EQ(texture.desc.height, 2);
    // Stored so that a quarter turn clockwise shows it: the right column is the first row.
    EXPECT_EQ(texture.As<float>(), (Floats{4, 5, 6, 1, 1, 2, 3, 1}));
}

// --- Orientation -----------------------------------------------------------------------------------------------------

TEST_F(TextureGeometry, EveryExifOrientationComesUpright) {
    // The picture 0 1 2 / 3 4 5 as each orientation stores it.
    const Bytes upright = {0, 1, 2, 3, 4, 5};
    struct Case {
        int exif, width;
        Bytes stored;
    };
    const std::vector<Case> cases = {
        {1, 3, {0, 1, 2, 3, 4, 5}}, {2, 3, {2, 1, 0, 5, 4, 3}}, {3, 3, {5, 4, 3, 2, 1, 0}}, {4, 3, {3, 4, 5, 0, 1, 2}},
        {5, 2, {0, 3, 1, 4, 2, 5}}, {6, 2, {2, 5, 1, 4, 0, 3}}, {7, 2, {5, 2, 4, 1, 3, 0}}, {8, 2, {3, 0, 4, 1, 5, 2}},
    };
    for (const Case& each : cases) {
        ImageSpec spec(each.width, 6 / each.width, 1, OIIO::TypeUInt8);
        spec.attribute("Orientation", each.exif);
        const auto path = WritePicture(folder / "turned.tif", spec, each.stored);
        const LoadedTexture texture = LoadFile(path);
        ASSERT_TRUE(texture) << each.exif;
        EXPECT_EQ(texture.bytes, upright) << each.exif;
        EXPECT_EQ(texture.desc.width, 3) << each.exif;
        EXPECT_EQ(texture.desc.height, 2) << each.exif;
        EXPECT_EQ(texture.desc.rowPitch, 3) << each.exif;
        EXPECT_EQ(texture.desc.orientation, kTopLeft) << each.exif;
    }
}

TEST_F(TextureGeometry, AJpegIsTurnedUprightToo) {
    ImageSpec spec(32, 16, 3, OIIO::TypeUInt8);
    spec.attribute("Orientation", 6);
    Bytes pixels;
    for (int i = 0; i < 32 * 16; ++i)
        pixels.insert(pixels.end(), 3, i % 32 < 16 ? 255 : 0);  // white, black
    const LoadedTexture texture = LoadFile(WritePicture(folder / "a.jpg", spec, pixels));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 16);
    EXPECT_EQ(texture.desc.height, 32);
    EXPECT_GT(texture.bytes[0], 250);  // the left half is on top
    EXPECT_LT(texture.bytes[16 * 31 * 4], 5);
    EXPECT_EQ(texture.bytes[3], 255);
}

TEST_F(TextureGeometry, TheFilesOwnOrientationLeavesThePixelsAlone) {
    const LoadedTexture texture = LoadFile(Counting(3, 2, 6), {.orientation = kRightTop});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(texture.desc.width, 3);
    EXPECT_FALSE(texture.desc.defaultOrientation);
}

TEST_F(TextureGeometry, AnOrientationThatIsNoneCountsAsUpright) {
    const LoadedTexture texture = LoadFile(Counting(3, 2), {.orientation = static_cast<EDataOrientation>(9)});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{0, 1, 2, 3, 4, 5}));
}

TEST_F(TextureGeometry, SizesAreLimitedBeforeTheTurn) {
    const LoadedTexture texture = LoadFile(Counting(40, 30, 6), {.width = 20});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 30);
    EXPECT_EQ(texture.desc.height, 20);
    EXPECT_EQ(texture.desc.rowPitch, 30);
    EXPECT_EQ(texture.desc.dataSize, 600U);
}

TEST_F(TextureGeometry, TurnsWholePixelsOfEveryFormat) {
    const auto path = WritePicture<float>(folder / "a.tif", ImageSpec(2, 1, 3, OIIO::TypeFloat), {0.5F, 1, 2, 3, 4, 5});
    const LoadedTexture texture = LoadFile(path, {.orientation = kBottomRight});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.As<float>(), (Floats{3, 4, 5, 1, 0.5F, 1, 2, 1}));
}

// Both kinds of files below are delivered by the library in an order that their description does not follow; callers
// rely on it.

TEST_F(TextureGeometry, DecreasingRowsOfAnExrCountAsUpsideDown) {
    ImageSpec spec(1, 2, 3, OIIO::TypeFloat);
    spec.attribute("openexr:lineOrder", "decreasingY");
    const auto path = WritePicture<float>(folder / "a.exr", spec, {1, 1, 1, 2, 2, 2});
    const LoadedTexture upright = LoadFile(path, {.orientation = kTopLeft}, OpenEXR);
    const LoadedTexture stored = LoadFile(path, {.orientation = kBottomLeft}, OpenEXR);
    ASSERT_TRUE(upright && stored);
    EXPECT_EQ(upright.As<float>(), (Floats{2, 2, 2, 1, 1, 1, 1, 1}));
    EXPECT_EQ(stored.As<float>(), (Floats{1, 1, 1, 1, 2, 2, 2, 1}));
}

TEST_F(TextureGeometry, RadianceRowsComeAsTheyAreStored) {
    const std::string header = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n+Y 2 +X 1\n";
    Bytes file(header.begin(), header.end());
    file.insert(file.end(), {128, 0, 0, 129, 0, 128, 0, 129});  // a red pixel below, a green one above
    const LoadedTexture texture = LoadFile(folder.Write("a.hdr", file));
    ASSERT_TRUE(texture);
    const Floats values = texture.As<float>();
    ASSERT_EQ(values.size(), 8U);
    EXPECT_GT(values[0], values[1]);
    EXPECT_GT(values[5], values[4]);
    EXPECT_EQ(values[3], 1);
}

}  // namespace
}  // namespace Kavra::Tests
