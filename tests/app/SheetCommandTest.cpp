// Contact sheets: what stands where, and how each kind of picture is shown.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace Kavra::Tests;

namespace {

const Colour kBackground = {48, 48, 48, 255};
const Colour kCross = {224, 64, 64, 255};
const Colour kBox = {64, 32, 32, 255};

/// The sheet of some files; cells are 40 x 20, so their margins are 1 and the room for pictures is 38 x 18.
PictureFile Sheet(const TemporaryFolder& folder, const Words& files) {
    ExpectDone(Joined({{"sheet", folder / "sheet.png", "--cell", "40x20"}, files}));
    return PictureFile(folder / "sheet.png");
}

/// Expects a picture of this size in the middle of a 40 x 20 cell, and background around it.
void ExpectCentred(const PictureFile& sheet, int left, int top, int width, int height, const Colour& colour) {
    const int x = left + (40 - width) / 2;
    const int y = top + (20 - height) / 2;
    EXPECT_EQ(sheet.At(x, y), colour);
    EXPECT_EQ(sheet.At(x + width - 1, y + height - 1), colour);
    EXPECT_EQ(sheet.At(x - 1, y), kBackground);
    EXPECT_EQ(sheet.At(x + width, y), kBackground);
    EXPECT_EQ(sheet.At(x, y - 1), kBackground);
    EXPECT_EQ(sheet.At(x, y + height), kBackground);
}

std::filesystem::path Plain(const TemporaryFolder& folder, const std::string& name, int width, int height,
                            const Colour& colour) {
    return WritePicture(folder / name, width, height, [&](int, int) { return colour; });
}

/// A picture that is displayed as 30 x 15 black pixels with a white corner of 10 x 5 at the top left, stored in the row
/// and column order of an Exif orientation (CIPA DC-008, tag 0x0112).
OIIO::ImageBuf OrientedCorner(int orientation) {
    const bool isTurned = orientation >= 5;
    OIIO::ImageSpec spec(isTurned ? 15 : 30, isTurned ? 30 : 15, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("Orientation", orientation);
    OIIO::ImageBuf image(spec);
    // Where the first row, or of the turned ones the first column, is displayed at the bottom; and where the first
    // column, or of the turned ones the first row, is displayed at the right.
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    for (OIIO::ImageBuf::Iterator<unsigned char> pixel(image); !pixel.done(); ++pixel) {
        const int across = isTurned ? pixel.y() : pixel.x();
        const int down = isTurned ? pixel.x() : pixel.y();
        const bool isWhite = (fromRight ? 29 - across : across) < 10 && (fromBottom ? 14 - down : down) < 5;
        for (int c = 0; c < 3; ++c)
            pixel[c] = isWhite ? 1.0F : 0.0F;
    }
    return image;
}

}  // namespace

TEST(SheetCommand, CellsFollowEachOtherRowByRow) {
    const TemporaryFolder folder;
    Words files;
    for (int i = 0; i < 5; ++i)
        files.push_back(Plain(folder, std::to_string(i) + ".png", 10, 10, {50 * i, 0, 0}));
    const PictureFile sheet = Sheet(folder, files);
    // As near to a square as it goes: three columns, two rows.
    EXPECT_EQ(sheet.Size(), "120x40");
    for (int i = 0; i < 5; ++i)
        ExpectCentred(sheet, i % 3 * 40, i / 3 * 20, 10, 10, {50 * i, 0, 0, 255});
    EXPECT_EQ(sheet.At(100, 30), kBackground) << "the cell that is left over";
}

TEST(SheetCommand, TheColumnsCanBeSaidAndAreNeverMoreThanTheCells) {
    const TemporaryFolder folder;
    const std::string file = Plain(folder, "a.png", 3, 3, {1, 2, 3});
    EXPECT_EQ(Sheet(folder, {file, file, file, "--columns", "1"}).Size(), "40x60");
    EXPECT_EQ(Sheet(folder, {file, file, file, "--columns", "2"}).Size(), "80x40");
    EXPECT_EQ(Sheet(folder, {file, file, file, "--columns", "2147483647"}).Size(), "120x20");
}

TEST(SheetCommand, ACellIs160By120UnlessSaid) {
    const TemporaryFolder folder;
    ExpectDone({"sheet", folder / "out.png", Plain(folder, "a.png", 3, 3, {1, 2, 3})});
    EXPECT_EQ(PictureFile(folder / "out.png").Size(), "160x120");
}

TEST(SheetCommand, PicturesKeepTheirProportionsAndAreNeverEnlarged) {
    const TemporaryFolder folder;
    struct Case {
        int width, height;
        int shownWidth, shownHeight;
    };
    const std::vector<Case> cases = {{10, 10, 10, 10}, {360, 360, 18, 18}, {760, 180, 38, 9},
                                     {1, 1, 1, 1},     {20000, 10, 38, 1}, {10, 20000, 1, 18}};
    Words files = {"--columns", "1"};
    for (const Case& row : cases) {
        const std::string name = std::to_string(row.width) + "x" + std::to_string(row.height) + ".png";
        files.push_back(Plain(folder, name, row.width, row.height, {200, 100, 50}));
    }
    const PictureFile sheet = Sheet(folder, files);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& row = cases[i];
        ExpectCentred(sheet, 0, static_cast<int>(i) * 20, row.shownWidth, row.shownHeight, {200, 100, 50, 255});
    }
}

