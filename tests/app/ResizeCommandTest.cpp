#include "app/PictureFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

/// A 6 x 4 picture that says its places, cropped or padded.
PictureFile Cropped(const TemporaryFolder& folder, const std::string& size) {
    const auto in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    const ProgramResult result = RunKavra({"resize", in, folder / "out.png", "--size", size, "--method", "crop"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    return PictureFile(folder / "out.png");
}

}  // namespace

TEST(ResizeCommand, CropKeepsEveryPixelInItsPlaceAndFillsUpWithZeros) {
    const TemporaryFolder folder;
    // Wider and narrower, higher and lower, in every combination.
    for (const std::string size : {"9x7", "9x3", "4x7", "4x3", "6x4"}) {
        const PictureFile out = Cropped(folder, size);
        EXPECT_EQ(std::to_string(out.Width()) + "x" + std::to_string(out.Height()), size);
        for (int y = 0; y < out.Height(); ++y) {
            for (int x = 0; x < out.Width(); ++x)
                EXPECT_EQ(out.At(x, y), x < 6 && y < 4 ? PlaceColour(x, y) : (Colour{0, 0, 0, 0})) << size;
        }
    }
}

TEST(ResizeCommand, NearestRepeatsPixels) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 2, PlaceColour);
    ASSERT_EQ(RunKavra({"resize", in, folder / "out.png", "--size", "6x4", "--filter", "nearest"}).status, 0);
    const PictureFile out(folder / "out.png");
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(out.At(x, y), PlaceColour(x / 3, y / 2));
    }
}

TEST(ResizeCommand, EachFilterMakesTheSizeAndKeepsAnEvenColour) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.tif", 50, 40, [](int, int) { return Colour{200, 100, 50, 150}; });
    struct Case {
        std::string filter;
        std::string size;
    };
    for (const Case& row : {Case{"nearest", "25x10"}, Case{"mitchell", "25x10"}, Case{"mitchell", "77x90"},
                            Case{"linear", "25x10"}, Case{"Linear", "77x90"}}) {
        const auto out = folder / "out.png";
        const std::vector<std::string> arguments = {"resize",   in,       out,        "--size",  row.size,
                                                    "--method", "filter", "--filter", row.filter};
        ASSERT_EQ(RunKavra(arguments).status, 0) << row.filter;
        const PictureFile picture(out);
        EXPECT_EQ(std::to_string(picture.Width()) + "x" + std::to_string(picture.Height()), row.size);
        for (const int x : {0, picture.Width() / 2, picture.Width() - 1})
            EXPECT_EQ(picture.At(x, picture.Height() / 2), (Colour{200, 100, 50, 150})) << row.filter << row.size;
    }
}

TEST(ResizeCommand, LinearBlendsBetweenTwoPixelsWhereNearestDoesNot) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 1, [](int x, int) { return Colour{x * 200}; });
    const auto greys = [&](const std::string& filter) {
        EXPECT_EQ(RunKavra({"resize", in, folder / "out.png", "--size", "8x1", "--filter", filter}).status, 0);
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
    EXPECT_EQ(RunKavra({"resize", in, out, "--method", "copy"}).error, "");
    EXPECT_EQ(PictureFile(out).Bytes(), PictureFile(in).Bytes());
    const ProgramResult result = RunKavra({"resize", in, out, "--method", "copy", "--size", "3x2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "kavra: " + in.string() +
                                ": note: copied as it is, 6 x 4 pixels; --method filter or crop changes the size\n");
    EXPECT_EQ(PictureFile(out).Bytes(), PictureFile(in).Bytes());
}

TEST(ResizeCommand, CopyKeepsAllFacesOfACubeMap) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKavra({"resize", Sample("cube.dds"), folder / "copy.dds", "--method", "copy"}).status, 0);
    RunKavra({"dump", folder / "copy.dds", "--out", folder / "copy"});
    RunKavra({"dump", Sample("cube.dds"), "--out", folder / "original"});
    EXPECT_EQ(ReadAll(folder / "copy").size(), 6U * 64 * 64 * 4);
    EXPECT_EQ(ReadAll(folder / "copy"), ReadAll(folder / "original"));
}

TEST(ResizeCommand, OfACubeMapTheFirstFaceIsResizedWithANote) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"resize", Sample("cube.dds"), folder / "out.dds", "--size", "16x16"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error,
              "kavra: " + Sample("cube.dds").string() + ": note: a cube map; only its first face is used\n");
    EXPECT_EQ(std::filesystem::file_size(folder / "out.dds"), 128U + 16 * 16 * 4);
}

TEST(ResizeCommand, GreyFloatAndSixteenBitPicturesKeepTheirFormat) {
    const TemporaryFolder folder;
    struct Case {
        std::string in;
        std::string format;
    };
    for (const Case& row : {Case{"grey.png", "kL8"}, Case{"photo-16bit.png", "kR16G16B16A16"},
                            Case{"float.tif", "kR32G32B32A32F"}, Case{"depth.exr", "kR32G32B32A32F"}}) {
        const auto out = folder / "out.tif";
        ASSERT_EQ(RunKavra({"resize", Sample(row.in), out, "--size", "31x17"}).status, 0) << row.in;
        const ProgramResult result = RunKavra({"info", out});
        EXPECT_NE(result.out.find("31 x 17, " + row.format), std::string::npos) << result.out;
    }
}

TEST(ResizeCommand, SizesThatNoMemoryHoldsAreRefusedBeforeTheyAreTried) {
    const TemporaryFolder folder;
    for (const std::string method : {"filter", "crop"}) {
        const ProgramResult result = RunKavra(
            {"resize", Sample("photo.tga"), folder / "out.png", "--size", "1000000x1000000", "--method", method});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.error, "kavra: " + Sample("photo.tga").string() +
                                    ": error: cannot be resized: 1000000 x 1000000 pixels are more than the memory of "
                                    "this machine holds\n");
    }
    const ProgramResult result =
        RunKavra({"resize", Sample("photo.tga"), folder / "out.png", "--size", "2147483647x1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("2147483647 x 1 pixels are more than a picture can have"), std::string::npos);
    EXPECT_EQ(CountFiles(folder.Path()), 0U);
}

TEST(ResizeCommand, TheSameFileMayBeInputAndOutput) {
    const TemporaryFolder folder;
    const auto file = WritePicture(folder / "file.png", 6, 4, PlaceColour);
    EXPECT_EQ(RunKavra({"resize", file, file, "--size", "2x2", "--method", "crop"}).status, 0);
    EXPECT_EQ(PictureFile(file).At(1, 1), PlaceColour(1, 1));
    EXPECT_EQ(CountFiles(folder.Path()), 1U);
}

TEST(ResizeCommand, ASizeIsRequiredButForACopy) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"resize", Sample("photo.tga"), folder / "out.png"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "kavra: resize: error: --size is required\n");
}
