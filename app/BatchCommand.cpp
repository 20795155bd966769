#include "BatchLog.h"
#include "CommandSet.h"
#include "OutputFile.h"
#include "OutputPattern.h"
#include "Results.h"
#include "StandardStreams.h"
#include "StreamTypes.h"
#include "Usage.h"
#include "Workers.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <format>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace Kavra::App {
namespace {

constexpr std::size_t kFilesAtOnce = 256;  // which are read, worked on and forgotten

struct Options {
    std::string work;  // a command with its options
    std::string list = "-";
    std::string out;
    std::string log;
    std::vector<std::string> only;  // extensions
    unsigned shard = 1, shards = 1;
    bool endsWithNul = false, resumes = false, retries = false;
    int jobs = 0;
};

struct ListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Names one after another, however many there are. Throws `ListError`.
class NameList {
public:
    NameList(const std::string& name, bool endsWithNul)
        : mFile(name == "-" ? stdin : std::fopen(name.c_str(), "rbe")), mEnd(endsWithNul ? '\0' : '\n') {
        if (mFile == nullptr) Throw();
    }
    ~NameList() {
        if (mFile != stdin) (void)std::fclose(mFile);
        std::free(mLine);
    }
    NameList(const NameList&) = delete;
    NameList& operator=(const NameList&) = delete;

    /// The next name that is not empty; nothing at the end. A name that options or lists begin like gets its folder.
    std::optional<std::string> Next() {
        for (;;) {
            errno = 0;
            const ssize_t length = getdelim(&mLine, &mSize, mEnd, mFile);
            if (length < 0 && std::ferror(mFile) != 0) Throw();
            if (length < 0) return std::nullopt;
            std::string name(mLine, static_cast<std::size_t>(length));
            if (name.ends_with(mEnd)) name.pop_back();
            if (name.contains('\0')) throw ListError("holds a zero byte, and names that end in one go with -0");
            if (name.starts_with('@') || name == "-") name.insert(0, "./");
            if (!name.empty()) return name;
        }
    }

private:
    [[noreturn]] static void Throw() { throw ListError("cannot be read: " + std::generic_category().message(errno)); }

    std::FILE* mFile;
    int mEnd;
    char* mLine = nullptr;
    std::size_t mSize = 0;
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
    Batch(const Session& session, const Options& options)
        : mOptions(options), mWords(CLI::detail::split_up(options.work)), mPattern(options.out) {
        mInner.plugin = session.plugin;
        mInner.quiet = session.quiet;
        mInner.verbose = session.verbose;
        std::string settings = KAVRA_VERSION;
        for (const std::string& word : mWords)
            settings += '\0' + word;
        mSettings = StableHash(settings + '\0' + options.out);
    }

    int Run();

private:
    std::string Obstacle() const;
    int Start();
    std::string TypeWanted() const;
    void Take(const std::string& file);
    void TakeWork(const std::string& file, const std::filesystem::path& out);
    std::string Refusal(const std::string& file) const;
    void Finish(const Report& report);
    void Heard(const Report& report, const WorkFacts& facts);
    int Parse(CLI::App& program, const std::vector<std::string>& files);
    void WorkOff();
    int Ended() const;

