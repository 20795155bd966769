// Command lines that are wrong, and those that ask how to be right. A wrong one is status 2: one line on standard error
// says what is wanted, nothing is on standard output, and nothing has been done.

#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

using Words = std::vector<std::string>;

const std::vector<std::string> kCommands = {"info",  "dump",   "convert", "frames", "resize",  "crop", "compose",
                                            "sheet", "target", "tile",    "light",  "formats", "help"};

struct Case {
    Words line;
    std::string error;  ///< after "kavra: "
};

void ExpectWrong(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        const ProgramResult result = RunKavra(row.line);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(row.line);
        EXPECT_EQ(result.out, "") << testing::PrintToString(row.line);
        EXPECT_EQ(result.error, "kavra: " + row.error + "\n") << testing::PrintToString(row.line);
    }
}

}  // namespace

TEST(Usage, HelpOfACommandIsWhatItsHelpOptionPrints) {
    for (const std::string& command : kCommands) {
        const ProgramResult result = RunKavra({"help", command});
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_EQ(result.error, "") << command;
        EXPECT_EQ(result.out, RunKavra({command, "--help"}).out) << command;
        EXPECT_TRUE(result.out.contains("Example")) << command;
        EXPECT_TRUE(result.out.contains("kavra " + command)) << command;
        EXPECT_FALSE(result.out.contains("\nkavra " + command + " *")) << "examples stand below each other";
    }
}

