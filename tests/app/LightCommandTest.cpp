// Measures of environment maps, their lights, and the plot of both.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <string>

using namespace Kavra::Tests;
using Rgb = std::array<float, 3>;

namespace {

/// Writes a map whose pixel in column x of row y is `colour(x, y)`.
std::filesystem::path WriteMap(const std::filesystem::path& path, int width, int height, OIIO::TypeDesc type,
                               const std::function<Rgb(int x, int y)>& colour, int channels = 3) {
    OIIO::ImageBuf image(OIIO::ImageSpec(width, height, channels, OIIO::TypeDesc::FLOAT));
    image.set_write_format(type);
    for (OIIO::ImageBuf::Iterator<float> pixel(image); !pixel.done(); ++pixel) {
        const Rgb value = colour(pixel.x(), pixel.y());
        for (int c = 0; c < channels; ++c)
            pixel[c] = value[static_cast<std::size_t>(c)];
    }
    EXPECT_TRUE(image.write(path.string())) << image.geterror();
    return path;
}

/// Black but for a square of `colour`, 20 x 20 of 400 x 200 pixels, round the given pixel corner.
std::function<Rgb(int, int)> Square(int column, int row, Rgb colour) {
    return [=](int x, int y) {
        const int dx = (x - column + 610) % 400 - 200;
        return dx >= 0 && dx < 20 && y >= row - 10 && y < row + 10 ? colour : Rgb{};
    };
}

/// What is found in one map; `options` are further words for the command.
Json LightOf(const std::string& map, const Words& options = {}) {
    const Json json = Json::parse(ExpectDone(Joined({{"light", "--json", map}, options})));
    EXPECT_EQ(json.size(), 1U);
    return json[0];
}

std::array<int, 3> PixelOf(const OIIO::ImageBuf& image, int x, int y) {
    float pixel[4];
    image.getpixel(x, y, pixel);
    return {static_cast<int>(std::lround(pixel[0] * 255)), static_cast<int>(std::lround(pixel[1] * 255)),
            static_cast<int>(std::lround(pixel[2] * 255))};
}

/// Said of a map of 32 pixels so many of which are no numbers.
std::string NotTrusted(const std::filesystem::path& map, int pixels) {
    return NoteLine(
        map, std::to_string(pixels) + " of 32 pixels are NaN or infinite; means and lights are not to be trusted");
}

constexpr std::array<int, 3> kWhite = {255, 255, 255};

}  // namespace

TEST(LightCommand, JsonIsAnArrayWithOneObjectAFile) {
    const TemporaryFolder folder;
    const auto map =
        WriteMap(folder / "uniform.exr", 2, 1, OIIO::TypeDesc::FLOAT, [](int, int) { return Rgb{0.5F, 0.25F, 0.1F}; });
    Json object = LightOf(map);
    EXPECT_NEAR(object["intensity"]["luminance"].get<double>(), 0.212671 * 0.5 + 0.71516 * 0.25 + 0.072169 * 0.1, 1e-6);
    object["intensity"].erase("luminance");
    ASSERT_EQ(object["lights"].size(), 2U);
    EXPECT_EQ(object["lights"][0]["color"], Json({0.5, 0.25, 0.1}));
    EXPECT_NEAR(object["lights"][0]["direction"][0].get<double>(), -1, 1e-6);
    const Json& light = object["lights"][0];
    EXPECT_EQ(light.size(), 6U);
    EXPECT_EQ(light["azimuth"], -90.0);
    EXPECT_NEAR(light["elevation"].get<double>(), 0, 0.01);
    EXPECT_NEAR(light["luminance"].get<double>(), 0.212671 * 0.5 + 0.71516 * 0.25 + 0.072169 * 0.1, 1e-6);
    EXPECT_NEAR(light["share"].get<double>(), 0.5, 1e-9);
    object.erase("lights");
    EXPECT_EQ(object, Json({{"file", map.string()},
                            {"averageColor", {0.5, 0.25, 0.1, 1.0}},
                            {"intensity", {{"brightestChannel", 0.5}, {"meanBrightest", 0.5}}},
                            {"weightedAverage", {0.5, 0.25, 0.1}}}));
}