TEST(SheetCommand, EveryOrientationIsShownUpright) {
    const TemporaryFolder folder;
    Words files = {"--columns", "1"};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto file = folder / (std::to_string(orientation) + ".tif");
        ASSERT_TRUE(OrientedCorner(orientation).write(file.string()));
        files.push_back(file);
    }
    const PictureFile sheet = Sheet(folder, files);
    const Colour white = {255, 255, 255, 255};
    const Colour black = {0, 0, 0, 255};
    for (int i = 0; i < 8; ++i) {
        const int top = i * 20 + 2;  // 30 x 15 pixels from 5, 2
        EXPECT_EQ(sheet.At(5, top), white) << i + 1;
        EXPECT_EQ(sheet.At(14, top + 4), white) << i + 1;
        EXPECT_EQ(sheet.At(15, top), black) << i + 1;
        EXPECT_EQ(sheet.At(5, top + 5), black) << i + 1;
        EXPECT_EQ(sheet.At(34, top + 14), black) << i + 1;
        EXPECT_EQ(sheet.At(4, top), kBackground) << i + 1;
        EXPECT_EQ(sheet.At(20, top - 1), kBackground) << i + 1;
    }
}

TEST(SheetCommand, OpenExrRowsStayAsDisplayedWhateverTheirLineOrder) {
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(10, 10, 3, OIIO::TypeDesc::FLOAT);
    spec.attribute("openexr:lineOrder", "decreasingY");
    OIIO::ImageBuf image(spec);
    for (OIIO::ImageBuf::Iterator<float> pixel(image); !pixel.done(); ++pixel) {
        for (int c = 0; c < 3; ++c)
            pixel[c] = pixel.y() < 5 ? 1.0F : 0.0F;
    }
    const auto file = folder / "in.exr";
    ASSERT_TRUE(image.write(file.string()));
    const PictureFile sheet = Sheet(folder, {file});
    EXPECT_EQ(sheet.At(20, 6), (Colour{255, 255, 255, 255}));
    EXPECT_EQ(sheet.At(20, 13), (Colour{0, 0, 0, 255}));
}

TEST(SheetCommand, SquaresOfTwoGreysShowThroughWhatIsTransparent) {
    const TemporaryFolder folder;
    const PictureFile clear = Sheet(folder, {Plain(folder, "clear.png", 16, 16, {255, 0, 0, 0})});
    EXPECT_EQ(clear.At(12, 2), (Colour{160, 160, 160, 255}));
    EXPECT_EQ(clear.At(20, 2), (Colour{112, 112, 112, 255}));
    EXPECT_EQ(clear.At(20, 10), (Colour{160, 160, 160, 255}));
    const PictureFile half = Sheet(folder, {Plain(folder, "half.png", 16, 16, {255, 0, 0, 51})});
    // A fifth of red over four fifths of grey.
    EXPECT_EQ(half.At(12, 2), (Colour{179, 128, 128, 255}));
}

