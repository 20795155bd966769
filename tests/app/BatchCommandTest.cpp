// Any number of files: parts of them, a log of all, and going on where a batch was killed.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
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

    std::string Write(const std::string& name, const std::string& text) const { return mFolder.Write(name, text); }

    /// A batch of a manifest with these lines.
    ProgramResult RunManifest(const Words& lines, const Words& more = {}) const {
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        return RunKavra(Joined(
            {{"batch", "-q", "--manifest", mFolder.Write("work.jsonl", text), "--log", mFolder / "out.jsonl"}, more}));
    }

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
    const Crowd crowd(100);
    const auto start = std::chrono::steady_clock::now();
    RunKavra(crowd.Line("whole"));
    const auto whole = std::chrono::steady_clock::now() - start;
    const auto statuses = crowd.Statuses("whole");
    ASSERT_EQ(statuses.size(), 100U);

    constexpr unsigned kSeed = 1;
    SCOPED_TRACE(std::format("seed {}", kSeed));
    std::mt19937 random(kSeed);
    int killed = 0;
    const char* const wanted = std::getenv("KAVRA_KILLS");  // more than the suite has time for
    const int kills = wanted == nullptr ? 20 : std::stoi(wanted);
    while (killed < kills) {
        std::filesystem::remove_all(crowd / "out");
        std::filesystem::remove(crowd / "out.jsonl");
        for (int i = 0; i < 5; ++i) {
            RunningKavra program(crowd.Line("out", {"--resume"}));
            std::this_thread::sleep_for(whole * std::uniform_real_distribution(0.05, 0.5)(random));
            program.Signal(SIGKILL);
            killed += program.Wait().status == 128 + SIGKILL ? 1 : 0;
        }
        RunKavra(crowd.Line("out", {"--resume"}));
        ASSERT_EQ(crowd.Tree("out"), crowd.Tree("whole"));
        ASSERT_EQ(crowd.Statuses("out"), statuses);
    }
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
    ExpectWrongUsage(batch({"--do", "convert --siz 5x5", "--out", out}),
                     "convert: error: there is no option --siz; did you mean --size?");
    ExpectWrongUsage(
        batch({"--do", "convert", "--out", out, "--only", "png,xyz"}),
        "batch: error: --only: xyz is none of avif|bmp|cal|cin|dds|dpx|exr|fits|flc|fli|gif|hdr|heic|ico|iff|"
        "j2k|jp2|jpg|jxl|ktx2|pbm|pcx|pfm|pgm|pict|png|ppm|psd|sgi|tga|tif|webp");
    ExpectWrongUsage(batch({"--do", "convert", "--out", "out/"}),
                     "batch: error: --out takes a name with fields, as in out/{dir}/{stem}.dds");
    ExpectWrongUsage(
        batch({"--do", "convert", "--out", "{stem}{x}"}),
        "batch: error: {x} is no field: {dir} {stem} {ext} {name} {index} are, and {index:04}; {{ is a brace");
    for (const std::string shard : {"0/3", "4/3", "3", "1/0", "a/b", "1/2x"})
        ExpectWrongUsage(batch({"--do", "convert", "--out", out, "--shard", shard}),
                         "batch: error: --shard: " + shard + " is no part of a whole; write as in 3/8");
    ExpectWrongUsage(batch({"--do", "convert", "--out", out, "--resume"}), "batch: error: --resume goes with --log");
    ExpectWrongUsage(batch({"--out", out}), "batch: error: --do is required");
    ExpectWrongUsage(batch({"--do", "convert"}), "batch: error: --out is required");
    ExpectWrongUsage(batch({"--do", "convert a.png", "--out", out}),
                     "batch: error: a.png is the name of a file, and --do takes a command and its options alone");
    ExpectWrongUsage(batch({"--do", "convert", "--out", out, "--json"}), "batch: error: --json goes with --report");
    ExpectWrongUsage(batch({"--manifest", crowd / "list"}), "batch: error: --from and --manifest exclude one another");
    ExpectWrongUsage(batch({"--do", "texture --zstd 5", "--out", "{stem}.dds"}),
                     "texture: error: --zstd packs .ktx2 files, and this is none");
}