    const Options& mOptions;
    std::vector<std::string> mWords;
    OutputPattern mPattern;
    std::uint64_t mSettings = 0;
    Session mInner;
    BatchLog mLog;
    std::vector<std::string> mFiles;  ///< to be worked on next
    std::unordered_set<std::uint64_t> mOutputs;
    std::unordered_set<std::string> mFolders;  ///< of outputs, that were looked at
    std::size_t mWritten = 0, mFailed = 0, mSkipped = 0, mDone = 0;
    int mStatus = kAllDone;
};

std::string Batch::Obstacle() const {
    const bool isKnown = !mWords.empty() && (mWords.front() == "convert" || mWords.front() == "texture");
    if (!isKnown) return "--do takes convert or texture with their options";
    for (const std::string word : {"--json", "--inspect", "--report", "--from", "-r", "--recursive", "--frames"})
        if (std::ranges::contains(mWords, word)) return word + " does not go into a batch";
    if (!mOptions.out.contains("{stem}") && !mOptions.out.contains("{name}"))
        return "--out takes a name with fields, as in out/{dir}/{stem}.dds";
    if (mOptions.out.contains("{index")) return "{index} does not go into a batch, whose parts do not know it";
    return mOptions.resumes && mOptions.log.empty() ? "--resume goes with --log" : "";
}

/// What stands for `{ext}`.
std::string Batch::TypeWanted() const {
    const auto option = std::ranges::find(mWords, "--to");
    return option == mWords.end() || option + 1 == mWords.end() ? std::string() : *(option + 1);
}

/// Why a file is not worked on; empty when nothing speaks against it.
std::string Batch::Refusal(const std::string& file) const {
    if (mOptions.only.empty()) return {};
    const std::string type = TypeOf(file);
    if (std::ranges::contains(mOptions.only, type)) return {};
    const std::string is = type.empty() ? std::string("no file that its bytes tell") : type;
    return std::format("skipped: it is {}, which --only does not name", is);
}

void Batch::Finish(const Report& report) {
    report.Print();
    Heard(report, {});
}

void Batch::Heard(const Report& report, const WorkFacts& facts) {
    (report.Failed() ? mFailed : report.work.written.empty() ? mSkipped : mWritten) += 1;
    mLog.Add(report, facts, mSettings);
}

void Batch::Take(const std::string& file) {
    if (StableHash(file) % mOptions.shards + 1 != mOptions.shard) return;
    Report report(file);
    try {
        TakeWork(file, mPattern.Name(file, 0, TypeWanted()));
    } catch (const std::runtime_error& error) {
        report.Fail(error.what());
        Finish(report);
    }
}

void Batch::TakeWork(const std::string& file, const std::filesystem::path& out) {
    const bool isNew = mOutputs.insert(StableHash(out.lexically_normal().string())).second;
    if (mLog.IsDone(KeyOf(file, mSettings))) {
        ++mDone;
        return;
    }
    if (!isNew) throw std::runtime_error(out.string() + " is the output of an earlier input");
    const std::string refusal = Refusal(file);
    if (!refusal.empty()) {
        Report report(file);
        report.Say("note", refusal);
        return Finish(report);
    }
    const std::filesystem::path folder = out.parent_path();
    if (mOptions.resumes && mFolders.insert(folder.string()).second) RemoveAbandoned(folder);
    mFiles.push_back(file);
}

/// Gives the command its words and files; the status, or -1 where it may run.
int Batch::Parse(CLI::App& program, const std::vector<std::string>& files) {
    mInner.names = {};
    AddCommands(program, mInner);
    std::vector<std::string> words = mWords;
    if (mOptions.jobs > 0) words.insert(words.end(), {"--jobs", std::to_string(mOptions.jobs)});
    words.emplace_back("--");
    words.insert(words.end(), files.begin(), files.end());
    words.push_back(mOptions.out);
    std::ranges::reverse(words);  // as the library wants them
    try {
        program.parse(std::move(words));
        return -1;
    } catch (const CLI::ParseError& error) {
        return AnswerParse(program, error);
    }
}

void Batch::WorkOff() {
    if (mFiles.empty() || mStatus == kWrongUsage) return;
    CLI::App program("", "kavra");
    int status = Parse(program, mFiles);
    if (status < 0) status = mInner.run();
    if (status == kWrongUsage || mStatus == kAllDone) mStatus = status;
    mFiles.clear();
}

int Batch::Start() {
    const std::string obstacle = Obstacle();
    if (!obstacle.empty()) return WrongUsage("batch", obstacle);
    CLI::App program("", "kavra");
    const int status = Parse(program, {"x"});
    if (status >= 0) return status;
    if (mOptions.log.empty()) return kAllDone;
    if (mOptions.resumes) mLog.ReadDone(mOptions.log, mOptions.retries);
    const std::string reason = mLog.Open(mOptions.log);
    if (reason.empty()) return kAllDone;
    WriteError(std::format("kavra: {}: error: cannot be written: {}\n", mOptions.log, reason));
    return kSomeFailed;
}

int Batch::Ended() const {
    if (!PrintsOnlyErrors()) {
        std::string text = std::format("{} written, {} failed", mWritten, mFailed);
        if (mSkipped > 0) text += std::format(", {} skipped", mSkipped);
        if (mDone > 0) text += std::format(", {} done before", mDone);
        WriteError(std::format("kavra: {}\n", text));
    }
    return mStatus == kAllDone && mFailed > 0 ? kSomeFailed : mStatus;
}

int Batch::Run() {
    if (const int status = Start(); status != kAllDone) return status;
    const Hearing hearing([this](const Report& report, const WorkFacts& facts) { Heard(report, facts); });
    try {
        NameList names(mOptions.list, mOptions.endsWithNul);
        for (auto name = names.Next(); name && mStatus != kWrongUsage && mLog.Loss().empty(); name = names.Next()) {
            Take(*name);
            if (mFiles.size() == kFilesAtOnce) WorkOff();
        }
    } catch (const ListError& error) {
        Report report(mOptions.list);
        report.Fail(error.what());
        report.Print();
        mStatus = kSomeFailed;
    }
    WorkOff();
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

/// "3/8"; throws what the library prints.
void ParseShard(const std::string& text, Options& options) {
    unsigned shard = 0, shards = 0;
    int end = 0;
    const bool good = std::sscanf(text.c_str(), "%u/%u%n", &shard, &shards, &end) == 2 &&
                      static_cast<std::size_t>(end) == text.size() && shard >= 1 && shard <= shards;
    if (!good) throw CLI::ValidationError("--shard", text + " is no part of a whole; write as in 3/8");
    options.shard = shard;
    options.shards = shards;
}

/// "png,jpeg" as the extensions by which types are known here.
std::vector<std::string> ParseTypes(const std::string& text) {
    std::vector<std::string> types;
    for (std::string type : CLI::detail::split(text, ',')) {
        type = CLI::detail::to_lower(type.starts_with('.') ? type.substr(1) : type);
        if (type == "jpeg") type = "jpg";
        if (type == "tiff") type = "tif";
        if (type.empty()) throw CLI::ValidationError("--only", text + " names no types; write as in png,jpeg,dds");
        types.push_back(type);
    }
    return types;
}

}  // namespace

void AddBatch(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        program.add_subcommand("batch", "Converts any number of files, with a log, in parts, resumable");
    command->footer(
        "Examples: kavra batch --from list --do 'convert --fit 512x512' --out 'small/{dir}/{stem}.jpg' \\\n"
        "              --log small.jsonl --resume --shard 3/8\n"
        "          find photos -name '*.jpg' -print0 | kavra batch -0 --do 'texture --format bc7' --out "
        "'{dir}/{stem}.dds'");
    command->add_option("--do", options->work, "What is done with each file: convert or texture with its options")
        ->required();
    command->add_option("--out", options->out, "The outputs' names, with {dir} {stem} {ext} {name} of the input")
        ->required();
    command
        ->add_option("--from", options->list,
                     "The file with the inputs' names, a name a line; standard input unless said")
        ->type_name("FILE");
    command->add_flag("-0,--null", options->endsWithNul, "The names end with a zero byte instead of a line end");
    command
        ->add_option_function<std::string>(
            "--shard", [options](const std::string& text) { ParseShard(text, *options); },
            "Work on part I of N of the files alone, by their names: all N parts together are all files, each once")
        ->type_name("I/N");
    command->add_option("--log", options->log, "Append what became of each file to this one, a line of JSON each")
        ->type_name("FILE");
    command->add_flag("--resume", options->resumes,
                      "Leave out what the log says is done, of unchanged inputs in the same way; remove what killed "
                      "programs left in the outputs' folders");
    command->add_flag("--retry", options->retries, "With --resume, try again what failed");
    command
        ->add_option_function<std::string>(
            "--only", [options](const std::string& text) { options->only = ParseTypes(text); },
            "Work only on files that are of these types by their bytes, as png,jpeg,dds")
        ->type_name("TYPES");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] {
        session.run = [options, &session] {
            const std::string wrong = PatternObstacle(options->out);
            return wrong.empty() ? Batch(session, *options).Run() : WrongUsage("batch", wrong);
        };
    });
}

}  // namespace Kavra::App
