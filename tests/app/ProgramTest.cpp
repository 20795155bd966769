#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <format>
#include <set>

using namespace Kavra::Tests;
using Json = nlohmann::json;

TEST(Program, EveryCommandHasHelpWithAnExample) {
    for (const std::string command : {"info", "dump", "convert", "frames", "formats", "resize", "crop", "compose",
                                      "sheet", "target", "tile", "light"}) {
        const ProgramResult result = RunKavra({command, "--help"});
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_NE(result.out.find("kavra " + command + " "), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("Example"), std::string::npos) << result.out;
    }
}

TEST(Program, WrongUsageIsStatusTwo) {
    const std::vector<std::vector<std::string>> lines = {
        {},
        {"nonsense"},
        {"info"},
        {"dump", "x.png"},
        {"dump", "x.png", "--out", "y", "--size", "12"},
        {"dump", "x.png", "--out", "y", "--size", "-1x5"},
        {"dump", "x.png", "--out", "y", "--size", "5x5x5"},
        {"dump", "x.png", "--out", "y", "--format", "rgb7"},
        {"dump", "x.png", "--out", "y", "--orientation", "8"},
        {"info", "x.png", "--jobs", "0"},
        {"convert", "x.png"},
        {"crop", "x.png", "y.png"},
        {"crop", "x.png", "y.png", "--rect", "1,2,3"},
        {"crop", "x.png", "y.png", "--rect", "1,2,0,5"},
        {"crop", "x.png", "y.png", "--rect", "1,2,3,4,5"},
        {"crop", "x.png", "y.png", "--rect", "1,2,3,99999999999"},
        {"crop", "x.png", "y.png", "--rect", "1,2,3,4", "--size", "0x5"},
        {"compose", "y.png", "x.png@0,0"},
        {"compose", "y.png", "--size", "5x5"},
        {"compose", "y.png", "--size", "5x5", "x.png"},
        {"compose", "y.png", "--size", "5x5", "x.png@1"},
        {"compose", "y.png", "--size", "5x5", "x.png@1,2,3"},
        {"compose", "y.png", "--size", "5x5", "@1,2"},
        {"compose", "y.png", "--size", "0x5", "x.png@1,2"},
        {"sheet", "y.png"},
        {"sheet", "y.png", "x.png", "--cell", "0x5"},
        {"sheet", "y.png", "x.png", "--columns", "0"},
        {"target", "x.png"},
        {"tile", "x.png", "y.png"},
        {"tile", "x.png", "y.png", "--repeat", "0x5"},
        {"tile", "x.png", "y.png", "--repeat", "-1x5"},
        {"tile", "x.png", "y.png", "--repeat", "2x2", "--dpi", "0"},
        {"tile", "x.png", "y.png", "--repeat", "2x2", "--dpi", "nan"},
        {"tile", "x.png", "y.png", "--repeat", "2x2", "--dpi", "1e300"},
        {"resize", "x.png", "y.png", "--size", "0x5"},
        {"resize", "x.png", "y.png", "--size", "5x5", "--method", "other"},
        {"resize", "x.png", "y.png", "--size", "5x5", "--filter", "other"},
    };
    for (const std::vector<std::string>& line : lines) {
        const ProgramResult result = RunKavra(line);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(line);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.error, "");
    }
}

TEST(Program, AMissingModuleIsSaidAndStatusOne) {
    const ProgramResult result = RunKavra({"--plugin", "/nonexistent/module.so", "info", Sample("grey.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.starts_with("kavra: error: the module cannot be loaded: ")) << result.error;
}

TEST(Program, ALibraryWithoutTheEntryPointsIsNoModule) {
    const ProgramResult result = RunKavra({"--plugin", "/usr/lib/x86_64-linux-gnu/libm.so.6", "info", "x.png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("has no KavraInitialize"), std::string::npos) << result.error;
}

TEST(Program, TheModuleCanBeNamed) {
    EXPECT_EQ(RunKavra({"--plugin", KAVRA_MODULE, "info", Sample("grey.png")}).status, 0);
}

TEST(FormatsCommand, JsonListsPixelFormatsWithTheirNumbersAndFileTypes) {
    const ProgramResult result = RunKavra({"formats", "--json"});
    EXPECT_EQ(result.status, 0);
    const Json json = Json::parse(result.out);
    std::set<int> numbers;
    for (const Json& format : json["pixelFormats"]) {
        numbers.insert(format["number"].get<int>());
        if (format["number"] == 66) {
            EXPECT_EQ(format["name"], "kR32G32B32A32F");
            EXPECT_EQ(format["channels"], 4);
            EXPECT_EQ(format["bytes"], 16);
        }
    }
    for (const int number : {20, 21, 25, 26, 27, 31, 38, 41, 42, 46, 48, 52, 53, 54, 55, 58, 59, 63, 66}) {
        EXPECT_TRUE(numbers.contains(number)) << number;
    }
    EXPECT_EQ(json["fileTypes"][0]["extensions"], ".dds");
}

TEST(FormatsCommand, TheRasterFormatsOfOldAreReadAndNotWritten) {
    const Json types = Json::parse(RunKavra({"formats", "--json"}).out)["fileTypes"];
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"CALS raster", ".cal"}, {"FLIC animation", ".fli .flc"}, {"PCX", ".pcx"},
        {"PICT", ".pct .pict"},  {"RLC raster", ".rlc"},          {"Band raster", ".bil"}};
    const std::string text = RunKavra({"formats"}).out;
    for (const auto& [name, extensions] : expected) {
        const Json type = {{"name", name}, {"extensions", extensions}, {"reads", true}, {"writes", false}};
        EXPECT_EQ(std::ranges::count(types, type), 1) << name;
        const std::string line = std::format("  {:<20} {:<12} reads\n", name, extensions);
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
}

TEST(FormatsCommand, TheTextEndsOnTheImageLibrary) {
    const ProgramResult result = RunKavra({"formats"});
    EXPECT_TRUE(result.out.ends_with("and whatever the image library has\n")) << result.out;
}
