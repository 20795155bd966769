// --fit, --fill and --scale: sizes that keep the proportions of the picture as it comes out.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;

struct Case {
    int width, height;
    std::string wanted, size;
};

/// Expects the sizes that pictures get by one option.
void ExpectSizes(const std::string& option, const std::vector<Case>& cases) {
    const TemporaryFolder folder;
    for (const Case& row : cases) {
        const auto in = WritePicture(folder / "in.png", row.width, row.height, [](int, int) { return Colour{90}; });
        ExpectDone({"convert", in, folder / "out.png", option, row.wanted});
        EXPECT_EQ(PictureFile(folder / "out.png").Size(), row.size)
            << row.width << "x" << row.height << " " << option << " " << row.wanted;
    }
}

/// The size that `dump --json` says a block has.
std::string DumpedSize(const Words& words) {
    const TemporaryFolder folder;
    const Json json = Json::parse(ExpectDone(Joined({{"dump", "--out", folder / "block", "--json"}, words})));
    EXPECT_EQ(std::filesystem::file_size(folder / "block"), json["blockSize"]);
    return std::to_string(json["width"].get<int>()) + "x" + std::to_string(json["height"].get<int>()) + "x" +
           std::to_string(json["depth"].get<int>()) + " of " + std::to_string(json["blockSize"].get<int>());
}

/// The columns `left` to `right` of rows of `width` pixels of four bytes.
Bytes Columns(const Bytes& block, int width, int left, int right) {
    Bytes columns;
    for (auto row = block.begin(); row != block.end(); row += std::ptrdiff_t{4} * width)
        columns.insert(columns.end(), row + std::ptrdiff_t{4} * left, row + std::ptrdiff_t{4} * right);
    return columns;
}

}  // namespace

TEST(SizeOptions, FitIsTheLargestSizeInsideTheBoxInTheProportionsOfThePicture) {
    ExpectSizes("--fit", {{100, 50, "40x40", "40x20"},
                          {50, 100, "40x40", "20x40"},
                          {100, 50, "100x10", "20x10"},
                          {100, 50, "0x10", "20x10"},
                          {100, 50, "40x0", "40x20"},
                          {100, 50, "40x20", "40x20"}});
}

TEST(SizeOptions, FillCoversTheBoxAndIsCutToIt) {
    ExpectSizes(
        "--fill",
        {{100, 50, "40x40", "40x40"}, {50, 100, "40x40", "40x40"}, {100, 50, "7x50", "7x50"}, {10, 5, "4x1", "4x1"}});
}

TEST(SizeOptions, FitAndFillNeverEnlarge) {
    ExpectSizes("--fit", {{30, 20, "300x200", "30x20"}, {30, 20, "0x21", "30x20"}, {30, 20, "30x20", "30x20"}});
    ExpectSizes("--fill", {{30, 20, "300x200", "30x20"}, {30, 20, "200x10", "30x10"}, {30, 20, "10x200", "10x20"}});
}

TEST(SizeOptions, ScaleShrinksAndEnlarges) {
    ExpectSizes("--scale", {{30, 20, "50%", "15x10"},
                            {30, 20, "100%", "30x20"},
                            {30, 20, "200%", "60x40"},
                            {30, 20, "12.5%", "4x3"},
                            {3, 2, "1e3%", "30x20"}});
}

TEST(SizeOptions, HalvesAreRoundedUpAndASideIsOnePixelAtLeast) {
    ExpectSizes("--fit", {{10, 5, "5x5", "5x3"},       // 2.5
                          {9, 6, "3x0", "3x2"},        // exactly
                          {10, 3, "5x5", "5x2"},       // 1.5
                          {16, 7, "8x8", "8x4"},       // 3.5
                          {100, 33, "10x10", "10x3"},  // 3.3
                          {1000, 1, "10x10", "10x1"},  // 0.01
                          {1, 1000, "10x10", "1x10"}});
    ExpectSizes("--scale", {{5, 3, "50%", "3x2"},  // 2.5 and 1.5
                            {3, 1, "150%", "5x2"},
                            {100, 9, "0.0001%", "1x1"},
                            {1000, 5, "0.1%", "1x1"}});
}

