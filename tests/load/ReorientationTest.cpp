#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace Kavra::Devices {
namespace {

using OIIO::ImageBuf;
using OIIO::ImageSpec;
using OIIO::TypeDesc;
namespace Algorithm = OIIO::ImageBufAlgo;

using Bytes = std::vector<unsigned char>;

TEST(Orientation, EachHostOrientationHasItsExifNumber) {
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kTopLeft), 1);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kTopRight), 2);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kBottomLeft), 4);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kBottomRight), 3);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kLeftTop), 5);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kRightTop), 6);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kLeftBottom), 8);
    EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(kRightBottom), 7);
}

TEST(Orientation, AnyOtherValueIsUpright) {
    for (const int value : {-1, 8, 9, 1'000'000}) {
        EXPECT_EQ(OIIOImageHandler::ToOIIOOrientation(static_cast<EDataOrientation>(value)), 1) << value;
    }
}

/// The bytes of all pixels in the image's own type.
Bytes BytesOf(const ImageBuf& image) {
    Bytes bytes(image.spec().image_pixels() * image.spec().pixel_bytes());
    EXPECT_TRUE(image.get_pixels(image.roi(), image.spec().format, bytes.data()));
    return bytes;
}

Bytes RandomBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

/// Any bits there are, not-a-numbers included.
ImageBuf Noise(const ImageSpec& spec) {
    const Bytes bytes = RandomBytes(spec.image_pixels() * spec.pixel_bytes(), static_cast<unsigned>(spec.width));
    ImageBuf image(spec, OIIO::InitializePixels::Yes);
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(image.localpixels()));
    return image;
}

/// The image rotated with the library's operations, as orientation numbers are defined through them.
ImageBuf TurnedByLibrary(const ImageBuf& image, int from, int to) {
    using Operation = std::function<ImageBuf(const ImageBuf&)>;
    const std::map<std::string, Operation> operations = {
        {"copy", [](const ImageBuf& i) { return i.copy(OIIO::TypeUnknown); }},
        {"flip", [](const ImageBuf& i) { return Algorithm::flip(i); }},
        {"flop", [](const ImageBuf& i) { return Algorithm::flop(i); }},
        {"rotate90", [](const ImageBuf& i) { return Algorithm::rotate90(i); }},
        {"rotate180", [](const ImageBuf& i) { return Algorithm::rotate180(i); }},
        {"rotate270", [](const ImageBuf& i) { return Algorithm::rotate270(i); }},
    };
    const std::vector<std::string> undo[9] = {{},           {"copy"},
                                              {"flop"},     {"rotate180"},
                                              {"flip"},     {"rotate90", "flop"},
                                              {"rotate90"}, {"flip", "rotate270"},
                                              {"rotate270"}};
    const std::vector<std::string> apply[9] = {
        {},          {}, {"flop"}, {"rotate180"}, {"flip"}, {"flop", "rotate270"}, {"rotate270"}, {"rotate90", "flip"},
        {"rotate90"}};
    if (from == to) return operations.at("copy")(image);
    if (from < 1 || from > 8) return {};
    ImageBuf result;
    const ImageBuf* source = &image;
    for (const auto& name : undo[from]) {
        result = operations.at(name)(*source);
        source = &result;
    }
    if (to < 2 || to > 8) return result;
    for (const auto& name : apply[to])
        result = operations.at(name)(result);
    return result;
}

void ExpectSameImage(const ImageBuf& actual, const ImageBuf& expected) {
    ASSERT_EQ(actual.initialized(), expected.initialized());
    if (!expected.initialized()) return;
    const ImageSpec& a = actual.spec();
    const ImageSpec& e = expected.spec();
    EXPECT_EQ(a.roi(), e.roi());
    EXPECT_EQ(a.roi_full(), e.roi_full());
    EXPECT_EQ(a.format, e.format);
    EXPECT_EQ(a.channelformats, e.channelformats);
    EXPECT_EQ(a.channelnames, e.channelnames);
    EXPECT_EQ(a.alpha_channel, e.alpha_channel);
    EXPECT_EQ(a.z_channel, e.z_channel);
    EXPECT_EQ(a.tile_width, e.tile_width);
    EXPECT_EQ(a.deep, e.deep);
    EXPECT_EQ(a.serialize(ImageSpec::SerialText, ImageSpec::SerialDetailed),
              e.serialize(ImageSpec::SerialText, ImageSpec::SerialDetailed));
    EXPECT_TRUE(BytesOf(actual) == BytesOf(expected));
}