TEST(LightCommand, FindsALightWhereItIs) {
    const TemporaryFolder folder;
    // u = 3/4 looks right; row 50 of 200 is 45 degrees up.
    const auto map = WriteMap(folder / "spot.exr", 400, 200, OIIO::TypeDesc::HALF, Square(300, 50, {8, 4, 2}));
    const Json lights = LightOf(map)["lights"];
    ASSERT_EQ(lights.size(), 1U);
    EXPECT_EQ(lights[0]["color"], Json({8.0, 4.0, 2.0}));
    EXPECT_NEAR(lights[0]["direction"][0].get<double>(), std::sqrt(0.5), 0.02);
    EXPECT_NEAR(lights[0]["direction"][1].get<double>(), std::sqrt(0.5), 0.02);
    EXPECT_NEAR(lights[0]["direction"][2].get<double>(), 0, 0.02);
    // The text gives the azimuth from ahead to the right, and the elevation.
    const std::string text = ExpectDone({"light", map});
    EXPECT_TRUE(text.contains("  90.0       44.")) << text;
}

TEST(LightCommand, LightsAreAsManyAsWanted) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "two.exr", 400, 200, OIIO::TypeDesc::FLOAT, [](int x, int y) {
        const Rgb left = Square(100, 100, {2, 2, 2})(x, y);
        return left[0] > 0 ? left : Square(300, 100, {1.5F, 1.5F, 1.5F})(x, y);
    });
    EXPECT_EQ(LightOf(map)["lights"].size(), 2U);
    EXPECT_EQ(LightOf(map, {"--lights", "1"})["lights"].size(), 1U);
    EXPECT_EQ(LightOf(map, {"--lights", "0"})["lights"], Json::array());
}

TEST(LightCommand, TheStrongestComesFirstAlthoughAnotherHasTheBrightestSample) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "two.exr", 400, 200, OIIO::TypeDesc::FLOAT, [](int x, int y) {
        if (x >= 98 && x < 102 && y >= 98 && y < 102) return Rgb{3, 3, 3};
        const Rgb left = Square(100, 100, {1.2F, 1.2F, 1.2F})(x, y);
        return left[0] > 0 ? left : Square(300, 100, {2, 2, 2})(x, y);
    });
    const Json lights = LightOf(map)["lights"];
    ASSERT_EQ(lights.size(), 2U);
    EXPECT_EQ(lights[0]["color"], Json({2.0, 2.0, 2.0}));
    EXPECT_NEAR(lights[0]["azimuth"].get<double>(), 90, 1);
    EXPECT_GT(lights[0]["share"].get<double>(), lights[1]["share"].get<double>());
    EXPECT_NEAR(lights[0]["share"].get<double>() + lights[1]["share"].get<double>(), 1, 1e-9);
}

TEST(LightCommand, AMapThatIsNotTwiceAsWideAsHighIsMeasuredWithANote) {
    const TemporaryFolder folder;
    const auto map = [&](int width, int height) {
        return WriteMap(folder / "map.exr", width, height, OIIO::TypeDesc::FLOAT,
                        [](int, int) { return Rgb{1, 1, 1}; });
    };
    ExpectDone({"light", map(8, 4)}, "");
    ExpectDone({"light", map(8, 8)},
               NoteLine(folder / "map.exr",
                        "8 x 8 pixels, and an equirectangular map is twice as wide as high; directions may be wrong"));
}