TEST(SizeOptions, FillKeepsTheMiddle) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 9, 6, PlaceColour);
    struct Box {
        std::string wanted;
        int left, top;
    };
    // Of what is too much by an odd number the larger half is cut off at the right and at the bottom.
    for (const Box& row : {Box{"3x6", 3, 0}, Box{"4x6", 2, 0}, Box{"9x2", 0, 2}, Box{"9x3", 0, 1}, Box{"9x6", 0, 0}}) {
        ExpectDone({"convert", in, folder / "out.png", "--fill", row.wanted});
        const PictureFile out(folder / "out.png");
        ASSERT_EQ(out.Size(), row.wanted);
        for (int y = 0; y < out.Height(); ++y) {
            for (int x = 0; x < out.Width(); ++x)
                EXPECT_EQ(out.At(x, y), PlaceColour(x + row.left, y + row.top)) << row.wanted;
        }
    }
}

TEST(SizeOptions, BoxesAreThoseOfThePictureAsItComesOutForEveryOrientationOfFileAndBlock) {
    for (int stored = 1; stored <= 8; ++stored) {
        const std::string photo = Sample("photo-orientation-" + std::to_string(stored) + ".jpg");  // 40 x 60 displayed
        for (int wanted = 0; wanted <= 7; ++wanted) {
            const bool isTurned = wanted >= 4;
            const auto size = [&](const std::string& option, const std::string& value) {
                return DumpedSize({photo, "--orientation", std::to_string(wanted), option, value});
            };
            EXPECT_EQ(size("--fit", "20x20"), isTurned ? "20x13x1 of 1040" : "13x20x1 of 1040") << stored << wanted;
            if (stored != 1 && stored != 6) continue;  // one of each kind
            EXPECT_EQ(size("--fit", "30x0"), isTurned ? "30x20x1 of 2400" : "30x45x1 of 5400") << stored << wanted;
            EXPECT_EQ(size("--fill", "10x30"), "10x30x1 of 1200") << stored << wanted;
            EXPECT_EQ(size("--scale", "50%"), isTurned ? "30x20x1 of 2400" : "20x30x1 of 2400") << stored << wanted;
        }
    }
}

TEST(SizeOptions, APictureIsTheSameWhetherItsOrientationIsUndoneBeforeOrAfterItIsShrunk) {
    const TemporaryFolder folder;
    for (int stored = 1; stored <= 8; ++stored) {
        const std::string photo = Sample("photo-orientation-" + std::to_string(stored) + ".jpg");
        ExpectDone({"convert", photo, folder / "upright.png"});
        for (const Words& wish : {Words{"--fit", "20x20"}, {"--fill", "10x20"}}) {
            const Bytes direct = Dumped(photo, wish);
            const Bytes later = Dumped(folder / "upright.png", wish);
            ASSERT_EQ(direct.size(), later.size()) << stored;
            for (std::size_t i = 0; i < direct.size(); ++i)
                EXPECT_NEAR(direct[i], later[i], 1) << stored << wish.front();
        }
    }
}

TEST(SizeOptions, EveryCommandThatMakesAPictureOfOneTakesThem) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo-orientation-6.jpg");  // 40 x 60 as displayed
    const std::string out = folder / "out.png";
    const std::vector<Words> commands = {{"convert", photo, out}, {"frames", photo, folder / "out%d.png"},
                                         {"resize", photo, out},  {"crop", photo, out, "--rect", "0,0,40,60"},
                                         {"target", photo, out},  {"tile", photo, out, "--repeat", "1x1"}};
    for (const Words& command : commands) {
        const std::string made = command.front() == "frames" ? folder / "out0.png" : folder / "out.png";
        const auto size = [&](const Words& wish) {
            ExpectDone(Joined({command, wish}));
            return PictureFile(made).Size();
        };
        EXPECT_EQ(size({"--fit", "20x20"}), "13x20") << command.front();
        EXPECT_EQ(size({"--fill", "20x20"}), "20x20") << command.front();
        EXPECT_EQ(size({"--scale", "25%"}), "10x15") << command.front();
        EXPECT_EQ(size({"--scale", "150%"}), "60x90") << command.front();
    }
}

