// What is said of files without loading them.

#include "app/Answers.h"
#include "app/PictureFiles.h"
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
    EXPECT_EQ(ExpectFailed({"info", folder.Path(), longPath, ""},
                           ErrorLine(folder.Path(), "it is a folder") +
                               ErrorLine(longPath, "the name is longer than the system takes") +
                               ErrorLine("", "the name of the file is empty")),
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

// --- Everything ------------------------------------------------------------------------------------------------------

TEST(InfoCommand, AllTellsWhatAFileSaysOfItself) {
    const std::string text = ExpectDone({"info", "--all", Sample("rgba.exr")});
    for (const std::string line : {"  type openexr, parts 1\n", "  part 0: 96 x 64, 2-D\n", "R G B A half\n",
                                   "alpha         premultiplied\n", "values        linear\n", "compression   zip\n"}) {
        EXPECT_TRUE(text.contains(line)) << line << "is not in\n" << text;
    }
    const std::string cube = ExpectDone({"info", "--all", Sample("cube-mips.dds")});
    EXPECT_TRUE(cube.contains("faces         +x -x +y -y +z -z\n")) << cube;
    EXPECT_TRUE(cube.contains("levels        6, down to 1 x 1\n")) << cube;
}

TEST(InfoCommand, AllAddsKeysToTheJsonAndChangesNone) {
    const Json plain = Described(Sample("photo.jpg"));
    Json all = Json::parse(ExpectDone({"info", "--json", "--all", Sample("photo.jpg")}))[0];
    EXPECT_EQ(all["fileType"], "jpeg");
    ASSERT_EQ(all["parts"].size(), 1U);
    const Json& part = all["parts"][0];
    EXPECT_EQ(part["alpha"], "none");
    EXPECT_EQ(part["transfer"], "srgb");
    EXPECT_EQ(part["channels"][0], Json({{"name", "R"}, {"type", "uint8"}}));
    EXPECT_EQ(part["levels"][0]["width"], 480);
    for (const auto& [key, value] : plain.items())
        EXPECT_EQ(all[key], value) << key;
}

TEST(InfoCommand, TextOfAFileIsEscapedForTerminals) {
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(1, 1, 3, OIIO::TypeUInt8);
    spec.attribute("ImageDescription", "red \x1B[31m\nbell \a wide \xE6\xB9\x96 turned \xE2\x80\xAE end");
    const auto path = (folder / "told.tif").string();
    auto output = OIIO::ImageOutput::create(path);
    const unsigned char pixel[] = {1, 2, 3};
    ASSERT_TRUE(output->open(path, spec) && output->write_image(OIIO::TypeUInt8, pixel) && output->close());
    const std::string text = ExpectDone({"info", "--all", path});
    EXPECT_TRUE(text.contains("ImageDescription: red \\x1B[31m\\nbell \\x07 wide \xE6\xB9\x96 turned \\u202E end\n"))
        << text;
    const Json json = Json::parse(ExpectDone({"info", "--all", "--json", path}))[0];
    EXPECT_TRUE(json["parts"][0]["texts"].dump().contains("\\u001b"));
}
