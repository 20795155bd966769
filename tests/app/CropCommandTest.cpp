// A rectangle of a picture.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

using namespace Kavra::Tests;

namespace {

std::filesystem::path Places(const TemporaryFolder& folder) {
    return WritePicture(folder / "in.png", 20, 10, PlaceColour);
}

}  // namespace

TEST(CropCommand, TheRectangleIsWrittenPixelForPixel) {
    const TemporaryFolder folder;
    const auto in = Places(folder);
    struct Case {
        std::string rect;
        int x, y, width, height;
    };
    for (const Case& row : {Case{"3,2,5,4", 3, 2, 5, 4}, Case{"0,0,20,10", 0, 0, 20, 10}, Case{"19,9,1,1", 19, 9, 1, 1},
                            Case{"0,9,20,1", 0, 9, 20, 1}}) {
        ExpectDone({"crop", in, folder / "out.png", "--rect", row.rect});
        const PictureFile out(folder / "out.png");
        ASSERT_EQ(out.Width(), row.width);
        ASSERT_EQ(out.Height(), row.height);
        for (int y = 0; y < row.height; ++y) {
            for (int x = 0; x < row.width; ++x)
                EXPECT_EQ(out.At(x, y), PlaceColour(row.x + x, row.y + y)) << row.rect;
        }
    }
}

TEST(CropCommand, ARectangleThatReachesBeyondThePictureIsRefused) {
    const TemporaryFolder folder;
    const auto in = Places(folder);
    const std::map<std::string, std::string> cases = {
        {"16,2,5,4", "5 x 4 from 16,2"},
        {"3,7,5,4", "5 x 4 from 3,7"},
        {"-1,0,5,5", "5 x 5 from -1,0"},
        {"0,-1,5,5", "5 x 5 from 0,-1"},
        {"20,0,1,1", "1 x 1 from 20,0"},
        {"2147483647,2147483647,2147483647,2147483647", "2147483647 x 2147483647 from 2147483647,2147483647"},
    };
    for (const auto& [rect, text] : cases) {
        ExpectFailed(
            {"crop", in, folder / "out.png", "--rect", rect},
            ErrorLine(in, "cannot be cropped: the picture is 20 x 10 pixels, and " + text + " reach beyond it"));
    }
    EXPECT_EQ(NamesIn(folder.Path()), Words{"in.png"});
}

TEST(CropCommand, TheRectangleIsOfThePictureAsItIsDisplayed) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("photo-orientation-6.jpg"), folder / "upright.png"});
    ExpectDone({"crop", Sample("photo-orientation-6.jpg"), folder / "out.png", "--rect", "5,30,30,20"});
    const PictureFile upright(folder / "upright.png");
    const PictureFile out(folder / "out.png");
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 30; ++x)
            ASSERT_EQ(out.At(x, y), upright.At(5 + x, 30 + y));
    }
}

TEST(CropCommand, TheSizeShrinksAndEnlarges) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 20, 10, [](int x, int) { return Colour{x < 10 ? 20 : 220, 0, 0}; });
    for (const std::string size : {"2x2", "37x120", "3x1"}) {
        ExpectDone({"crop", in, folder / "out.png", "--rect", "10,0,10,10", "--size", size});
        const PictureFile out(folder / "out.png");
        EXPECT_EQ(out.Size(), size);
        EXPECT_EQ(out.At(0, 0), (Colour{220, 0, 0})) << "nothing outside the rectangle is blended in";
        EXPECT_EQ(out.At(out.Width() - 1, out.Height() - 1), (Colour{220, 0, 0}));
    }
}

