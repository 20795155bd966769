// Standard output that is lost: what a user asked to see and does not get is an error, not a success.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

constexpr int kPipeBytes = 4096;

/// `info` of so many files that what it says does not fit into a pipe.
Words LongInfo() {
    return Joined({{"info", "--jobs", "2"}, Words(60, Sample("grey.png"))});
}

}  // namespace

TEST(StandardOutput, WhatAFullDeviceLosesIsAnError) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo.jpg");
    const std::string map = Sample("studio.hdr");
    const std::vector<Words> commands = {
        {"info", photo},
        {"info", photo, "--json"},
        {"formats"},
        {"formats", "--json"},
        {"light", map},
        {"light", map, map},
        {"light", map, "--json"},
        {"dump", photo, "--out", folder / "block"},
        {"dump", photo, "--out", folder / "block", "--json"},
        {"--help"},
        {"convert", "--help"},
        {"help"},
        {"help", "convert"},
        {"--version"},
    };
    for (const Words& command : commands) {
        const ProgramResult result = RunKavra(command, "/dev/full");
        EXPECT_EQ(result.status, 75) << testing::PrintToString(command);
        EXPECT_EQ(result.error, "kavra: error: standard output cannot be written: No space left on device\n")
            << testing::PrintToString(command);
    }
}

TEST(StandardOutput, CommandsThatPrintNothingDoNotMissIt) {
    const TemporaryFolder folder;
    EXPECT_EQ(RunKavra({"convert", Sample("photo.tga"), folder / "out.png"}, "/dev/full").status, 0);
}

TEST(StandardOutput, APipeThatNobodyReadsEndsTheProgramAsItEndsOthers) {
    const TemporaryFolder folder;
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    ASSERT_EQ(fcntl(reader, F_SETPIPE_SZ, kPipeBytes), kPipeBytes);
    RunningKavra program(LongInfo(), pipe);
    std::string some(16, '\0');
    while (read(reader, some.data(), some.size()) <= 0)
        usleep(1000);
    close(reader);
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.status, 128 + SIGPIPE);
    EXPECT_EQ(result.error, "");
}
