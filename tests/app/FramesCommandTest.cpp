// Every frame, mip level or band as a file of its own.

#include "FramePattern.h"
#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;
using Kavra::App::FramePattern;

TEST(FramesCommand, EveryFrameOfAnAnimationGetsItsFile) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("spinner.gif"), folder / "f-%03d.png"});
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"f-000.png", "f-001.png", "f-002.png", "f-003.png", "f-004.png",
                                             "f-005.png", "f-006.png", "f-007.png"}));
}

TEST(FramesCommand, MipLevelsHaveTheirOwnSizes) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("mips.dds"), folder / "%d.png"});
    for (int level = 0; level < 8; ++level) {
        const PictureFile picture(folder / (std::to_string(level) + ".png"));
        EXPECT_EQ(picture.Width(), 128 >> level);
        EXPECT_EQ(picture.Height(), 128 >> level);
    }
}

TEST(FramesCommand, AFileThatReportsMoreFramesThanItHoldsEndsWithANote) {
    const TemporaryFolder folder;
    // A grey TIFF reports its channel count as its frame count.
    const auto file = WritePicture(folder / "grey-alpha.tif", 2, 2, [](int, int) { return Colour{9, 8}; });
    ExpectDone({"frames", file, folder / "%d.png"},
               WarningLine(file, "Frame index out of range") + NoteLine(file, "reports 2 frames and holds 1"));
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"0.png", "grey-alpha.tif"}));
}

TEST(FramesCommand, AFileOfOneFrameGivesOneFile) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("photo.pcx"), folder / "%d.png"});
    EXPECT_EQ(NamesIn(folder.Path()), Words{"0.png"});
}

TEST(FramePatternText, NumbersArePaddedAndPercentSignsKept) {
    EXPECT_EQ(FramePattern::Parse("a%03db")->Name(7), "a007b");
    EXPECT_EQ(FramePattern::Parse("%3d")->Name(42), " 42");
    EXPECT_EQ(FramePattern::Parse("100%%-%d.png")->Name(1234), "100%-1234.png");
    EXPECT_EQ(FramePattern::Parse("%02d")->Name(1234), "1234");
}
