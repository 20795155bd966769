// What the commands do to colours and alpha between files of different conventions, by arithmetic.

#include "app/ColourFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

using namespace Kavra::Tests;

namespace {

std::string Black(const Path& in, const std::string& type) {
    return NoteLine(in, "its transparent pixels were put on black, as " + type +
                            " files hold no alpha; --background chooses another colour");
}

std::string Clipped(const Path& in, const std::string& share) {
    return NoteLine(in, share +
                            " of the pixels are brighter than white and were clipped; --tonemap or --exposure show "
                            "what is in them");
}

}  // namespace

TEST(Colour, LightIsWrittenForDisplayByTheCurveOfSrgb) {
    const TemporaryFolder folder;
    const std::vector<float> ramp = {0, 0, 0, 0.0078125F, 0.0078125F, 0.0078125F, 0.5F, 0.25F, 0.125F, 1, 1, 1};
    const Bytes expected = {0, 0, 0, 255, 22, 22, 22, 255, 188, 137, 99, 255, 255, 255, 255, 255};
    for (const std::string in : {"ramp.exr", "ramp.hdr", "ramp.tif"}) {
        WriteFloats(folder / in, 4, 1, 3, ramp);
        EXPECT_EQ(Converted(folder, folder / in, "out.png"), expected) << in;
        EXPECT_EQ(Converted(folder, folder / in, "out.tga"), expected) << in;
        EXPECT_EQ(Converted(folder, folder / in, "out.bmp"), expected) << in;
    }
}

TEST(Colour, DisplayValuesAreWrittenAsLightWhereFilesHoldLight) {
    const TemporaryFolder folder;
    const auto in = Pixels(folder, {{0, 10, 118, 255}, {188, 137, 255, 255}});
    for (const Words& out : std::vector<Words>{{"out.exr"},
                                               {"out.exr", "--format", "rgba8"},
                                               {"out.dds", "--format", "rgba32f"},
                                               {"out.dds", "--format", "rgba16f"},
                                               {"out.tif", "--format", "rgba32f"}}) {
        const Path path = folder / out.front();
        ExpectDone(Joined({{"convert", in, path}, Words(out.begin() + 1, out.end())}));
        const std::vector<float> values = Block(path);
        const std::vector<int> stored = {0, 10, 118, 255, 188, 137, 255, 255};
        ASSERT_EQ(values.size(), stored.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double expected = i % 4 == 3 ? 1 : LightOf(stored[i]);
            EXPECT_NEAR(values[i], expected, expected / 2000) << path << i;
        }
    }
}

TEST(Colour, IntegersOf16BitsComeBackFromOpenExrAsTheyWere) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("photo-16bit.png"), folder / "light.exr"});
    ExpectDone({"convert", folder / "light.exr", folder / "back.png", "--format", "rgba16"});
    EXPECT_EQ(Dumped(folder / "back.png"), Dumped(Sample("photo-16bit.png")));
}

TEST(Colour, EveryColourAtEveryAlphaComesBackFromOpenExrAsItWas) {
    const TemporaryFolder folder;
    const auto in =
        WritePicture(folder / "all.png", 256, 256, [](int x, int y) { return Colour{x, 255 - x, (x + y) % 256, y}; });
    ExpectDone({"convert", in, folder / "all.exr"});
    ExpectDone({"convert", folder / "all.exr", folder / "back.png"});
    const Bytes before = PictureFile(in).RgbaBytes(), after = PictureFile(folder / "back.png").RgbaBytes();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 256 * 4; i < before.size(); ++i)  // the first row is transparent
        ASSERT_EQ(after[i], before[i]) << i;
    EXPECT_TRUE(std::all_of(after.begin(), after.begin() + 256 * 4, [](unsigned char value) { return value == 0; }));
}

TEST(Colour, PremultipliedLightBecomesStraightColours) {
    const TemporaryFolder folder;
    const auto in = Lights(folder, {0.125F, 0.25F, 0.0625F, 0.5F, 0.25F, 0.25F, 0.25F, 0.25F});
    const Bytes expected = {137, 188, 99, 128, 255, 255, 255, 64};
    for (const std::string out : {"out.png", "out.tga", "out.tif"})
        EXPECT_EQ(Converted(folder, in, out, {"--format", "rgba8"}), expected) << out;
}

