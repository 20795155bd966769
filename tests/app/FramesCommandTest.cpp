#include "FramePattern.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace Kavra::Tests;
using Kavra::App::FramePattern;

TEST(FramesCommand, EveryFrameOfAnAnimationGetsItsFile) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"frames", Sample("spinner.gif"), folder / "f-%03d.png"});
    EXPECT_EQ(result.status, 0) << result.error;
    for (const std::string name : {"f-000.png", "f-007.png"})
        EXPECT_TRUE(std::filesystem::exists(folder / name));
    EXPECT_FALSE(std::filesystem::exists(folder / "f-008.png"));
}

TEST(FramesCommand, MipLevelsHaveTheirOwnSizes) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKavra({"frames", Sample("mips.dds"), folder / "%d.png"}).status, 0);
    for (int level = 0; level < 8; ++level) {
        const OIIO::ImageBuf image((folder / (std::to_string(level) + ".png")).string());
        EXPECT_EQ(image.spec().width, 128 >> level);
    }
}

TEST(FramesCommand, AFileThatReportsMoreFramesThanItHoldsEndsWithANote) {
    const TemporaryFolder folder;
    // A grey TIFF reports its channel count as its frame count.
    OIIO::ImageSpec spec(2, 2, 2, OIIO::TypeDesc::UINT8);
    spec.channelnames = {"Y", "A"};
    spec.alpha_channel = 1;
    const auto file = folder / "grey-alpha.tif";
    ASSERT_TRUE(OIIO::ImageBuf(spec).write(file.string()));
    const ProgramResult result = RunKavra({"frames", file, folder / "%d.png"});
    EXPECT_EQ(result.status, 0);
    const std::string start = "kavra: " + file.string() + ": ";
    EXPECT_EQ(result.error, start + "warning: Frame index out of range\n" + start +
                                "warning: format is not supported\n" + start + "note: reports 2 frames and holds 1\n");
    EXPECT_TRUE(std::filesystem::exists(folder / "0.png"));
    EXPECT_FALSE(std::filesystem::exists(folder / "1.png"));
}

TEST(FramesCommand, APatternWithoutOneNumberIsWrongUsage) {
    for (const std::string pattern : {"out.png", "%s.png", "%d-%d.png", "%", "%5.2d.png"}) {
        EXPECT_EQ(RunKavra({"frames", Sample("spinner.gif"), pattern}).status, 2) << pattern;
    }
}

TEST(FramePatternText, NumbersArePaddedAndPercentSignsKept) {
    EXPECT_EQ(FramePattern::Parse("a%03db")->Name(7), "a007b");
    EXPECT_EQ(FramePattern::Parse("%3d")->Name(42), " 42");
    EXPECT_EQ(FramePattern::Parse("100%%-%d.png")->Name(1234), "100%-1234.png");
    EXPECT_EQ(FramePattern::Parse("%02d")->Name(1234), "1234");
}
