// What holds for every command, or for all of a kind.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

using namespace Kavra::Tests;

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

}  // namespace

TEST(CommonRules, OneBadFileStopsNoOtherAndMessagesComeInTheOrderOfTheFiles) {
    const TemporaryFolder folder;
    const std::string first = folder.Write("first.tif", "no picture");
    const std::string last = folder.Write("last.png", "no picture");
    const std::string good = Sample("studio.hdr");
    const std::string out = folder / "out";
    const std::string unreadable = UnreadableLine(first) + UnreadableLine(last);
    struct Case {
        Words line;
        std::string said;
        std::string made;  ///< the file that the good input gave; else something was printed of it
    };
    const std::vector<Case> cases = {
        {{"info", first, good, last},
         ErrorLine(first, "it is text, not an image") + ErrorLine(last, "it is text, not an image"),
         ""},
        {{"light", first, good, last}, unreadable, ""},
        {{"convert", first, good, last, out, "--to", "exr"},
         unreadable + "kavra: 1 written, 2 failed\n",
         out + "/studio.exr"},
        {{"compose", out + ".png", "--raw", "--size", "9x9", first + "@0,0", good + "@0,0", last + "@0,0"},
         UnreadableLine(first) + NoteLine(good, "only the 9 x 9 pixels inside the picture were pasted") +
             UnreadableLine(last),
         out + ".png"},
        {{"sheet", out + ".tga", first, good, last}, unreadable, out + ".tga"},
    };
    for (const Case& row : cases) {
        for (const std::string jobs : {"1", "3"}) {
            const std::string printed = ExpectFailed(Joined({row.line, {"--jobs", jobs}}), row.said);
            EXPECT_TRUE(row.made.empty() ? printed.contains(good) : std::filesystem::exists(row.made))
                << row.line.front() << printed;
            std::filesystem::remove_all(row.made);
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
        {"resize", bad, out, "--size", "5x5"},
        {"crop", bad, out, "--rect", "0,0,1,1"},
        {"compose", out, "--size", "5x5", bad + "@0,0"},
        {"target", bad, out},
        {"tile", bad, out, "--repeat", "2x2"},
        {"light", bad, "--plot", out},
    };
    for (const Words& command : commands) {
        ExpectFailed(command, UnreadableLine(bad));
        EXPECT_EQ(TextOf(out), "old") << command.front();
        EXPECT_EQ(NamesIn(folder.Path()), (Words{"bad.tif", "out.tif"})) << command.front();
    }
    ExpectFailed({"frames", bad, folder / "%d.tif"}, ErrorLine(bad, "it is text, not an image"));
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"bad.tif", "out.tif"}));
}

TEST(CommonRules, AFileMayBeInputAndOutput) {
    const auto place = [](int x, int y) { return PlaceColour(x % 6, y % 4); };
    for (const Words& words : {Words{"convert"},
                               {"resize", "--size", "6x4"},
                               {"resize", "--size", "4x2", "--method", "crop"},
                               {"crop", "--rect", "0,0,6,4"},
                               {"target"},
                               {"tile", "--repeat", "3x2"}}) {
        const TemporaryFolder folder;
        const std::string file = WritePicture(folder / "file.png", 6, 4, PlaceColour);
        ExpectDone(Joined({{words.front(), file, file}, {words.begin() + 1, words.end()}}));
        const PictureFile picture(file);
        EXPECT_EQ(picture.At(picture.Width() - 1, picture.Height() - 1),
                  place(picture.Width() - 1, picture.Height() - 1))
            << words.front();
        EXPECT_EQ(NamesIn(folder.Path()), Words{"file.png"}) << words.front();
    }
}