TEST(LightCommand, UpperLooksAtTheUpperHemisphere) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "sky.exr", 8, 4, OIIO::TypeDesc::FLOAT,
                              [](int, int y) { return y < 2 ? Rgb{1, 1, 1} : Rgb{}; });
    EXPECT_NEAR(LightOf(map)["intensity"]["luminance"].get<double>(), 0.5, 1e-6);
    const Json upper = LightOf(map, {"--upper"});
    EXPECT_EQ(upper["intensity"]["luminance"], 1.0);
    EXPECT_EQ(upper["weightedAverage"], Json({1.0, 1.0, 1.0}));
    EXPECT_EQ(upper["averageColor"], Json({0.5, 0.5, 0.5, 1.0}));
}

TEST(LightCommand, WhatHasNoMeanIsNull) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "row.exr", 2, 1, OIIO::TypeDesc::FLOAT, [](int, int) { return Rgb{1, 1, 1}; });
    const Json json = LightOf(map, {"--upper"});
    EXPECT_TRUE(json["intensity"]["luminance"].is_null());
    EXPECT_TRUE(json["weightedAverage"][0].is_null());
}

TEST(LightCommand, OtherPixelFormatsAreLoadedAsFloats) {
    const TemporaryFolder folder;
    const auto words =
        WriteMap(folder / "words.png", 4, 2, OIIO::TypeDesc::UINT16, [](int, int) { return Rgb{1, 0.2F, 0.6F}; });
    EXPECT_EQ(LightOf(words)["averageColor"], Json({1.0, 0.2, 0.6, 1.0}));
}

TEST(LightCommand, AGreyMapIsGreyInEveryColour) {
    const TemporaryFolder folder;
    for (const auto& [name, type] : {std::pair{"grey.png", OIIO::TypeDesc::UINT8},
                                     {"grey16.png", OIIO::TypeDesc::UINT16},
                                     {"grey.tif", OIIO::TypeDesc::FLOAT}}) {
        const auto map = WriteMap(folder / name, 4, 2, type, [](int, int) { return Rgb{0.2F, 0, 0}; }, 1);
        const Json mean = LightOf(map)["averageColor"];
        EXPECT_NEAR(mean[0].get<double>(), 0.2, 1e-6) << name;
        EXPECT_EQ(mean, Json({mean[0], mean[0], mean[0], 1.0})) << name;
    }
}

TEST(LightCommand, AMapThatTheHostReadsAsThreeFloatsIsTaken) {
    const auto map = Sample("depth.exr");
    const std::string said =
        NoteLine(map, "96 x 64 pixels, and an equirectangular map is twice as wide as high; directions may be wrong");
    const Json mean = Json::parse(ExpectDone({"light", "--json", map}, said))[0]["averageColor"];
    EXPECT_GT(mean[0].get<double>(), 0.1);
    EXPECT_EQ(mean[0], mean[2]);
    EXPECT_EQ(mean[3], 1.0);
}

TEST(LightCommand, WhatIsNoFlatPictureIsRefusedAndStopsNoOther) {
    const auto cube = Sample("cube.dds"), volume = Sample("volume.dds"), map = Sample("studio.hdr");
    const Json json = Json::parse(ExpectFailed({"light", "--json", cube, volume, map},
                                               ErrorLine(cube, "a cube map is no equirectangular map") +
                                                   ErrorLine(volume, "a volume is no equirectangular map")));
    EXPECT_EQ(
        json,
        Json::array({{{"file", cube.string()}, {"error", "a cube map is no equirectangular map"}, {"kind", "other"}},
                     {{"file", volume.string()}, {"error", "a volume is no equirectangular map"}, {"kind", "other"}},
                     LightOf(map)}));
}

TEST(LightCommand, SeveralFilesGiveATable) {
    const std::string table = ExpectFailed(
        {"light", Sample("sunset.exr"), "missing.hdr", Sample("overcast.exr")},
        WarningLine("missing.hdr", "format is not supported") + ErrorLine("missing.hdr", "there is no such file"));
    EXPECT_EQ(std::ranges::count(table, '\n'), 3) << table;
    EXPECT_TRUE(table.starts_with("file "));
    EXPECT_LT(table.find("\n" + Sample("sunset.exr").string() + " "),
              table.find("\n" + Sample("overcast.exr").string() + " "));
}

