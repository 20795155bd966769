#include "Inputs.h"

#include "FileNames.h"
#include "Results.h"
#include "StandardStreams.h"
#include "Workers.h"

#include <kavra/devices/IImageInspector.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <format>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Kavra::App {
namespace {

bool IsListWord(const std::string& word) {
    return word.size() > 1 && word.starts_with('@');
}

/// The whole of a file or, for "-", of standard input. Throws `std::runtime_error`.
std::string TextOf(const std::string& name) {
    struct Close {
        void operator()(std::FILE* file) const {
            if (file != stdin) (void)std::fclose(file);
        }
    };
    const std::unique_ptr<std::FILE, Close> file(name == "-" ? stdin : std::fopen(name.c_str(), "rbe"));
    constexpr std::size_t kPart = 1 << 16;
    std::string text;
    std::size_t count = 0;
    while (file != nullptr) {
        text.resize(count + kPart);
        const std::size_t got = std::fread(text.data() + count, 1, kPart, file.get());
        count += got;
        if (got < kPart) break;
    }
    if (file == nullptr || std::ferror(file.get()) != 0)
        throw std::runtime_error("cannot be read: " + std::generic_category().message(errno));
    text.resize(count);
    return text;
}

/// One of a command's runs through its inputs.
class Search {
public:
    Search(const InputOptions& options, const Session& session, const std::filesystem::path& output)
        : mOptions(options), mSession(session) {
        std::error_code ignored;
        if (!output.empty()) mOutput = std::filesystem::weakly_canonical(output, ignored);
    }

    void AddWord(const std::string& word) {
        std::error_code ignored;
        if (IsListWord(word)) {
            AddList(word.substr(1));
        } else if (mOptions.recursive && std::filesystem::is_directory(word, ignored)) {
            AddFolder(word, {});
        } else {
            AddFile(word);
        }
    }

    void AddList(const std::string& name) {
        try {
            AddNames(TextOf(name));
        } catch (const std::runtime_error& error) {
            Fail(name, error.what());
            mList.canStart = false;
        }
    }

    InputList Take() { return std::move(mList); }

private:
    void AddNames(const std::string& text) {
        const char end = mOptions.endsWithNul ? '\0' : '\n';
        if (!mOptions.endsWithNul && text.contains('\0'))
            throw std::runtime_error("holds a zero byte, and names that end in one go with -0");
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t next = std::min(text.find(end, at), text.size());
            const std::string name = text.substr(at, next - at);
            at = next + 1;
            std::error_code ignored;
            if (name.empty()) continue;
            if (mOptions.recursive && std::filesystem::is_directory(name, ignored)) {
                AddFolder(name, {});
            } else {
                mList.inputs.emplace_back(name);
            }
        }
    }

    void AddFile(const std::string& word) {
        try {
            if (word == "-" && mOptions.list == "-") throw std::runtime_error("standard input is the list of inputs");
            mList.inputs.emplace_back(ReadStream(word), std::filesystem::path(), IsInputStream(word));
        } catch (const std::runtime_error& error) {
            Fail(word, error.what());
            mList.canStart = false;
        }
    }

    /// Links to folders are not followed: they may lead round in a circle.
    void AddFolder(const std::filesystem::path& folder, const std::filesystem::path& below) {
        std::error_code error;
        if (!mOutput.empty() && !below.empty() && std::filesystem::weakly_canonical(folder, error) == mOutput) return;
        std::filesystem::directory_iterator entries(folder, error);
        std::vector<std::filesystem::directory_entry> found;
        for (const std::filesystem::directory_iterator end; !error && entries != end; entries.increment(error))
            found.push_back(*entries);
        if (error) return Fail(folder.string(), "cannot be read: " + error.message());
        std::ranges::sort(found, {}, [](const auto& entry) { return entry.path().native(); });
        for (const auto& entry : found) {
            const std::filesystem::path name = entry.path().filename();
            std::error_code ignored;
            if (entry.is_directory(ignored)) {
                const bool isUnfinished = name.native().starts_with(".kavra-");
                if (!entry.is_symlink(ignored) && !isUnfinished) AddFolder(entry.path(), below / name);
            } else if (entry.is_regular_file(ignored) && IsKnown(name)) {
                mList.inputs.emplace_back(entry.path().string(), below);
            }
        }
    }

