// Any number of files: parts of them, a log of all, and going on where a batch was killed.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <format>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>

using namespace Kavra::Tests;
using namespace std::chrono_literals;

namespace {

/// So many pictures in two folders, some of them none, and a list of all.
class Crowd {
public:
    explicit Crowd(int count) {
        std::string list;
        for (int i = 0; i < count; ++i) {
            const std::filesystem::path file = Input(i);
            std::filesystem::create_directories(file.parent_path());
            if (i % 10 == 7) {
                std::ofstream(file) << "no picture";
            } else {
                WritePicture(file, 40 + i, 30, PlaceColour);
            }
            list += file.string() + "\n";
        }
        mFolder.Write("list", list);
    }

    std::filesystem::path Input(int i) const { return mFolder / std::format("in/{}/{}.png", i % 2, i); }
    std::filesystem::path operator/(std::string_view name) const { return mFolder / name; }

    /// A batch of all into a folder with that name, with a log beside it.
    Words Line(const std::string& name, const Words& more = {}) const {
        return Joined({{"batch", "-q", "--from", mFolder / "list", "--do", "convert --fit 20x20", "--out",
                        (mFolder / name).string() + "/{name}.bmp", "--log", (mFolder / name).string() + ".jsonl"},
                       more});
    }

    std::vector<Json> Log(const std::string& name) const {
        std::vector<Json> lines;
        std::ifstream file(mFolder / (name + ".jsonl"));
        for (std::string line; std::getline(file, line);)
            lines.push_back(Json::parse(line));
        return lines;
    }

    /// The statuses of all files, by their names; each has one line.
    std::map<std::string, std::string> Statuses(const std::string& name) const {
        std::map<std::string, std::string> statuses;
        for (const Json& line : Log(name))
            EXPECT_TRUE(statuses.emplace(line["file"], line["status"]).second) << line;
        return statuses;
    }

    /// All bytes of all files below a folder, hidden ones too.
    std::map<std::string, std::vector<unsigned char>> Tree(const std::string& name) const {
        std::map<std::string, std::vector<unsigned char>> tree;
        if (!std::filesystem::exists(mFolder / name)) return tree;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mFolder / name))
            tree[entry.path().lexically_relative(mFolder / name)] =
                entry.is_directory() ? std::vector<unsigned char>() : ReadAll(entry.path());
        return tree;
    }

private:
    TemporaryFolder mFolder;
};

}  // namespace

TEST(BatchCommand, EveryFileIsWorkedOnAndHasOneLineInTheLog) {
    const Crowd crowd(20);
    const ProgramResult result = RunKavra(crowd.Line("out"));
    EXPECT_EQ(result.status, 1) << result.error;
    EXPECT_EQ(crowd.Tree("out").size(), 18U);
    const auto lines = crowd.Log("out");
    ASSERT_EQ(lines.size(), 20U);
    for (int i = 0; i < 20; ++i) {
        const Json& line = lines[static_cast<std::size_t>(i)];
        const bool isBad = i % 10 == 7;
        EXPECT_EQ(line["file"], crowd.Input(i).string());
        EXPECT_EQ(line["status"], isBad ? "failed" : "written");
        EXPECT_EQ(line.contains("error"), isBad);
        EXPECT_EQ(line["bytes"], isBad ? 0 : std::filesystem::file_size(line["outputs"][0].get<std::string>()));
        EXPECT_GT(line["ms"], 0);
    }
}

TEST(BatchCommand, TheSumOfAllIsSaidOnce) {
    const Crowd crowd(20);
    Words line = crowd.Line("out");
    std::erase(line, "-q");
    const ProgramResult result = RunKavra(line);
    EXPECT_TRUE(result.error.ends_with("\nkavra: 18 written, 2 failed\n")) << result.error;
}

TEST(BatchCommand, ShardsTogetherAreAllFilesEachOnce) {
    const Crowd crowd(40);
    std::set<std::string> all;
    for (int shard = 1; shard <= 3; ++shard) {
        const std::string name = std::format("part{}", shard);
        RunKavra(crowd.Line(name, {"--shard", std::format("{}/3", shard)}));
        const auto statuses = crowd.Statuses(name);
        EXPECT_GT(statuses.size(), 4U) << "the parts are about as large as each other";
        for (const auto& [file, status] : statuses)
            EXPECT_TRUE(all.insert(file).second) << file;
    }
    EXPECT_EQ(all.size(), 40U);
}

TEST(BatchCommand, ResumingLeavesOutWhatIsDoneUnlessTheInputOrTheSettingsChanged) {
    const Crowd crowd(20);
    RunKavra(crowd.Line("out"));
    EXPECT_EQ(RunKavra(crowd.Line("out", {"--resume"})).status, 0);
    EXPECT_EQ(crowd.Log("out").size(), 20U) << "nothing was done again";

    WritePicture(crowd.Input(3), 99, 99, PlaceColour);
    EXPECT_EQ(RunKavra(crowd.Line("out", {"--resume"})).status, 0);
    ASSERT_EQ(crowd.Log("out").size(), 21U);
    EXPECT_EQ(crowd.Log("out").back()["file"], crowd.Input(3).string());

    EXPECT_EQ(RunKavra(crowd.Line("out", {"--resume", "--retry"})).status, 1);
    EXPECT_EQ(crowd.Log("out").size(), 23U) << "both that failed";

    Words other = crowd.Line("out", {"--resume"});
    *std::ranges::find(other, "convert --fit 20x20") = "convert --fit 10x10";
    RunKavra(other);
    EXPECT_EQ(crowd.Log("out").size(), 43U) << "all, in another way";
}