TEST(LightCommand, ThePlotShowsTheLightWithARingInItsPlace) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "spot.exr", 400, 200, OIIO::TypeDesc::FLOAT, Square(300, 100, {8, 8, 8}));
    ExpectDone({"light", map, "--plot", folder / "plot.png"});
    const OIIO::ImageBuf plot((folder / "plot.png").string());
    EXPECT_EQ(plot.spec().width, 1024);
    EXPECT_GT(plot.spec().height, 600);
    // The only light has the whole share: a ring of 60 pixels round (768, 256). The grid crosses it above and below.
    for (const int offset : {-60, 60})
        EXPECT_GT(PixelOf(plot, 768 + offset, 250)[0], 240) << offset;
    EXPECT_EQ(PixelOf(plot, 768 - 42, 256 - 43), kWhite);
    EXPECT_EQ(PixelOf(plot, 768, 250), kWhite);  // the light itself, brightest of the map
    EXPECT_EQ(PixelOf(plot, 700, 240), (std::array{0, 0, 0}));
}

TEST(LightCommand, ARingOnTheSeamIsDrawnOnBothSides) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "behind.exr", 400, 200, OIIO::TypeDesc::FLOAT, Square(0, 100, {8, 8, 8}));
    ExpectDone({"light", map, "--plot", folder / "plot.png"});
    const OIIO::ImageBuf plot((folder / "plot.png").string());
    EXPECT_GT(PixelOf(plot, 59, 252)[0], 200);
    EXPECT_GT(PixelOf(plot, 1023 - 59, 252)[0], 200);
}

TEST(LightCommand, ThePlotShowsMiddleGreyWhateverTheExposure) {
    // A uniform map is its own logarithmic mean: 0.18 of the screen's light, which is 118 on the sRGB curve.
    const TemporaryFolder folder;
    for (const float light : {0.01F, 1.0F, 300.0F}) {
        const auto map = WriteMap(folder / "uniform.exr", 8, 4, OIIO::TypeDesc::FLOAT,
                                  [light](int, int) { return Rgb{light, light, light}; });
        ExpectDone({"light", map, "--lights", "0", "--plot", folder / "plot.png"});
        EXPECT_EQ(PixelOf(OIIO::ImageBuf((folder / "plot.png").string()), 20, 20), (std::array{118, 118, 118}))
            << light;
    }
}

TEST(LightCommand, ThePlotShowsDisplayValuesAsTheyAre) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "picture.png", 8, 4, OIIO::TypeDesc::UINT8,
                              [](int, int) { return Rgb{200 / 255.0F, 100 / 255.0F, 30 / 255.0F}; });
    ExpectDone({"light", map, "--lights", "0", "--plot", folder / "plot.png"});
    EXPECT_EQ(PixelOf(OIIO::ImageBuf((folder / "plot.png").string()), 20, 20), (std::array{200, 100, 30}));
}

TEST(LightCommand, ThePlotOfNaNAndInfinitePixelsIsDrawn) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "odd.exr", 8, 4, OIIO::TypeDesc::FLOAT, [](int x, int) {
        return Rgb{x == 1 ? NAN : 1, x == 3 ? INFINITY : 1, x == 5 ? -INFINITY : 1};
    });
    ExpectDone({"light", map, "--plot", folder / "plot.png"}, NotTrusted(map, 12));
    EXPECT_EQ(OIIO::ImageBuf((folder / "plot.png").string()).spec().width, 1024);
}

TEST(LightCommand, PlotsOfSeveralMapsGoToAFolder) {
    const TemporaryFolder folder;
    const auto plots = folder / "plots";
    ExpectDone({"light", Sample("sunset.exr"), Sample("studio.hdr"), "--plot", plots});
    EXPECT_EQ(NamesIn(plots), (Words{"studio.png", "sunset.png"}));
}

