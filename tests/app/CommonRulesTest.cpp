// What holds for every command, or for all of a kind.

#include "app/PictureFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace Kavra::Tests;
using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

namespace {

/// A pseudo terminal, to see what a program prints only there.
class Terminal {
public:
    Terminal() : mHandle(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        grantpt(mHandle);
        unlockpt(mHandle);
    }
    ~Terminal() { close(mHandle); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::filesystem::path Name() const { return ptsname(mHandle); }
    /// What was printed so far.
    std::string Text() const {
        std::string text(1 << 16, '\0');
        const ssize_t bytes = read(mHandle, text.data(), text.size());
        text.resize(bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
        return text;
    }

private:
    int mHandle;
};

Words Keys(const Json& object) {
    Words keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

/// The names of the files that lines on standard error are about, in order.
Words NamesIn(const std::string& error) {
    Words names;
    for (std::size_t at = 0; at < error.size(); at = error.find('\n', at) + 1) {
        const std::size_t start = error.find("kavra: ", at) + 7;
        const std::string name = error.substr(start, error.find(": ", start) - start);
        if (names.empty() || names.back() != name) names.push_back(name);
    }
    return names;
}

}  // namespace

TEST(CommonRules, OneBadFileStopsNoOtherAndMessagesComeInTheOrderOfTheFiles) {
    const TemporaryFolder folder;
    const std::string first = folder.Write("first.tif", "no picture");
    const std::string last = folder.Write("last.png", "no picture");
    const std::string good = Sample("studio.hdr");
    const std::string out = folder / "out";
    struct Case {
        Words line;
        std::string made;  ///< the file that the good input gave, or a part of what was printed of it
        bool isFile;
    };
    const std::vector<Case> cases = {
        {{"info", first, good, last}, good + ": 256 x 128", false},
        {{"light", first, good, last}, good + " ", false},
        {{"convert", first, good, last, out, "--to", "exr"}, out + "/studio.exr", true},
        {{"compose", out + ".png", "--size", "9x9", first + "@0,0", good + "@0,0", last + "@0,0"}, out + ".png", true},
        {{"sheet", out + ".tga", first, good, last}, out + ".tga", true},
    };
    for (const Case& row : cases) {
        for (const std::string jobs : {"1", "3"}) {
            Words line = row.line;
            line.insert(line.end(), {"--jobs", jobs});
            const ProgramResult result = RunKavra(line);
            EXPECT_EQ(result.status, 1) << row.line.front();
            Words names = NamesIn(result.error);
            std::erase(names, good);  // what is only noted of it
            EXPECT_EQ(names, (Words{first, last})) << row.line.front() << result.error;
            EXPECT_TRUE(row.isFile ? std::filesystem::exists(row.made) : result.out.contains(row.made))
                << row.line.front() << result.out;
        }
    }
}

TEST(CommonRules, AFailureLeavesTheOldFileAsItWasAndNoOther) {
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.tif", "no picture");
    const std::string out = folder.Write("out.tif", "old");
    const std::vector<Words> commands = {
        {"dump", bad, "--out", out},
        {"convert", bad, out},
        {"frames", bad, folder / "%d.tif"},
        {"resize", bad, out, "--size", "5x5"},
        {"crop", bad, out, "--rect", "0,0,1,1"},
        {"compose", out, "--size", "5x5", bad + "@0,0"},
        {"target", bad, out},
        {"tile", bad, out, "--repeat", "2x2"},
        {"light", bad, "--plot", out},
    };
    for (const Words& command : commands) {
        const ProgramResult result = RunKavra(command);
        EXPECT_EQ(result.status, 1) << command.front();
        EXPECT_EQ(NamesIn(result.error), Words{bad}) << command.front() << result.error;
        EXPECT_EQ(ReadAll(out), (std::vector<unsigned char>{'o', 'l', 'd'})) << command.front();
        EXPECT_EQ(CountFiles(folder.Path()), 2U) << command.front();
    }
}

TEST(CommonRules, AFileMayBeInputAndOutput) {
    for (const Words& words :
         {Words{"convert"}, {"resize", "--size", "6x4"}, {"crop", "--rect", "0,0,6,4"}, {"target"}}) {
        const TemporaryFolder folder;
        const std::string file = WritePicture(folder / "file.png", 6, 4, PlaceColour);
        Words line = {words.front(), file, file};
        line.insert(line.end(), words.begin() + 1, words.end());
        EXPECT_EQ(RunKavra(line).status, 0) << words.front();
        EXPECT_EQ(PictureFile(file).At(5, 3), PlaceColour(5, 3)) << words.front();
        EXPECT_EQ(CountFiles(folder.Path()), 1U) << words.front();
    }
}

TEST(CommonRules, JsonHasTheseKeysInThisOrder) {
    const TemporaryFolder folder;
    const auto json = [](const Words& line) { return Json::parse(RunKavra(line).out); };
    const std::string photo = Sample("photo.jpg");
    EXPECT_EQ(Keys(json({"info", photo, "--json"})[0]),
              (Words{"file", "width", "height", "depth", "format", "formatName", "textureType", "frameCount",
                     "orientation", "gamma"}));
    EXPECT_EQ(Keys(json({"dump", photo, "--out", folder / "block", "--json"})),
              (Words{"file", "width", "height", "depth", "format", "formatName", "rowPitch", "dataSize", "blockSize",
                     "textureType", "hasTransparentPixels", "hasTranslucentPixels", "hasAlpha", "defaultOrientation",
                     "orientation", "gamma", "warnings"}));
    const Json light = json({"light", Sample("studio.hdr"), "--json"})[0];
    EXPECT_EQ(Keys(light), (Words{"file", "averageColor", "intensity", "weightedAverage", "lights"}));
    EXPECT_EQ(Keys(light["intensity"]), (Words{"brightestChannel", "meanBrightest", "luminance"}));
    EXPECT_EQ(Keys(light["lights"][0]), (Words{"direction", "color"}));
    EXPECT_EQ(Keys(json({"formats", "--json"})), (Words{"pixelFormats", "fileTypes"}));
}

TEST(CommonRules, JsonOfAFileThatFailedHasItsNameAndTheLastMessage) {
    const TemporaryFolder folder;
    const std::string missing = folder / "missing.png";
    for (const Words& line : {Words{"info", missing, "--json"}, {"light", missing, "--json"}}) {
        const ProgramResult result = RunKavra(line);
        EXPECT_EQ(result.status, 1);
        const Json json = Json::parse(result.out);
        ASSERT_EQ(json.size(), 1U);
        EXPECT_EQ(Keys(json[0]), (Words{"file", "error"})) << line.front();
        EXPECT_EQ(json[0]["file"], missing);
        EXPECT_TRUE(result.error.ends_with(": " + json[0]["error"].get<std::string>() + "\n")) << result.error;
    }
    const ProgramResult dump = RunKavra({"dump", missing, "--out", folder / "block", "--json"});
    EXPECT_EQ(dump.status, 1);
    EXPECT_EQ(Keys(Json::parse(dump.out)), (Words{"file", "error"}));
}

TEST(CommonRules, LoadOptionsReachEveryLoadingCommand) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo-orientation-6.jpg");  // 40 x 60 as displayed
    const std::map<std::string, Words> commands = {{"dump", {photo, "--out", folder / "block"}},
                                                   {"convert", {photo, folder / "out.dds"}},
                                                   {"frames", {photo, folder / "%d.dds"}}};
    for (const auto& [command, words] : commands) {
        Words line = {command};
        line.insert(line.end(), words.begin(), words.end());
        line.insert(line.end(), {"--size", "20x30", "--format", "rgba32f", "--orientation", "4", "--high-quality"});
        EXPECT_EQ(RunKavra(line).status, 0) << command;
    }
    const Json json = Json::parse(RunKavra({"info", folder / "out.dds", folder / "0.dds", "--json"}).out);
    for (const Json& file : json) {
        EXPECT_EQ(file["formatName"], "kR32G32B32A32F");
        EXPECT_EQ(file["width"].get<int>() * file["height"].get<int>(), 600);
    }
    EXPECT_EQ(ReadAll(folder / "out.dds"), ReadAll(folder / "0.dds"));
    const auto block = ReadAll(folder / "block");
    const auto dds = ReadAll(folder / "0.dds");
    EXPECT_TRUE(std::equal(block.rbegin(), block.rend(), dds.rbegin())) << "the pixels are the end of the file";
}

TEST(CommonRules, ThePixelFormatsHaveTheseShortNames) {
    std::set<std::string> names;
    for (const Json& format : Json::parse(RunKavra({"formats", "--json"}).out)["pixelFormats"])
        names.insert(format["shortName"].get<std::string>());
    names.erase("");
    EXPECT_EQ(names, (std::set<std::string>{"a8",     "r8",      "l8",     "r16",     "l16",   "r16f",  "r32f",
                                            "rg16",   "rg16f",   "rg32f",  "rgba8",   "bgra8", "bgrx8", "rgbx8",
                                            "rgba16", "rgba16f", "rgb32f", "rgba32f", "bc1",   "bc2",   "bc3",
                                            "bc4",    "bc5",     "bc6h",   "bc7"}));
}

TEST(CommonRules, TheBarIsDrawnOnATerminalForMoreThanOneItemOnly) {
    const Terminal terminal;
    const std::string photo = Sample("photo.tga");
    RunKavra({"info", photo}, {}, terminal.Name());
    EXPECT_EQ(terminal.Text(), "");
    RunKavra({"info", photo, photo, photo}, {}, terminal.Name());
    const std::string text = terminal.Text();
    EXPECT_TRUE(text.contains("] 3/3")) << text;
    EXPECT_TRUE(text.ends_with("\r\x1b[K")) << "and taken away";
}
