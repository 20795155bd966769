// Bounds on a picture that the user sets.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// A command line with a picture in it, for each command that loads pictures.
std::vector<Words> LoadingCommands(const TemporaryFolder& folder) {
    const std::string in = Sample("photo.jpg");
    return {{"dump", in, "--out", folder / "block"},
            {"convert", in, folder / "out.png"},
            {"frames", in, folder / "%d.png"},
            {"resize", in, folder / "out.png", "--size", "5x5"},
            {"crop", in, folder / "out.png", "--rect", "0,0,2,2"},
            {"compose", folder / "out.png", "--size", "9x9", in + "@0,0"},
            {"sheet", folder / "out.png", in},
            {"target", in, folder / "out.png"},
            {"tile", in, folder / "out.png", "--repeat", "2x2"},
            {"light", in}};
}

/// The message of the handler, and one line that names the limit and the option.
void ExpectBeyond(const std::string& option, const Words& line, const std::filesystem::path& file) {
    const ProgramResult result = RunKavra(line);
    EXPECT_EQ(result.status, 1) << result.error;
    const std::string start = WarningLine(file, "format is not supported") + ErrorLine(file, "too large: the picture ");
    EXPECT_TRUE(result.error.starts_with(start.substr(0, start.size() - 1))) << result.error;
    EXPECT_TRUE(result.error.ends_with("; " + option + " raises it\n")) << result.error;
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 2) << result.error;
}

}  // namespace

TEST(LimitOptions, EveryCommandThatLoadsTakesThem) {
    const TemporaryFolder folder;
    for (const Words& command : LoadingCommands(folder)) {
        for (const std::string option : {"--max-bytes", "--max-pixels"}) {
            ExpectBeyond(option, Joined({command, {option, "1"}}), Sample("photo.jpg"));
        }
    }
}

TEST(LimitOptions, UnitsOfBytesCountIn1024sAndThoseOfPixelsInThousands) {
    // A picture of 1,000 x 1,000 pixels, 4,000,000 bytes: 3,906.25 x 1024, 3.8 x 1024 squared.
    const TemporaryFolder folder;
    const auto file = WritePicture(folder / "in.png", 1000, 1000, [](int, int) { return Colour{1, 2, 3}; });
    const auto line = [&](const std::string& option, const std::string& amount) {
        return Words{"dump", file, "--out", folder / "block", option, amount};
    };
    for (const std::string amount : {"4000000", "3907K", "3907k", "4M", "4m", "1G", "1g"})
        ExpectDone(line("--max-bytes", amount));
    for (const std::string amount : {"3999999", "3906K", "3M"})
        ExpectBeyond("--max-bytes", line("--max-bytes", amount), file);
    for (const std::string amount : {"1000000", "1000K", "1M", "1G"})
        ExpectDone(line("--max-pixels", amount));
    for (const std::string amount : {"999999", "999K"})
        ExpectBeyond("--max-pixels", line("--max-pixels", amount), file);
}

TEST(LimitOptions, AGivenLimitTakesThePlaceOfTheOneThatReadersHave) {
    const TemporaryFolder folder;
    std::string drawing(2048, ' ');
    drawing.replace(0, 9, "srcdocid:").replace(768, 8, "rtype: 1").replace(1024, 22, "rpelcnt: 001000,000250");
    const auto path = folder.Write("page.cal", drawing);  // a block of a million bytes
    const auto line = [&](const std::string& option, const std::string& amount) {
        return Words{"dump", path, "--out", folder / "block", "--accept-partial", option, amount};
    };
    EXPECT_EQ(RunKavra(line("--max-bytes", "1000000")).status, 0);
    EXPECT_EQ(RunKavra(line("--max-bytes", "999999")).status, 1);
    EXPECT_EQ(RunKavra(line("--max-pixels", "250K")).status, 0);
    EXPECT_EQ(RunKavra(line("--max-pixels", "249K")).status, 1);
}
