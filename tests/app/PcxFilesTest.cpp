// PCX files in the hands of a user: what is said of damaged ones, and that the work goes on.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "legacy/PcxFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;
using Bytes = std::vector<unsigned char>;

namespace {

/// 2 x 3 pixels of 24 bits, none like another.
Bytes Whole() {
    Bytes samples;
    for (int i = 0; i < 18; ++i)
        samples.push_back(static_cast<unsigned char>(10 * i));
    return Kavra::Legacy::PcxFile({2, 3, 8, 3, true, {}, samples});
}

/// The same without the last two bytes, which are the blue line of the last row.
Bytes Truncated() {
    Bytes file = Whole();
    file.resize(file.size() - 2);
    return file;
}

const std::string kOutOfData = "PCXReader::Invalid Frame -- out of data";

}  // namespace

TEST(PcxFiles, ATruncatedFileIsConvertedWithItsWarnings) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("cut.pcx", Truncated()).string();
    ExpectDone({"convert", file, folder / "out.png", "--accept-partial"},
               WarningLine(file, kOutOfData) + PartialLine(file, 2, 3));
    EXPECT_EQ(PictureFile(folder / "out.png").At(1, 2), (Colour{150, 160, 0}));
}

TEST(PcxFiles, ADumpHasTheBytesOfTheBlockAndListsTheWarnings) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("cut.pcx", Truncated()).string();
    const Json json = Json::parse(ExpectDone({"dump", file, "--out", folder / "block", "--json", "--accept-partial"},
                                             WarningLine(file, kOutOfData) + PartialLine(file, 2, 3)));
    EXPECT_EQ(json["format"], 46);
    EXPECT_EQ(json["rowPitch"], 8);
    EXPECT_EQ(json["warnings"],
              Json::array({kOutOfData, "ends early: 2 of 3 rows are there; what is there was taken"}));
    EXPECT_EQ(ReadAll(folder / "block"), (Bytes{0,  10,  20,  255, 30,  40,  50, 255, 60,  70,  80, 255,  //
                                                90, 100, 110, 255, 120, 130, 0,  255, 150, 160, 0,  255}));
}

TEST(PcxFiles, APictureTooLargeForItsFileStopsNoOther) {
    const TemporaryFolder folder;
    Bytes huge = Whole();
    huge[8] = huge[9] = huge[10] = huge[11] = 0xFF;
    const std::string file = folder.Write("huge.pcx", huge).string();
    const auto out = folder / "out";
    const ProgramResult result =
        RunKavra({"convert", file, folder.Write("good.pcx", Whole()), out, "--to", "png", "--jobs", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.contains(WarningLine(file, "format is not supported")) &&
                result.error.contains(": error: too large: the picture "))
        << result.error;
    EXPECT_EQ(NamesIn(out), Words{"good.png"});
    EXPECT_EQ(Described(file)["width"], 65'536) << "described as what it claims";
}
