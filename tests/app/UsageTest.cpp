// Command lines that are wrong, and those that ask how to be right. A wrong one is status 2: one line on standard error
// says what is wanted, nothing is on standard output, and nothing has been done.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <format>
#include <regex>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

const Words kCommands = {"info",   "dump", "convert", "frames", "resize",  "crop", "compose", "sheet",
                         "target", "tile", "light",   "check",  "formats", "help", "batch"};

struct Case {
    Words line;
    std::string said;  ///< after "kavra: "
};

void ExpectAllWrong(const std::vector<Case>& cases) {
    for (const Case& row : cases)
        ExpectWrongUsage(row.line, row.said);
}

}  // namespace

TEST(Usage, HelpOfACommandIsWhatItsHelpOptionPrints) {
    for (const std::string& command : kCommands) {
        const std::string help = ExpectDone({"help", command});
        EXPECT_EQ(help, ExpectDone({command, "--help"})) << command;
        EXPECT_TRUE(help.contains("\nkavra " + command + " [OPTIONS]")) << command;
        EXPECT_TRUE(help.contains("\nExample: kavra " + command + " ") ||
                    help.contains("\nExamples: kavra " + command + " "))
            << help;
    }
}

TEST(Usage, HelpListsAllCommands) {
    const std::string help = ExpectDone({"help"});
    EXPECT_EQ(help, ExpectDone({"--help"}));
    EXPECT_TRUE(help.contains("\nkavra [OPTIONS] COMMAND\n")) << help;
    EXPECT_TRUE(help.contains("\nCOMMANDS:\n")) << help;
    for (const std::string& command : kCommands)
        EXPECT_TRUE(help.contains("\n  " + command + " ")) << command << help;
}

TEST(Usage, HelpHasNoSpacesAtTheEndsOfLinesAndNoEmptyLinesAfterOneAnother) {
    for (const Words& line : {Words{"help"}, {"help", "convert"}, {"sheet", "--help"}}) {
        const std::string help = ExpectDone(line);
        EXPECT_FALSE(help.contains(" \n")) << help;
        EXPECT_FALSE(help.contains("\n\n\n")) << help;
        EXPECT_FALSE(help.starts_with('\n')) << help;
    }
}

TEST(Usage, TheHelpOfConvertSaysWhereTheOutputStands) {
    EXPECT_TRUE(ExpectDone({"help", "convert"}).contains("\nkavra convert [OPTIONS] IN... OUT\n"));
}

TEST(Usage, TheVersionIsThatOfTheProject) {
    const std::string project = TextOf(std::filesystem::path(KAVRA_SOURCE_DIR) / "CMakeLists.txt");
    std::smatch version;
    ASSERT_TRUE(std::regex_search(project, version, std::regex(R"(project\(Kavra VERSION ([0-9.]+))")));
    EXPECT_EQ(ExpectDone({"--version"}), "kavra " + version.str(1) + "\n");
}

TEST(Usage, WithoutACommandTheHelpIsOnStandardError) {
    const std::string help = ExpectDone({"--help"});
    ExpectWrongUsage({}, "error: a command is missing\n\n" + help.substr(0, help.size() - 1));
}

