// How far two pictures are apart, by hand.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

using Path = std::filesystem::path;
using Bytes = std::vector<unsigned char>;

Path Row(const Path& path, const std::vector<Colour>& colours) {
    return WritePicture(path, static_cast<int>(colours.size()), 1,
                        [&](int x, int) { return colours.at(static_cast<std::size_t>(x)); });
}

/// What `--json` tells, whatever the exit status.
Json Told(const Path& a, const Path& b, int status, const Words& more = {}) {
    const ProgramResult result = RunKavra(Joined({{"compare", a, b, "--json"}, more}));
    EXPECT_EQ(result.status, status) << result.error;
    return Json::parse(result.out);
}

}  // namespace

TEST(CompareCommand, EqualPicturesAreTheSame) {
    const TemporaryFolder folder;
    const auto a = Row(folder / "a.png", {{1, 2, 3, 4}, {5, 6, 7, 8}});
    const auto b = Row(folder / "b.tga", {{1, 2, 3, 4}, {5, 6, 7, 8}});
    EXPECT_EQ(ExpectDone({"compare", a, b}), a.string() + " and " + b.string() + ": all 2 pixels are the same\n");
    const Json told = Told(a, b, 0);
    EXPECT_EQ(told["differing"], 0);
    EXPECT_TRUE(told["together"]["psnr"].is_null());
    EXPECT_EQ(told["withinTolerance"], true);
}

TEST(CompareCommand, DifferencesAreThoseOfArithmetic) {
    const TemporaryFolder folder;
    const auto a = Row(folder / "a.png", {{10, 20, 30, 255}, {10, 20, 30, 255}, {0, 0, 0, 255}, {9, 9, 9, 255}});
    const auto b = Row(folder / "b.png", {{14, 20, 30, 255}, {10, 18, 30, 255}, {0, 0, 0, 255}, {9, 9, 9, 255}});
    const std::string text = ExpectFailed({"compare", a, b}, "");
    // Red: 4 in one of four pixels, mean square 4; green: 2, mean square 1; together mean square 20 / 16.
    EXPECT_EQ(text, a.string() + " and " + b.string() +
                        ": 2 of 4 pixels differ (values go to 255)\n"
                        "  red       largest 4, mean 1, PSNR 42.11 dB\n"
                        "  green     largest 2, mean 0.5, PSNR 48.13 dB\n"
                        "  blue      largest 0, mean 0, PSNR infinite\n"
                        "  alpha     largest 0, mean 0, PSNR infinite\n"
                        "  together  largest 4, mean 0.375, PSNR 47.16 dB\n");
    const Json told = Told(a, b, 1);
    EXPECT_EQ(told["scale"], 255);
    EXPECT_EQ(told["pixels"], 4);
    EXPECT_EQ(told["differing"], 2);
    EXPECT_EQ(told["channels"][1]["name"], "green");
    EXPECT_NEAR(told["channels"][1]["largest"].get<double>(), 2, 1e-5);
    EXPECT_NEAR(told["together"]["psnr"].get<double>(), 10 * std::log10(255 * 255 / 1.25), 1e-3);
}

TEST(CompareCommand, OnlyWhatIsWithinTheToleranceSucceeds) {
    const TemporaryFolder folder;
    const auto a = Row(folder / "a.png", {{100, 0, 0, 255}});
    const auto b = Row(folder / "b.png", {{103, 0, 0, 255}});
    EXPECT_EQ(Told(a, b, 1)["withinTolerance"], false);
    Told(a, b, 1, {"--tolerance", "2"});
    Told(a, b, 1, {"--tolerance", "2.99"});
    EXPECT_EQ(Told(a, b, 0, {"--tolerance", "3"})["withinTolerance"], true);
    Told(a, b, 1, {"--tolerance", "1%"});    // 2.55
    Told(a, b, 0, {"--tolerance", "1.2%"});  // 3.06
    for (const std::string wrong : {"-1", "x", "1x", "nan", "inf", "%"}) {
        ExpectWrongUsage(
            {"compare", a, b, "--tolerance=" + wrong},
            "compare: error: --tolerance: " + wrong + " is no number of steps, such as 2, and no share, such as 0.5%");
    }
}

TEST(CompareCommand, FloatsAreToldAsTheyAre) {
    const TemporaryFolder folder;
    const auto a = WriteFloats(folder / "a.exr", 2, 1, 3, {0, 0, 0, 5, 5, 5});
    const auto b = WriteFloats(folder / "b.exr", 2, 1, 3, {0, 0, 0.5F, 5, 5, 5});
    const Json told = Told(a, b, 1);
    EXPECT_EQ(told["scale"], 1);
    EXPECT_EQ(told["channels"][2]["largest"], 0.5);
    EXPECT_NEAR(told["channels"][2]["psnr"].get<double>(), 10 * std::log10(1 / 0.125), 1e-9);
}