TEST(SizeOptions, OfACropTheRectangleIsMeantAsItComesOut) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 40, 40, PlaceColour);
    const auto size = [&](const Words& more) {
        ExpectDone(Joined({{"crop", in, folder / "out.png", "--rect", "10,10,20,10"}, more}));
        return PictureFile(folder / "out.png").Size();
    };
    EXPECT_EQ(size({"--fit", "10x10"}), "10x5");
    EXPECT_EQ(size({"--fit", "10x10", "--orientation", "5"}), "5x10");
    EXPECT_EQ(size({"--fill", "4x10", "--orientation", "4"}), "4x10");
    EXPECT_EQ(size({"--scale", "200%", "--orientation", "7"}), "20x40");
}

TEST(SizeOptions, ComposeBringsEachPieceToASize) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 40, 20, [](int, int) { return Colour{90, 80, 70, 255}; });
    const std::string out = folder / "out.png";
    ExpectDone({"compose", out, "--size", "30x12", "--fit", "10x10", in.string() + "@2,1", in.string() + "@18,6"});
    const PictureFile picture(out);
    EXPECT_EQ(picture.Size(), "30x12");
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 30; ++x) {
            const bool isIn = (x >= 2 && x < 12 && y >= 1 && y < 6) || (x >= 18 && x < 28 && y >= 6 && y < 11);
            EXPECT_EQ(picture.At(x, y), isIn ? (Colour{90, 80, 70, 255}) : (Colour{0, 0, 0, 0})) << x << "," << y;
        }
    }
}

TEST(SizeOptions, EachFrameIsFittedByItsOwnSize) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("pages.tif"), folder / "page%d.png", "--fit", "30x30"});  // 120 x 80, 60 x 40, 64 x 64
    EXPECT_EQ(PictureFile(folder / "page0.png").Size(), "30x20");
    EXPECT_EQ(PictureFile(folder / "page1.png").Size(), "30x20");
    EXPECT_EQ(PictureFile(folder / "page2.png").Size(), "30x30");
    EXPECT_EQ(DumpedSize({Sample("pages.tif"), "--frame", "2", "--scale", "50%"}), "32x32x1 of 4096");
    EXPECT_EQ(DumpedSize({Sample("mips.dds"), "--frame", "2", "--scale", "50%"}), "16x16x1 of 1024");  // of 128 x 128
    EXPECT_EQ(DumpedSize({Sample("mips.dds"), "--frame", "7", "--fit", "8x8"}), "1x1x1 of 4");
}

TEST(SizeOptions, AFrameThatIsNotThereIsSaidInTheModulesOwnWords) {
    const TemporaryFolder folder;
    const std::string said = WarningLine(Sample("grey.png"), "Frame index out of range") +
                             ErrorLine(Sample("grey.png"), "there is no frame 5; the file has 1");
    ExpectFailed({"convert", Sample("grey.png"), folder / "out.png", "--frame", "5", "--fit", "9x9"}, said);
    ExpectFailed({"convert", Sample("mips.dds"), folder / "out.png", "--frame", "2147483647", "--fit", "9x9"},
                 WarningLine(Sample("mips.dds"), "Frame index out of range") +
                     ErrorLine(Sample("mips.dds"), "there is no mip level 2147483647; the file has 8"));
}

TEST(SizeOptions, AFileThatCannotBeReadIsSaidOnce) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.pcx", "no picture");
    for (const Words& wish : {Words{"--fit", "9x9"}, {"--fill", "9x9"}, {"--scale", "50%"}})
        ExpectFailed(Joined({{"convert", bad, folder / "out.png"}, wish}), UnreadableLine(bad));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"bad.pcx"});
}

