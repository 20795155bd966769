#include "app/PictureFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// A command line with a picture in it, for each command that loads pictures.
std::vector<std::vector<std::string>> LoadingCommands(const TemporaryFolder& folder) {
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

}  // namespace

TEST(LimitOptions, EveryCommandThatLoadsTakesThem) {
    const TemporaryFolder folder;
    for (const std::vector<std::string>& command : LoadingCommands(folder)) {
        for (const std::string option : {"--max-bytes", "--max-pixels"}) {
            std::vector<std::string> bounded = command;
            bounded.insert(bounded.end(), {option, "1"});
            const ProgramResult refused = RunKavra(bounded);
            EXPECT_EQ(refused.status, 1) << command[0] << " " << option;
            EXPECT_NE(refused.error.find("format is not supported"), std::string::npos) << refused.error;
        }
    }
    EXPECT_EQ(RunKavra({"info", Sample("photo.jpg"), "--max-bytes", "1"}).status, 2);
}

TEST(LimitOptions, AmountsHaveUnits) {
    const TemporaryFolder folder;
    const auto status = [&](const std::string& option, const std::string& amount) {
        return RunKavra({"convert", Sample("photo.jpg"), folder / "out.png", option, amount}).status;
    };
    for (const std::string amount : {"1G", "1g", "900000000", "100M", "99999K"})
        EXPECT_EQ(status("--max-bytes", amount), 0) << amount;
    EXPECT_EQ(status("--max-pixels", "1K"), 1);
    EXPECT_EQ(status("--max-pixels", "10M"), 0);
    for (const std::string amount :
         {"", "0", "-1", "K", "1KB", "1.5G", "1 G", "1T", "99999999999999999999", "18446744074G"})
        EXPECT_EQ(status("--max-bytes", amount), 2) << amount;
    const ProgramResult wrong = RunKavra({"convert", Sample("photo.jpg"), folder / "out.png", "--max-bytes", "5x"});
    EXPECT_NE(wrong.error.find("--max-bytes: 5x is no amount; write a number, as in 500M or 4G\n"), std::string::npos);
}

TEST(LimitOptions, AGivenLimitTakesThePlaceOfTheOneThatReadersHave) {
    const TemporaryFolder folder;
    std::string drawing(2048, ' ');
    drawing.replace(0, 9, "srcdocid:").replace(768, 8, "rtype: 1").replace(1024, 22, "rpelcnt: 001000,000250");
    const auto path = folder.Write("page.cal", drawing);  // a block of a million bytes
    const auto status = [&](const std::string& option, const std::string& amount) {
        return RunKavra({"dump", path, "--out", folder / "block", option, amount}).status;
    };
    EXPECT_EQ(status("--max-bytes", "1000000"), 0);
    EXPECT_EQ(status("--max-bytes", "999999"), 1);
    EXPECT_EQ(status("--max-bytes", "976K"), 1) << "999,424";
    EXPECT_EQ(status("--max-bytes", "977K"), 0);
    EXPECT_EQ(status("--max-pixels", "250K"), 0) << "250,000";
    EXPECT_EQ(status("--max-pixels", "249K"), 1);
}