TEST(Usage, HelpListsAllCommands) {
    const ProgramResult result = RunKavra({"help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, RunKavra({"--help"}).out);
    for (const std::string& command : kCommands)
        EXPECT_TRUE(result.out.contains("\n  " + command + " ")) << command << result.out;
}

TEST(Usage, TheVersionIsThatOfTheProject) {
    const ProgramResult result = RunKavra({"--version"});
    EXPECT_EQ(result.status, 0);
    const std::vector<unsigned char> bytes = ReadAll(std::filesystem::path(KAVRA_SOURCE_DIR) / "CMakeLists.txt");
    const std::string project(bytes.begin(), bytes.end());
    std::smatch version;
    ASSERT_TRUE(std::regex_search(project, version, std::regex(R"(project\(Kavra VERSION ([0-9.]+))")));
    EXPECT_EQ(result.out, "kavra " + version.str(1) + "\n");
    EXPECT_EQ(result.error, "");
}

TEST(Usage, WithoutACommandTheHelpIsOnStandardError) {
    const ProgramResult result = RunKavra({});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.error, "kavra: error: a command is missing\n\n" + RunKavra({"--help"}).out);
}

TEST(Usage, OfACommandThatDoesNotExistTheNearestIsNamed) {
    ExpectWrong({
        {{"inof"}, "inof: error: there is no such command; did you mean info?"},
        {{"covert", "a", "b"}, "covert: error: there is no such command; did you mean convert?"},
        {{"shet", "--json"}, "shet: error: there is no such command; did you mean sheet?"},
        {{"thumbnails"}, "thumbnails: error: there is no such command; kavra help lists them"},
        {{"x"}, "x: error: there is no such command; kavra help lists them"},
        {{"help", "tlie"}, "help: error: there is no command tlie; did you mean tile?"},
        {{"help", "everything"}, "help: error: there is no command everything"},
        {{"--verison"}, "error: there is no option --verison; did you mean --version?"},
    });
}

TEST(Usage, OfAnOptionThatDoesNotExistTheNearestIsNamed) {
    ExpectWrong({
        {{"info", "x", "--jsn"}, "info: error: there is no option --jsn; did you mean --json?"},
        {{"dump", "x", "--ouf=y"}, "dump: error: there is no option --ouf; did you mean --out?"},
        {{"light", "x", "--everything"}, "light: error: there is no option --everything"},
        {{"target", "x", "y", "z"}, "target: error: z is one argument too many"},
    });
}

TEST(Usage, AnOptionOnTheWrongSideOfTheCommandIsSentToTheOther) {
    ExpectWrong({
        {{"info", "x", "--plugin", "y"}, "info: error: --plugin goes before the command"},
        {{"--jobs", "3", "info", "x"}, "info: error: --jobs goes after the command"},
        {{"--frame=3", "dump", "x", "--out", "y"}, "dump: error: --frame goes after the command"},
    });
}

TEST(Usage, WhatIsMissingIsNamed) {
    ExpectWrong({
        {{"info"}, "info: error: FILE is required"},
        {{"dump", "x.png"}, "dump: error: --out is required"},
        {{"dump", "x.png", "--out"}, "dump: error: --out needs a value"},
        {{"convert"}, "convert: error: IN is required"},
        {{"convert", "x.png"}, "convert: error: OUT is required"},
        {{"frames", "x.png"}, "frames: error: PATTERN is required"},
        {{"resize", "x.png", "y.png"}, "resize: error: --size is required"},
        {{"crop", "x.png", "y.png"}, "crop: error: --rect is required"},
        {{"compose", "y.png", "x.png@0,0"}, "compose: error: --size is required"},
        {{"compose", "y.png", "--size", "5x5"}, "compose: error: FILES is required"},
        {{"sheet", "y.png"}, "sheet: error: FILE is required"},
        {{"target", "x.png"}, "target: error: OUT is required"},
        {{"tile", "x.png", "y.png"}, "tile: error: --repeat is required"},
        {{"light"}, "light: error: FILE is required"},
    });
}

TEST(Usage, WholeNumbersAreSaidWithTheirRange) {
    ExpectWrong({
        {{"info", "x", "--jobs", "0"}, "info: error: --jobs: 0 is no whole number, 1 or more"},
        {{"light", "x", "--jobs", "many"}, "light: error: --jobs: many is no whole number, 1 or more"},
        {{"dump", "x", "--out", "y", "--frame", "-3"}, "dump: error: --frame: -3 is no whole number, 0 or more"},
        {{"crop", "x", "y", "--rect", "0,0,1,1", "--frame", "1.5"},
         "crop: error: --frame: 1.5 is no whole number, 0 or more"},
        {{"dump", "x", "--out", "y", "--frame", "99999999999"},
         "dump: error: --frame: 99999999999 is no whole number, 0 or more"},
        {{"dump", "x", "--out", "y", "--orientation", "8"},
         "dump: error: --orientation: 8 is no whole number from 0 to 7"},
        {{"sheet", "y", "x", "--columns", "0"}, "sheet: error: --columns: 0 is no whole number, 1 or more"},
        {{"light", "x", "--lights", "-1"}, "light: error: --lights: -1 is no whole number from 0 to 20000"},
        {{"light", "x", "--lights", "20001"}, "light: error: --lights: 20001 is no whole number from 0 to 20000"},
    });
}

TEST(Usage, SizesPlacesAndWordsAreSaidWithTheirForm) {
    const std::string sizeForm = " is no size; write WIDTHxHEIGHT, as in 640x480";
    const std::string rectForm = " is no rectangle; write X,Y,WIDTH,HEIGHT, as in 10,20,640,480";
    const std::string pieceForm = " is no file with its place; write as in photo.jpg@10,20";
    const std::string tooLarge = " is too large; each number is at most 2147483647";
    const auto resize = [](const std::string& size) { return Words{"resize", "x", "y", "--size", size}; };
    const auto crop = [](const std::string& rect) { return Words{"crop", "x", "y", "--rect", rect}; };
    const auto compose = [](const std::string& piece) { return Words{"compose", "y", "--size", "5x5", piece}; };
    const auto tile = [](const std::string& option, const std::string& value) {
        Words words = {"tile", "x.png", "y.png", "--repeat", "2x2"};
        if (option == "--repeat") words.resize(3);
        words.insert(words.end(), {option, value});
        return words;
    };
    ExpectWrong({
        {resize("12"), "resize: error: --size: 12" + sizeForm},
        {resize("5x5x5"), "resize: error: --size: 5x5x5" + sizeForm},
        {resize("0x5"), "resize: error: --size: 0x5 is too small; each number is 1 or more"},
        {resize("99999999999x4"), "resize: error: --size: 99999999999x4" + tooLarge},
        {resize("4x99999999999999999999"), "resize: error: --size: 4x99999999999999999999" + tooLarge},
        {{"dump", "x", "--out", "y", "--size", "-1x5"},
         "dump: error: --size: -1x5 is too small; each number is 0 or more"},
        {{"compose", "y", "--size", "0x5", "x@1,2"},
         "compose: error: --size: 0x5 is too small; each number is 1 or more"},
        {{"sheet", "y", "x", "--cell", "0x5"}, "sheet: error: --cell: 0x5 is too small; each number is 1 or more"},
        {crop("1,2,3"), "crop: error: --rect: 1,2,3" + rectForm},
        {crop("1,2,3,4,5"), "crop: error: --rect: 1,2,3,4,5" + rectForm},
        {crop("1,2,0,5"), "crop: error: --rect: 1,2,0,5 is too small; width and height are 1 or more"},
        {crop("1,2,3,99999999999"), "crop: error: --rect: 1,2,3,99999999999" + tooLarge},
        {compose("x.png"), "compose: error: FILES: x.png" + pieceForm},
        {compose("x.png@1"), "compose: error: FILES: x.png@1" + pieceForm},
        {compose("x.png@1,2,3"), "compose: error: FILES: x.png@1,2,3" + pieceForm},
        {compose("@1,2"), "compose: error: FILES: @1,2" + pieceForm},
        {tile("--repeat", "0x2"), "tile: error: --repeat: 0x2 is too small; each number is 1 or more"},
        {tile("--repeat", "7"), "tile: error: --repeat: 7 is no number of copies; write ACROSSxDOWN, as in 4x3"},
        {tile("--dpi", "0"), "tile: error: --dpi: 0 is no number above 0 and up to 1000000"},
        {tile("--dpi", "nan"), "tile: error: --dpi: nan is no number above 0 and up to 1000000"},
        {tile("--dpi", "1e300"), "tile: error: --dpi: 1e300 is no number above 0 and up to 1000000"},
        {{"dump", "x", "--out", "y", "--format", "rgb7"},
         "dump: error: --format: rgb7 is no pixel format; see kavra formats"},
        {{"resize", "x", "y", "--size", "5x5", "--method", "other"},
         "resize: error: --method: other is none of copy|crop|filter"},
        {{"resize", "x", "y", "--size", "5x5", "--filter", "other"},
         "resize: error: --filter: other is none of linear|mitchell|nearest"},
        {{"frames", "x", "out.png"}, "frames: error: the pattern needs one number, as in out/%03d.png"},
    });
}

TEST(Usage, FilesMayHaveTheNamesOfCommands) {
    const TemporaryFolder folder;
    const auto file = folder / "tile";
    std::filesystem::copy(Sample("grey.png"), file);
    const ProgramResult result = RunKavra({"info", file, "tile", "formats"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: tile: error: cannot be read\nkavra: formats: error: cannot be read\n");
    EXPECT_TRUE(result.out.starts_with(file.string() + ": 480 x 320"));
}