TEST(SheetCommand, ABadFileGetsACrossedBoxAndStatusOne) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.png", "no picture");
    const auto good = Plain(folder, "good.png", 10, 10, {0, 200, 0});
    ExpectFailed({"sheet", folder / "out.png", "--cell", "40x20", bad, good, "/nonexistent/x.tif", folder.Path()},
                 UnreadableLine(bad) + WarningLine("/nonexistent/x.tif", "format is not supported") +
                     ErrorLine("/nonexistent/x.tif", "there is no such file") +
                     WarningLine(folder.Path(), "format is not supported") +
                     ErrorLine(folder.Path(), "it is a folder"));
    const PictureFile sheet(folder / "out.png");
    ExpectCentred(sheet, 40, 0, 10, 10, {0, 200, 0, 255});
    for (const int top : {0, 20}) {
        ExpectCentred(sheet, 0, top, 38, 18, kCross);
        EXPECT_EQ(sheet.At(10, top + 5), kCross) << "the diagonal";
        EXPECT_EQ(sheet.At(29, top + 5), kCross) << "the other diagonal";
        EXPECT_EQ(sheet.At(20, top + 3), kBox);
    }
}

TEST(SheetCommand, FloatsUpToOneAreShownWithTheCurveOfSrgb) {
    const TemporaryFolder folder;
    struct Case {
        float value;
        int shown;
    };
    // 1.055 x 0.5 ^ (1 / 2.4) - 0.055 = 0.7354; 12.92 x 0.002 = 0.0258
    const std::vector<Case> cases = {{0.5F, 188}, {0.002F, 7}, {1, 255}, {-3, 0}};
    Words files = {"--columns", "1"};
    for (const Case& row : cases) {
        const auto name = std::to_string(row.shown) + ".tif";
        files.push_back(WriteFloats(folder / name, 4, 4, 1, std::vector<float>(16, row.value)));
    }
    const PictureFile sheet = Sheet(folder, files);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const int shown = cases[i].shown;
        EXPECT_EQ(sheet.At(20, static_cast<int>(i) * 20 + 10), (Colour{shown, shown, shown, 255}));
    }
}

TEST(SheetCommand, BrighterFloatsAreExposedAndCompressed) {
    const TemporaryFolder folder;
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const auto in = WriteFloats(folder / "in.tif", 2, 1, 1, {100, 10000});
    const PictureFile sheet = Sheet(folder, {in});
    // The geometric mean 1000 is exposed to 0.18, so 100 to 0.018 and 10000 to 1.8, which is the brightest:
    // 0.018 x (1 + 0.018 / 3.24) / 1.018 = 0.01778, encoded 0.1408; the brightest becomes 1.
    EXPECT_EQ(sheet.At(19, 9), (Colour{36, 36, 36, 255}));
    EXPECT_EQ(sheet.At(20, 9), (Colour{255, 255, 255, 255}));
    const PictureFile odd = Sheet(folder, {WriteFloats(folder / "odd.tif", 3, 1, 1, {kNan, -kInfinity, kInfinity})});
    EXPECT_EQ(odd.At(18, 9), (Colour{0, 0, 0, 255}));
    EXPECT_EQ(odd.At(19, 9), (Colour{0, 0, 0, 255}));
    EXPECT_EQ(odd.At(20, 9), (Colour{255, 255, 255, 255}));
}

TEST(SheetCommand, ColoursOfAnOpenExrFileAreFreedOfTheirAlpha) {
    const TemporaryFolder folder;
    std::vector<float> values;
    for (int i = 0; i < 16; ++i)
        values.insert(values.end(), {0.2F, 0, 0, 0.2F});  // full red, a fifth opaque
    const PictureFile sheet = Sheet(folder, {WriteFloats(folder / "in.exr", 4, 4, 4, values)});
    EXPECT_EQ(sheet.At(20, 10), (Colour{179, 128, 128, 255}));
}

TEST(SheetCommand, CubeMapsShowTheirFirstFaceAndVolumesTheirFirstSlice) {
    const TemporaryFolder folder;
    for (const std::string name : {"cube.dds", "volume.dds", "cube-mips.dds"}) {
        ExpectDone({"sheet", folder / "sheet.png", Sample(name), "--cell", "110x110"});
        const PictureFile sheet(folder / "sheet.png");
        const std::vector<unsigned char> block = Dumped(Sample(name));
        const int side = name == "cube.dds" ? 64 : 32;
        for (const int place : {0, side / 2, side - 1}) {
            const auto pixel = block.begin() + 4 * (place * side + place);
            EXPECT_EQ(sheet.At((110 - side) / 2 + place, (110 - side) / 2 + place), Colour(pixel, pixel + 4)) << name;
        }
    }
}