TEST(CommonRules, CubeMapsAndVolumesAreUsedByTheirFirstFaceOrSliceWithANote) {
    const TemporaryFolder folder;
    const std::vector<Words> commands = {{"resize", "--size", "16x16", "--method", "crop"},
                                         {"crop", "--rect", "0,0,16,16"},
                                         {"target"},
                                         {"tile", "--repeat", "1x1"}};
    const auto expectFirst = [&](const std::string& name, const std::string& note) {
        const std::vector<unsigned char> block = Dumped(Sample(name));
        for (const Words& words : commands) {
            ExpectDone(Joined({{words.front(), Sample(name), folder / "out.tif"}, {words.begin() + 1, words.end()}}),
                       NoteLine(Sample(name), note));
            const PictureFile out(folder / "out.tif");
            const Colour first(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(out.At(0, 0).size()));
            EXPECT_EQ(out.At(0, 0), first) << words.front();
        }
    };
    expectFirst("cube.dds", "a cube map; only its first face is used");
    expectFirst("volume.dds", "a volume; only its first slice is used");
}

TEST(CommonRules, OrientedPicturesAreWorkedOnAsTheyAreDisplayed) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo-orientation-6.jpg");  // 40 x 60 as displayed
    const std::vector<unsigned char> upright = Dumped(photo);
    const std::vector<std::pair<Words, std::string>> commands = {
        {{"convert", photo, folder / "out.png"}, "40x60"},
        {{"resize", photo, folder / "out.png", "--size", "50x50", "--method", "crop"}, "50x50"},
        {{"crop", photo, folder / "out.png", "--rect", "0,0,40,60"}, "40x60"},
        {{"compose", folder / "out.png", "--size", "40x60", photo + "@0,0"}, "40x60"},
        {{"target", photo, folder / "out.png"}, "40x60"},
        {{"tile", photo, folder / "out.png", "--repeat", "2x1"}, "80x60"},
    };
    for (const auto& [line, size] : commands) {
        ExpectDone(line);
        const PictureFile out(folder / "out.png");
        Colour topLeft = out.At(0, 0);
        topLeft.resize(4, 255);
        EXPECT_EQ(out.Size(), size) << line.front();
        EXPECT_EQ(topLeft, Colour(upright.begin(), upright.begin() + 4)) << line.front();
    }
}

TEST(CommonRules, JsonHasTheseKeysInThisOrder) {
    const TemporaryFolder folder;
    const auto json = [](const Words& line) { return Json::parse(ExpectDone(line)); };
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
    EXPECT_EQ(Keys(light["lights"][0]), (Words{"direction", "color", "azimuth", "elevation", "luminance", "share"}));
    EXPECT_EQ(Keys(json({"formats", "--json"})), (Words{"pixelFormats", "fileTypes", "readable", "writable"}));
}

TEST(CommonRules, JsonOfAFileThatFailedHasItsNameAndTheReason) {
    const TemporaryFolder folder;
    const std::string missing = folder / "missing.png";
    const std::string reason = "there is no such file";
    const Json failed = {{"file", missing}, {"error", reason}, {"kind", "noSuchFile"}};
    const std::string said = WarningLine(missing, "format is not supported") + ErrorLine(missing, reason);
    EXPECT_EQ(Json::parse(ExpectFailed({"info", missing, "--json"}, ErrorLine(missing, reason))),
              Json::array({failed}));
    EXPECT_EQ(Json::parse(ExpectFailed({"light", missing, "--json"}, said)), Json::array({failed}));
    EXPECT_EQ(Json::parse(ExpectFailed({"dump", missing, "--out", folder / "block", "--json"}, said)), failed);
}

TEST(CommonRules, LoadOptionsReachEveryLoadingCommand) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo-orientation-6.jpg");  // 40 x 60 as displayed
    const Words options = {"--size", "20x30", "--format", "rgba32f", "--orientation", "4", "--high-quality"};
    const std::vector<unsigned char> block = Dumped(photo, options);
    ASSERT_EQ(block.size(), 20U * 30 * 16);
    for (const Words& line : {Words{"convert", photo, folder / "out.dds"}, {"frames", photo, folder / "out%d.dds"}})
        ExpectDone(Joined({line, options, {"--plain-filter", "--raw"}}));
    for (const std::string name : {"out.dds", "out0.dds"}) {
        const std::vector<unsigned char> dds = ReadAll(folder / name);
        EXPECT_TRUE(std::equal(block.rbegin(), block.rend(), dds.rbegin())) << "the pixels are the end of the file";
        EXPECT_EQ(Described(folder / name)["formatName"], "kR32G32B32A32F");
    }
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