TEST(BatchCommand, ALineOfAManifestHasItsOwnOutputAndWork) {
    const Crowd crowd(3);
    const std::string in = crowd.Input(0);
    const ProgramResult result =
        crowd.RunManifest({Json{{"input", in}, {"output", crowd / "a.dds"}, {"do", "texture --format bc7"}}.dump(), "",
                           Json{{"input", in}, {"output", crowd / "b.tga"}}.dump() + "\r",
                           Json{{"do", "convert --scale 50%"}, {"input", crowd.Input(1)}}.dump(),
                           Json{{"input", crowd.Input(2)}, {"output", crowd / "{1}.bmp"}}.dump()},
                          {"--do", "convert --fit 10x10", "--out", (crowd / "out").string() + "/{name}.tif"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(Described(crowd / "a.dds")["width"], 40);
    EXPECT_EQ(Described(crowd / "b.tga")["width"], 10) << "--do, where the line has none";
    EXPECT_EQ(Described(crowd / "out/1.png.tif")["width"], 21) << "--out, where the line has none";
    EXPECT_TRUE(std::filesystem::exists(crowd / "{1}.bmp")) << "a line's output is a name and no pattern";
    const auto log = crowd.Log("out");
    ASSERT_EQ(log.size(), 4U);
    std::set<std::string> settings;
    for (const Json& line : log)
        settings.insert(line["settings"]);
    EXPECT_EQ(settings.size(), 4U);
}

TEST(BatchCommand, ABadLineOfAManifestIsAFailureOfThatLineAlone) {
    const Crowd crowd(1);
    const std::string good = Json{{"input", crowd.Input(0)}, {"output", crowd / "good.bmp"}}.dump();
    const std::map<std::string, std::string> bad = {
        {R"({"input": "a", "ouput": "b"})",
         "the key ouput is none of input|inputBytes|output|outputBytes|do; did you mean output?"},
        {R"({"input": "a")", "is no JSON: it is wrong at its byte 14"},
        {R"({"output": "a"})", "input is missing"},
        {R"({"input": "a"})", "output is missing, and there is no --out"},
        {R"({"input": "", "output": "b"})", "input is empty"},
        {R"({"input": "a", "input": "b"})", "input stands there twice"},
        {R"({"input": 3, "output": "b"})", "input is no text"},
        {R"({"input": {"a": "b"}})", "input is no text"},
        {R"({"input": "a\u0000b", "output": "b"})", "input holds a zero byte"},
        {R"({"inputBytes": "50% off", "output": "b"})", "inputBytes is no name with its bytes as %E9"},
        {R"({"input": "a", "output": "b/"})", "b/ is no name of a file"},
        {R"({"input": "a", "output": "-"})", "- is no name of a file"},
        {R"({"input": "a", "output": "b.png", "do": "resize --scale 50%"})",
         "--do takes convert or texture with their options"},
        {R"({"input": "a", "output": "b.png", "do": "convert --json=1"})", "--json does not go into a batch"},
        {"[]", "is no JSON object"},
        {"3", "is no JSON object"},
        {"\"\xFF\"", "is no JSON: it is wrong at its byte 2"},
        {std::string(100'000, '['), "is no JSON object"},
        {R"({"input":)" + std::string(100'000, '{'), "input is no text"},
        {std::string(300'000, ' ') + "{}", "is longer than 262144 bytes"}};
    Words lines = {good};
    std::string said;
    for (const auto& [line, why] : bad) {
        lines.push_back(line);
        said += ErrorLine((crowd / "work.jsonl").string() + std::format(":{}", lines.size()), why);
    }
    const ProgramResult result = crowd.RunManifest(lines, {"--do", "convert"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, said);
    EXPECT_TRUE(std::filesystem::exists(crowd / "good.bmp"));
    EXPECT_EQ(crowd.Log("out").size(), lines.size()) << "each has a line in the log";

    const ProgramResult again = crowd.RunManifest(lines, {"--do", "convert", "--resume"});
    EXPECT_EQ(again.error, "") << "also these are done";
    EXPECT_EQ(crowd.Log("out").size(), lines.size());
}

TEST(BatchCommand, WorkOfALineThatCannotBeIsAFailureOfThatLineAlone) {
    const Crowd crowd(6);
    const auto line = [&](int i, const std::string& out, const std::string& work) {
        return Json{{"input", crowd.Input(i)}, {"output", crowd / out}, {"do", work}}.dump();
    };
    const ProgramResult result = crowd.RunManifest(
        {line(0, "0.dds", "texture"), line(1, "1.png", "texture"), line(2, "2.png", "convert --nothing"),
         line(3, "3.png", "convert more.png"), line(4, "4.dds", "texture --cube"), line(5, "5.dds", "texture")});
    EXPECT_EQ(result.status, 1);
    const auto error = [&](int i, const std::string& why) { return ErrorLine(crowd.Input(i), why); };
    EXPECT_TRUE(result.error.contains(
        error(1, "texture: " + (crowd / "1.png").string() + " is no texture file: .dds and .ktx2 are written")));
    EXPECT_TRUE(result.error.contains(error(2, "convert: there is no option --nothing"))) << result.error;
    EXPECT_TRUE(result.error.contains(
        error(3, "batch: more.png is the name of a file, and --do takes a command and its options alone")))
        << result.error;
    EXPECT_TRUE(std::filesystem::exists(crowd / "0.dds"));
    EXPECT_TRUE(std::filesystem::exists(crowd / "5.dds"));
    EXPECT_EQ(crowd.Statuses("out").size(), 6U);
}

TEST(BatchCommand, WhatOneLineSetsDoesNotHoldForTheNext) {
    const Crowd crowd(3);
    const auto line = [&](int i, const std::string& work) {
        return Json{{"input", crowd.Input(i)}, {"output", crowd / std::format("{}.bmp", i)}, {"do", work}}.dump();
    };
    const ProgramResult result =
        crowd.RunManifest({line(0, "convert --max-pixels 1"), line(1, "convert --dry-run"), line(2, "convert")});
    EXPECT_EQ(result.status, 1) << result.error;
    const auto statuses = crowd.Statuses("out");
    EXPECT_EQ(statuses.at(crowd.Input(0)), "failed");
    EXPECT_EQ(statuses.at(crowd.Input(1)), "planned");
    EXPECT_EQ(statuses.at(crowd.Input(2)), "written");
}

TEST(BatchCommand, AManifestNamesFilesByTheirBytesWhereTheyAreNoText) {
    const Crowd crowd(1);
    const std::string name = "caf\xE9 \n%.png";
    std::filesystem::copy_file(crowd.Input(0), crowd / name);
    const std::string folder = (crowd / "").string();
    const ProgramResult result = crowd.RunManifest({Json{{"inputBytes", folder + "caf%E9%20%0A%25.png"},
                                                         {"input", folder + "caf\xEF\xBF\xBD \n%.png"},
                                                         {"outputBytes", folder + "out%FF.bmp"}}
                                                        .dump()},
                                                   {"--do", "convert"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(std::filesystem::exists(crowd / "out\xFF.bmp"));
    EXPECT_EQ(crowd.Log("out")[0]["fileBytes"], folder + "caf%E9%20%0A%25.png");
}

TEST(BatchCommand, AManifestIsDividedAndResumedLikeAList) {
    const Crowd crowd(20);
    Words lines;
    for (int i = 0; i < 20; ++i)
        lines.push_back(
            Json{{"input", crowd.Input(i)}, {"output", (crowd / std::format("out/{}.bmp", i)).string()}}.dump());
    lines.emplace_back("nonsense");
    for (int shard = 1; shard <= 3; ++shard)
        crowd.RunManifest(lines, {"--do", "convert", "--shard", std::format("{}/3", shard)});
    EXPECT_EQ(crowd.Statuses("out").size(), 21U) << "the bad line is in one shard";
    EXPECT_EQ(crowd.RunManifest(lines, {"--do", "convert", "--resume"}).status, 0);
    EXPECT_EQ(crowd.Log("out").size(), 21U);
}

TEST(BatchCommand, TwoShardsNeverMakeOneOutput) {
    const Crowd crowd(1);
    std::string list;
    for (int i = 0; i < 12; ++i) {
        const std::string file = crowd / std::format("in/{}/same.png", i + 2);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::filesystem::copy_file(crowd.Input(0), file);
        list += file + "\n";
    }
    crowd.Write("list", list);
    int written = 0;
    for (int shard = 1; shard <= 4; ++shard) {
        const std::string name = std::format("log{}", shard);
        RunKavra({"batch", "-q", "--from", crowd / "list", "--do", "convert", "--out",
                  (crowd / "out").string() + "/{stem}.bmp", "--log", (crowd / name).string() + ".jsonl", "--shard",
                  std::format("{}/4", shard)});
        for (const auto& [file, status] : crowd.Statuses(name))
            written += status == "written" ? 1 : 0;
    }
    EXPECT_EQ(written, 1);
}

TEST(BatchCommand, WhatItMadeIsNoInputOfIt) {
    const Crowd crowd(1);
    crowd.Write("list", crowd.Input(0).string() + "\n" + (crowd / "out/0.png.bmp").string() + "\n");
    const ProgramResult result = RunKavra(crowd.Line("out"));
    EXPECT_EQ(result.error, ErrorLine(crowd / "out/0.png.bmp", "it is the output of an earlier input"));
}

TEST(BatchCommand, LimitsNameThemselvesInTheLog) {
    const Crowd crowd(1);  // 40 x 30 pixels
    EXPECT_EQ(RunKavra(crowd.Line("out", {"--max-pixels", "1199"})).status, 1);
    EXPECT_EQ(crowd.Log("out")[0]["kind"], "tooLarge");
    EXPECT_EQ(crowd.Log("out")[0]["error"],
              "too large: the picture has 1200 pixels, and the limit is 1199; --max-pixels raises it");
    EXPECT_EQ(RunKavra(crowd.Line("fits", {"--max-pixels", "1200"})).status, 0);
    EXPECT_EQ(RunKavra(crowd.Line("bytes", {"--max-bytes", "100"})).status, 1);
    EXPECT_EQ(crowd.Log("bytes")[0]["kind"], "tooLarge");
    EXPECT_TRUE(crowd.Log("bytes")[0]["error"].get<std::string>().ends_with("; --max-bytes raises it"));
    Words own = crowd.Line("own", {"--max-pixels", "1"});
    *std::ranges::find(own, "convert --fit 20x20") = "convert --max-pixels 2K";
    EXPECT_EQ(RunKavra(own).status, 0) << "what --do says is nearer";
}

TEST(BatchCommand, ALineThatAFullDiskHasCutDoesNotTakeTheNextOneWithIt) {
    const Crowd crowd(1);
    crowd.Write("out.jsonl", "{\"file\": \"cut");
    RunKavra(crowd.Line("out"));
    const std::string log = TextOf(crowd / "out.jsonl");
    EXPECT_TRUE(log.starts_with("{\"file\": \"cut\n{"));
    EXPECT_EQ(RunKavra(crowd.Line("out", {"--resume"})).status, 0);
    EXPECT_EQ(TextOf(crowd / "out.jsonl"), log) << "its file is done";
}

TEST(BatchCommand, TheReportOfAllLogsHasTheLastFateOfEachFile) {
    const Crowd crowd(20);
    for (int shard = 1; shard <= 2; ++shard)
        RunKavra(crowd.Line(std::format("log{}", shard), {"--shard", std::format("{}/2", shard)}));
    const Words report = {"batch", "--report", crowd / "log1.jsonl", crowd / "log2.jsonl"};
    ProgramResult result = RunKavra(report);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "20 files in 2 logs: 18 written, 2 failed\n       2 notAnImage\n");

    std::ofstream(crowd / "log1.jsonl", std::ios::app) << "nonsense\n";
    for (const int bad : {7, 17})
        WritePicture(crowd.Input(bad), 40 + bad, 30, PlaceColour);
    for (int shard = 1; shard <= 2; ++shard)
        RunKavra(crowd.Line(std::format("log{}", shard), {"--shard", std::format("{}/2", shard), "--resume"}));
    result = RunKavra(Joined({report, {"--json"}}));
    EXPECT_EQ(result.status, 0) << result.error;
    const Json told = Json::parse(result.out);
    EXPECT_EQ(told["files"], 20);
    EXPECT_EQ(told["lines"], 22);
    EXPECT_EQ(told["otherLines"], 1);
    EXPECT_EQ(told["statuses"], Json::object({{"written", 20}}));
    EXPECT_EQ(told["kinds"], Json::object());
}

TEST(BatchCommand, TheReportsStatusIsThatOfTheWhole) {
    const Crowd crowd(1);
    const auto status = [&](const std::string& text) {
        return RunKavra({"batch", "--report", crowd.Write("log", text)}).status;
    };
    const std::string good = R"({"file": "a", "status": "written"})", bad = R"({"file": "b", "status": "failed"})",
                      again = R"({"file": "c", "status": "again"})";
    EXPECT_EQ(status(good + "\n"), 0);
    EXPECT_EQ(status(good + "\n" + bad + "\n"), 1);
    EXPECT_EQ(status(good + "\n" + again + "\n" + bad + "\n"), 75);
    const ProgramResult none = RunKavra({"batch", "--report", crowd / "none"});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(none.error.contains("none: error: cannot be read: No such file or directory")) << none.error;
}
