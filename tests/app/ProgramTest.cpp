// The program and its module, and the command that tells of neither file nor picture.

#include "app/Answers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <format>
#include <string>
#include <vector>

using namespace Kavra::Tests;

TEST(Program, AMissingModuleIsSaidAndStatusOne) {
    ExpectFailed({"--plugin", "/nonexistent/module.so", "info", Sample("grey.png")},
                 "kavra: error: the module cannot be loaded: /nonexistent/module.so: cannot open shared object file: "
                 "No such file or directory\n");
}

TEST(Program, ALibraryWithoutTheEntryPointsIsNoModule) {
    const std::string library =
        std::filesystem::path(KAVRA_MODULE).parent_path().parent_path() / "libKavraObjects.so.0";
    ExpectFailed({"--plugin", library, "info", Sample("grey.png")},
                 "kavra: error: " + library + " is no module: it has no KavraInitialize\n");
}

TEST(Program, TheModuleCanBeNamed) {
    EXPECT_EQ(ExpectDone({"--plugin", KAVRA_MODULE, "info", Sample("grey.png")}),
              ExpectDone({"info", Sample("grey.png")}));
}

TEST(FormatsCommand, EveryPixelFormatIsListedWithItsNumberNamesAndSize) {
    struct Format {
        int number;
        std::string name, shortName;
        int channels, bytes, blockBytes;
    };
    const std::vector<Format> formats = {
        {6, "kBC1", "bc1", 4, 0, 8},
        {7, "kBC1Srgb", "", 4, 0, 8},
        {8, "kBC2", "bc2", 4, 0, 16},
        {9, "kBC2Srgb", "", 4, 0, 16},
        {10, "kBC3", "bc3", 4, 0, 16},
        {11, "kBC3Srgb", "", 4, 0, 16},
        {12, "kBC4", "bc4", 1, 0, 8},
        {13, "kBC4Snorm", "", 1, 0, 8},
        {14, "kBC5", "bc5", 2, 0, 16},
        {15, "kBC5Snorm", "", 2, 0, 16},
        {20, "kA8", "a8", 1, 1, 0},
        {21, "kR8", "r8", 1, 1, 0},
        {25, "kL8", "l8", 1, 1, 0},
        {26, "kR16F", "r16f", 1, 2, 0},
        {27, "kR16", "r16", 1, 2, 0},
        {31, "kL16", "l16", 1, 2, 0},
        {38, "kR32F", "r32f", 1, 4, 0},
        {41, "kR16G16F", "rg16f", 2, 4, 0},
        {42, "kR16G16", "rg16", 2, 4, 0},
        {46, "kR8G8B8A8", "rgba8", 4, 4, 0},
        {48, "kR8G8B8A8Alt", "", 4, 4, 0},
        {52, "kB8G8R8A8", "bgra8", 4, 4, 0},
        {53, "kB8G8R8X8", "bgrx8", 4, 4, 0},
        {54, "kR8G8B8X8", "rgbx8", 4, 4, 0},
        {55, "kR32G32F", "rg32f", 2, 8, 0},
        {58, "kR16G16B16A16F", "rgba16f", 4, 8, 0},
        {59, "kR16G16B16A16", "rgba16", 4, 8, 0},
        {63, "kR32G32B32F", "rgb32f", 3, 12, 0},
        {66, "kR32G32B32A32F", "rgba32f", 4, 16, 0},
        {73, "kBC6H", "bc6h", 3, 0, 16},
        {74, "kBC6HSigned", "", 3, 0, 16},
        {75, "kBC7", "bc7", 4, 0, 16},
        {76, "kBC7Srgb", "", 4, 0, 16},
    };
    Json json = Json::array();
    std::string text;
    for (const Format& format : formats) {
        json.push_back({{"number", format.number},
                        {"name", format.name},
                        {"shortName", format.shortName},
                        {"channels", format.channels},
                        {"bytes", format.bytes},
                        {"blockBytes", format.blockBytes}});
        text += std::format(
            "  {:>6}  {:<16} {:<8} {:>8}  {}\n", format.number, format.name, format.shortName, format.channels,
            format.bytes > 0 ? std::to_string(format.bytes) : std::to_string(format.blockBytes) + " a block of 4 x 4");
    }
    EXPECT_EQ(Json::parse(ExpectDone({"formats", "--json"}))["pixelFormats"], json);
    EXPECT_TRUE(ExpectDone({"formats"}).contains(text));
}

TEST(FormatsCommand, TheFileTypesOfTheModuleAreListedAndTheLibraryIsNamed) {
    struct Type {
        std::string name, extensions;
        bool writes;
    };
    const std::vector<Type> types = {
        {"DirectDraw Surface", ".dds", true}, {"Khronos Texture 2", ".ktx2", true},   {"OpenEXR", ".exr", false},
        {"CALS raster", ".cal", false},       {"FLIC animation", ".fli .flc", false}, {"PCX", ".pcx", false},
        {"PICT", ".pct .pict", false},        {"RLC raster", ".rlc", false},          {"Band raster", ".bil", false}};
    Json json = Json::array();
    std::string text;
    for (const Type& type : types) {
        json.push_back(
            {{"name", type.name}, {"extensions", type.extensions}, {"reads", true}, {"writes", type.writes}});
        text +=
            std::format("  {:<20} {:<12} {}\n", type.name, type.extensions, type.writes ? "reads and writes" : "reads");
    }
    EXPECT_EQ(Json::parse(ExpectDone({"formats", "--json"}))["fileTypes"], json);
    EXPECT_TRUE(ExpectDone({"formats"}).contains(text + "  and whatever the image library has\n"));
}