/// Compares all pairs of orientations, numbers that are none included.
void ExpectAsTheLibraryTurns(const ImageBuf& image) {
    for (int from = 0; from <= 9; ++from) {
        for (int to = 0; to <= 9; ++to) {
            SCOPED_TRACE("from " + std::to_string(from) + " to " + std::to_string(to));
            ExpectSameImage(OIIOImageHandler::ReorientImage(image, from, to), TurnedByLibrary(image, from, to));
            if (::testing::Test::HasFailure()) return;
        }
    }
}

/// A picture of letters, one byte each, a row a word.
ImageBuf Letters(const std::vector<std::string>& rows) {
    ImageBuf image(ImageSpec(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 1, TypeDesc::UINT8));
    for (std::size_t y = 0; y < rows.size(); ++y) {
        std::copy(rows[y].begin(), rows[y].end(), static_cast<char*>(image.localpixels()) + y * rows[0].size());
    }
    return image;
}
std::vector<std::string> RowsOf(const ImageBuf& image) {
    std::vector<std::string> rows;
    const Bytes bytes = BytesOf(image);
    for (auto at = bytes.begin(); at != bytes.end(); at += image.spec().width)
        rows.emplace_back(at, at + image.spec().width);
    return rows;
}
using Rows = std::vector<std::string>;

TEST(Reorientation, EachOrientationIsUndone) {
    const ImageBuf image = Letters({"abc", "def"});
    const Rows upright[9] = {{},
                             {"abc", "def"},
                             {"cba", "fed"},
                             {"fed", "cba"},
                             {"def", "abc"},
                             {"ad", "be", "cf"},
                             {"da", "eb", "fc"},
                             {"fc", "eb", "da"},
                             {"cf", "be", "ad"}};
    for (int from = 1; from <= 8; ++from) {
        EXPECT_EQ(RowsOf(OIIOImageHandler::ReorientImage(image, from, 1)), upright[from]) << from;
    }
}

TEST(Reorientation, EachOrientationIsApplied) {
    const ImageBuf image = Letters({"abc", "def"});
    const Rows stored[9] = {{},
                            {"abc", "def"},
                            {"cba", "fed"},
                            {"fed", "cba"},
                            {"def", "abc"},
                            {"ad", "be", "cf"},
                            {"cf", "be", "ad"},
                            {"fc", "eb", "da"},
                            {"da", "eb", "fc"}};
    for (int to = 1; to <= 8; ++to) {
        EXPECT_EQ(RowsOf(OIIOImageHandler::ReorientImage(image, 1, to)), stored[to]) << to;
    }
}

TEST(Reorientation, AQuarterRotationExchangesTheSides) {
    const ImageBuf rotated = OIIOImageHandler::ReorientImage(Noise(ImageSpec(40, 30, 4, TypeDesc::UINT8)), 6, 1);
    EXPECT_EQ(rotated.spec().width, 30);
    EXPECT_EQ(rotated.spec().height, 40);
}

TEST(Reorientation, ThereAndBackIsTheSameImage) {
    const ImageBuf image = Noise(ImageSpec(67, 131, 3, TypeDesc::UINT16));
    for (int from = 1; from <= 8; ++from) {
        for (int to = 1; to <= 8; ++to) {
            const ImageBuf rotated = OIIOImageHandler::ReorientImage(image, from, to);
            EXPECT_TRUE(BytesOf(OIIOImageHandler::ReorientImage(rotated, to, from)) == BytesOf(image)) << from << to;
        }
    }
}