TEST(SizeOptions, AllFacesAndSlicesAreBroughtToTheSize) {
    EXPECT_EQ(DumpedSize({Sample("cube.dds"), "--fit", "32x0"}), "32x32x1 of " + std::to_string(6 * 32 * 32 * 4));
    EXPECT_EQ(DumpedSize({Sample("cube.dds"), "--scale", "150%"}), "96x96x1 of " + std::to_string(6 * 96 * 96 * 4));
    EXPECT_EQ(DumpedSize({Sample("volume.dds"), "--scale", "50%"}), "16x16x8 of " + std::to_string(8 * 16 * 16 * 4));
    EXPECT_EQ(DumpedSize({Sample("volume.dds"), "--fit", "8x8"}), "8x8x8 of " + std::to_string(8 * 8 * 8 * 4));
    EXPECT_EQ(Dumped(Sample("cube.dds"), {"--fill", "16x64"}), Columns(Dumped(Sample("cube.dds")), 64, 24, 40));
    EXPECT_EQ(Dumped(Sample("volume.dds"), {"--fill", "11x32"}), Columns(Dumped(Sample("volume.dds")), 32, 10, 21));
}

TEST(SizeOptions, WithinTheSizeOfThePictureNothingIsTouched) {
    for (const std::string name : {"photo.tga", "cube.dds", "volume.dds", "depth.exr", "planar.tif", "photo.pcx"}) {
        const Bytes own = Dumped(Sample(name));
        EXPECT_EQ(Dumped(Sample(name), {"--fit", "9999x9999"}), own) << name;
        EXPECT_EQ(Dumped(Sample(name), {"--fill", "9999x9999"}), own) << name;
        EXPECT_EQ(Dumped(Sample(name), {"--scale", "100%"}), own) << name;
    }
}

TEST(SizeOptions, FilesOfTheHostsOwnReaderAreShrunkToo) {
    // Luminance and chroma come from there as three floats a pixel, in their own size whatever is asked.
    const Json own = Described(Sample("luminance.exr"));
    const int width = own["width"], height = own["height"];
    const TemporaryFolder folder;
    const Json block = Json::parse(
        ExpectDone({"dump", Sample("luminance.exr"), "--out", folder / "block", "--json", "--scale", "25%"}));
    EXPECT_EQ(block["width"], (width + 2) / 4);
    EXPECT_EQ(block["height"], (height + 2) / 4);
    EXPECT_EQ(block["format"], own["format"]);
}

TEST(SizeOptions, TheAlphaThatIsLeftIsLookedAt) {
    const TemporaryFolder folder;
    const auto alpha = [&](const Words& more) {
        const Json json =
            Json::parse(ExpectDone(Joined({{"dump", folder / "in.png", "--out", folder / "block", "--json"}, more})));
        return std::string(json["hasTransparentPixels"] ? "transparent " : "") +
               (json["hasTranslucentPixels"] ? "translucent" : "");
    };
    WritePicture(folder / "in.png", 6, 2, [](int x, int) { return Colour{1, 2, 3, x < 2 ? 0 : 255}; });
    EXPECT_EQ(alpha({}), "transparent ");
    EXPECT_EQ(alpha({"--fill", "2x2"}), "") << "the transparent columns are cut off";
    EXPECT_EQ(alpha({"--scale", "200%", "--filter", "linear"}), "transparent translucent") << "blends";
}

TEST(SizeOptions, SizesThatNoMemoryHoldsAreRefused) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 1000, 1000, [](int, int) { return Colour{90}; });
    const std::string text =
        "cannot be resized: 1000000 x 1000000 pixels are more than the memory of this machine holds";
    for (const Words& line : {Words{"convert", in, folder / "out.png"},
                              {"resize", in, folder / "out.png"},
                              {"crop", in, folder / "out.png", "--rect", "0,0,1000,1000"},
                              {"dump", in, "--out", folder / "out"}}) {
        ExpectFailed(Joined({line, {"--scale", "100000%"}}), ErrorLine(in, text));
    }
    EXPECT_EQ(NamesIn(folder.Path()), Words{"in.png"});
}
