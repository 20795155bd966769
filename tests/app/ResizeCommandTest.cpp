// Another size: filtered, cropped and padded, or copied as it is.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

/// A 6 x 4 picture that says its places, cropped or padded.
PictureFile Cropped(const TemporaryFolder& folder, const std::string& size) {
    const auto in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    ExpectDone({"resize", in, folder / "out.png", "--size", size, "--method", "crop"});
    return PictureFile(folder / "out.png");
}

}  // namespace

TEST(ResizeCommand, CropKeepsEveryPixelInItsPlaceAndFillsUpWithZeros) {
    const TemporaryFolder folder;
    // Wider and narrower, higher and lower, in every combination.
    for (const std::string size : {"9x7", "9x3", "4x7", "4x3", "6x4"}) {
        const PictureFile out = Cropped(folder, size);
        EXPECT_EQ(out.Size(), size);
        for (int y = 0; y < out.Height(); ++y) {
            for (int x = 0; x < out.Width(); ++x)
                EXPECT_EQ(out.At(x, y), x < 6 && y < 4 ? PlaceColour(x, y) : (Colour{0, 0, 0, 0})) << size;
        }
    }
}

TEST(ResizeCommand, NearestRepeatsPixels) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 2, PlaceColour);
    ExpectDone({"resize", in, folder / "out.png", "--size", "6x4", "--filter", "nearest"});
    const PictureFile out(folder / "out.png");
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(out.At(x, y), PlaceColour(x / 3, y / 2));
    }
}

TEST(ResizeCommand, EachFilterMakesTheSizeAndKeepsAnEvenColour) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.tif", 50, 40, [](int, int) { return Colour{200, 100, 50, 150}; });
    for (const auto& [filter, size] : {std::pair{"nearest", "25x10"},
                                       {"mitchell", "25x10"},
                                       {"mitchell", "77x90"},
                                       {"linear", "25x10"},
                                       {"Linear", "77x90"}}) {
        ExpectDone({"resize", in, folder / "out.png", "--size", size, "--method", "filter", "--filter", filter});
        const PictureFile picture(folder / "out.png");
        EXPECT_EQ(picture.Size(), size);
        for (const int x : {0, picture.Width() / 2, picture.Width() - 1})
            EXPECT_EQ(picture.At(x, picture.Height() / 2), (Colour{200, 100, 50, 150})) << filter << size;
    }
}

TEST(ResizeCommand, LinearBlendsBetweenTwoPixelsWhereNearestDoesNot) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 1, [](int x, int) { return Colour{x * 200}; });
    const auto greys = [&](const std::string& filter) {
        ExpectDone({"resize", in, folder / "out.png", "--size", "8x1", "--filter", filter});
        return PictureFile(folder / "out.png").Bytes();
    };
    // Pixel centres lie at 0.25 and 0.75 of the width; between them the blend is even.
    EXPECT_EQ(greys("linear"), (std::vector<unsigned char>{0, 0, 25, 75, 125, 175, 200, 200}));
    EXPECT_EQ(greys("nearest"), (std::vector<unsigned char>{0, 0, 0, 0, 200, 200, 200, 200}));
}

TEST(ResizeCommand, CopyWritesThePictureAsItIsAndSaysSoWhenAnotherSizeWasAsked) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    const auto out = folder / "out.png";
    ExpectDone({"resize", in, out, "--method", "copy"});
    EXPECT_EQ(PictureFile(out).Bytes(), PictureFile(in).Bytes());
    ExpectDone({"resize", in, out, "--method", "copy", "--size", "3x2"},
               NoteLine(in, "copied as it is, 6 x 4 pixels; --method filter or crop changes the size"));
    EXPECT_EQ(PictureFile(out).Bytes(), PictureFile(in).Bytes());
}

TEST(ResizeCommand, CopyKeepsAllFacesOfACubeMap) {
    const TemporaryFolder folder;
    ExpectDone({"resize", Sample("cube.dds"), folder / "copy.dds", "--method", "copy"});
    EXPECT_EQ(Dumped(folder / "copy.dds").size(), 6U * 64 * 64 * 4);
    EXPECT_EQ(Dumped(folder / "copy.dds"), Dumped(Sample("cube.dds")));
}

TEST(ResizeCommand, OfACubeMapTheFirstFaceIsResizedWithANote) {
    const TemporaryFolder folder;
    ExpectDone({"resize", Sample("cube.dds"), folder / "out.dds", "--size", "16x16"},
               NoteLine(Sample("cube.dds"), "a cube map; only its first face is used"));
    EXPECT_EQ(std::filesystem::file_size(folder / "out.dds"), 128U + 16 * 16 * 4);
}

TEST(ResizeCommand, GreyFloatAndSixteenBitPicturesKeepTheirFormat) {
    const TemporaryFolder folder;
    for (const auto& [in, format] : {std::pair{"grey.png", "kL8"},
                                     {"photo-16bit.png", "kR16G16B16A16"},
                                     {"float.tif", "kR32G32B32A32F"},
                                     {"depth.exr", "kR32G32B32A32F"}}) {
        ExpectDone({"resize", Sample(in), folder / "out.tif", "--size", "31x17"});
        EXPECT_EQ(Described(folder / "out.tif")["formatName"], format) << in;
        EXPECT_EQ(PictureFile(folder / "out.tif").Size(), "31x17") << in;
    }
}

TEST(ResizeCommand, SizesThatNoMemoryHoldsAreRefusedBeforeTheyAreTried) {
    const TemporaryFolder folder;
    const auto photo = Sample("photo.tga");
    const auto out = folder / "out.png";
    for (const std::string method : {"filter", "crop"}) {
        ExpectFailed({"resize", photo, out, "--size", "1000000x1000000", "--method", method},
                     ErrorLine(photo,
                               "cannot be resized: 1000000 x 1000000 pixels are more than the memory of this "
                               "machine holds"));
    }
    ExpectFailed({"resize", photo, out, "--size", "2147483647x1"},
                 ErrorLine(photo, "cannot be resized: 2147483647 x 1 pixels are more than a picture can have"));
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}
