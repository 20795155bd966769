#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

using namespace Kavra::Tests;
using Json = nlohmann::json;

TEST(InfoCommand, JsonIsAnArrayWithOneObjectAFileInTheOrderGiven) {
    const ProgramResult result = RunKavra({"info", Sample("photo.jpg"), Sample("cube.dds"), "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    const Json json = Json::parse(result.out);
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0], Json({{"file", Sample("photo.jpg").string()},
                             {"width", 480},
                             {"height", 320},
                             {"depth", 1},
                             {"format", 46},
                             {"formatName", "kR8G8B8A8"},
                             {"textureType", 3},
                             {"frameCount", 1},
                             {"orientation", 0},
                             {"gamma", 2.2}}));
    EXPECT_EQ(json[1]["file"], Sample("cube.dds").string());
    EXPECT_EQ(json[1]["width"], 64);
    EXPECT_EQ(json[1]["height"], 64);
    EXPECT_EQ(json[1]["textureType"], 5);
}

TEST(InfoCommand, OneBadFileStopsNoOtherAndGivesStatusOne) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.png", "this is no picture");
    const ProgramResult result = RunKavra({"info", Sample("grey.png"), bad, Sample("photo.tga")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("grey.png: 480 x 320, kL8"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("photo.tga: 120 x 80, kR8G8B8A8"), std::string::npos) << result.out;
    EXPECT_EQ(result.error, "kavra: " + bad.string() + ": error: cannot be read\n");
}

TEST(InfoCommand, JsonOfAFailedFileHasItsNameAndTheError) {
    const ProgramResult result = RunKavra({"info", "/nonexistent/x.tif", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Json::parse(result.out), Json::array({{{"file", "/nonexistent/x.tif"}, {"error", "cannot be read"}}}));
}

TEST(InfoCommand, ReadsNamesInAnyScript) {
    const TemporaryFolder folder;
    const std::vector<unsigned char> bytes = ReadAll(Sample("grey-alpha.png"));
    for (const std::string name : {"Höhle.png", "湖.png", "𝔎𝔞𝔳𝔯𝔞 🏔.png"}) {
        const auto path = folder.Write(name, bytes);
        const ProgramResult result = RunKavra({"info", path, "--json"});
        EXPECT_EQ(result.status, 0) << name << result.error;
        EXPECT_EQ(Json::parse(result.out)[0]["file"], path.string());
    }
}

TEST(InfoCommand, FoldersAndOverlongPathsAreAnswered) {
    const TemporaryFolder folder;
    const std::string longPath = "/" + std::string(5000, 'x') + ".png";
    const ProgramResult result = RunKavra({"info", folder.Path(), longPath, ""});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.error, "kavra: " + folder.Path().string() + ": error: cannot be read\nkavra: " + longPath +
                                ": error: cannot be read\nkavra: : error: cannot be read\n");
}

TEST(InfoCommand, ManyFilesComeOutInOrderHoweverManyJobs) {
    std::vector<std::string> arguments = {"info", "--jobs", "4"};
    std::string expected;
    for (int i = 0; i < 40; ++i) {
        const std::string file = Sample(i % 3 == 0 ? "pages.tif" : "photo.dds").string();
        arguments.push_back(file);
        expected += file + "\n";
    }
    const ProgramResult result = RunKavra(arguments);
    EXPECT_EQ(result.status, 0);
    std::string names;
    for (std::size_t at = 0; at < result.out.size(); at = result.out.find('\n', at) + 1) {
        names += result.out.substr(at, result.out.find(": ", at) - at) + "\n";
    }
    EXPECT_EQ(names, expected);
}
