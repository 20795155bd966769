// DDS textures in the reading that the user asks for: as they come out of the command.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "load/DdsFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

const std::string kAdvice = "; --legacy common shows it as other programs do";

/// One pixel of red and green, 200 and 50.
std::string Pair(const TemporaryFolder& folder) {
    DdsFile file{.data = {200, 0, 0, 0, 0, 0, 0, 0, 50, 0, 0, 0, 0, 0, 0, 0}};
    return folder.Write("pair.dds", file.FourCC("BC5U").Bytes()).string();
}

}  // namespace

TEST(DdsReading, TwoChannelsAreRedAndGreenInTheCommonReading) {
    const TemporaryFolder folder;
    const std::string file = Pair(folder);
    ExpectDone({"convert", file, folder / "out.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), (Colour{200, 50, 0}));
    ExpectDone({"convert", file, folder / "out.png"},
               NoteLine(file, "red and green are taken for grey and alpha by the host's rules" + kAdvice));
}

TEST(DdsReading, LightGoesThroughTheCurveOfSrgb) {
    const TemporaryFolder folder;
    DdsFile half{.data = {0, 0x30, 0, 0x38, 0, 0x3C, 0, 0x3C}};  // an eighth, a half, 1 and 1
    half.Masks(4, 0, 0).fourCC = 113;
    const std::string file = folder.Write("half.dds", half.Bytes()).string();
    ExpectDone({"convert", file, folder / "out.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), (Colour{99, 188, 255}));
}

TEST(DdsReading, PremultipliedColoursAreDividedOnTheWayToAFileOfStraightOnes) {
    const TemporaryFolder folder;
    // An alpha of 128 throughout; 15 of 31 is 123, of that 245 is left.
    DdsFile file{.data = {128, 128, 0, 0, 0, 0, 0, 0, 0x00, 0x78, 0x00, 0x78, 0, 0, 0, 0}};
    const std::string path = folder.Write("dxt4.dds", file.FourCC("DXT4").Bytes()).string();
    ExpectDone({"convert", path, folder / "out.png", "--legacy", "common"});
    EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0), (Colour{245, 0, 0, 128}));
}

TEST(DdsReading, WhatBothReadingsShowAlikeGetsNoNote) {
    const TemporaryFolder folder;
    for (const char* const sample : {"photo.dds", "bc1.dds", "dx10.dds", "float.dds"}) {
        const auto convert = [&](const std::string& reading) {
            ExpectDone({"convert", Sample(sample), folder / (reading + ".png"), "--raw", "--legacy", reading});
            return PictureFile(folder / (reading + ".png")).Bytes();
        };
        EXPECT_EQ(convert("contract"), convert("common")) << sample;
    }
}
