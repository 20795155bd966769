// kavra check: everything in a file is decoded, and what is wrong is told.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// The first bytes of a sample under the same name in another folder.
std::filesystem::path Cut(const TemporaryFolder& folder, const std::string& sample, double part) {
    std::vector<unsigned char> bytes = ReadAll(Sample(sample));
    bytes.resize(static_cast<std::size_t>(static_cast<double>(bytes.size()) * part));
    return folder.Write(sample, bytes);
}

}  // namespace

TEST(CheckCommand, TellsWhatAGoodFileHolds) {
    const std::string grey = Sample("grey.png"), cube = Sample("cube-mips.dds"), flip = Sample("spinner.gif");
    EXPECT_EQ(ExpectDone({"check", grey, cube, flip}), grey + ": ok (480 x 320, png)\n" + cube +
                                                           ": ok (6 levels, 32 x 32, cube map, dds)\n" + flip +
                                                           ": ok (8 frames, 48 x 48, gif)\n");
}

TEST(CheckCommand, AllSamplesAreGood) {
    Words line = {"check", "--json"};
    for (const auto& entry : std::filesystem::directory_iterator(Sample("")))
        if (entry.is_regular_file() && entry.path().extension().string().size() == 4 &&
            entry.path().extension() != ".txt")
            line.push_back(entry.path());
    const ProgramResult result = RunKavra(line);
    EXPECT_EQ(result.status, 0) << result.error;
    const Json files = Json::parse(result.out);
    EXPECT_EQ(files.size(), line.size() - 2);
    for (const Json& file : files)
        EXPECT_EQ(file["status"], "ok") << file;
}

TEST(CheckCommand, ABadFileStopsNoOtherAndMakesTheStatusOne) {
    const TemporaryFolder folder;
    const std::filesystem::path bad = folder / "missing.png", good = Sample("grey.png");
    const std::string out = ExpectFailed({"check", bad, good}, ErrorLine(bad, "there is no such file"));
    EXPECT_TRUE(out.starts_with(good.string() + ": ok (")) << out;
    const Json files =
        Json::parse(ExpectFailed({"check", "--json", bad, good}, ErrorLine(bad, "there is no such file")));
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0], Json({{"file", bad.string()},
                              {"status", "bad"},
                              {"error", "there is no such file"},
                              {"kind", "noSuchFile"},
                              {"warnings", Json::array({"there is no such file"})}}));
    EXPECT_EQ(files[1]["status"], "ok");
}

TEST(CheckCommand, FilesThatEndInTheMiddleAreBad) {
    const TemporaryFolder folder;
    for (const std::string sample : {"photo-16bit.png", "tiled.tif", "rgba.exr", "photo.tga", "studio.hdr"}) {
        const std::filesystem::path cut = Cut(folder, sample, 0.6);
        const ProgramResult result = RunKavra({"check", cut, "--json"});
        EXPECT_EQ(result.status, 1) << sample;
        const Json file = Json::parse(result.out)[0];
        EXPECT_EQ(file["status"], "bad") << file;
        EXPECT_EQ(result.error.find(": error: "), result.error.rfind(": error: ")) << result.error;
    }
}

TEST(CheckCommand, OfAPictureThatEndsEarlyTheGoodRowsAreTold) {
    // 128 rows of 64 bytes in lines of blocks, behind a header of 128 bytes: 32 rows are 2,048.
    const TemporaryFolder folder;
    std::vector<unsigned char> bytes = ReadAll(Sample("bc1.dds"));
    bytes.resize(128 + 2048 + 5);
    const std::filesystem::path cut = folder.Write("cut.dds", bytes);
    const ProgramResult result = RunKavra({"check", cut, "--json"});
    const Json file = Json::parse(result.out)[0];
    EXPECT_EQ(file["error"], "ends early: 32 of 128 rows are there");
    EXPECT_EQ(file["kind"], "endsEarly");
    EXPECT_EQ(file["goodRows"], 32);
    EXPECT_EQ(file["rows"], 128);
}
