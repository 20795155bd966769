// Files that the command has decoded by a confined process.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// The processes that a command which does its work begins: each leaves what its loader counted in a file of its own.
int ProcessesOf(const Words& command) {
    const TemporaryFolder folder;
    setenv("LD_DEBUG", "statistics", 1);
    setenv("LD_DEBUG_OUTPUT", (folder / "loader").c_str(), 1);
    const int status = RunKavra(command).status;
    unsetenv("LD_DEBUG");
    unsetenv("LD_DEBUG_OUTPUT");
    EXPECT_EQ(status, 0) << command.front();
    return static_cast<int>(NamesIn(folder.Path()).size());
}

}  // namespace

TEST(IsolationOption, GivesTheSameFilesAsWithoutIt) {
    const TemporaryFolder folder;
    for (const char* const sample : {"photo.jpg", "cutout.png", "cube-mips.dds", "photo.pcx", "sunset.exr"}) {
        const auto plain = RunKavra({"convert", Sample(sample), folder / "plain.png"});
        const auto isolated = RunKavra({"convert", Sample(sample), folder / "isolated.png", "--isolated"});
        EXPECT_EQ(plain.status, 0) << sample;
        EXPECT_EQ(isolated.status, 0) << sample;
        EXPECT_EQ(isolated.error, plain.error) << sample;
        EXPECT_EQ(ReadAll(folder / "isolated.png"), ReadAll(folder / "plain.png")) << sample;
    }
}

TEST(IsolationOption, EveryCommandThatReadsTakesIt) {
    const TemporaryFolder folder;
    const std::string in = Sample("photo.jpg");
    const std::vector<Words> commands = {{"info", in},
                                         {"dump", in, "--out", folder / "block"},
                                         {"convert", in, folder / "out.png"},
                                         {"resize", in, folder / "out.png", "--size", "5x5"},
                                         {"crop", in, folder / "out.png", "--rect", "0,0,2,2"},
                                         {"sheet", folder / "sheet.png", in},
                                         {"tile", in, folder / "out.png", "--repeat", "2x2"}};
    for (const Words& command : commands)
        ExpectDone(Joined({command, {"--isolated", "--timeout", "50", "--memory", "2G"}}));
}

TEST(IsolationOption, CommandsForManyFilesIsolateUnlessToldOtherwise) {
    const TemporaryFolder folder;
    const std::string in = Sample("photo.jpg"), list = folder.Write("list", in + "\n");
    const std::string pattern = folder / "{stem}.png", refusal = "memory";  // that a decoder alone is denied
    const std::vector<Words> commands = {{"check", in},
                                         {"sheet", folder / "sheet.png", in},
                                         {"batch", "--from", list, "--do", "convert", "--out", pattern}};
    for (const Words& command : commands) {
        const auto bounded = RunKavra(Joined({command, {"--memory", "4K"}}));
        EXPECT_EQ(bounded.status, 1) << command.front();
        EXPECT_NE(bounded.error.find(refusal), std::string::npos) << bounded.error;
        EXPECT_GT(ProcessesOf(command), 1) << command.front();
        EXPECT_EQ(ProcessesOf(Joined({command, {"--in-process"}})), 1) << command.front();
        for (const Words& confined : {Words{"--isolated"}, Words{"--memory", "1G"}, Words{"--timeout", "9"}})
            EXPECT_EQ(RunKavra(Joined({command, {"--in-process"}, confined})).status, 2) << command.front();
    }
}

TEST(IsolationOption, ABoundAsksForAProcessThatCanBeBound) {
    const TemporaryFolder folder;
    const Words command = {"convert", Sample("photo.jpg"), folder / "out.png"};
    EXPECT_EQ(ProcessesOf(command), 1);
    EXPECT_GT(ProcessesOf(Joined({command, {"--timeout", "50"}})), 1);
    EXPECT_GT(ProcessesOf(Joined({command, {"--memory", "2G"}})), 1);
}

TEST(IsolationOption, MemoryBoundsTheDecoder) {
    const TemporaryFolder folder;
    const std::string in = Sample("photo.jpg");  // a block of 600 KiB
    EXPECT_EQ(RunKavra({"convert", in, folder / "out.png", "--isolated", "--memory", "300K"}).status, 1);
    EXPECT_EQ(RunKavra({"convert", in, folder / "out.png", "--isolated", "--memory", "300M"}).status, 0);
}

TEST(IsolationOption, BoundsThatAreNoneAreWrongUsage) {
    const TemporaryFolder folder;
    const Words command = {"convert", Sample("photo.jpg"), folder / "out.png", "--isolated"};
    for (const Words& wrong : {Words{"--timeout", "0"}, Words{"--timeout", "x"}, Words{"--memory", "0"}})
        EXPECT_EQ(RunKavra(Joined({command, wrong})).status, 2);
}