TEST(SheetCommand, LargeVolumesAndTheHostsOwnFilesAreShrunkToo) {
    const TemporaryFolder folder;
    for (const std::string name : {"volume.dds", "depth.exr"}) {
        const PictureFile sheet = Sheet(folder, {Sample(name)});
        EXPECT_EQ(sheet.At(20, 0), kBackground) << name;
        EXPECT_NE(sheet.At(20, 1), kBackground) << name;
        EXPECT_NE(sheet.At(20, 18), kBackground) << name;
        EXPECT_EQ(sheet.At(20, 19), kBackground) << name;
    }
}

TEST(SheetCommand, TheSmallestCellsShowAPixelEach) {
    const TemporaryFolder folder;
    const auto file = Plain(folder, "in.png", 100, 100, {10, 20, 30});
    ExpectFailed({"sheet", folder / "out.png", "--cell", "1x1", file, "/nonexistent/x", file},
                 WarningLine("/nonexistent/x", "format is not supported") +
                     ErrorLine("/nonexistent/x", "there is no such file"));
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.Bytes(), (std::vector<unsigned char>{10, 20, 30, 255, 224, 64, 64, 255,  //
                                                       10, 20, 30, 255, 48, 48, 48, 255}));
}

TEST(SheetCommand, SheetsThatCannotBeMadeAreSaidBeforeAnyWork) {
    const TemporaryFolder folder;
    struct Case {
        std::string name, cell, text;
    };
    const std::vector<Case> cases = {
        {"x.png", "1000000x1000000", "1000000 x 1000000 pixels are more than the memory of this machine holds"},
        {"x.png", "2147483647x1", "2147483647 x 1 pixels are more than a picture can have"},
        {"x", "9x9", "the name has no extension to choose a file type by"},
    };
    for (const Case& row : cases) {
        const auto out = folder / row.name;
        ExpectFailed({"sheet", out, "/nonexistent/x.png", "--cell", row.cell},
                     ErrorLine(out, "cannot be written: " + row.text));
    }
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}

TEST(SheetCommand, AFormerSheetMayBeOneOfTheFiles) {
    const TemporaryFolder folder;
    const auto file = Plain(folder, "sheet.png", 10, 10, {10, 20, 30});
    ExpectCentred(Sheet(folder, {file}), 0, 0, 10, 10, {10, 20, 30, 255});
    EXPECT_EQ(NamesIn(folder.Path()), Words{"sheet.png"});
}

TEST(SheetCommand, NamesInAnyScriptAreTakenAndMade) {
    const TemporaryFolder folder;
    const auto file = Plain(folder, "湖 Höhle.png", 10, 10, {10, 20, 30});
    ExpectDone({"sheet", folder / "übersicht 🏔.png", file});
    EXPECT_EQ(PictureFile(folder / "übersicht 🏔.png").At(80, 60), (Colour{10, 20, 30, 255}));
}

namespace {

/// The pixels of a picture's rectangle, row by row.
std::vector<Colour> Rectangle(const PictureFile& picture, int left, int top, int width, int height) {
    std::vector<Colour> pixels;
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x)
            pixels.push_back(picture.At(x, y));
    }
    return pixels;
}

int HeightOf(const PictureFile& picture) {
    return std::stoi(picture.Size().substr(picture.Size().find('x') + 1));
}

bool HasOther(const std::vector<Colour>& pixels, const Colour& colour) {
    return std::ranges::any_of(pixels, [&](const Colour& pixel) { return pixel != colour; });
}

}  // namespace

TEST(SheetCommand, CaptionsStandBelowTheCellsAndLeaveThemAsTheyAre) {
    const TemporaryFolder folder;
    const auto first = Plain(folder, "first.png", 30, 20, {9, 9, 9}),
               other = Plain(folder, "other.png", 30, 20, {9, 9, 9});
    ExpectDone({"sheet", folder / "plain.png", first, other});
    ExpectDone({"sheet", folder / "said.png", first, other, "--captions"});
    const PictureFile plain(folder / "plain.png"), said(folder / "said.png");
    const int caption = HeightOf(said) - 120;
    ASSERT_GT(caption, 20);
    ASSERT_LT(caption, 60);
    EXPECT_EQ(Rectangle(said, 0, 0, 320, 120), Rectangle(plain, 0, 0, 320, 120));
    const auto textOf = [&](int cell) { return Rectangle(said, cell * 160, 120, 160, caption); };
    EXPECT_TRUE(HasOther(textOf(0), kBackground));
    EXPECT_NE(textOf(0), textOf(1)) << "the names";
    EXPECT_EQ(Rectangle(said, 0, 120 + caption / 3, 160, caption - caption / 3),
              Rectangle(said, 160, 120 + caption / 3, 160, caption - caption / 3))
        << "sizes and formats";
}