TEST(BatchCommand, KilledAtAnyMomentAndResumedItEndsAsIfItHadNotBeen) {
    const Crowd crowd(120);
    const auto start = std::chrono::steady_clock::now();
    RunKavra(crowd.Line("whole"));
    const auto whole = std::chrono::steady_clock::now() - start;
    const auto statuses = crowd.Statuses("whole");
    ASSERT_EQ(statuses.size(), 120U);

    std::mt19937 random(1);
    int killed = 0;
    for (int round = 0; round < 5; ++round) {
        std::filesystem::remove_all(crowd / "out");
        std::filesystem::remove(crowd / "out.jsonl");
        for (int i = 0; i < 4; ++i) {
            RunningKavra program(crowd.Line("out", {"--resume"}));
            std::this_thread::sleep_for(whole * std::uniform_real_distribution(0.2, 0.7)(random));
            program.Signal(SIGKILL);
            killed += program.Wait().status == 128 + SIGKILL ? 1 : 0;
        }
        RunKavra(crowd.Line("out", {"--resume"}));
        EXPECT_EQ(crowd.Tree("out"), crowd.Tree("whole"));
        EXPECT_EQ(crowd.Statuses("out"), statuses);
    }
    EXPECT_GT(killed, 0);
}

TEST(BatchCommand, WhatRunningProgramsHaveBegunIsNotTakenForAbandoned) {
    const Crowd crowd(4);
    std::filesystem::create_directories(crowd / "out/.kavra-0123456789abcdef");
    const auto picture = WritePicture(crowd / "in.png", 100, 100, PlaceColour);
    RunningKavra program({"tile", picture, crowd / "out/large.tif", "--repeat", "300x3000"});
    const auto hidden = [&] {
        return std::ranges::count_if(NamesIn(crowd / "out"), [](const auto& name) { return name.starts_with("."); });
    };
    for (int i = 0; i < 10'000 && hidden() < 2; ++i)
        std::this_thread::sleep_for(1ms);
    RunKavra(crowd.Line("out", {"--resume"}));
    EXPECT_EQ(hidden(), 1) << "the abandoned one is gone, that of the running program is not";
    program.Signal(SIGINT);
    program.Wait();
}

TEST(BatchCommand, LinesThatAreNoneDoNotKeepItFromResuming) {
    const Crowd crowd(4);
    RunKavra(crowd.Line("out"));
    std::ofstream(crowd / "out.jsonl", std::ios::app)
        << "{\"key\": 3}\nnonsense\n[]\n{\"key\":\"zz\",\"status\":\"written\"}\n";
    EXPECT_EQ(RunKavra(crowd.Line("out", {"--resume"})).status, 0);
}

TEST(BatchCommand, OnlyFilesOfTheTypesThatAreNamedAreTaken) {
    const Crowd crowd(3);
    std::filesystem::copy_file(Sample("photo.jpg"), crowd / "in/0/photo.png");
    std::ofstream(crowd / "list", std::ios::app) << (crowd / "in/0/photo.png").string() << "\n";
    RunKavra(crowd.Line("out", {"--only", "jpeg"}));
    EXPECT_EQ(crowd.Tree("out").size(), 1U);
    EXPECT_TRUE(crowd.Tree("out").contains("photo.png.bmp"));
    EXPECT_EQ(crowd.Log("out")[0]["warnings"][0], "skipped: it is png, which --only does not name");
}

TEST(BatchCommand, TwoInputsNeverBecomeOneOutput) {
    const Crowd crowd(2);
    std::filesystem::copy_file(crowd.Input(0), crowd / "in/1/0.png");
    std::ofstream(crowd / "list", std::ios::app) << (crowd / "in/1/0.png").string() << "\n";
    const ProgramResult result = RunKavra(crowd.Line("out"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, ErrorLine(crowd / "in/1/0.png",
                                      (crowd / "out/0.png.bmp").string() + " is the output of an earlier input"));
    EXPECT_EQ(crowd.Tree("out").size(), 2U);
}

TEST(BatchCommand, WhatIsWrongIsSaidBeforeAnyWork) {
    const Crowd crowd(2);
    const auto batch = [&](const Words& more) { return Joined({{"batch", "--from", crowd / "list"}, more}); };
    const std::string out = "{stem}.tif";
    ExpectWrongUsage(batch({"--do", "resize --scale 50%", "--out", out}),
                     "batch: error: --do takes convert or texture with their options");
    ExpectWrongUsage(batch({"--do", "convert --nothing", "--out", out}),
                     "convert: error: there is no option --nothing");
    ExpectWrongUsage(batch({"--do", "convert", "--out", "out/"}),
                     "batch: error: --out takes a name with fields, as in out/{dir}/{stem}.dds");
    ExpectWrongUsage(
        batch({"--do", "convert", "--out", "{stem}{x}"}),
        "batch: error: {x} is no field: {dir} {stem} {ext} {name} {index} are, and {index:04}; {{ is a brace");
    for (const std::string shard : {"0/3", "4/3", "3", "1/0", "a/b", "1/2x"})
        ExpectWrongUsage(batch({"--do", "convert", "--out", out, "--shard", shard}),
                         "batch: error: --shard: " + shard + " is no part of a whole; write as in 3/8");
    ExpectWrongUsage(batch({"--do", "convert", "--out", out, "--resume"}), "batch: error: --resume goes with --log");
}
