// Standard input, standard output and pipes in place of files.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <format>
#include <string>

using namespace Kavra::Tests;

namespace {

struct ShellResult {
    int status = -1;
    std::string out;
};

/// Runs a line of the shell, in which $K is the program; what both streams print.
ShellResult Shell(const std::string& line) {
    ShellResult result;
    std::FILE* pipe = popen(std::format("exec 2>&1; K='{}'; {}", KAVRA_PROGRAM, line).c_str(), "re");
    if (pipe == nullptr) return result;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        result.out += static_cast<char>(c);
    result.status = WEXITSTATUS(pclose(pipe));
    return result;
}

void ExpectShell(const std::string& line, int status, const std::string& out) {
    const ShellResult result = Shell(line);
    EXPECT_EQ(result.status, status) << line;
    EXPECT_EQ(result.out, out) << line;
}

/// Nothing of streams is left in the folder of temporary files.
class OwnTemporaries {
public:
    OwnTemporaries() { setenv("TMPDIR", mFolder.Path().c_str(), 1); }
    ~OwnTemporaries() {
        unsetenv("TMPDIR");
        EXPECT_EQ(NamesIn(mFolder.Path()), Words());
    }
    OwnTemporaries(const OwnTemporaries&) = delete;
    OwnTemporaries& operator=(const OwnTemporaries&) = delete;

private:
    TemporaryFolder mFolder;
};

}  // namespace

TEST(StreamFiles, FilesOfEveryKindComeThroughStandardInput) {
    const OwnTemporaries temporaries;
    for (const std::string name : {"grey.png", "photo.jpg", "photo.tga", "rgba.exr", "studio.hdr", "cube.dds",
                                   "photo.pcx", "float.tif", "spinner.gif", "photo.pict"}) {
        std::string described = ExpectDone({"info", Sample(name)});
        described.replace(0, Sample(name).string().size(), "-");
        ExpectShell(std::format("$K info - < '{}'", Sample(name).string()), 0, described);
        ExpectShell(std::format("cat '{}' | $K info -", Sample(name).string()), 0, described);
    }
}

TEST(StreamFiles, TheOutputGoesWholeToStandardOutput) {
    const OwnTemporaries temporaries;
    const TemporaryFolder folder;
    const std::string grey = Sample("grey.png"), expected = folder / "expected.bmp", got = folder / "got";
    const Words lines = {"convert {} {}", "resize {} {} --scale 50%", "crop {} {} --rect 1,2,30,40", "target {} {}",
                         "tile {} {} --repeat 2x2"};
    for (const std::string& line : lines) {
        const auto with = [&](const std::string& in, const std::string& out) {
            return "$K " + std::vformat(line, std::make_format_args(in, out));
        };
        ExpectShell(with(grey, expected), 0, "");
        for (const std::string out : {"-", "/dev/stdout"}) {
            ExpectShell(with("-", out) + std::format(" --to bmp < '{}' | cat > '{}'", grey, got), 0, "");
            EXPECT_EQ(ReadAll(got), ReadAll(expected)) << line;
            ExpectShell(with("-", out) + std::format(" --to .bmp < '{}' > '{}'", grey, got), 0, "");
            EXPECT_EQ(ReadAll(got), ReadAll(expected)) << line;
        }
    }
}

TEST(StreamFiles, SheetsPiecesTexturesAndBlocksGoToStandardOutputToo) {
    const OwnTemporaries temporaries;
    const TemporaryFolder folder;
    const std::string grey = Sample("grey.png"), got = folder / "got.png";
    ExpectShell(std::format("$K sheet - '{0}' '{0}' --to png > '{1}'", grey, got), 0, "");
    EXPECT_EQ(Described(got)["width"], 320);
    ExpectShell(std::format("$K compose - --to png --size 20x10 -- -@0,0 < '{}' > '{}'", grey, got), 0,
                NoteLine("-", "only the 20 x 10 pixels inside the picture were pasted"));
    EXPECT_EQ(Described(got)["width"], 20);
    ExpectShell(
        std::format("$K texture - - --to ktx2 --quality fast < '{}' > '{}'", grey, (folder / "got.ktx2").string()), 0,
        "");
    EXPECT_EQ(Described(folder / "got.ktx2")["width"], 480);
    ExpectShell(std::format("$K dump - --out - < '{}' > '{}'", grey, got), 0, "");
    EXPECT_EQ(ReadAll(got), Dumped(grey));
    ExpectShell(std::format("$K frames - '{}/%d.png' < '{}'", folder.Path().string(), grey), 0, "");
    EXPECT_EQ(Described(folder / "0.png")["width"], 480);
    ExpectShell(std::format("$K compare - '{0}' --json < '{0}' > '{1}'", grey, got), 0, "");
    EXPECT_EQ(Json::parse(TextOf(got))["file"], "-");
}