TEST(CropCommand, TheOrientationTurnsWhatIsWritten) {
    const TemporaryFolder folder;
    const auto in = Places(folder);
    struct Case {
        const char* orientation;
        int width, height;
        Colour topLeft, topRight;
    };
    // Of the rectangle 2,1 to 5,2: what a picture of that row and column order has in its first row.
    const std::vector<Case> cases = {
        {"0", 4, 2, PlaceColour(2, 1), PlaceColour(5, 1)}, {"1", 4, 2, PlaceColour(5, 1), PlaceColour(2, 1)},
        {"2", 4, 2, PlaceColour(2, 2), PlaceColour(5, 2)}, {"3", 4, 2, PlaceColour(5, 2), PlaceColour(2, 2)},
        {"4", 2, 4, PlaceColour(2, 1), PlaceColour(2, 2)}, {"5", 2, 4, PlaceColour(5, 1), PlaceColour(5, 2)},
        {"6", 2, 4, PlaceColour(2, 2), PlaceColour(2, 1)}, {"7", 2, 4, PlaceColour(5, 2), PlaceColour(5, 1)},
    };
    for (const Case& row : cases) {
        ExpectDone({"crop", in, folder / "out.png", "--rect", "2,1,4,2", "--orientation", row.orientation});
        const PictureFile out(folder / "out.png");
        EXPECT_EQ(out.Width(), row.width) << row.orientation;
        EXPECT_EQ(out.Height(), row.height) << row.orientation;
        EXPECT_EQ(out.At(0, 0), row.topLeft) << row.orientation;
        EXPECT_EQ(out.At(out.Width() - 1, 0), row.topRight) << row.orientation;
    }
}

TEST(CropCommand, ThePictureKeepsItsFormatUnlessAnotherIsSaid) {
    const TemporaryFolder folder;
    for (const auto& [in, format] : {std::pair{"grey.png", "kL8"},
                                     {"photo-16bit.png", "kR16G16B16A16"},
                                     {"float.tif", "kR32G32B32A32F"},
                                     {"depth.exr", "kR32G32B32A32F"}}) {
        ExpectDone({"crop", Sample(in), folder / "out.tif", "--rect", "1,1,9,9"});
        EXPECT_EQ(Described(folder / "out.tif")["formatName"], format) << in;
        EXPECT_EQ(PictureFile(folder / "out.tif").Size(), "9x9") << in;
    }
}

TEST(CropCommand, GreyBecomesColoursAndColoursTheirLuminance) {
    const TemporaryFolder folder;
    const auto crop = [&](const std::filesystem::path& in, const std::string& format) {
        ExpectDone({"crop", in, folder / "out.png", "--rect", "1,0,1,1", "--format", format});
        return PictureFile(folder / "out.png").At(0, 0);
    };
    const auto grey = WritePicture(folder / "grey.png", 2, 1, [](int x, int) { return Colour{x * 123}; });
    EXPECT_EQ(crop(grey, "rgba8"), (Colour{123, 123, 123}));
    EXPECT_EQ(crop(grey, "rgba16"), (Colour{123, 123, 123}));
    EXPECT_EQ(crop(grey, "l16"), (Colour{123}));
    const auto colour =
        WritePicture(folder / "colour.png", 2, 1, [](int x, int) { return Colour{x * 200, 100, 50, 9}; });
    // 0.299 x 200 + 0.587 x 100 + 0.114 x 50 = 124.2
    EXPECT_EQ(crop(colour, "l8"), (Colour{124}));
    EXPECT_EQ(crop(colour, "kA8"), (Colour{9}));
    // Blue-first formats are a matter of memory: the file has red where red was.
    EXPECT_EQ(crop(colour, "bgra8"), (Colour{200, 100, 50, 9}));
    const auto floats = WriteFloats(folder / "floats.tif", 2, 1, 4, {0, 0, 0, 1, 1, 0.5F, 0.25F, 1});
    EXPECT_EQ(crop(floats, "bgra8"), (Colour{255, 188, 137}));  // light, by the curve of sRGB
    EXPECT_EQ(crop(floats, "rgba8"), (Colour{255, 188, 137}));
}

TEST(CropCommand, FormatsThatAreNoPixelsAreRefused) {
    const TemporaryFolder folder;
    const auto in = Places(folder);
    ExpectFailed({"crop", in, folder / "out.dds", "--rect", "0,0,4,4", "--format", "bc1"},
                 ErrorLine(in, "cannot be cropped: kBC1 has no pixels"));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"in.png"});
}

TEST(CropCommand, SizesThatNoMemoryHoldsAreRefused) {
    const TemporaryFolder folder;
    const auto in = Places(folder);
    ExpectFailed({"crop", in, folder / "out.png", "--rect", "0,0,4,4", "--size", "1000000x1000000"},
                 ErrorLine(in,
                           "cannot be cropped: 1000000 x 1000000 pixels are more than the memory of this machine "
                           "holds"));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"in.png"});
}