TEST(Colour, StraightColoursBecomePremultipliedLight) {
    const TemporaryFolder folder;
    const auto in = Pixels(folder, {{137, 188, 99, 51}, {255, 255, 255, 0}});
    ExpectDone({"convert", in, folder / "out.exr"});
    const std::vector<float> values = FloatsOf(folder / "out.exr");
    const std::vector<double> expected = {LightOf(137) / 5, LightOf(188) / 5, LightOf(99) / 5, 0.2, 0, 0, 0, 0};
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], expected[i], expected[i] / 1000) << i;
}

TEST(Colour, LightWithoutAlphaKeepsItsColourWithANoteAndShowsOnABackground) {
    const TemporaryFolder folder;
    const auto in = Lights(folder, {0.5F, 0.25F, 0, 0, 0, 0, 0, 0});
    const auto note =
        NoteLine(in, "50.0 % of the pixels are light without alpha, which .png files do not show; --background does");
    EXPECT_EQ(Converted(folder, in, "out.png", {}, note), (Bytes{188, 137, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Converted(folder, in, "out.png", {"--background", "black"}), (Bytes{188, 137, 0, 255, 0, 0, 0, 255}));
    EXPECT_EQ(Converted(folder, in, "out.png", {"--background", "#00f"}), (Bytes{188, 137, 255, 255, 0, 0, 255, 255}));
}

TEST(Colour, WhatIsNoNumberOrBeyondAllBecomesSane) {
    const TemporaryFolder folder;
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
    const auto in = Lights(folder, {kNan, kInf, -kInf, 1, 0.5F, 0.5F, 0.5F, kNan, -1, 2, 0.5F, 2, kInf, 0, 0, 1e-30F});
    ExpectDone(
        {"convert", in, folder / "out.png"},
        Clipped(in, "50.0 %") + NoteLine(in,
                                         "50.0 % of the pixels are light without alpha, which .png files do not show; "
                                         "--background does"));
    EXPECT_EQ(PictureFile(folder / "out.png").RgbaBytes(),
              (Bytes{0, 255, 0, 255, 188, 188, 188, 0, 0, 255, 188, 255, 255, 0, 0, 0}));
    for (const std::string map : {"reinhard", "filmic"}) {
        EXPECT_EQ(RunKavra({"convert", in, folder / "mapped.png", "--tonemap", map}).status, 0) << map;
        EXPECT_EQ(PictureFile(folder / "mapped.png").At(0, 0)[0], 0) << map;
        EXPECT_EQ(PictureFile(folder / "mapped.png").At(0, 0)[2], 0) << map;
    }
}

TEST(Colour, FileTypesWithoutAlphaShowWhatIsTransparentOnBlackWithANote) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "clear.png", 16, 16, [](int, int) { return Colour{255, 255, 255, 128}; });
    ExpectDone({"convert", in, folder / "out.jpg"}, Black(in, ".jpg"));
    for (const unsigned char value : PictureFile(folder / "out.jpg").Bytes())
        ASSERT_NEAR(value, Shown(128 / 255.0), 1);
    const auto light = WriteFloats(folder / "clear.exr", 8, 8, 4, std::vector<float>(256, 0.25F));
    ExpectDone({"convert", light, folder / "light.jpg"}, Black(light, ".jpg"));
    for (const unsigned char value : PictureFile(folder / "light.jpg").Bytes())
        ASSERT_NEAR(value, 137, 1);
    const auto opaque = WritePicture(folder / "opaque.png", 8, 8, [](int x, int y) { return Colour{x, y, 9, 255}; });
    ExpectDone({"convert", opaque, folder / "opaque.jpg"});
    ExpectDone({"convert", opaque, folder / "raw.jpg", "--raw"});
    EXPECT_EQ(PictureFile(folder / "opaque.jpg").Bytes(), PictureFile(folder / "raw.jpg").Bytes());
}

TEST(Colour, ABackgroundIsNamedInManyWays) {
    const TemporaryFolder folder;
    const auto in = Pixels(folder, {{255, 0, 0, 0}, {255, 0, 0, 128}});
    const auto on = [&](const std::string& colour) {
        return Converted(folder, in, "out.png", {"--background", colour});
    };
    const auto half = static_cast<unsigned char>(Shown(127 / 255.0));
    EXPECT_EQ(on("white"), (Bytes{255, 255, 255, 255, 255, half, half, 255}));
    EXPECT_EQ(on("#fff"), on("white"));
    EXPECT_EQ(on("#FFFFFF"), on("white"));
    EXPECT_EQ(on("255,255,255"), on("white"));
    EXPECT_EQ(on("grey"), on("#808080"));
    EXPECT_EQ(on("gray"), on("128,128,128"));
    EXPECT_EQ(on("black"), on("#000"));
    EXPECT_EQ(on("#12f"), on("17,34,255"));
    for (const std::string wrong :
         {"#", "#12", "#1234567", "#ggg", "#-12", "1,2", "1,2,3,4", "1,2,256", "1,,2", "-1,2,3", "1, 2,3", "whit"}) {
        ExpectWrongUsage({"convert", in, folder / "out.png", "--background=" + wrong},
                         "convert: error: --background: " + wrong + " is no colour, such as #ff8000");
    }
}

