// What lies in a folder while a command writes into it, and what an interruption leaves there.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <format>
#include <random>
#include <set>
#include <string>
#include <thread>

using namespace Kavra::Tests;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

/// The first entry whose name begins with a dot, waited for; empty when there is none for ten seconds.
std::filesystem::path HiddenEntry(const std::filesystem::path& folder) {
    for (const auto end = Clock::now() + 10s; Clock::now() < end; std::this_thread::sleep_for(1ms)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().filename().string().starts_with('.')) return entry.path();
        }
    }
    return {};
}

/// No file that is written may be larger, as on a disk that is full.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit{bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &mBefore); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit mBefore{};
};

/// 20 MB of DDS that read and write fast.
std::filesystem::path LargePicture(const TemporaryFolder& folder) {
    std::string ppm = "P6\n2500 2000\n255\n";
    ppm.resize(ppm.size() + 2500 * 2000 * 3, '\x55');
    return folder.Write("large.ppm", ppm);
}

}  // namespace

TEST(OutputFiles, AnInterruptedDdsWriteLeavesNothingWhereverItIs) {
    const TemporaryFolder folder;
    const Words command = {"convert", LargePicture(folder), folder / "out.dds"};
    const auto start = Clock::now();
    ExpectDone(command);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    const auto size = std::filesystem::file_size(folder / "out.dds");

    std::mt19937 random(1);
    int interrupted = 0;
    for (int i = 0; i < 20; ++i) {
        std::filesystem::remove(folder / "out.dds");
        RunningKavra program(command);
        std::this_thread::sleep_for(whole * std::uniform_real_distribution(0.3, 1.0)(random));
        program.Signal(SIGINT);
        const ProgramResult result = program.Wait();
        Words names = NamesIn(folder.Path());
        if (std::erase(names, "out.dds") > 0) {  // it was faster than the signal
            EXPECT_EQ(std::filesystem::file_size(folder / "out.dds"), size);
        } else {
            ++interrupted;
            EXPECT_EQ(result.status, 128 + SIGINT);
        }
        EXPECT_EQ(names, Words{"large.ppm"}) << i;
    }
    EXPECT_GT(interrupted, 0);
}

TEST(OutputFiles, TheUnfinishedFileIsWhereNobodyElseCanTouchIt) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 100, 100, PlaceColour);
    std::set<std::string> names;
    for (int i = 0; i < 2; ++i) {
        RunningKavra program({"tile", in, folder / "out.tif", "--repeat", "300x3000"});
        std::filesystem::path hidden;
        struct stat status{};
        do {
            hidden = HiddenEntry(folder.Path());  // a first one only tries whether the folder can be written to
        } while (!hidden.empty() && lstat(hidden.c_str(), &status) != 0);
        ASSERT_FALSE(hidden.empty());
        EXPECT_TRUE(S_ISDIR(status.st_mode));
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
        names.insert(hidden.filename());
        program.Signal(SIGINT);
        program.Wait();
    }
    EXPECT_EQ(names.size(), 2U) << "the names cannot be known beforehand";
}

TEST(OutputFiles, PlantedLinksAreNotWrittenThrough) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 4, 4, PlaceColour);
    const auto victim = folder.Write("victim", "mine");
    // Names that are made of the process number alone can be guessed.
    for (int process = getpid(); process < getpid() + 500; ++process) {
        for (const std::string end : {"0.png", "0.dds", "0.tmp"})
            std::filesystem::create_symlink(victim, folder / std::format(".kavra-{}-{}", process, end));
    }
    for (const std::string name : {"out.png", "out.dds"}) {
        ExpectDone({"convert", in, folder / name});
        EXPECT_FALSE(std::filesystem::is_symlink(folder / name));
    }
    EXPECT_EQ(TextOf(victim), "mine");
}

TEST(OutputFiles, AWriteThatFindsNoRoomSaysWhy) {
    const TemporaryFolder folder;
    // Noise, which no file type makes small.
    std::mt19937 random(1);
    const auto in = WritePicture(folder / "in.tga", 200, 200, [&](int, int) {
        const auto value = [&] { return static_cast<int>(random() % 256); };
        return Colour{value(), value(), value()};
    });
    const std::vector<Words> commands = {
        {"convert", in, folder / "out.png"},
        {"convert", in, folder / "out.dds"},
        {"frames", in, folder / "%d.tif"},
        {"resize", in, folder / "out.jp2", "--size", "300x300"},
        {"crop", in, folder / "out.exr", "--rect", "0,0,100,100"},
        {"compose", folder / "out.bmp", "--size", "300x300", in.string() + "@0,0"},
        {"sheet", folder / "out.tga", in, "--cell", "400x400"},
        {"target", in, folder / "out.png"},
        {"target", in, folder / "out.dds"},
        {"tile", in, folder / "out.sgi", "--repeat", "3x3"},
        {"dump", in, "--out", folder / "block"},
        {"light", in, "--plot", folder / "plot.png"},
    };
    for (const Words& command : commands) {
        const FileSizeLimit limit(20'000);
        const ProgramResult result = RunKavra(command);
        EXPECT_EQ(result.status, 1) << testing::PrintToString(command);
        EXPECT_TRUE(result.error.ends_with(": error: cannot be written: File too large\n"))
            << testing::PrintToString(command) << result.error;
        EXPECT_EQ(NamesIn(folder.Path()), Words{"in.tga"});
    }
}

TEST(OutputFiles, ADdsFileThatWouldNotFitSaysWhyThoughItsWriterHasRemovedIt) {
    const TemporaryFolder folder;
    const auto in = LargePicture(folder);
    const FileSizeLimit limit(5'000'000);
    for (const std::string command : {"convert", "target"}) {
        const ProgramResult result = RunKavra({command, in, folder / "out.dds"});
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.error.ends_with(ErrorLine(folder / "out.dds", "cannot be written: File too large")))
            << result.error;
        EXPECT_EQ(NamesIn(folder.Path()), Words{"large.ppm"});
    }
}

TEST(OutputFiles, TheyGetTheRightsThatTheUserGivesToNewFiles) {
    const TemporaryFolder folder;
    const mode_t before = umask(027);
    for (const std::string name : {"out.png", "out.dds"}) {
        ExpectDone({"convert", Sample("photo.tga"), folder / name});
        struct stat status{};
        ASSERT_EQ(stat((folder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0640U) << name;
    }
    umask(before);
}

TEST(OutputFiles, AFolderWhoseNameIsAsLongAsTheHostTakesIsWrittenInto) {
    const TemporaryFolder folder;
    // 259 bytes, which a hidden name must not add to.
    const std::size_t left = 259 - folder.Path().string().size() - 1;
    const auto deep = folder / std::string(left / 2, 'a') / std::string(left - left / 2 - 1, 'b');
    ASSERT_EQ(deep.string().size(), 259U);
    std::filesystem::create_directories(deep);
    for (const std::string name : {"out.png", "out.dds"}) {
        ExpectDone({"convert", Sample("photo.tga"), deep / name});
    }
    EXPECT_EQ(NamesIn(deep), (Words{"out.dds", "out.png"}));
}
