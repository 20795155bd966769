#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <string>

using namespace Kavra::Tests;
using Json = nlohmann::json;
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

Json LightJson(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"light", "--json"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ProgramResult result = RunKavra(words);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    return Json::parse(result.out);
}

std::array<int, 3> PixelOf(const OIIO::ImageBuf& image, int x, int y) {
    float pixel[4];
    image.getpixel(x, y, pixel);
    return {static_cast<int>(std::lround(pixel[0] * 255)), static_cast<int>(std::lround(pixel[1] * 255)),
            static_cast<int>(std::lround(pixel[2] * 255))};
}

constexpr std::array<int, 3> kWhite = {255, 255, 255};

}  // namespace

TEST(LightCommand, JsonIsAnArrayWithOneObjectAFile) {
    const TemporaryFolder folder;
    const auto map =
        WriteMap(folder / "uniform.exr", 2, 1, OIIO::TypeDesc::FLOAT, [](int, int) { return Rgb{0.5F, 0.25F, 0.1F}; });
    const Json json = LightJson({map});
    ASSERT_EQ(json.size(), 1U);
    Json object = json[0];
    EXPECT_NEAR(object["intensity"]["luminance"].get<double>(), 0.212671 * 0.5 + 0.71516 * 0.25 + 0.072169 * 0.1, 1e-6);
    object["intensity"].erase("luminance");
    ASSERT_EQ(object["lights"].size(), 2U);
    EXPECT_EQ(object["lights"][0]["color"], Json({0.5, 0.25, 0.1}));
    EXPECT_NEAR(object["lights"][0]["direction"][0].get<double>(), -1, 1e-6);
    EXPECT_EQ(object["lights"][0].size(), 2U);
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
    const Json lights = LightJson({map})[0]["lights"];
    ASSERT_EQ(lights.size(), 1U);
    EXPECT_EQ(lights[0]["color"], Json({8.0, 4.0, 2.0}));
    EXPECT_NEAR(lights[0]["direction"][0].get<double>(), std::sqrt(0.5), 0.02);
    EXPECT_NEAR(lights[0]["direction"][1].get<double>(), std::sqrt(0.5), 0.02);
    EXPECT_NEAR(lights[0]["direction"][2].get<double>(), 0, 0.02);
    // The text gives the azimuth from ahead to the right, and the elevation.
    const std::string text = RunKavra({"light", map}).out;
    EXPECT_NE(text.find("+0.72"), std::string::npos) << text;
    EXPECT_NE(text.find("  90.0       44."), std::string::npos) << text;
}

TEST(LightCommand, LightsAreAsManyAsWanted) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "two.exr", 400, 200, OIIO::TypeDesc::FLOAT, [](int x, int y) {
        const Rgb left = Square(100, 100, {2, 2, 2})(x, y);
        return left[0] > 0 ? left : Square(300, 100, {1.5F, 1.5F, 1.5F})(x, y);
    });
    EXPECT_EQ(LightJson({map})[0]["lights"].size(), 2U);
    EXPECT_EQ(LightJson({map, "--lights", "1"})[0]["lights"].size(), 1U);
    EXPECT_EQ(LightJson({map, "--lights", "0"})[0]["lights"], Json::array());
    EXPECT_EQ(RunKavra({"light", map, "--lights", "-1"}).status, 2);
    EXPECT_EQ(RunKavra({"light", map, "--lights", "20001"}).status, 2);
}

TEST(LightCommand, UpperLooksAtTheUpperHemisphere) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "sky.exr", 8, 4, OIIO::TypeDesc::FLOAT,
                              [](int, int y) { return y < 2 ? Rgb{1, 1, 1} : Rgb{}; });
    EXPECT_NEAR(LightJson({map})[0]["intensity"]["luminance"].get<double>(), 0.5, 1e-6);
    EXPECT_EQ(LightJson({map, "--upper"})[0]["intensity"]["luminance"], 1.0);
    EXPECT_EQ(LightJson({map, "--upper"})[0]["weightedAverage"], Json({1.0, 1.0, 1.0}));
    EXPECT_EQ(LightJson({map, "--upper"})[0]["averageColor"], Json({0.5, 0.5, 0.5, 1.0}));
}

TEST(LightCommand, WhatHasNoMeanIsNull) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "row.exr", 8, 1, OIIO::TypeDesc::FLOAT, [](int, int) { return Rgb{1, 1, 1}; });
    const Json json = LightJson({map, "--upper"});
    EXPECT_TRUE(json[0]["intensity"]["luminance"].is_null());
    EXPECT_TRUE(json[0]["weightedAverage"][0].is_null());
}

TEST(LightCommand, OtherPixelFormatsAreLoadedAsFloats) {
    const TemporaryFolder folder;
    const auto words =
        WriteMap(folder / "words.png", 4, 2, OIIO::TypeDesc::UINT16, [](int, int) { return Rgb{1, 0.2F, 0.6F}; });
    EXPECT_EQ(LightJson({words})[0]["averageColor"], Json({1.0, 0.2, 0.6, 1.0}));
}