TEST(Colour, AlphaIsWhatIsAskedFor) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.125F, 0.25F, 0, 0.5F});
    const auto picture = Pixels(folder, {{100, 50, 0, 51}});
    const auto of = [&](const Path& in, const std::string& wish) {
        return Converted(folder, in, "out.png", {"--alpha", wish});
    };
    EXPECT_EQ(of(light, "straight"), (Bytes{137, 188, 0, 128}));
    EXPECT_EQ(of(light, "premultiplied"), (Bytes{68, 94, 0, 128}));  // half of 136.96 and of 187.52
    EXPECT_EQ(of(light, "keep"), (Bytes{99, 137, 0, 128}));
    EXPECT_EQ(of(light, "drop"), (Bytes{99, 137, 0, 255}));
    EXPECT_EQ(of(picture, "straight"), (Bytes{100, 50, 0, 51}));
    EXPECT_EQ(of(picture, "premultiplied"), (Bytes{20, 10, 0, 51}));
    EXPECT_EQ(of(picture, "keep"), (Bytes{100, 50, 0, 51}));
    EXPECT_EQ(of(picture, "drop"), (Bytes{100, 50, 0, 255}));
    ExpectDone({"convert", picture, folder / "straight.exr", "--alpha", "straight"});
    EXPECT_NEAR(FloatsOf(folder / "straight.exr")[0], LightOf(100), 1e-4);
    ExpectDone({"convert", light, folder / "same.exr", "--alpha", "keep"});
    EXPECT_EQ(FloatsOf(folder / "same.exr"), FloatsOf(light));
}

TEST(Colour, TheInputIsTakenForWhatItIsSaidToBe) {
    const TemporaryFolder folder;
    const auto picture = Pixels(folder, {{128, 0, 255, 255}});
    EXPECT_EQ(Converted(folder, picture, "out.png", {"--linear"}),
              (Bytes{static_cast<unsigned char>(Shown(128 / 255.0)), 0, 255, 255}));
    ExpectDone({"convert", picture, folder / "out.exr", "--linear"});
    EXPECT_NEAR(FloatsOf(folder / "out.exr")[0], 128 / 255.0, 2e-4);
    const auto light = Lights(folder, {0.5F, 0.25F, 1, 1});
    EXPECT_EQ(Converted(folder, light, "shown.png", {"--srgb"}), (Bytes{128, 64, 255, 255}));
}

TEST(Colour, RawCopiesNumbers) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.5F, 0.25F, 2, 0.5F});
    EXPECT_EQ(Converted(folder, light, "out.png", {"--raw"}), (Bytes{128, 64, 255, 128}));
    const auto picture = Pixels(folder, {{128, 0, 255, 51}});
    ExpectDone({"convert", picture, folder / "out.exr", "--raw"});
    EXPECT_NEAR(FloatsOf(folder / "out.exr")[0], 128 / 255.0, 2e-4);
    for (const Words& other : std::vector<Words>{{"--alpha", "keep"},
                                                 {"--background", "black"},
                                                 {"--linear"},
                                                 {"--srgb"},
                                                 {"--exposure", "1"},
                                                 {"--tonemap", "filmic"}}) {
        ExpectWrongUsage(Joined({{"convert", picture, folder / "x.png", "--raw"}, other}),
                         "convert: error: " + other.front() + " and --raw exclude one another");
    }
}

TEST(Colour, ExposureBrightensLightByStops) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.25F, 0.5F, 2, 1});
    EXPECT_EQ(Converted(folder, light, "out.png", {"--exposure", "-1"}), (Bytes{99, 137, 255, 255}));
    EXPECT_EQ(Converted(folder, light, "out.png", {"--exposure", "-2.0"}), (Bytes{71, 99, 188, 255}));
    const auto picture = Pixels(folder, {{137, 0, 99, 255}});
    const Bytes brighter = Converted(folder, picture, "brighter.png", {"--exposure", "1"});
    EXPECT_EQ(brighter[0], 188);
    EXPECT_EQ(brighter[2], 137);
    for (const std::string wrong : {"x", "61", "nan", "inf", "1x"}) {
        ExpectWrongUsage({"convert", light, folder / "x.png", "--exposure=" + wrong},
                         "convert: error: --exposure: " + wrong + " is no number from -60 to 60");
    }
}

