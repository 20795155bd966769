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