TEST(Usage, OfACommandThatDoesNotExistTheNearestIsNamed) {
    ExpectAllWrong({
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
    ExpectAllWrong({
        {{"info", "x", "--jsn"}, "info: error: there is no option --jsn; did you mean --json?"},
        {{"dump", "x", "--ouf=y"}, "dump: error: there is no option --ouf; did you mean --out?"},
        {{"light", "x", "--everything"}, "light: error: there is no option --everything"},
    });
}

TEST(Usage, AnArgumentTooManyIsNamed) {
    ExpectAllWrong({
        {{"target", "x", "y", "z"}, "target: error: z is one argument too many"},
        {{"dump", "x", "y", "--out", "z"}, "dump: error: y is one argument too many"},
        {{"formats", "x"}, "formats: error: x is one argument too many"},
        {{"help", "info", "dump"}, "help: error: dump is one argument too many"},
    });
}

TEST(Usage, AnOptionOnTheWrongSideOfTheCommandIsSentToTheOther) {
    ExpectAllWrong({
        {{"info", "x", "--plugin", "y"}, "info: error: --plugin goes before the command"},
        {{"--jobs", "3", "info", "x"}, "info: error: --jobs goes after the command"},
        {{"--frame=3", "dump", "x", "--out", "y"}, "dump: error: --frame goes after the command"},
    });
}

TEST(Usage, WhatIsMissingIsNamed) {
    ExpectAllWrong({
        {{"info"}, "info: error: FILE is required"},
        {{"check"}, "check: error: FILE is required"},
        {{"texture", "--inspect"}, "texture: error: FILE is required"},
        {{"dump", "x.png"}, "dump: error: --out is required"},
        {{"dump", "x.png", "--out"}, "dump: error: --out needs a value"},
        {{"convert"}, "convert: error: IN is required"},
        {{"convert", "x.png"}, "convert: error: OUT is required"},
        {{"frames", "x.png"}, "frames: error: PATTERN is required"},
        {{"resize", "x.png", "y.png"}, "resize: error: --size, --fit, --fill or --scale is required"},
        {{"resize", "x.png", "y.png", "--method", "crop"}, "resize: error: --size is required"},
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
    ExpectAllWrong({
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
    ExpectAllWrong({
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
         "resize: error: --filter: other is none of "
         "bilinear|box|catmull-rom|lanczos3|linear|mitchell|nearest|triangle"},
    });
    for (const std::string pattern : {"out.png", "%s.png", "%d-%d.png", "%", "%5.2d.png"})
        ExpectWrongUsage({"frames", "x", pattern}, "frames: error: the pattern needs one number, as in out/%03d.png");
}

TEST(Usage, SizesInProportionAreSaidWithTheirForm) {
    const auto convert = [](const std::string& option, const std::string& value) {
        return Words{"convert", "x", "y", option, value};
    };
    const std::string noPercentage = " is no percentage; write as in 50%";
    const std::string noRange = " is no percentage from 0.0001% to 100000%";
    ExpectAllWrong({
        {convert("--fit", "0x0"), "convert: error: --fit: 0x0 is no box; one of the numbers is 1 or more"},
        {convert("--fit", "12"), "convert: error: --fit: 12 is no size; write WIDTHxHEIGHT, as in 640x480"},
        {convert("--fit", "-1x5"), "convert: error: --fit: -1x5 is too small; each number is 0 or more"},
        {convert("--fill", "10x0"), "convert: error: --fill: 10x0 is too small; each number is 1 or more"},
        {convert("--fill", "0x10"), "convert: error: --fill: 0x10 is too small; each number is 1 or more"},
        {convert("--fill", "4x99999999999"),
         "convert: error: --fill: 4x99999999999 is too large; each number is at most 2147483647"},
    });
    for (const std::string value : {"0%", "-5%", "1e9%", "inf%", "1e999%", "0.00009%", "100001%"})
        ExpectWrongUsage(convert("--scale", value), std::format("convert: error: --scale: {}{}", value, noRange));
    for (const std::string value : {"", "%", "50", "0.5", "50 %", "50%%", "nan%", "half"})
        ExpectWrongUsage(convert("--scale", value), std::format("convert: error: --scale: {}{}", value, noPercentage));
}

TEST(Usage, WaysToSayASizeExcludeOneAnother) {
    const Words size = {"--size", "5x5"}, fit = {"--fit", "5x5"}, fill = {"--fill", "5x5"}, scale = {"--scale", "5%"};
    for (const Words& command : {Words{"convert", "x", "y"},
                                 {"frames", "x", "%d"},
                                 {"dump", "x", "--out", "y"},
                                 {"resize", "x", "y"},
                                 {"crop", "x", "y", "--rect", "0,0,1,1"}}) {
        const std::string error = command.front() + ": error: ";
        ExpectWrongUsage(Joined({command, fit, size}), error + "--size and --fit exclude one another");
        ExpectWrongUsage(Joined({command, size, fill}), error + "--size and --fill exclude one another");
        ExpectWrongUsage(Joined({command, scale, size}), error + "--size and --scale exclude one another");
        ExpectWrongUsage(Joined({command, fill, fit}), error + "--fit and --fill exclude one another");
        ExpectWrongUsage(Joined({command, scale, fill}), error + "--fill and --scale exclude one another");
    }
    for (const Words& command : {Words{"compose", "y", "--size", "5x5", "x@0,0"},
                                 {"target", "x", "y"},
                                 {"tile", "x", "y.png", "--repeat", "2x2"}}) {
        ExpectWrongUsage(Joined({command, scale, fit}),
                         command.front() + ": error: --fit and --scale exclude one another");
    }
}

TEST(Usage, OnlyTheFilterOfResizeKeepsProportions) {
    ExpectAllWrong({
        {{"resize", "x", "y", "--method", "crop", "--fit", "5x5"}, "resize: error: --fit goes with --method filter"},
        {{"resize", "x", "y", "--method", "copy", "--fill", "5x5"}, "resize: error: --fill goes with --method filter"},
        {{"resize", "x", "y", "--method", "crop", "--scale", "5%"}, "resize: error: --scale goes with --method filter"},
    });
}

TEST(Usage, OfAFilterThatDoesNotExistTheNearestIsNamed) {
    const std::string none = " is none of bilinear|box|catmull-rom|lanczos3|linear|mitchell|nearest|triangle";
    for (const auto& [filter, nearest] :
         {std::pair{"lanczos", "lanczos3"}, {"mitchel", "mitchell"}, {"catmulrom", "catmull-rom"}, {"boxx", "box"}}) {
        ExpectWrongUsage({"dump", "x", "--out", "y", "--filter", filter},
                         "dump: error: --filter: " + std::string(filter) + none + "; did you mean " + nearest + "?");
    }
    ExpectWrongUsage({"sheet", "y", "x", "--filter", "gaussian"}, "sheet: error: --filter: gaussian" + none);
}

TEST(Usage, AmountsAreNumbersOf64BitsWithAUnitOfOneLetter) {
    for (const std::string option : {"--max-bytes", "--max-pixels"}) {
        for (const std::string amount :
             {"", "0", "-1", "K", "1KB", "1.5G", "1 G", "1T", "99999999999999999999", "18446744074G"}) {
            ExpectWrongUsage(
                {"convert", "x", "y", option, amount},
                std::format("convert: error: {}: {} is no amount; write a number, as in 500M or 4G", option, amount));
        }
    }
    ExpectWrongUsage({"info", "x", "--max-bytes", "1"}, "info: error: there is no option --max-bytes");
}

TEST(Usage, ConvertNeedsAFileTypeForAFolderAndForNothingElse) {
    const TemporaryFolder folder;
    const std::string out = folder.Path();
    ExpectAllWrong({
        {{"convert", "a.tga", "b.png", out}, "convert: error: --to is required when the output is a folder"},
        {{"convert", "a.tga", out}, "convert: error: --to is required when the output is a folder"},
        {{"convert", "a.tga", "b.png", "--to", "png"}, "convert: error: --to goes with an output folder"},
        {{"convert", "a.tga", out, "--to", "../png"}, "convert: error: --to takes an extension, such as png"},
    });
}

TEST(Usage, TwoInputsThatWouldMakeOneFileAreNamedBeforeAnyWork) {
    const TemporaryFolder folder;
    const std::string out = folder.Path();
    ExpectAllWrong({
        {{"convert", "a/x.tga", "b/x.jpg", out, "--to", "png"},
         "convert: error: a/x.tga and b/x.jpg would both become " + out + "/x.png"},
        {{"light", "a/map.hdr", "b/map.exr", "--plot", out},
         "light: error: a/map.hdr and b/map.exr would both become " + out + "/map.png"},
        {{"light", "map.hdr", "map.hdr", "--plot", out},
         "light: error: map.hdr and map.hdr would both become " + out + "/map.png"},
    });
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}

TEST(Usage, TileNamesTheFileTypesThatAreWrittenLineByLine) {
    for (const std::string name : {"out.gif", "out.jp2", "out.webp", "out.dds", "out.hdr", "out"}) {
        ExpectWrongUsage(
            {"tile", "in.png", name, "--repeat", "2x2"},
            "tile: error: " + name + " cannot be written line by line; tif, png, jpg, bmp, tga, sgi and exr can");
    }
}

TEST(Usage, FilesMayHaveTheNamesOfCommands) {
    const TemporaryFolder folder;
    const auto file = folder / "tile";
    std::filesystem::copy(Sample("grey.png"), file);
    EXPECT_EQ(ExpectFailed({"info", file, "tile", "formats"},
                           ErrorLine("tile", "there is no such file") + ErrorLine("formats", "there is no such file")),
              file.string() + ": 480 x 320, kL8, 2-D, frames 1, as displayed (0), gamma 2.2\n");
}