TEST(Reorientation, EqualOrientationsGiveACopyWhateverTheirNumber) {
    Bytes memory = RandomBytes(5 * 3 * 4, 1);
    const ImageBuf image(ImageSpec(5, 3, 4, TypeDesc::UINT8), memory.data());
    for (const int orientation : {-7, 0, 1, 2, 8, 9, 99}) {
        const ImageBuf copy = OIIOImageHandler::ReorientImage(image, orientation, orientation);
        EXPECT_EQ(BytesOf(copy), memory) << orientation;
        EXPECT_NE(copy.localpixels(), image.localpixels());
    }
}

TEST(Reorientation, AnUnknownSourceOrientationGivesNothing) {
    const ImageBuf image = Letters({"abc", "def"});
    for (const int from : {-1, 0, 9, 99}) {
        EXPECT_FALSE(OIIOImageHandler::ReorientImage(image, from, 1).initialized()) << from;
    }
}

TEST(Reorientation, AnUnknownTargetOrientationIsUpright) {
    const ImageBuf image = Letters({"abc", "def"});
    for (const int to : {-1, 0, 9, 99}) {
        EXPECT_EQ(RowsOf(OIIOImageHandler::ReorientImage(image, 8, to)), (Rows{"cf", "be", "ad"})) << to;
        EXPECT_EQ(RowsOf(OIIOImageHandler::ReorientImage(image, 1, to)), (Rows{"abc", "def"})) << to;
    }
}

TEST(Reorientation, EveryPairTurnsAsTheLibraryDoes) {
    for (const TypeDesc type : {TypeDesc::UINT8, TypeDesc::UINT16, TypeDesc::HALF, TypeDesc::FLOAT}) {
        for (const int channels : {1, 2, 3, 4, 5}) {
            for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {1, 9}, {9, 1}, {67, 131}}) {
                SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + "x" + std::to_string(channels) +
                             " " + type.c_str());
                ExpectAsTheLibraryTurns(Noise(ImageSpec(width, height, channels, type)));
            }
        }
    }
}

TEST(Reorientation, LargeImagesRotateAsTheLibraryDoes) {
    ExpectAsTheLibraryTurns(Noise(ImageSpec(300, 517, 4, TypeDesc::UINT8)));  // enough for several threads
    ExpectAsTheLibraryTurns(Noise(ImageSpec(517, 300, 1, TypeDesc::FLOAT)));
}

TEST(Reorientation, OtherElementTypesRotateAsTheLibraryDoes) {
    for (const TypeDesc type : {TypeDesc::INT8, TypeDesc::INT16, TypeDesc::UINT32, TypeDesc::INT32}) {
        ExpectAsTheLibraryTurns(Noise(ImageSpec(5, 7, 3, type)));
    }
}

TEST(Reorientation, PixelsMayLieAnywhereInCallerMemory) {
    Bytes memory = RandomBytes(4000, 3);
    const ImageSpec spec(9, 7, 3, TypeDesc::UINT8);
    unsigned char* middle = memory.data() + 2000;
    struct Strides {
        std::ptrdiff_t x, y;
    };
    for (const auto [x, y] :
         {Strides{3, 40}, {3, -27}, {5, 61}, {21, 3}, {4, -100}, {-3, 27}, {-3, -30}, {-21, 3}, {21, -3}}) {
        const ImageBuf image(spec, middle, x, y);
        ImageBuf packed(spec);
        std::ranges::copy(BytesOf(image), static_cast<unsigned char*>(packed.localpixels()));
        for (int from = 1; from <= 8; ++from) {
            for (int to = 1; to <= 8; ++to) {
                EXPECT_EQ(BytesOf(OIIOImageHandler::ReorientImage(image, from, to)),
                          BytesOf(TurnedByLibrary(packed, from, to)))
                    << x << ", " << y << " from " << from << " to " << to;
            }
        }
    }
}