    /// Whether the handler reads files with such an extension; all of them where it does not tell.
    bool IsKnown(const std::filesystem::path& name) {
        if (mExtensions.empty()) {
            auto* const inspector = dynamic_cast<Devices::IImageInspector*>(&mSession.LoadHost().Handler());
            if (inspector == nullptr) return true;
            std::istringstream words{inspector->ReadableExtensions()};
            mExtensions.insert(std::istream_iterator<std::string>(words), {});
        }
        const std::string extension = LowerExtension(name);
        return extension.size() > 1 && (mExtensions.contains(extension) || mExtensions.contains(extension.substr(1)));
    }

    void Fail(const std::string& name, const std::string& text) {
        Report report(name);
        report.Fail(text);
        report.Print();
        AddResult(report);
        mList.failures.push_back(std::move(report));
    }

    const InputOptions& mOptions;
    const Session& mSession;
    std::filesystem::path mOutput;
    std::set<std::string> mExtensions;
    InputList mList;
};

}  // namespace

std::vector<std::string> FileNamesOf(const std::vector<Input>& inputs) {
    std::vector<std::string> names;
    names.reserve(inputs.size());
    for (const Input& input : inputs)
        names.push_back(input.file);
    return names;
}

int EndUnstarted(const InputList& list, bool json) {
    Json failures = Json::array();
    AddFailures(failures, list);
    if (json) WriteOutput(JsonText(failures));
    return kSomeFailed;
}

void AddFailures(Json& json, const InputList& list) {
    for (const Report& report : list.failures)
        json.push_back(FailureJson(report));
}

void InputOptions::AddTo(CLI::App& command) {
    command.add_flag(
        "-r,--recursive", recursive,
        "Take of folders all files in and below them that can be read, and keep the tree in an output folder");
    command
        .add_option("--from", list,
                    "Take further inputs from this file, or - for standard input: a name a line. "
                    "The word @FILE among the inputs does the same")
        ->type_name("FILE");
    command.add_flag("-0,--null", endsWithNul, "The names in lists end with a zero byte instead of a line end");
}

bool InputOptions::AreOpen(const std::vector<std::string>& words) const {
    return recursive || !list.empty() || std::ranges::any_of(words, IsListWord);
}

InputList InputOptions::Expand(const std::vector<std::string>& words, const Session& session,
                               const std::filesystem::path& output) const {
    Search search(*this, session, output);
    for (const std::string& word : words)
        search.AddWord(word);
    if (!list.empty()) search.AddList(list);
    return search.Take();
}

int TellOfEach(const Session& session, const Telling& telling, const std::function<void(Report&, Json&)>& tell,
               const std::function<Json(const Report&)>& failed) {
    const InputList list = telling.inputs.Expand(telling.files, session);
    if (!list.canStart) return EndUnstarted(list, telling.json);
    std::vector<Report> reports = MakeReports(FileNamesOf(list.inputs));
    std::vector<Json> told(reports.size());
    const bool good =
        ForEachReport(reports, telling.jobs, [&](std::size_t index, Report& report) { tell(report, told[index]); });
    for (std::size_t i = 0; i < reports.size(); ++i)
        if (reports[i].Failed()) told[i] = failed(reports[i]);
    Json all(told);
    AddFailures(all, list);
    if (telling.json) WriteOutput(JsonText(all));
    return good && list.IsWhole() ? kAllDone : kSomeFailed;
}

}  // namespace Kavra::App
