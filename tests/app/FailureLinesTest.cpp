// What a person reads of a file that failed: behind the messages of the handler one line that says what is wrong, where,
// and what to do; and what a program gets of the same.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/Sanitized.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

const std::string kUnsupported = "format is not supported";

std::string RandomBytes(std::size_t count) {
    std::string bytes;
    for (unsigned state = 77; bytes.size() < count; state = state * 1103515245 + 12345)
        bytes += static_cast<char>(state >> 16);
    return bytes;
}

struct BadFile {
    std::filesystem::path path;
    std::string kind;
    std::string reason;
};

std::string ExpectFailure(const Words& words) {
    const ProgramResult result = RunKavra(words);
    EXPECT_EQ(result.status, 1);
    return result.error;
}

/// Files that there is nothing to read of.
std::vector<BadFile> BadFiles(const TemporaryFolder& folder) {
    std::filesystem::create_directory(folder / "folder.png");
    std::filesystem::create_symlink(folder / "gone", folder / "link.png");
    EXPECT_EQ(mkfifo((folder / "pipe.png").c_str(), S_IRUSR | S_IWUSR), 0);
    return {
        {folder / "missing.png", "noSuchFile", "there is no such file"},
        {folder.Write("empty.png", ""), "emptyFile", "the file is empty"},
        {folder / "folder.png", "isFolder", "it is a folder"},
        {folder / "link.png", "noSuchFile", "the link leads to no file"},
        {folder / "pipe.png", "noRegularFile", "it is a pipe, not a file"},
        {folder.Write("text.png", "Once upon a time"), "notAnImage", "it is text, not an image"},
        {folder.Write("random.png", RandomBytes(5000)), "notAnImage", "its bytes are of no image format that is known"},
    };
}

}  // namespace

TEST(FailureLines, ThatASideIsTooLongNamesTheLimit) {
    const TemporaryFolder folder;
    const std::filesystem::path wide =
        folder.Write("wide.ppm", "P6 70000 3 255\n" + std::string(std::size_t{70000} * 9, 'x'));
    EXPECT_NE(ExpectFailure({"info", wide}).find("65535"), std::string::npos);
    std::vector<unsigned char> jpeg = ReadAll(Sample("photo.jpg"));
    const std::array<unsigned char, 4> frame = {0xFF, 0xC0, 0x00,
                                                0x11};  // ITU-T T.81, B.2.2: precision, then the sides
    const auto header = std::ranges::search(jpeg, frame);
    ASSERT_FALSE(header.empty());
    constexpr std::ptrdiff_t kSides = 5, kSidesEnd = 9;
    std::fill(header.begin() + kSides, header.begin() + kSidesEnd, 0xFF);
    const std::string error = ExpectFailure({"info", folder.Write("tall.jpg", jpeg)});
    EXPECT_TRUE(error.ends_with("Maximum supported image dimension is 65500 pixels\n")) << error;
    const std::filesystem::path line =
        folder.Write("line.ppm", "P6 65535 1 255\n" + std::string(std::size_t{65535} * 3, 'x'));
    EXPECT_NE(ExpectFailure({"convert", line, folder / "line.jpg"}).find("65500"), std::string::npos);
}

TEST(FailureLines, AFileThatCannotBeReadHasOneLineWithItsReasonBehindTheMessageOfTheHandler) {
    const TemporaryFolder folder;
    for (const BadFile& bad : BadFiles(folder)) {
        const std::string line = ErrorLine(bad.path, bad.reason);
        ExpectFailed({"convert", bad.path, folder / "out.png"}, WarningLine(bad.path, kUnsupported) + line);
        ExpectFailed({"dump", bad.path, "--out", folder / "out"}, WarningLine(bad.path, kUnsupported) + line);
        ExpectFailed({"info", bad.path}, line);
        EXPECT_FALSE(std::filesystem::exists(folder / "out.png")) << bad.path;
    }
}

TEST(FailureLines, JsonHasTheReasonAndItsKind) {
    const TemporaryFolder folder;
    for (const BadFile& bad : BadFiles(folder)) {
        const std::string out = ExpectFailed({"info", bad.path, "--json"}, ErrorLine(bad.path, bad.reason));
        EXPECT_EQ(Json::parse(out),
                  Json::array({{{"file", bad.path.string()}, {"error", bad.reason}, {"kind", bad.kind}}}));
    }
}

TEST(FailureLines, AFileThatMayNotBeReadIsSaidToBeThat) {
    if (geteuid() == 0) GTEST_SKIP() << "the superuser may read everything";
    const TemporaryFolder folder;
    const auto path = folder.Write("a.png", "x");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    ExpectFailed({"info", path}, ErrorLine(path, "no permission to read it"));
}

