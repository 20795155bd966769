// What a command writes can be read back. Where a file type's writer would make a file that its reader does not take,
// or refuse without a word, the command refuses before it writes and says what would pass.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <format>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

struct Size {
    int width;
    int height;
};

/// The command line that writes a picture of this size, transparent black but for one pixel, as a file with this
/// extension.
Words Write(const TemporaryFolder& folder, const std::string& extension, Size size, const std::string& format) {
    const auto dot = WritePicture(folder / "dot.tga", 1, 1, [](int, int) { return Colour{9, 9, 9}; });
    return {
        "compose", folder / ("out." + extension), "--size", std::format("{}x{}", size.width, size.height), "--format",
        format,    dot.string() + "@0,0"};
}

void ExpectReadable(const std::string& extension, Size size, const std::string& format) {
    const TemporaryFolder folder;
    ExpectDone(Write(folder, extension, size, format));
    const Json json = Described(folder / ("out." + extension));
    EXPECT_EQ(json["width"], size.width) << extension;
    EXPECT_EQ(json["height"], size.height) << extension;
}

void ExpectRefused(const std::string& extension, Size size, const std::string& format, const std::string& reason) {
    const TemporaryFolder folder;
    ExpectFailed(Write(folder, extension, size, format),
                 ErrorLine(folder / ("out." + extension), "cannot be written: " + reason));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"dot.tga"});
}

}  // namespace

TEST(FileTypes, SizesAreWrittenUpToWhatCanBeReadBackAndRefusedBeyond) {
    struct Case {
        std::string extension;
        Size passes;
        Size refused;
        std::string holds;
        std::string format = "rgba8";
    };
    const std::vector<Case> cases = {
        {"gif", {32768, 1}, {32769, 1}, "32768 a side"},       {"gif", {1, 32768}, {1, 32769}, "32768 a side"},
        {"rla", {2, 1}, {1, 1}, "2 or more across"},           {"rla", {32768, 1}, {32769, 1}, "32768 a side"},
        {"rla", {2, 32768}, {2, 32769}, "32768 a side"},       {"webp", {16383, 1}, {16384, 1}, "16383 a side"},
        {"iff", {8192, 1}, {8193, 1}, "8192 a side"},          {"iff", {1, 8192}, {1, 8193}, "8192 a side"},
        {"ico", {255, 255}, {256, 1}, "255 a side"},           {"ico", {1, 255}, {1, 256}, "255 a side"},
        {"jp2", {32, 32}, {31, 32}, "32 or more a side"},      {"j2c", {32, 33}, {33, 31}, "32 or more a side"},
        {"jpg", {65500, 1}, {65501, 1}, "65500 a side"},       {"bmp", {65535, 1}, {65536, 1}, "65535 a side"},
        {"tga", {1, 65535}, {1, 65536}, "65535 a side"},       {"sgi", {65535, 1}, {65536, 1}, "65535 a side"},
        {"pgm", {65535, 1}, {65536, 1}, "65535 a side", "l8"}, {"png", {1000000, 1}, {1000001, 1}, "1000000 a side"},
    };
    for (const Case& row : cases) {
        ExpectReadable(row.extension, row.passes, row.format);
        ExpectRefused(row.extension, row.refused, row.format,
                      std::format("{} x {} pixels, and .{} files hold {}", row.refused.width, row.refused.height,
                                  row.extension, row.holds));
    }
}

TEST(FileTypes, LargePicturesOfTheTypesWithoutSuchABoundAreReadBack) {
    for (const std::string extension : {"tif", "exr", "dpx", "dds", "fits"}) {
        ExpectReadable(extension, {70000, 2}, "rgba8");
        ExpectReadable(extension, {2, 70000}, "rgba8");
    }
}

TEST(FileTypes, FitsFilesHoldEightOrThirtyTwoBitsAndSeveralChannelsInTwoRowsOrMore) {
    ExpectReadable("fits", {5, 1}, "l8");
    ExpectReadable("fits", {5, 2}, "rgba8");
    ExpectReadable("fits", {5, 2}, "rgba32f");
    ExpectRefused("fits", {5, 1}, "rgba8", "a single row, and .fits files of 4 channels hold two or more");
    ExpectRefused("fits", {5, 1}, "rg32f", "a single row, and .fits files of 2 channels hold two or more");
    ExpectRefused("fits", {5, 2}, "r16", ".fits files hold 8 or 32 bits a channel, and kR16 has 16");
    ExpectRefused("fits", {5, 2}, "rgba16f", ".fits files hold 8 or 32 bits a channel, and kR16G16B16A16F has 16");
}

TEST(FileTypes, FilesThatCannotBeReadBackAtAllAreRefused) {
    ExpectRefused("zfile", {5, 5}, "r32f", ".zfile files cannot be read back");
}

TEST(FileTypes, AJpegXlFileThatIsTooShortToBeReadBackIsRefused) {
    ExpectReadable("jxl", {500, 400}, "rgba8");
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra(Write(folder, "jxl", {1, 1}, "rgba8"));
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.ends_with(" bytes long, and .jxl files below 128 cannot be read back\n")) << result.error;
    EXPECT_EQ(NamesIn(folder.Path()), Words{"dot.tga"});
}

TEST(FileTypes, EveryWritingCommandRefusesThem) {
    const TemporaryFolder folder;
    const auto column = WritePicture(folder / "column.tga", 1, 40, [](int, int) { return Colour{9, 9, 9}; });
    const std::string in = column;
    const std::string out = folder / "out.rla";
    const std::vector<Words> commands = {
        {"convert", in, out},
        {"resize", in, out, "--size", "1x40"},
        {"crop", in, out, "--rect", "0,0,1,40"},
        {"compose", out, "--size", "1x40", in + "@0,0"},
        {"target", in, out},
    };
    const std::string reason = "cannot be written: 1 x 40 pixels, and .rla files hold 2 or more across";
    for (const Words& command : commands)
        ExpectFailed(command, ErrorLine(out, reason));
    ExpectFailed({"frames", in, folder / "%d.rla"}, ErrorLine(folder / "0.rla", reason));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"column.tga"});
}