TEST(Colour, ToneMapsBringLightBeyondWhiteIntoTheScreen) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.1F, 0.1F, 0.1F, 10, 10, 10}, 3);
    EXPECT_EQ(Converted(folder, light, "out.png", {}, Clipped(light, "50.0 %"))[4], 255);
    // l = 0.18 L / 1, w = 1.8 (equation 4 of Reinhard et al. 2002).
    const int dark = Shown(0.018 * (1 + 0.018 / (1.8 * 1.8)) / 1.018);
    const Bytes reinhard = Converted(folder, light, "out.png", {"--tonemap", "reinhard"});
    EXPECT_EQ(reinhard[0], dark);
    EXPECT_EQ(reinhard[4], 255);
    const auto grey = Lights(folder, {0.18F, 0.18F, 0.18F, 1, 1, 1}, 3);
    const Bytes filmic = Converted(folder, grey, "out.png", {"--tonemap", "filmic"});
    EXPECT_EQ(filmic[0], 100);  // 0.128338 of light
    EXPECT_EQ(filmic[4], 186);  // 0.492919
}

TEST(Colour, GreyOf16BitsKeepsItsAlpha) {
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(2, 1, 2, OIIO::TypeDesc::UINT16);
    spec.channelnames = {"Y", "A"};
    spec.alpha_channel = 1;
    spec.attribute("oiio:UnassociatedAlpha", 1);
    const std::vector<std::uint16_t> values = {1000, 40000, 65535, 7};
    const auto path = folder / "grey.png";
    const auto output = OIIO::ImageOutput::create(path.string());
    ASSERT_TRUE(output && output->open(path.string(), spec));
    ASSERT_TRUE(output->write_image(OIIO::TypeDesc::UINT16, values.data()) && output->close());
    const std::vector<Words> commands = {{"convert", path, folder / "out.png"},
                                         {"frames", path, folder / "%dut.png"},
                                         {"resize", path, folder / "out.png", "--scale", "100%"},
                                         {"crop", path, folder / "out.png", "--rect", "0,0,2,1"}};
    for (const Words& command : commands) {
        ExpectDone(command);
        const auto out = command.front() == "frames" ? folder / "0ut.png" : folder / "out.png";
        const std::vector<float> block = Block(out);
        ASSERT_EQ(block.size(), 8U) << command.front();
        const std::vector<float> expected = {1000, 1000, 1000, 40000, 65535, 65535, 65535, 7};
        for (std::size_t i = 0; i < block.size(); ++i)
            EXPECT_NEAR(block[i] * 65535, expected[i], 0.01) << command.front() << i;
    }
    ExpectDone({"convert", path, folder / "raw.png", "--raw"});
    EXPECT_EQ(Described(folder / "raw.png")["formatName"], "kL16");
    ExpectDone({"convert", Sample("grey-alpha.png"), folder / "eight.png"});
    EXPECT_EQ(Dumped(folder / "eight.png"), Dumped(Sample("grey-alpha.png")));
}

TEST(Colour, WhereNothingIsToBeDoneNoByteChanges) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 16, 16, [](int x, int y) { return Colour{x, y, 200, x * y}; });
    for (const std::string type : {"png", "tga", "tif", "bmp", "dds"}) {
        ExpectDone({"convert", in, folder / ("out." + type)});
        EXPECT_EQ(Dumped(folder / ("out." + type)), Dumped(in)) << type;
    }
    for (const std::string name : {"rgba.exr", "luminance.exr"}) {
        ExpectDone({"convert", Sample(name), folder / "same.exr"});
        EXPECT_EQ(RunKavra({"compare", Sample(name), folder / "same.exr"}).status, 0) << name;
    }
    ExpectDone({"convert", Sample("float.dds"), folder / "same.dds"});
    EXPECT_EQ(Dumped(folder / "same.dds"), Dumped(Sample("float.dds")));
}