TEST(LightCommand, AGreyMapIsGreyInEveryColour) {
    const TemporaryFolder folder;
    for (const auto& [name, type] : {std::pair{"grey.png", OIIO::TypeDesc::UINT8},
                                     {"grey16.png", OIIO::TypeDesc::UINT16},
                                     {"grey.tif", OIIO::TypeDesc::FLOAT}}) {
        const auto map = WriteMap(folder / name, 4, 2, type, [](int, int) { return Rgb{0.2F, 0, 0}; }, 1);
        const Json mean = LightJson({map})[0]["averageColor"];
        EXPECT_NEAR(mean[0].get<double>(), 0.2, 1e-6) << name;
        EXPECT_EQ(mean, Json({mean[0], mean[0], mean[0], 1.0})) << name;
    }
}

TEST(LightCommand, AMapThatTheHostReadsAsThreeFloatsIsTaken) {
    const Json json = LightJson({Sample("depth.exr")});
    const Json mean = json[0]["averageColor"];
    EXPECT_GT(mean[0].get<double>(), 0.1);
    EXPECT_EQ(mean[0], mean[2]);
    EXPECT_EQ(mean[3], 1.0);
}

TEST(LightCommand, WhatIsNoFlatPictureIsRefusedAndStopsNoOther) {
    const ProgramResult result =
        RunKavra({"light", "--json", Sample("cube.dds"), Sample("volume.dds"), Sample("studio.hdr")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error,
              "kavra: " + Sample("cube.dds").string() + ": error: a cube map is no equirectangular map\n" +
                  "kavra: " + Sample("volume.dds").string() + ": error: a volume is no equirectangular map\n");
    const Json json = Json::parse(result.out);
    ASSERT_EQ(json.size(), 3U);
    EXPECT_EQ(json[0],
              Json({{"file", Sample("cube.dds").string()}, {"error", "a cube map is no equirectangular map"}}));
    EXPECT_EQ(json[2]["lights"].size(), 2U);
}

TEST(LightCommand, AFileThatCannotBeReadSaysSoOnce) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.hdr", "no picture");
    const ProgramResult result = RunKavra({"light", bad, "--plot", folder / "plot.png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: " + bad.string() + ": warning: format is not supported\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "plot.png"));
}

TEST(LightCommand, SeveralFilesGiveATable) {
    const ProgramResult result = RunKavra({"light", Sample("sunset.exr"), "missing.hdr", Sample("overcast.exr")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 3) << result.out;
    EXPECT_TRUE(result.out.starts_with("file "));
    EXPECT_LT(result.out.find("sunset.exr"), result.out.find("overcast.exr"));
}

TEST(LightCommand, ThePlotShowsTheLightWithARingInItsPlace) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "spot.exr", 400, 200, OIIO::TypeDesc::FLOAT, Square(300, 100, {8, 8, 8}));
    ASSERT_EQ(RunKavra({"light", map, "--plot", folder / "plot.png"}).status, 0);
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
    ASSERT_EQ(RunKavra({"light", map, "--plot", folder / "plot.png"}).status, 0);
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
        ASSERT_EQ(RunKavra({"light", map, "--lights", "0", "--plot", folder / "plot.png"}).status, 0);
        EXPECT_EQ(PixelOf(OIIO::ImageBuf((folder / "plot.png").string()), 20, 20), (std::array{118, 118, 118}))
            << light;
    }
}

TEST(LightCommand, ThePlotShowsDisplayValuesAsTheyAre) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "picture.png", 8, 4, OIIO::TypeDesc::UINT8,
                              [](int, int) { return Rgb{200 / 255.0F, 100 / 255.0F, 30 / 255.0F}; });
    ASSERT_EQ(RunKavra({"light", map, "--lights", "0", "--plot", folder / "plot.png"}).status, 0);
    EXPECT_EQ(PixelOf(OIIO::ImageBuf((folder / "plot.png").string()), 20, 20), (std::array{200, 100, 30}));
}

TEST(LightCommand, ThePlotOfNaNAndInfinitePixelsIsDrawn) {
    const TemporaryFolder folder;
    const auto map = WriteMap(folder / "odd.exr", 8, 4, OIIO::TypeDesc::FLOAT, [](int x, int) {
        return Rgb{x == 1 ? NAN : 1, x == 3 ? INFINITY : 1, x == 5 ? -INFINITY : 1};
    });
    ASSERT_EQ(RunKavra({"light", map, "--plot", folder / "plot.png"}).status, 0);
    EXPECT_EQ(OIIO::ImageBuf((folder / "plot.png").string()).spec().width, 1024);
}

