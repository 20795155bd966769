// Old raster files in the reading that the user asks for.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "legacy/PcxFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Kavra::Tests;
using Bytes = std::vector<unsigned char>;

namespace {

/// Eight pixels of one bit, every second one set; the first colour is red, the second blue.
Bytes RedAndBlue() {
    return Kavra::Legacy::PcxFile({8, 1, 1, 1, true, {255, 0, 0, 0, 0, 255}, {0, 1, 0, 1, 0, 1, 0, 1}});
}

const Colour kRed = {255, 0, 0}, kBlue = {0, 0, 255};
const std::string kAdvice = "; --legacy common shows it as other programs do";

/// How often a text stands in another one.
int Count(const std::string& text, const std::string& word) {
    int count = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

}  // namespace

TEST(LegacyOption, TheHostsReadingHoldsUnlessSaidAndOneNoteTellsWhatTheOtherShows) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("bits.pcx", RedAndBlue()).string();
    for (const Words& reading : {Words{}, Words{"--legacy", "contract"}}) {
        const ProgramResult result = RunKavra(Joined({{"convert", file, folder / "out.png"}, reading}));
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(result.error.starts_with("kavra: " + file + ": note: ")) << result.error;
        EXPECT_TRUE(result.error.ends_with(kAdvice + "\n")) << result.error;
        EXPECT_EQ(Count(result.error, "\n"), 1) << result.error;
        EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), kBlue) << "a clear bit is the second colour";
        EXPECT_EQ(PictureFile(folder / "out.png").At(1, 0), kRed);
    }
}

TEST(LegacyOption, TheCommonReadingShowsItAsOtherProgramsDoAndSaysNothing) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("bits.pcx", RedAndBlue()).string();
    ExpectDone({"convert", file, folder / "out.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), kRed);
    EXPECT_EQ(PictureFile(folder / "out.png").At(1, 0), kBlue);
}

TEST(LegacyOption, AFileThatBothReadingsShowAlikeGetsNoNote) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("photo.pcx"), folder / "contract.png"});
    ExpectDone({"convert", Sample("photo.pcx"), folder / "common.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "contract.png").Bytes(), PictureFile(folder / "common.png").Bytes());
}

TEST(LegacyOption, EveryCommandThatReadsPicturesTakesIt) {
    const TemporaryFolder folder;
    const std::string in = folder.Write("bits.pcx", RedAndBlue()).string();
    const std::vector<Words> commands = {{"info", in, "--all"},
                                         {"dump", in, "--out", folder / "block"},
                                         {"convert", in, folder / "out.png"},
                                         {"frames", in, folder / "%d.png"},
                                         {"resize", in, folder / "out.png", "--size", "5x1"},
                                         {"crop", in, folder / "out.png", "--rect", "0,0,2,1"},
                                         {"compose", folder / "out.png", "--size", "9x9", in + "@0,0"},
                                         {"sheet", folder / "out.png", in},
                                         {"compare", in, in},
                                         {"target", in, folder / "out.png"},
                                         {"tile", in, folder / "out.png", "--repeat", "2x2"}};
    for (const Words& command : commands)
        ExpectDone(Joined({command, {"--legacy", "common"}}));
    ExpectDone(
        {"light", in, "--legacy", "common"},
        NoteLine(in, "8 x 1 pixels, and an equirectangular map is twice as wide as high; directions may be wrong"));
    ExpectWrongUsage({"formats", "--legacy", "common"}, "formats: error: there is no option --legacy");
}

TEST(LegacyOption, AFileThatOnlyTheCommonReadingKnowsIsNamedAsSuch) {
    // A container of one page, whose offset is 12.
    Bytes pages = {0xB1, 0x68, 0xDE, 0x3A, 12, 0, 0, 0, 0, 0, 0, 0};
    const Bytes page = RedAndBlue();
    pages.insert(pages.end(), page.begin(), page.end());
    const TemporaryFolder folder;
    const std::string file = folder.Write("pages.dcx", pages).string();
    ExpectFailed({"convert", file, folder / "out.png"},
                 WarningLine(file, "format is not supported") +
                     NoteLine(file, "of no kind that the host's rules know" + kAdvice) +
                     ErrorLine(file, "its bytes are of no image format that is known"));
    ExpectFailed({"info", file}, NoteLine(file, "of no kind that the host's rules know" + kAdvice) +
                                     ErrorLine(file, "its bytes are of no image format that is known"));
    ExpectDone({"info", file, "--legacy", "common"});
    ExpectDone({"convert", file, folder / "out.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), kRed);
}

TEST(LegacyOption, WhatIsNoReadingIsRefused) {
    const TemporaryFolder folder;
    ExpectWrongUsage({"convert", Sample("photo.pcx"), folder / "out.png", "--legacy", "comon"},
                     "convert: error: --legacy: comon is none of common|contract; did you mean common?");
}
