#include "BatchLines.h"
#include "BatchLog.h"
#include "BatchOptions.h"
#include "BatchReport.h"
#include "BatchWork.h"
#include "CommandSet.h"
#include "OutputFile.h"
#include "OutputPattern.h"
#include "Results.h"
#include "StandardStreams.h"
#include "StreamTypes.h"
#include "Usage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <format>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace Kavra::App {
namespace {

constexpr std::size_t kFilesAtOnce = 256;  // which are read, worked on and forgotten

/// A file that is to be made.
struct Job {
    std::string input;
    std::filesystem::path output;
    std::string work;
    std::uint64_t settings = 0;
};

/// Jobs that one run of a command does: no input is there twice.
struct Group {
    std::vector<Job> jobs;
    std::unordered_map<std::string, std::uint64_t> settings;  ///< by the inputs

    /// Whether a job may go with these. Outputs of one type do: some options go with one alone.
    bool Takes(const Job& job) const {
        return job.work == jobs.front().work && job.output.extension() == jobs.front().output.extension() &&
               !settings.contains(job.input);
    }
};

/// The type of a file by its bytes, as an extension without a dot; empty where it does not show.
std::string TypeOf(const std::string& file) {
    constexpr std::size_t kBytes = 1024;
    std::string begin(kBytes, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(begin.data(), kBytes);
    begin.resize(static_cast<std::size_t>(stream.gcount()));
    const std::string extension = ExtensionOf(begin);
    return extension.empty() ? extension : extension.substr(1);
}

/// Results are heard of while this lives.
class Hearing {
public:
    explicit Hearing(ResultWatcher watcher) { WatchResults(std::move(watcher)); }
    ~Hearing() { WatchResults({}); }
    Hearing(const Hearing&) = delete;
    Hearing& operator=(const Hearing&) = delete;
};

class Batch {
public:
    Batch(const Session& session, const BatchOptions& options) : mOptions(options), mPattern(options.out) {
        mInner.plugin = session.plugin;
        mInner.quiet = session.quiet;
        mInner.verbose = session.verbose;
    }

    int Run();

private:
    std::string Obstacle() const;
    int Start();
    void Take(const BatchLine& line);
    void TakeJob(Job job, bool isOfThisShard);
    Job JobOf(const BatchLine& line) const;
    std::string Refusal(const std::string& file) const;
    void RefuseLine(const BatchLine& line, const std::string& why);
    void Refuse(const std::string& file, const std::string& why, std::uint64_t settings);
    void Finish(const Report& report, std::uint64_t settings);
    void Heard(const Report& report, const WorkFacts& facts, std::uint64_t settings);
    void WorkOff();
    void WorkOff(const Group& group);
    void TakeAll();
    int Ended() const;

    const BatchOptions& mOptions;
    OutputPattern mPattern;
    Session mInner;
    BatchLog mLog;
    std::vector<Job> mJobs;  ///< to be done next
    std::unordered_set<std::uint64_t> mOutputs;
    std::unordered_set<std::string> mFolders;  ///< of outputs, that were looked at
    std::size_t mWritten = 0, mFailed = 0, mSkipped = 0, mDone = 0;
    int mStatus = kAllDone;
};

/// The hash of all that decides about an output but its input.
std::uint64_t SettingsOf(const BatchWork& work, const std::string& out) {
    std::string settings = KAVRA_VERSION;
    for (const std::string& word : work.Words())
        settings += '\0' + word;
    return StableHash(settings + '\0' + out);
}

std::uint64_t NameHash(const std::filesystem::path& path) {
    return StableHash(path.lexically_normal().string());
}

std::string Batch::Obstacle() const {
    const bool hasManifest = mOptions.HasManifest();
    if (mOptions.work.empty() && !hasManifest) return "--do is required";
    if (mOptions.out.empty() && !hasManifest) return "--out is required";
    std::string obstacle = mOptions.work.empty() ? std::string() : BatchWork(mOptions.work).Obstacle();
    if (!obstacle.empty()) return obstacle;
    if (!mOptions.out.empty() && !mOptions.out.contains("{stem}") && !mOptions.out.contains("{name}"))
        return "--out takes a name with fields, as in out/{dir}/{stem}.dds";
    if (mOptions.out.contains("{index")) return "{index} does not go into a batch, whose parts do not know it";
    return mOptions.resumes && mOptions.log.empty() ? "--resume goes with --log" : "";
}

/// Why a file is not worked on; empty when nothing speaks against it.
std::string Batch::Refusal(const std::string& file) const {
    if (mOptions.only.empty()) return {};
    const std::string type = TypeOf(file);
    if (std::ranges::contains(mOptions.only, type)) return {};
    const std::string is = type.empty() ? std::string("no file that its bytes tell") : type;
    return std::format("skipped: it is {}, which --only does not name", is);
}

void Batch::Refuse(const std::string& file, const std::string& why, std::uint64_t settings) {
    Report report(file);
    report.Fail(OwnReason(why, Devices::kFailureArguments));
    Finish(report, settings);
}

void Batch::Finish(const Report& report, std::uint64_t settings) {
    report.Print();
    Heard(report, {}, settings);
}

void Batch::Heard(const Report& report, const WorkFacts& facts, std::uint64_t settings) {
    (report.Failed() ? mFailed : report.work.written.empty() ? mSkipped : mWritten) += 1;
    mLog.Add(report, facts, settings);
}

/// Throws `std::runtime_error` where the line lacks something, or no output can be named.
Job Batch::JobOf(const BatchLine& line) const {
    const std::string work = line.work.empty() ? mOptions.work : line.work;
    if (work.empty()) throw std::runtime_error("do is missing, and there is no --do");
    if (line.output.empty() && mOptions.out.empty())
        throw std::runtime_error("output is missing, and there is no --out");
    if (IsInputStream(line.input)) throw std::runtime_error("it is a stream, and a batch takes files");
    const BatchWork words(work);
    const std::string obstacle = words.Obstacle();
    if (!obstacle.empty()) throw std::runtime_error(obstacle);
    std::filesystem::path output = line.output;
    if (line.output.empty()) {
        output = mPattern.Name(line.input, 0, words.TypeWanted());
    } else if (!output.has_filename() || IsOutputStream(line.output)) {
        throw std::runtime_error(line.output + " is no name of a file");
    }
    return {.input = line.input,
            .output = std::move(output),
            .work = work,
            .settings = SettingsOf(words, line.output.empty() ? mOptions.out : '\0' + line.output)};
}

/// Each shard looks at all lines, so that each knows which outputs the others make.
void Batch::Take(const BatchLine& line) {
    const bool isOfThisShard =
        StableHash(line.wrong.empty() ? line.input : line.text) % mOptions.shards + 1 == mOptions.shard;
    try {
        if (!line.wrong.empty()) throw std::runtime_error(line.wrong);
        TakeJob(JobOf(line), isOfThisShard);
    } catch (const std::runtime_error& error) {
        if (isOfThisShard) RefuseLine(line, error.what());
    }
}

/// A line that is no work is known again by its place and its text.
void Batch::RefuseLine(const BatchLine& line, const std::string& why) {
    const std::uint64_t settings = StableHash(line.text);
    const std::string& name = line.wrong.empty() && !mOptions.HasManifest() ? line.input : line.place;
    if (!mLog.IsDone(KeyOf(name, settings))) return Refuse(name, why, settings);
    ++mDone;
}

void Batch::TakeJob(Job job, bool isOfThisShard) {
    const bool isMade = mOutputs.contains(NameHash(job.input));
    const bool isNew = mOutputs.insert(NameHash(job.output)).second;
    if (!isOfThisShard) return;
    if (mLog.IsDone(KeyOf(job.input, job.settings))) {
        ++mDone;
        return;
    }
    if (!isNew) return Refuse(job.input, job.output.string() + " is the output of an earlier input", job.settings);
    if (isMade) return Refuse(job.input, "it is the output of an earlier input", job.settings);
    const std::string refusal = Refusal(job.input);
    if (!refusal.empty()) {
        Report report(job.input);
        report.Say("note", refusal);
        return Finish(report, job.settings);
    }
    const std::filesystem::path folder = job.output.parent_path();
    if (mOptions.resumes && mFolders.insert(folder.string()).second) RemoveAbandoned(folder);
    mJobs.push_back(std::move(job));
}

void Batch::WorkOff(const Group& group) {
    std::vector<std::string> inputs;
    std::vector<std::filesystem::path> outputs;
    for (const Job& job : group.jobs) {
        inputs.push_back(job.input);
        outputs.push_back(job.output);
    }
    const bool isBegun = mOptions.HasManifest() || mWritten + mFailed + mSkipped > 0;
    std::string wrong;
    int status = kAllDone;
    {
        std::optional<WrongUsageScope> usage;
        if (isBegun) usage.emplace(wrong);
        const Hearing hearing([&](const Report& report, const WorkFacts& facts) {
            const auto own = group.settings.find(report.File());
            Heard(report, facts, own == group.settings.end() ? group.jobs.front().settings : own->second);
        });
        status = BatchWork(group.jobs.front().work).Run(mInner, inputs, outputs, mOptions.jobs);
    }
    const bool isWrong = status == kWrongUsage;
    if (!isWrong || !isBegun) {
        if (isWrong || mStatus == kAllDone) mStatus = status;
    } else if (group.jobs.size() == 1) {
        Refuse(inputs.front(), wrong, group.jobs.front().settings);
    } else {  // nothing was done; it may lie at some of them alone
        for (const Job& job : group.jobs)
            WorkOff({.jobs = {job}, .settings = {{job.input, job.settings}}});
    }
}

void Batch::WorkOff() {
    std::vector<Group> groups;
    for (Job& job : std::exchange(mJobs, {})) {
        const bool isAlone = BatchWork(job.work).JoinsInputs();
        auto group = std::ranges::find_if(groups, [&](const Group& other) { return !isAlone && other.Takes(job); });
        if (group == groups.end()) group = groups.emplace(groups.end());
        group->settings.emplace(job.input, job.settings);
        group->jobs.push_back(std::move(job));
    }
    for (const Group& group : groups)
        if (mStatus != kWrongUsage) WorkOff(group);
}

int Batch::Start() {
    const std::string obstacle = Obstacle();
    if (!obstacle.empty()) return WrongUsage("batch", obstacle);
    const int status = mOptions.work.empty() ? -1 : BatchWork(mOptions.work).Check(mInner);
    if (status >= 0) return status;
    if (mOptions.log.empty()) return kAllDone;
    if (mOptions.resumes) mLog.ReadDone(mOptions.log, mOptions.retries);
    const std::string reason = mLog.Open(mOptions.log);
    if (reason.empty()) return kAllDone;
    WriteError(std::format("kavra: {}: error: cannot be written: {}\n", mOptions.log, reason));
    return kSomeFailed;
}

int Batch::Ended() const {
    if (!PrintsOnlyErrors() && mStatus != kWrongUsage) {
        std::string text = std::format("{} written, {} failed", mWritten, mFailed);
        if (mSkipped > 0) text += std::format(", {} skipped", mSkipped);
        if (mDone > 0) text += std::format(", {} done before", mDone);
        WriteError(std::format("kavra: {}\n", text));
    }
    return mStatus == kAllDone && mFailed > 0 ? kSomeFailed : mStatus;
}

void Batch::TakeAll() {
    try {
        BatchLines lines(mOptions.List(), mOptions.Form());
        for (auto line = lines.Next(); line && mStatus != kWrongUsage && mLog.Loss().empty(); line = lines.Next()) {
            Take(*line);
            if (mJobs.size() == kFilesAtOnce) WorkOff();
        }
    } catch (const ListError& error) {
        Report report(mOptions.List());
        report.Fail(error.what());
        report.Print();
        mStatus = kSomeFailed;
    }
    WorkOff();
}

int Batch::Run() {
    if (const int status = Start(); status != kAllDone) return status;
    TakeAll();
    if (!mLog.Loss().empty()) {
        WriteError(std::format("kavra: {}: error: cannot be written: {}\n", mOptions.log, mLog.Loss()));
        WatchForTemporary(mLog.Loss());
        mStatus = kSomeFailed;
    }
    return Ended();
}

/// What is wrong with the outputs' names; empty when nothing is.
std::string PatternObstacle(const std::string& pattern) try {
    const OutputPattern checked(pattern);
    return {};
} catch (const std::runtime_error& error) {
    return error.what();
}

}  // namespace

void AddBatch(CLI::App& program, Session& session) {
    const auto options = std::make_shared<BatchOptions>();
    CLI::App* command =
        program.add_subcommand("batch", "Converts any number of files, with a log, in parts, resumable");
    command->footer(
        "Examples: kavra batch --from list --do 'convert --fit 512x512' --out 'small/{dir}/{stem}.jpg' \\\n"
        "              --log small.jsonl --resume --shard 3/8\n"
        "          find photos -name '*.jpg' -print0 | kavra batch -0 --do 'texture --format bc7' --out "
        "'{dir}/{stem}.dds'\n"
        "          kavra batch --manifest work.jsonl --log done.jsonl\n"
        "          kavra batch --report done-*.jsonl");
    options->AddTo(*command);
    command->callback([options, &session] {
        session.run = [options, &session] {
            if (!options->reports.empty()) return ReportBatch(options->reports, options->json);
            if (options->json) return WrongUsage("batch", "--json goes with --report");
            const std::string wrong = PatternObstacle(options->out);
            return wrong.empty() ? Batch(session, *options).Run() : WrongUsage("batch", wrong);
        };
    });
}

}  // namespace Kavra::App