TEST(Reorientation, DescriptionsComeThroughAsInTheLibrary) {
    ImageSpec spec(6, 4, 4, TypeDesc::UINT8);
    spec.attribute("Orientation", 6);
    spec.attribute("oiio:SHA-1", "0123");
    spec.attribute("oiio:subimages", 3);
    spec.attribute("textureformat", "Plain Texture");
    spec.tile_width = spec.tile_height = 16;
    spec.z_channel = 1;
    ExpectAsTheLibraryTurns(Noise(spec));
    EXPECT_EQ(OIIOImageHandler::ReorientImage(Noise(spec), 6, 1).spec().get_int_attribute("Orientation"), 6);
    spec.channelnames.resize(2);
    ExpectAsTheLibraryTurns(Noise(spec));
    spec.channelnames = {"a", "b", "c", "d", "e", "f"};
    ExpectAsTheLibraryTurns(Noise(spec));
}

TEST(Reorientation, AStackOfCubeFacesTurnsAsAWhole) {
    ImageSpec spec(5, 30, 4, TypeDesc::UINT8);
    spec.full_height = 5;
    ExpectAsTheLibraryTurns(Noise(spec));
}

TEST(Reorientation, DataWindowsKeepTheirPlaceInThePicture) {
    ImageSpec spec(5, 3, 4, TypeDesc::HALF);
    spec.x = 1, spec.y = 2, spec.full_width = 9, spec.full_height = 11;
    ExpectAsTheLibraryTurns(Noise(spec));
    spec.x = -2, spec.y = -1;
    ExpectAsTheLibraryTurns(Noise(spec));
    spec.x = 40, spec.y = 2'000'000'000;
    ExpectAsTheLibraryTurns(Noise(spec));
}

TEST(Reorientation, PicturesAwayFromTheOriginRotateAsInTheLibrary) {
    ImageSpec spec(5, 3, 4, TypeDesc::UINT8);
    spec.x = spec.full_x = 2, spec.y = spec.full_y = 7;
    ExpectAsTheLibraryTurns(Noise(spec));
}

TEST(Reorientation, VolumesRotateAsInTheLibrary) {
    ImageSpec spec(5, 3, 4, TypeDesc::UINT8);
    spec.depth = 3;
    ExpectAsTheLibraryTurns(Noise(spec));
    spec.full_depth = 3;
    ExpectAsTheLibraryTurns(Noise(spec));
}

TEST(Reorientation, ImagesWithoutPixelsGiveNothing) {
    EXPECT_FALSE(OIIOImageHandler::ReorientImage(ImageBuf(), 6, 1).initialized());
    EXPECT_FALSE(OIIOImageHandler::ReorientImage(ImageBuf(), 1, 1).initialized());
    unsigned char memory[64] = {};
    for (int ImageSpec::* side : {&ImageSpec::width, &ImageSpec::height}) {
        ImageSpec spec(3, 3, 4, TypeDesc::UINT8);
        spec.*side = 0;
        EXPECT_FALSE(OIIOImageHandler::ReorientImage(ImageBuf(spec, memory), 3, 1).initialized());
    }
    const ImageBuf typeless(ImageSpec(3, 3, 4, TypeDesc::UNKNOWN), memory);
    EXPECT_FALSE(OIIOImageHandler::ReorientImage(typeless, 3, 1).initialized());
}

TEST(Reorientation, DeepImagesGiveNothingButCopies) {
    ImageSpec spec(4, 2, 1, TypeDesc::FLOAT);
    spec.deep = true;
    const ImageBuf deep(spec);
    EXPECT_FALSE(OIIOImageHandler::ReorientImage(deep, 6, 1).initialized());
    EXPECT_TRUE(OIIOImageHandler::ReorientImage(deep, 6, 6).initialized());
}

TEST(Reorientation, AnImageThatNoMemoryHoldsGivesNothing) {
    const ImageBuf image = Noise(ImageSpec(10, 10, 4, TypeDesc::UINT8));
    Objects::ObjModel::SetBlockCeiling(399);
    const ImageBuf tooLarge = OIIOImageHandler::ReorientImage(image, 6, 1);
    Objects::ObjModel::SetBlockCeiling(400);
    const ImageBuf fitting = OIIOImageHandler::ReorientImage(image, 6, 1);
    Objects::ObjModel::SetBlockCeiling(0);
    EXPECT_FALSE(tooLarge.initialized());
    EXPECT_TRUE(fitting.initialized());
}

}  // namespace
}  // namespace Kavra::Devices