TEST(LightCommand, APlotThatFailsLeavesTheNumbers) {
    const TemporaryFolder folder;
    const std::string map = Sample("studio.hdr");
    const std::string plot = folder / "file/plot.png";
    folder.Write("file", "no folder");
    const std::string reason = "cannot be written: Not a directory";
    const std::string said = WarningLine(plot, "fail to create specified folder") + ErrorLine(plot, reason);
    EXPECT_EQ(ExpectFailed({"light", map, "--plot", plot}, said), ExpectDone({"light", map}));
    Json json = Json::parse(ExpectFailed({"light", map, "--plot", plot, "--json"}, said))[0];
    EXPECT_EQ(json["error"], reason);
    EXPECT_EQ(json["kind"], "cannotWrite");
    json.erase("error");
    json.erase("kind");
    EXPECT_EQ(json, LightOf(map));
}

TEST(LightCommand, PixelsThatAreNoNumbersAreSaid) {
    const TemporaryFolder folder;
    for (const OIIO::TypeDesc type : {OIIO::TypeDesc::FLOAT, OIIO::TypeDesc::HALF}) {
        const auto map = WriteMap(folder / "odd.exr", 8, 4, type, [](int x, int y) {
            return y > 0 ? Rgb{1, 1, 1} : Rgb{x == 1 ? NAN : 1, x == 3 ? INFINITY : 1, x == 5 ? -INFINITY : 1};
        });
        ExpectDone({"light", map}, NotTrusted(map, 3));
    }
}

TEST(LightCommand, LightsThatAreNothingButBlackAreSaid) {
    const TemporaryFolder folder;
    const auto expect = [&](const std::string& said, const std::function<Rgb(int, int)>& colour,
                            const std::string& lights) {
        const auto map = WriteMap(folder / "map.exr", 800, 400, OIIO::TypeDesc::HALF, colour);
        ExpectDone({"light", map, "--lights", lights}, said);
    };
    const auto black = [](int, int) { return Rgb{}; };
    // The first samples are acos(0.99), 8.1 degrees, from the zenith: row 18 of 400 is their own.
    const auto cap = [](int rows) { return [rows](int, int y) { return y < rows ? Rgb{9, 9, 9} : Rgb{}; }; };
    const std::string note = NoteLine(folder / "map.exr", "the lights are black: the search saw no light in this map");
    expect(note, black, "8");
    expect(note, cap(18), "8");
    expect("", cap(19), "8");
    expect("", black, "0");  // none were looked for
}

TEST(LightCommand, FindsTheLightsOfTheSampleEnvironments) {
    // Towards the middles of the softboxes, the sun at (0.45, 0.13, -1), and up.
    const Json softboxes = LightOf(Sample("softboxes.exr"))["lights"];
    ASSERT_EQ(softboxes.size(), 2U);
    EXPECT_NEAR(softboxes[0]["direction"][0].get<double>(), -2 / std::sqrt(4 + 1 + 2.56), 0.02);
    EXPECT_NEAR(softboxes[0]["direction"][1].get<double>(), 1 / std::sqrt(4 + 1 + 2.56), 0.02);
    EXPECT_NEAR(softboxes[1]["direction"][0].get<double>(), 2.1 / std::sqrt(4.41 + 0.1225 + 0.81), 0.02);
    const Json sunset = LightOf(Sample("sunset.exr"))["lights"];
    ASSERT_EQ(sunset.size(), 1U);
    EXPECT_NEAR(sunset[0]["direction"][1].get<double>(), 0.13 / std::sqrt(0.2025 + 0.0169 + 1), 0.03);
    const Json overcast = LightOf(Sample("overcast.exr"))["lights"];
    ASSERT_EQ(overcast.size(), 1U);
    EXPECT_GT(overcast[0]["direction"][1].get<double>(), 0.99);
}