TEST(CompareCommand, DifferentFormatsAreComparedAsFloats) {
    const TemporaryFolder folder;
    const auto grey = Row(folder / "grey.png", {{51}});
    const auto colour = Row(folder / "colour.png", {{51, 51, 51, 255}});
    Told(grey, colour, 0);
    const auto light = WriteFloats(folder / "light.exr", 1, 1, 3, {0.2F, 0.2F, 0.2F});
    EXPECT_NEAR(Told(grey, light, 0, {"--tolerance", "0.01"})["together"]["largest"].get<double>(), 0, 1e-6);
    ExpectDone({"compare", grey, light, "--tolerance", "0.01", "--json"},
               NoteLine(light,
                        "one holds light and the other values for display; their numbers were compared as they "
                        "are (--display compares what a screen shows)"));
}

TEST(CompareCommand, AScreenShowsLightAndItsDisplayValuesAlike) {
    const TemporaryFolder folder;
    for (const std::string name : {"cutout.png", "rgba.exr"}) {
        const auto other = folder / (name == "rgba.exr" ? "other.png" : "other.exr");
        EXPECT_EQ(RunKavra({"convert", Sample(name), other, "--background", "white"}).status, 0);
        EXPECT_EQ(RunKavra({"convert", Sample(name), folder / "same.tif", "--background", "white"}).status, 0);
        Told(folder / "same.tif", other, 0, {"--display", "--tolerance", "1"});  // of halves
        Told(folder / "same.tif", other, 1);
    }
}

TEST(CompareCommand, AScreenShowsNoColourThatIsTransparent) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cutout.png"), folder / "light.exr"});
    ExpectDone({"convert", folder / "light.exr", folder / "back.png"});
    Told(Sample("cutout.png"), folder / "back.png", 0, {"--display"});
    Told(Sample("cutout.png"), folder / "light.exr", 0, {"--display"});
    Told(Sample("cutout.png"), folder / "back.png", 1);
}

TEST(CompareCommand, NanAndInfinityAreTheSameAsThemselvesAlone) {
    const TemporaryFolder folder;
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
    const auto a = WriteFloats(folder / "a.exr", 4, 1, 1, {kNan, kInf, kNan, 1});
    const auto b = WriteFloats(folder / "b.exr", 4, 1, 1, {kNan, kInf, 1, -kInf});
    Told(a, a, 0);
    const Json told = Told(a, b, 1, {"--tolerance", "1000"});
    EXPECT_EQ(told["differing"], 2);
    EXPECT_EQ(told["notFinite"], 2);
    EXPECT_EQ(told["together"]["largest"], 0);
    EXPECT_TRUE(ExpectFailed({"compare", a, b, "--tolerance", "1000"}, "")
                    .contains("2 pixels hold NaN or infinity where the other does not"));
}

TEST(CompareCommand, SizesThatDifferAndFilesThatAreNoneAreErrors) {
    const TemporaryFolder folder;
    const auto a = Row(folder / "a.png", {{1, 2, 3}, {1, 2, 3}});
    const auto b = Row(folder / "b.png", {{1, 2, 3}});
    ExpectFailed({"compare", a, b},
                 ErrorLine(b, "cannot be compared with " + a.string() + ": one has 2 x 1 pixels and the other 1 x 1"));
    const auto none = folder.Write("none.png", "nothing");
    EXPECT_EQ(RunKavra({"compare", none, b}).status, 1);
    EXPECT_EQ(RunKavra({"compare", b, none}).status, 1);
    EXPECT_EQ(Told(b, none, 1)["file"], none.string());
    ExpectWrongUsage({"compare", a}, "compare: error: B is required");
    ExpectWrongUsage({"compare", a, b, "--gain", "2"}, "compare: error: --gain requires --out");
}

TEST(CompareCommand, TheDifferencesMakeAPicture) {
    const TemporaryFolder folder;
    const auto a = Row(folder / "a.png", {{10, 20, 30, 255}, {0, 0, 0, 250}, {0, 0, 0, 255}});
    const auto b = Row(folder / "b.png", {{14, 20, 25, 255}, {0, 0, 0, 255}, {200, 0, 0, 255}});
    EXPECT_EQ(RunKavra({"compare", a, b, "--out", folder / "d.png"}).status, 1);
    EXPECT_EQ(PictureFile(folder / "d.png").RgbaBytes(), (Bytes{4, 0, 5, 255, 5, 5, 5, 255, 200, 0, 0, 255}));
    EXPECT_EQ(RunKavra({"compare", a, b, "--out", folder / "d.png", "--gain", "10"}).status, 1);
    EXPECT_EQ(PictureFile(folder / "d.png").RgbaBytes(), (Bytes{40, 0, 50, 255, 50, 50, 50, 255, 255, 0, 0, 255}));
}
