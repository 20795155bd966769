// How much is said: --quiet, --verbose, and the line about all files together.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

using namespace Kavra::Tests;

TEST(Loudness, QuietPrintsNoNotesAndNoSumsBeforeTheCommandAndAfterIt) {
    const TemporaryFolder folder;
    const std::string cube = Sample("cube.dds"), out = folder / "out.png";
    ExpectDone({"crop", cube, out, "--rect", "0,0,2,2"}, NoteLine(cube, "a cube map; only its first face is used"));
    for (const std::string quiet : {"-q", "--quiet"}) {
        ExpectDone({"crop", cube, out, "--rect", "0,0,2,2", quiet});
        ExpectDone({quiet, "crop", cube, out, "--rect", "0,0,2,2"});
        ExpectDone({"convert", Sample("grey.png"), Sample("photo.tga"), folder / "all", "--to", "png", quiet});
    }
}

TEST(Loudness, QuietStillSaysWhyAFileFailed) {
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.tif", "no picture");
    const ProgramResult loud = RunKavra({"convert", bad, folder / "out.png"});
    const ProgramResult quiet = RunKavra({"convert", bad, folder / "out.png", "-q"});
    EXPECT_EQ(quiet.status, 1);
    EXPECT_TRUE(quiet.error.starts_with("kavra: " + bad + ": ")) << quiet.error;
    EXPECT_TRUE(loud.error.ends_with(quiet.error)) << quiet.error;
    EXPECT_EQ(ExpectFailed({"info", bad, "-q"}, ErrorLine(bad, "it is text, not an image")), "");
}

TEST(Loudness, QuietKeepsWhatBelongsToStandardOutput) {
    EXPECT_EQ(ExpectDone({"info", Sample("grey.png"), "-q"}), ExpectDone({"info", Sample("grey.png")}));
}

TEST(Loudness, QuietAndVerboseExcludeOneAnother) {
    ExpectWrongUsage({"info", "x", "-q", "-v"}, "info: error: --quiet and --verbose exclude one another");
}

TEST(Loudness, SeveralOutputsAreCountedInOneLine) {
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.tif", "no picture");
    const std::string grey = Sample("grey.png"), photo = Sample("photo.tga"), out = folder / "out";
    const ProgramResult mixed = RunKavra({"convert", grey, bad, photo, out, "--to", "png"});
    EXPECT_EQ(mixed.status, 1);
    EXPECT_TRUE(mixed.error.ends_with("\nkavra: 2 written, 1 failed\n")) << mixed.error;
    ExpectDone({"convert", grey, photo, out, "--to", "bmp"}, "kavra: 2 written\n");
    ExpectDone({"texture", grey, photo, out, "--quality", "fast"}, "kavra: 2 written\n");
    ExpectDone({"convert", grey, out, "--to", "tif"});
}

TEST(Loudness, JobsHasAShortName) {
    const TemporaryFolder folder;
    ExpectDone({"info", Sample("grey.png"), "-j", "2"});
    ExpectDone({"info", Sample("grey.png"), "-j2"});
    ExpectWrongUsage({"info", "x", "-j", "0"}, "info: error: --jobs: 0 is no whole number, 1 or more");
}
