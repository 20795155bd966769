// The block as a load gives it.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <future>

using namespace Kavra::Tests;
using Bytes = std::vector<unsigned char>;

namespace {

/// A 2 x 2 binary PPM: red, green / blue, white.
const std::string kFourPixels("P6\n2 2\n255\n\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF", 11 + 12);

/// What it is loaded as.
const Bytes kFourBlock = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255};

}  // namespace

TEST(DumpCommand, WritesTheBlockByteForByteAndDescribesIt) {
    const TemporaryFolder folder;
    const auto file = folder.Write("four.ppm", kFourPixels);
    const auto block = folder / "block";
    const Json json = Json::parse(ExpectDone({"dump", file, "--out", block, "--json"}));
    EXPECT_EQ(ReadAll(block), kFourBlock);
    EXPECT_EQ(json, Json({{"file", file.string()},
                          {"width", 2},
                          {"height", 2},
                          {"depth", 1},
                          {"format", 46},
                          {"formatName", "kR8G8B8A8"},
                          {"rowPitch", 8},
                          {"dataSize", 16},
                          {"blockSize", 16},
                          {"textureType", 3},
                          {"hasTransparentPixels", false},
                          {"hasTranslucentPixels", false},
                          {"hasAlpha", false},
                          {"defaultOrientation", true},
                          {"orientation", 0},
                          {"gamma", 2.2},
                          {"warnings", Json::array()}}));
}

TEST(DumpCommand, TheTextTellsOfTheBlockAndItsAlpha) {
    const TemporaryFolder folder;
    const std::string block = folder / "block";
    const auto dump = [&](const std::string& file) { return ExpectDone({"dump", file, "--out", block}); };
    const std::string end = ", as displayed (0), gamma 2.2\n" + block;
    const auto picture = [&](const Colour& left, const Colour& right) {
        return WritePicture(folder / "in.png", 2, 1, [&](int x, int) { return x == 0 ? left : right; }).string();
    };
    const std::string start = (folder / "in.png").string() + ": 2 x 1, kR8G8B8A8, 2-D, 8 bytes a row, ";
    EXPECT_EQ(dump(picture({1, 2, 3}, {4, 5, 6})), start + "no alpha" + end + ": 8 bytes\n");
    EXPECT_EQ(dump(picture({1, 2, 3, 255}, {4, 5, 6, 255})), start + "opaque alpha" + end + ": 8 bytes\n");
    EXPECT_EQ(dump(picture({1, 2, 3, 0}, {4, 5, 6, 255})), start + "cut-out alpha" + end + ": 8 bytes\n");
    EXPECT_EQ(dump(picture({1, 2, 3, 9}, {4, 5, 6, 255})), start + "blended alpha" + end + ": 8 bytes\n");
    EXPECT_EQ(dump(picture({1, 2, 3, 0}, {4, 5, 6, 9})), start + "blended and cut-out alpha" + end + ": 8 bytes\n");
}

TEST(DumpCommand, LoadOptionsReachTheLoader) {
    const TemporaryFolder folder;
    const auto file = folder.Write("four.ppm", kFourPixels);
    for (const std::string format : {"bgra8", "BGRA8", "kB8G8R8A8", "kb8g8r8a8", "52"}) {
        EXPECT_EQ(Dumped(file, {"--format", format, "--orientation", "2"}),
                  (Bytes{255, 0, 0, 255, 255, 255, 255, 255, 0, 0, 255, 255, 0, 255, 0, 255}))
            << format;
    }
}

TEST(DumpCommand, ACubeMapIsWrittenWithAllSixFaces) {
    const TemporaryFolder folder;
    const auto block = folder / "block";
    const Json json = Json::parse(ExpectDone({"dump", Sample("cube.dds"), "--out", block, "--json"}));
    EXPECT_EQ(json["dataSize"], 64 * 64 * 4);
    EXPECT_EQ(json["blockSize"], 6 * 64 * 64 * 4);
    EXPECT_EQ(std::filesystem::file_size(block), 6U * 64 * 64 * 4);
}

TEST(DumpCommand, AFailedLoadPrintsTheMessagesAndLeavesNoFile) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.tif", "II*\0 and nothing more");
    const std::string out = ExpectFailed({"dump", bad, "--out", folder / "block", "--json"}, UnreadableLine(bad));
    EXPECT_EQ(Json::parse(out),
              Json({{"file", bad.string()}, {"error", "it is text, not an image"}, {"kind", "notAnImage"}}));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"bad.tif"});
}

TEST(DumpCommand, AFrameBeyondTheFileIsSaidInTheModulesOwnWords) {
    const TemporaryFolder folder;
    ExpectFailed({"dump", Sample("grey.png"), "--out", folder / "block", "--frame", "5"},
                 WarningLine(Sample("grey.png"), "Frame index out of range") +
                     ErrorLine(Sample("grey.png"), "there is no frame 5; the file has 1"));
}

TEST(DumpCommand, AFullDiskIsReportedWithItsReason) {
    const ProgramResult result = RunKavra({"dump", Sample("photo.jpg"), "--out", "/dev/full"});
    EXPECT_EQ(result.status, 75) << "it may be worth another try";
    EXPECT_EQ(result.error, ErrorLine("/dev/full", "cannot be written: No space left on device"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(DumpCommand, APipeIsWrittenTo) {
    const TemporaryFolder folder;
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto file = folder.Write("four.ppm", kFourPixels);
    auto reader = std::async(std::launch::async, [&] { return ReadAll(pipe); });
    ExpectDone({"dump", file, "--out", pipe});
    EXPECT_EQ(reader.get(), kFourBlock);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST(DumpCommand, AnOutputThatIsAFolderIsRefused) {
    const TemporaryFolder folder;
    ExpectFailed({"dump", Sample("photo.jpg"), "--out", folder.Path()},
                 ErrorLine(folder.Path(), "cannot be written: Is a directory"));
}