TEST(StreamFiles, PipesThatTheShellMakesAreRead) {
    const OwnTemporaries temporaries;
    const std::string line = std::format("bash -c '{} info <(cat {})'", KAVRA_PROGRAM, Sample("grey.png").string());
    const ShellResult result = Shell(line);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.out.starts_with("/dev/fd/")) << result.out;
    EXPECT_TRUE(result.out.contains(": 480 x 320, ")) << result.out;
}

TEST(StreamFiles, APipeWithANameIsWrittenTo) {
    const OwnTemporaries temporaries;
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe.png", got = folder / "got.png";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ExpectShell(
        std::format("cat '{0}' > '{1}' & $K convert '{2}' '{0}'; wait", pipe, got, Sample("photo.tga").string()), 0,
        "");
    EXPECT_EQ(Described(got)["width"], 120);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST(StreamFiles, WhatFailsIsSaidOfTheStreamAndNothingIsSent) {
    const OwnTemporaries temporaries;
    const TemporaryFolder folder;
    ExpectShell("printf 'no picture' | $K info -", 1, ErrorLine("-", "it is text, not an image"));
    ExpectShell("$K info - < /dev/null", 1, ErrorLine("-", "the file is empty"));
    const ShellResult closed = Shell("$K resize - x.png --scale 50% <&-");
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(closed.out, "kavra: error: standard input cannot be read: Bad file descriptor\n");
    ExpectShell(std::format("printf x | $K convert - - --to png -q 2> '{}' | wc -c", (folder / "said").string()), 0,
                "0\n");
    EXPECT_TRUE(TextOf(folder / "said").starts_with("kavra: -: ")) << TextOf(folder / "said");
}

TEST(StreamFiles, AFullDeviceIsWorthAnotherTry) {
    const OwnTemporaries temporaries;
    ExpectShell(std::format("$K convert '{}' - --to png > /dev/full", Sample("grey.png").string()), 75,
                ErrorLine("-", "cannot be written: No space left on device"));
    ExpectShell(std::format("$K dump '{}' --out - > /dev/full", Sample("grey.png").string()), 75,
                ErrorLine("/dev/stdout", "cannot be written: No space left on device"));
}

TEST(StreamFiles, WhatCannotBeIsRefusedBeforeAnyWork) {
    const std::string noType = "--to is required, as a pipe does not say its file type";
    ExpectWrongUsage({"convert", "x", "-"}, "convert: error: " + noType);
    ExpectWrongUsage({"resize", "x", "-", "--scale", "50%"}, "resize: error: " + noType);
    ExpectWrongUsage({"resize", "x", "y.png", "--scale", "50%", "--to", "png"},
                     "resize: error: --to goes with a stream as the output");
    ExpectWrongUsage({"resize", "x", "-", "--scale", "50%", "--to", "png", "--json"},
                     "resize: error: --json prints where the output is to go");
    ExpectWrongUsage({"convert", "x", "-", "--to", "png", "--json"},
                     "convert: error: --json prints where the output is to go");
    ExpectWrongUsage({"texture", "x", "-", "--report"},
                     "texture: error: --report and --json print where the texture is to go");
    ExpectWrongUsage({"convert", "x", "y", "-", "--to", "png"}, "convert: error: one file alone goes to a stream");
    ExpectShell(std::format("$K convert - '{{stem}}.png' < '{}'", Sample("grey.png").string()), 2,
                "kavra: convert: error: - has no name to make that of its output of\n");
    ExpectShell("$K info - --from - < /dev/null", 1, ErrorLine("-", "standard input is the list of inputs"));
}

TEST(StreamFiles, AnInterruptionLeavesNothingBehind) {
    const OwnTemporaries temporaries;
    // The program waits for more of its input until it is told to stop.
    const ShellResult result = Shell(
        "mkfifo \"$TMPDIR/f\"; (head -c 100000 /dev/zero; exec sleep 20) > \"$TMPDIR/f\" & w=$!; $K info - < "
        "\"$TMPDIR/f\" & p=$!; sleep 1; kill -INT $p; "
        "kill -TERM $p; wait $p; s=$?; kill $w; rm \"$TMPDIR/f\"; exit $s");
    EXPECT_GT(result.status, 128) << result.out;
}
