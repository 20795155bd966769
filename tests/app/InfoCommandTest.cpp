// What is said of files without loading them.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

using namespace Kavra::Tests;

TEST(InfoCommand, ALineTellsSizeFormatTypeFramesAndOrientation) {
    const std::map<std::string, std::string> lines = {
        {"photo-orientation-6.jpg", "60 x 40, kR8G8B8A8, 2-D, frames 1, turned left (5), gamma 2.2"},
        {"float.tif", "96 x 64, kR32G32B32A32F, 2-D, frames 1, as displayed (0), gamma 2.2"},
        {"mips.dds", "128 x 128, kR8G8B8A8, 2-D, frames 8, as displayed (0), gamma 2.2"},
        {"cube.dds", "64 x 64, kR8G8B8A8, cube map, frames 1, as displayed (0), gamma 2.2"},
        {"volume.dds", "32 x 32 x 8, kR8G8B8A8, volume, frames 1, as displayed (0), gamma 2.2"},
    };
    for (const auto& [name, line] : lines)
        EXPECT_EQ(ExpectDone({"info", Sample(name)}), Sample(name).string() + ": " + line + "\n");
}

TEST(InfoCommand, JsonIsAnArrayWithOneObjectAFileInTheOrderGiven) {
    const Json json = Json::parse(ExpectDone({"info", Sample("photo.jpg"), Sample("cube.dds"), "--json"}));
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
    EXPECT_EQ(json[1], Json({{"file", Sample("cube.dds").string()},
                             {"width", 64},
                             {"height", 64},
                             {"depth", 1},
                             {"format", 46},
                             {"formatName", "kR8G8B8A8"},
                             {"textureType", 5},
                             {"frameCount", 1},
                             {"orientation", 0},
                             {"gamma", 2.2}}));
}

TEST(InfoCommand, NamesInAnyScriptAreRead) {
    const TemporaryFolder folder;
    const std::vector<unsigned char> bytes = ReadAll(Sample("grey-alpha.png"));
    for (const std::string name : {"Höhle.png", "湖.png", "𝔎𝔞𝔳𝔯𝔞 🏔.png"}) {
        const auto path = folder.Write(name, bytes);
        EXPECT_EQ(Described(path)["file"], path.string());
    }
}

TEST(InfoCommand, FoldersAndOverlongAndEmptyPathsCannotBeRead) {
    const TemporaryFolder folder;
    const std::string longPath = "/" + std::string(5000, 'x') + ".png";
    EXPECT_EQ(ExpectFailed({"info", folder.Path(), longPath, ""}, ErrorLine(folder.Path(), "cannot be read") +
                                                                      ErrorLine(longPath, "cannot be read") +
                                                                      ErrorLine("", "cannot be read")),
              "");
}

TEST(InfoCommand, ManyFilesComeOutInOrderHoweverManyJobs) {
    const std::string pages = ExpectDone({"info", Sample("pages.tif")});
    const std::string photo = ExpectDone({"info", Sample("photo.dds")});
    Words line = {"info", "--jobs", "4"};
    std::string expected;
    for (int i = 0; i < 40; ++i) {
        const bool hasPages = i % 3 == 0;
        line.push_back(Sample(hasPages ? "pages.tif" : "photo.dds"));
        expected += hasPages ? pages : photo;
    }
    EXPECT_EQ(ExpectDone(line), expected);
}