TEST(SheetCommand, ACaptionOfAnyNameStaysBelowItsCell) {
    const TemporaryFolder folder;
    const auto file = Plain(folder, std::string(200, 'W') + " 湖.png", 30, 20, {9, 9, 9});
    ExpectDone({"sheet", folder / "sheet.png", file, file, "--captions", "--columns", "2"});
    const PictureFile sheet(folder / "sheet.png");
    EXPECT_FALSE(HasOther(Rectangle(sheet, 156, 120, 8, HeightOf(sheet) - 120), kBackground)) << "between two cells";
    ExpectDone({"sheet", folder / "tiny.png", file, "--captions", "--cell", "1x1"});
}

TEST(SheetCommand, TheReasonStandsInTheBoxOfAFileThatFailed) {
    const TemporaryFolder folder;
    ExpectFailed({"sheet", folder / "missing.png", "/nonexistent/x.tif"},
                 WarningLine("/nonexistent/x.tif", "format is not supported") +
                     ErrorLine("/nonexistent/x.tif", "there is no such file"));
    const PictureFile sheet(folder / "missing.png");
    const std::vector<Colour> middle = Rectangle(sheet, 50, 50, 60, 20);
    EXPECT_TRUE(std::ranges::any_of(middle, [](const Colour& pixel) { return pixel[0] > 200 && pixel[1] > 150; }))
        << "letters, which are neither of the box nor of the cross";
}

TEST(SheetCommand, EveryFrameAndLevelCanHaveACellOfItsOwn) {
    const TemporaryFolder folder;
    const auto sizeOf = [&](const std::string& sample, const std::string& option) {
        ExpectDone({"sheet", folder / "sheet.png", Sample(sample), option, "--cell", "40x20", "--columns", "20"});
        return PictureFile(folder / "sheet.png").Size();
    };
    EXPECT_EQ(sizeOf("spinner.gif", "--frames"), "320x20") << "eight frames";
    EXPECT_EQ(sizeOf("cube-mips.dds", "--levels"), "240x20") << "32 x 32 has six levels";
    EXPECT_EQ(sizeOf("cube-mips.dds", "--frames"), "40x20") << "levels are no frames";
    EXPECT_EQ(sizeOf("photo.jpg", "--levels"), "40x20");
    const PictureFile levels = (sizeOf("cube-mips.dds", "--levels"), PictureFile(folder / "sheet.png"));
    EXPECT_NE(levels.At(20 + 7, 10), kBackground) << "18 x 18 of level 0";
    EXPECT_NE(levels.At(3 * 40 + 19, 10), kBackground) << "4 x 4 of level 3";
    EXPECT_EQ(levels.At(3 * 40 + 23, 10), kBackground);
}

TEST(SheetCommand, MoreThanTheRowsTakeGoesToFurtherSheets) {
    const TemporaryFolder folder;
    Words files;
    for (int i = 0; i < 5; ++i)
        files.push_back(Plain(folder, std::to_string(i) + ".png", 10, 10, {50 * i, 0, 0}));
    const auto make = [&](const std::string& out) {
        ExpectDone(Joined({{"sheet", folder / out, "--cell", "40x20", "--columns", "2", "--rows", "1"}, files}));
    };
    make("out.png");
    ExpectCentred(PictureFile(folder / "out-1.png"), 40, 0, 10, 10, {50, 0, 0, 255});
    ExpectCentred(PictureFile(folder / "out-2.png"), 0, 0, 10, 10, {100, 0, 0, 255});
    EXPECT_EQ(PictureFile(folder / "out-3.png").Size(), "40x20") << "one is left";
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
    make("page%02d.png");
    ExpectCentred(PictureFile(folder / "page03.png"), 0, 0, 10, 10, {200, 0, 0, 255});
    ExpectDone(Joined({{"sheet", folder / "one.png", "--cell", "40x20", "--columns", "2", "--rows", "3"}, files}));
    EXPECT_EQ(PictureFile(folder / "one.png").Size(), "80x60");
}