TEST(Colour, HalvesBecomeFloatsWhereFilesHoldNoHalves) {
    const TemporaryFolder folder;
    for (const std::string type : {"tif", "fits"})
        ExpectDone({"convert", Sample("overcast.exr"), folder / ("out." + type), "--alpha", "keep"});
    EXPECT_EQ(Described(folder / "out.tif")["formatName"], "kR32G32B32A32F");
    EXPECT_EQ(RunKavra({"compare", Sample("overcast.exr"), folder / "out.tif"}).status, 0);
}

TEST(Colour, AFormatThatIsAskedForIsReachedThroughLight) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.5F, 2, 0.25F, 1});
    ExpectDone({"convert", light, folder / "out.dds", "--format", "rgba8", "--exposure", "-1"});
    EXPECT_EQ(Dumped(folder / "out.dds"), (Bytes{137, 255, 99, 255}));
    ExpectDone({"crop", light, folder / "crop.dds", "--rect", "0,0,1,1", "--format", "rgba8", "--exposure", "-1"});
    EXPECT_EQ(Dumped(folder / "crop.dds"), (Bytes{137, 255, 99, 255}));
    ExpectDone({"convert", light, folder / "half.dds", "--format", "rgba32f"});
    EXPECT_EQ(Block(folder / "half.dds"), (std::vector<float>{0.5F, 2, 0.25F, 1}));
    ExpectDone({"convert", light, folder / "16.png", "--format", "rgba16", "--exposure", "-3"});
    EXPECT_NEAR(Block(folder / "16.png")[1], 0.537099, 1.0 / 65535);  // of 0.25
}

TEST(Colour, EveryFaceOfACubeMapIsConverted) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cube.dds"), folder / "light.dds", "--format", "rgba32f"});
    const std::vector<float> light = Block(folder / "light.dds");
    const Bytes before = Dumped(Sample("cube.dds"));
    ASSERT_EQ(light.size(), before.size());
    for (std::size_t i = 0; i < light.size(); i += 997 * 4)
        EXPECT_NEAR(light[i], LightOf(before[i]), 1e-6) << i;
    ExpectDone({"convert", folder / "light.dds", folder / "back.dds", "--format", "rgba8"});
    EXPECT_EQ(Dumped(folder / "back.dds"), before);
}

TEST(Colour, EveryCommandForPeopleTakesTheOptions) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.5F, 0.25F, 0.125F, 1});
    const std::vector<Words> commands = {{"convert", light, folder / "out.png"},
                                         {"frames", light, folder / "%dut.png"},
                                         {"resize", light, folder / "out.png", "--size", "1x1"},
                                         {"crop", light, folder / "out.png", "--rect", "0,0,1,1"}};
    for (const Words& command : commands) {
        const auto out = command.front() == "frames" ? folder / "0ut.png" : folder / "out.png";
        ExpectDone(command);
        EXPECT_EQ(PictureFile(out).RgbaBytes(), (Bytes{188, 137, 99, 255})) << command.front();
        ExpectDone(Joined({command, {"--raw"}}));
        EXPECT_EQ(PictureFile(out).RgbaBytes(), (Bytes{128, 64, 32, 255})) << command.front();
        ExpectDone(Joined({command, {"--exposure", "1"}}));
        EXPECT_EQ(PictureFile(out).RgbaBytes(), (Bytes{255, 188, 137, 255})) << command.front();
    }
}

TEST(Colour, ATargetKeepsItsMappingUnlessAScreenIsAskedFor) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.5F, 0.25F, 0.125F, 1});
    const auto target = [&](const Words& more) {
        ExpectDone(Joined({{"target", light, folder / "out.png"}, more}));
        return PictureFile(folder / "out.png").RgbaBytes();
    };
    EXPECT_EQ(target({}), (Bytes{127, 63, 31, 255}));  // cut off, not rounded
    EXPECT_EQ(target({"--display"}), (Bytes{188, 137, 99, 255}));
    EXPECT_EQ(target({"--exposure", "1"}), (Bytes{255, 188, 137, 255}));
    ExpectWrongUsage({"target", light, folder / "out.png", "--stretch", "--display"},
                     "target: error: --stretch and --display exclude one another");
}

TEST(Colour, AFormatWithoutAlphaLeavesItOut) {
    const TemporaryFolder folder;
    const auto light = Lights(folder, {0.25F, 0.25F, 0.25F, 0.5F});
    EXPECT_EQ(Converted(folder, light, "out.png", {"--format", "l8"}), (Bytes{137}));
    EXPECT_EQ(Converted(folder, light, "out.png", {"--format", "l8", "--background", "white"}), (Bytes{225}));  // 0.75
}