TEST(LightCommand, PlotsOfSeveralMapsGoToAFolder) {
    const TemporaryFolder folder;
    const auto plots = folder / "plots";
    EXPECT_EQ(RunKavra({"light", Sample("sunset.exr"), Sample("studio.hdr"), "--plot", plots}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(plots / "sunset.png"));
    EXPECT_TRUE(std::filesystem::exists(plots / "studio.png"));
    const ProgramResult clash = RunKavra({"light", "a/map.hdr", "b/map.exr", "--plot", plots});
    EXPECT_EQ(clash.status, 2);
    EXPECT_NE(clash.error.find("would both become"), std::string::npos);
}

TEST(LightCommand, APlotThatCannotBeWrittenIsAFailureOfTheFile) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"light", "--json", Sample("studio.hdr"), "--plot", folder / "plot.unknown"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("cannot be written"), std::string::npos);
    EXPECT_EQ(Json::parse(result.out)[0]["error"], "cannot be written");
}

TEST(LightCommand, APlotThatFailsLeavesTheNumbers) {
    const TemporaryFolder folder;
    const std::string map = Sample("studio.hdr");
    const std::string plot = folder / "plot.unknown";
    const ProgramResult text = RunKavra({"light", map, "--plot", plot});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, RunKavra({"light", map}).out);
    EXPECT_EQ(text.error, "kavra: " + plot + ": error: cannot be written\n");
    Json json = Json::parse(RunKavra({"light", map, "--plot", plot, "--json"}).out);
    EXPECT_EQ(json[0]["error"], "cannot be written");
    json[0].erase("error");
    EXPECT_EQ(json, LightJson({map}));
    const ProgramResult table =
        RunKavra({"light", map, map, "--plot", folder.Write("file", "no folder").string() + "/x/"});
    EXPECT_EQ(table.status, 2) << "two maps that would make one plot";
}

TEST(LightCommand, PixelsThatAreNoNumbersAreSaid) {
    const TemporaryFolder folder;
    for (const OIIO::TypeDesc type : {OIIO::TypeDesc::FLOAT, OIIO::TypeDesc::HALF}) {
        const auto map = WriteMap(folder / "odd.exr", 8, 4, type, [](int x, int y) {
            return y > 0 ? Rgb{1, 1, 1} : Rgb{x == 1 ? NAN : 1, x == 3 ? INFINITY : 1, x == 5 ? -INFINITY : 1};
        });
        const ProgramResult result = RunKavra({"light", map});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, "kavra: " + map.string() +
                                    ": note: 3 of 32 pixels are NaN or infinite; means and lights are not to be "
                                    "trusted\n");
    }
}

TEST(LightCommand, LightsThatAreNothingButBlackAreSaid) {
    const TemporaryFolder folder;
    const auto lightOf = [&](const std::function<Rgb(int, int)>& colour, const std::string& lights) {
        const auto map = WriteMap(folder / "map.exr", 800, 400, OIIO::TypeDesc::HALF, colour);
        ProgramResult result = RunKavra({"light", map, "--lights", lights});
        EXPECT_EQ(result.status, 0);
        return result.error;
    };
    const auto black = [](int, int) { return Rgb{}; };
    // The first samples are acos(0.99), 8.1 degrees, from the zenith: row 18 of 400 is their own.
    const auto cap = [](int rows) { return [rows](int, int y) { return y < rows ? Rgb{9, 9, 9} : Rgb{}; }; };
    const std::string note = "kavra: " + (folder / "map.exr").string() +
                             ": note: the lights are black: the search saw no light in this map\n";
    EXPECT_EQ(lightOf(black, "8"), note);
    EXPECT_EQ(lightOf(cap(18), "8"), note);
    EXPECT_EQ(lightOf(cap(19), "8"), "");
    EXPECT_EQ(lightOf(black, "0"), "") << "none were looked for";
}

TEST(LightCommand, FindsTheLightsOfTheSampleEnvironments) {
    // Towards the middles of the softboxes, the sun at (0.45, 0.13, -1), and up.
    const Json softboxes = LightJson({Sample("softboxes.exr")})[0]["lights"];
    ASSERT_EQ(softboxes.size(), 2U);
    EXPECT_NEAR(softboxes[0]["direction"][0].get<double>(), -2 / std::sqrt(4 + 1 + 2.56), 0.02);
    EXPECT_NEAR(softboxes[0]["direction"][1].get<double>(), 1 / std::sqrt(4 + 1 + 2.56), 0.02);
    EXPECT_NEAR(softboxes[1]["direction"][0].get<double>(), 2.1 / std::sqrt(4.41 + 0.1225 + 0.81), 0.02);
    const Json sunset = LightJson({Sample("sunset.exr")})[0]["lights"];
    ASSERT_EQ(sunset.size(), 1U);
    EXPECT_NEAR(sunset[0]["direction"][1].get<double>(), 0.13 / std::sqrt(0.2025 + 0.0169 + 1), 0.03);
    const Json overcast = LightJson({Sample("overcast.exr")})[0]["lights"];
    ASSERT_EQ(overcast.size(), 1U);
    EXPECT_GT(overcast[0]["direction"][1].get<double>(), 0.99);
}
