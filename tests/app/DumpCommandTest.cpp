#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <future>

using namespace Kavra::Tests;
using Json = nlohmann::json;
using Bytes = std::vector<unsigned char>;

namespace {

/// A 2 x 2 binary PPM: red, green / blue, white.
const std::string kFourPixels("P6\n2 2\n255\n\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF", 11 + 12);

}  // namespace

TEST(DumpCommand, WritesTheBlockByteForByteAndDescribesIt) {
    const TemporaryFolder folder;
    const auto file = folder.Write("four.ppm", kFourPixels);
    const auto block = folder / "block";
    const ProgramResult result = RunKavra({"dump", file, "--out", block, "--json"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(ReadAll(block), (Bytes{255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(Json::parse(result.out), Json({{"file", file.string()},
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

TEST(DumpCommand, LoadOptionsReachTheLoader) {
    const TemporaryFolder folder;
    const auto file = folder.Write("four.ppm", kFourPixels);
    const auto block = folder / "block";
    for (const std::string format : {"bgra8", "BGRA8", "kB8G8R8A8", "kb8g8r8a8", "52"}) {
        const ProgramResult result = RunKavra({"dump", file, "--out", block, "--format", format, "--orientation", "2"});
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_EQ(ReadAll(block), (Bytes{255, 0, 0, 255, 255, 255, 255, 255, 0, 0, 255, 255, 0, 255, 0, 255}))
            << format;
    }
}

TEST(DumpCommand, ACubeMapIsWrittenWithAllSixFaces) {
    const TemporaryFolder folder;
    const auto block = folder / "block";
    const ProgramResult result = RunKavra({"dump", Sample("cube.dds"), "--out", block, "--json"});
    EXPECT_EQ(result.status, 0) << result.error;
    const Json json = Json::parse(result.out);
    EXPECT_EQ(json["dataSize"], 64 * 64 * 4);
    EXPECT_EQ(json["blockSize"], 6 * 64 * 64 * 4);
    EXPECT_EQ(std::filesystem::file_size(block), 6U * 64 * 64 * 4);
}

TEST(DumpCommand, AFailedLoadPrintsTheMessagesAndLeavesNoFile) {
    const TemporaryFolder folder;
    const auto bad = folder.Write("bad.tif", "II*\0 and nothing more");
    const ProgramResult result = RunKavra({"dump", bad, "--out", folder / "block", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: " + bad.string() + ": warning: format is not supported\n");
    EXPECT_EQ(Json::parse(result.out), Json({{"file", bad.string()}, {"error", "format is not supported"}}));
    EXPECT_FALSE(std::filesystem::exists(folder / "block"));
}

TEST(DumpCommand, AFrameBeyondTheFileIsSaidInTheModulesOwnWords) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"dump", Sample("grey.png"), "--out", folder / "block", "--frame", "5"});
    EXPECT_EQ(result.status, 1);
    const std::string file = Sample("grey.png").string();
    EXPECT_EQ(result.error, "kavra: " + file + ": warning: Frame index out of range\nkavra: " + file +
                                ": warning: format is not supported\n");
}

TEST(DumpCommand, AFullDiskIsReportedWithItsReason) {
    const ProgramResult result = RunKavra({"dump", Sample("photo.jpg"), "--out", "/dev/full"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: /dev/full: error: cannot be written: No space left on device\n");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(DumpCommand, APipeIsWrittenTo) {
    const TemporaryFolder folder;
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto file = folder.Write("four.ppm", kFourPixels);
    auto reader = std::async(std::launch::async, [&] { return ReadAll(pipe); });
    EXPECT_EQ(RunKavra({"dump", file, "--out", pipe}).status, 0);
    EXPECT_EQ(reader.get().size(), 16U);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST(DumpCommand, AnOutputThatIsAFolderIsRefused) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"dump", Sample("photo.jpg"), "--out", folder.Path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: " + folder.Path().string() + ": error: cannot be written: Is a directory\n");
}