TEST(FailureLines, ATypeThatNothingWritesIsNamedWithThoseThatAreWritten) {
    const TemporaryFolder folder;
    for (const std::string name : {"o.xyz", "o.psd"}) {
        const std::filesystem::path out = folder / name;
        for (const Words& line : {Words{"convert", Sample("grey.png"), out}, {"target", Sample("grey.png"), out}}) {
            const ProgramResult result = RunKavra(line);
            EXPECT_EQ(result.status, 1);
            const std::string start =
                ErrorLine(out, "cannot be written: no " + out.extension().string() + " files are written; these are: ");
            EXPECT_TRUE(result.error.starts_with(start.substr(0, start.size() - 1))) << result.error;
            EXPECT_TRUE(result.error.contains(" .exr ") && result.error.contains(" .png ")) << result.error;
            EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << result.error;
        }
    }
}

TEST(FailureLines, AFolderThatTakesNoFilesIsNamed) {
    const std::string said = "cannot be written: the folder /proc takes no files";
    ExpectFailed({"convert", Sample("grey.png"), "/proc/x.png"},
                 WarningLine("/proc/x.png", "fail to create specified folder") + ErrorLine("/proc/x.png", said));
}

TEST(FailureLines, WhereNoFrameCanBeWrittenThatIsSaidOnce) {
    const TemporaryFolder folder;
    const std::string inFile = folder.Write("file", "x").string() + "/%d.png";
    ExpectFailed({"frames", Sample("pages.tif"), inFile},
                 ErrorLine(folder / "file/0.png", "cannot be written: Not a directory"));
    ExpectFailed({"frames", Sample("pages.tif"), "/proc/%d.png"},
                 ErrorLine("/proc/0.png", "cannot be written: the folder /proc takes no files"));
}

TEST(FailureLines, AFrameThatIsNotThereIsSaidWithThoseThatAre) {
    const TemporaryFolder folder;
    const std::filesystem::path in = Sample("pages.tif"), out = folder / "o.png";
    const int frames = Described(in)["frameCount"];
    const std::string range = WarningLine(in, "Frame index out of range");
    const std::string reason = "there is no frame 7; the file has " + std::to_string(frames);
    ExpectFailed({"convert", in, out, "--frame", "7"}, range + ErrorLine(in, reason));
    const std::string echo = WarningLine(in, kUnsupported);
    ExpectFailed({"convert", in, out, "--frame", "7", "--verbose"}, range + echo + ErrorLine(in, reason));
    const std::filesystem::path movie = Sample("spinner.gif");
    ExpectFailed(
        {"convert", movie, out, "--frame", "99"},
        WarningLine(movie, "Frame index out of range") + ErrorLine(movie, "there is no frame 99; the file has 8"));
    ExpectWrongUsage({"convert", in, out, "--frame", "-3"},
                     "convert: error: --frame: -3 is no whole number, 0 or more");
}

TEST(FailureLines, NumbersOutOfTheirRangeAreSaidToBeThat) {
    ExpectWrongUsage({"tile", "a.png", "b.png", "--repeat", "0x2"},
                     "tile: error: --repeat: 0x2 is too small; each number is 1 or more");
    ExpectWrongUsage({"convert", "a.png", "b.png", "--size", "99999999999x4"},
                     "convert: error: --size: 99999999999x4 is too large; each number is at most 2147483647");
}

TEST(FailureLines, SeveralInputsNeedAFolderAndAnOutputAName) {
    const std::string needs =
        "error: several inputs need a folder, and out/a.png is the name of a file; a new folder is named out/a.png/";
    ExpectWrongUsage({"convert", "a.png", "b.png", "out/a.png"}, "convert: " + needs);
    ExpectWrongUsage({"light", "a.png", "a.png", "--plot", "out/a.png"}, "light: " + needs);
    ExpectWrongUsage({"texture", "a.png", "b.png", "out/a.png"}, "texture: " + needs);
    ExpectWrongUsage({"convert", "a.png", ""}, "convert: error: the name of the output is empty");
    ExpectWrongUsage({"convert", "a.png", "out/", "--to", ""},
                     "convert: error: --to: it is empty; write an extension, such as png");
}

TEST(FailureLines, WhatALibraryPrintsIsAWarningOfTheFile) {
    if (kIsSanitized) GTEST_SKIP() << "sanitized programs leave standard error to the sanitizer";
    std::vector<unsigned char> bytes = ReadAll(Sample("photo-16bit.png"));
    bytes.resize(bytes.size() * 6 / 10);
    const TemporaryFolder folder;
    const std::filesystem::path cut = folder.Write("cut.png", bytes);
    const ProgramResult result = RunKavra({"convert", cut, folder / "out.png"});
    EXPECT_EQ(result.status, 1);
    const std::string start = "kavra: " + cut.string() + ": warning: libpng error: ";
    EXPECT_TRUE(result.error.contains(start)) << result.error;
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 3) << "once each: " << result.error;
}

TEST(FailureLines, OptionsThatOnlyAFilterHeedsGoWithNoOtherMethod) {
    for (const std::string method : {"crop", "copy"}) {
        for (const Words& option : {Words{"--filter", "linear"}, {"--linear-light"}, {"--plain-filter"}}) {
            const Words line = {"resize", "a.png", "b.png", "--size", "4x4", "--method", method};
            ExpectWrongUsage(Joined({line, option}), "resize: error: " + option.front() + " goes with --method filter");
        }
    }
}
