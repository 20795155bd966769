// The bar of work on one file, and an interruption in the middle of it.

#include "app/Answers.h"
#include "support/Sanitized.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

using namespace Kavra::Tests;

namespace {

/// A terminal: what is written to it, once nobody writes any more.
class Terminal {
public:
    Terminal() : mMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(grantpt(mMaster), 0);
        EXPECT_EQ(unlockpt(mMaster), 0);
        mReader = std::thread([this] { Read(); });
    }
    ~Terminal() {
        if (mReader.joinable()) Text();
        close(mMaster);
    }
    std::filesystem::path Path() const { return ptsname(mMaster); }
    std::string Text() {
        mIsDone = true;
        mReader.join();
        return mText;
    }

private:
    void Read() {
        for (;;) {
            pollfd event{mMaster, POLLIN, 0};
            const bool wasDone = mIsDone;
            if (poll(&event, 1, 20) > 0 && (event.revents & POLLIN) != 0) {
                char bytes[4096];
                const auto count = read(mMaster, bytes, sizeof bytes);
                if (count > 0) mText.append(bytes, static_cast<std::size_t>(count));
            } else if (wasDone) {
                return;
            }
        }
    }

    int mMaster;
    std::atomic<bool> mIsDone = false;
    std::string mText;
    std::thread mReader;
};

/// The side of a picture that takes seconds to be compressed well. Sanitized programs take as many for far less.
constexpr int kLongSide = kIsSanitized ? 300 : 1500;

/// Noise, which compresses slowest.
std::filesystem::path LargePicture(const TemporaryFolder& folder, int side) {
    std::string ppm = "P6\n" + std::to_string(side) + " " + std::to_string(side) + "\n255\n";
    std::uint32_t state = 1;
    for (int i = 0; i < 3 * side * side; ++i) {
        state = state * 1664525U + 1013904223U;
        ppm += static_cast<char>(state >> 24);
    }
    return folder.Write("large.ppm", ppm);
}

}  // namespace

TEST(StageBar, ShowsTheStageOfLongWorkOnOneFileAndGoesAgain) {
    const TemporaryFolder folder;
    const auto in = LargePicture(folder, kLongSide);
    Terminal terminal;
    const ProgramResult result = RunKavra({"texture", in, folder / "out.dds", "--format", "bc7"}, {}, terminal.Path());
    EXPECT_EQ(result.status, 0);
    const std::string text = terminal.Text();
    EXPECT_NE(text.find("] compressing"), std::string::npos) << text;
    EXPECT_NE(text.find("[#"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\r\x1b[K")) << text;
}

TEST(StageBar, IsNotDrawnForShortWorkNorWhereOnlyErrorsArePrintedNorIntoAFile) {
    const TemporaryFolder folder;
    const auto small = LargePicture(folder, 8);
    {
        Terminal terminal;
        EXPECT_EQ(RunKavra({"convert", small, folder / "out.png"}, {}, terminal.Path()).status, 0);
        EXPECT_EQ(terminal.Text(), "");
    }
    const auto large = LargePicture(folder, kLongSide);
    const std::vector<std::string> command = {"texture", large, folder / "out.dds", "--format", "bc7"};
    const ProgramResult result = RunKavra(command);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error.find('\r'), std::string::npos) << result.error;
    std::vector<std::string> quiet = command;
    quiet.emplace_back("--quiet");
    Terminal terminal;
    EXPECT_EQ(RunKavra(quiet, {}, terminal.Path()).status, 0);
    EXPECT_EQ(terminal.Text(), "");
}

TEST(StageBar, AnInterruptionInTheMiddleOfOneLargeFileEndsItAtOnceAndLeavesNothing) {
    const TemporaryFolder folder;
    const auto in = LargePicture(folder, 3000);
    for (const int milliseconds : {300, 900}) {  // before there is a bar, and with it
        Terminal terminal;
        RunningKavra program({"texture", in, folder / "out.dds", "--format", "bc7", "--quality", "best"}, {},
                             terminal.Path());
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        program.Signal(SIGINT);
        EXPECT_EQ(program.Wait().status, 128 + SIGINT);
        const std::string text = terminal.Text();
        EXPECT_EQ(text.find(std::string(20, '#')), std::string::npos) << "not half of it is done: " << text;
        EXPECT_EQ(NamesIn(folder.Path()), Words{"large.ppm"});
    }
}
