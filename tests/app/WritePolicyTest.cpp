// Which outputs are written: --no-clobber, --overwrite-newer, --dry-run.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;
using namespace std::chrono_literals;

namespace {

/// A command, and the file that it writes.
struct Writer {
    Words line;
    std::filesystem::path out;
};

std::vector<Writer> Writers(const TemporaryFolder& folder, const std::string& in) {
    const std::filesystem::path png = folder / "out.png", dds = folder / "out.dds", page = folder / "page0.png";
    return {{{"convert", in, png}, png},
            {{"convert", in, png, "--frames", "all"}, png},
            {{"dump", in, "--out", dds}, dds},
            {{"frames", in, folder / "page%d.png"}, page},
            {{"resize", in, png, "--size", "3x3"}, png},
            {{"crop", in, png, "--rect", "0,0,1,1"}, png},
            {{"compose", png, "--size", "6x4", in + "@0,0"}, png},
            {{"sheet", png, in}, png},
            {{"target", in, png}, png},
            {{"tile", in, png, "--repeat", "2x2"}, png},
            {{"texture", in, dds, "--quality", "fast"}, dds},
            {{"compare", in, in, "--out", png}, png},
            {{"light", in, "--plot", png}, png}};
}

void SetAge(const std::filesystem::path& path, std::chrono::seconds age) {
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - age);
}

}  // namespace

TEST(WritePolicy, ADryRunWritesNothingAndPrintsTheNameOfEveryOutput) {
    const TemporaryFolder folder;
    const std::string in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    for (const Writer& writer : Writers(folder, in)) {
        if (writer.line.size() > 3 && writer.line[3] == "--frames") continue;  // which png files cannot hold
        const ProgramResult result = RunKavra(Joined({writer.line, {"--dry-run"}}));
        EXPECT_EQ(result.status, 0) << writer.line.front() << result.error;
        EXPECT_TRUE(result.out.contains("would write " + writer.out.string() + "\n")) << writer.line.front();
        EXPECT_EQ(NamesIn(folder.Path()), Words{"in.png"}) << writer.line.front();
    }
}

TEST(WritePolicy, ADryRunMakesNoFolders) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        ExpectDone({"convert", Sample("grey.png"), Sample("photo.tga"), folder / "new", "--to", "png", "--dry-run"},
                   "kavra: 2 would be written\n"),
        "would write " + (folder / "new/grey.png").string() + "\nwould write " + (folder / "new/photo.png").string() +
            "\n");
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}

TEST(WritePolicy, NoClobberLeavesWhatIsThereAndWritesWhatIsNot) {
    const TemporaryFolder folder;
    const std::string in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    for (const Writer& writer : Writers(folder, in)) {
        folder.Write(writer.out.filename().string(), "old");
        const ProgramResult result = RunKavra(Joined({writer.line, {"--no-clobber"}}));
        EXPECT_EQ(result.status, 0) << writer.line.front() << result.error;
        EXPECT_TRUE(result.error.contains(NoteLine(writer.out, "kept: it exists"))) << result.error;
        EXPECT_EQ(TextOf(writer.out), "old") << writer.line.front();
        std::filesystem::remove(writer.out);
    }
    ExpectDone({"convert", in, folder / "new.tif", "--no-clobber"});
    EXPECT_TRUE(std::filesystem::exists(folder / "new.tif"));
}

TEST(WritePolicy, OverwriteNewerWritesWhatIsMissingOrOlderThanAnyOfItsInputs) {
    const TemporaryFolder folder;
    const std::string in = WritePicture(folder / "in.png", 6, 4, PlaceColour);
    const auto out = folder.Write("out.tif", "old");
    const Words line = {"convert", in, out, "--overwrite-newer"};
    SetAge(in, 100s);
    SetAge(out, 50s);
    ExpectDone(line, NoteLine(out, "kept: it is not older than its input"));
    EXPECT_EQ(TextOf(out), "old");
    SetAge(in, 10s);
    ExpectDone(line);
    EXPECT_NE(TextOf(out), "old");
    std::filesystem::remove(out);
    ExpectDone(line);
    EXPECT_TRUE(std::filesystem::exists(out));

    const std::string second = WritePicture(folder / "second.png", 6, 4, PlaceColour);
    const auto sheet = folder.Write("sheet.png", "old");
    SetAge(in, 100s);
    SetAge(second, 10s);
    SetAge(sheet, 50s);
    ExpectDone({"sheet", sheet, in, second, "--overwrite-newer"});
    EXPECT_NE(TextOf(sheet), "old");
}

TEST(WritePolicy, BothWaysToKeepFilesExcludeOneAnother) {
    ExpectWrongUsage({"convert", "x", "y", "--no-clobber", "--overwrite-newer"},
                     "convert: error: --no-clobber and --overwrite-newer exclude one another");
}
