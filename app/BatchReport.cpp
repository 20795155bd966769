#include "BatchReport.h"

#include "BatchLog.h"
#include "Commands.h"
#include "Description.h"
#include "Printable.h"
#include "Results.h"
#include "StandardStreams.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <format>
#include <fstream>
#include <map>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace Kavra::App {
namespace {

/// What is kept of a file: numbers alone, as there may be millions.
struct Fate {
    std::uint32_t status = 0;  ///< these by their places among the words
    std::uint32_t kind = 0;
    std::uint64_t bytes = 0;
    double milliseconds = 0;
};

/// Words that come again and again, by numbers.
class Words {
public:
    std::uint32_t NumberOf(const std::string& word) {
        return mNumbers.try_emplace(word, static_cast<std::uint32_t>(mNumbers.size())).first->second;
    }
    template <class Take>
    void ForEach(const Take& take) const {
        for (const auto& [word, number] : mNumbers)
            take(word, number);
    }

private:
    std::map<std::string, std::uint32_t> mNumbers;
};

std::string TextAt(const Json& line, const std::string& key) {
    const auto found = line.find(key);
    return found != line.end() && found->is_string() ? found->get<std::string>() : std::string();
}

double NumberAt(const Json& line, const std::string& key) {
    const auto found = line.find(key);
    return found != line.end() && found->is_number() ? found->get<double>() : 0;
}

class Sum {
public:
    /// What is wrong with a log as a whole; empty when nothing is.
    std::string Add(const std::string& name);
    Json Told() const;

private:
    bool AddLine(const std::string& text);
    Json CountsBy(const Words& words, std::uint32_t Fate::* field, std::string_view first) const;

    std::unordered_map<std::uint64_t, Fate> mFates;
    Words mStatuses, mKinds;
    std::size_t mLogs = 0, mLines = 0, mNone = 0;
};

/// One file may stand in a log several times, of several outputs or tries: its name and settings tell outputs apart, and
/// of its tries the last counts.
bool Sum::AddLine(const std::string& text) {
    const Json line = Json::parse(text, nullptr, false);
    if (!line.is_object()) return false;
    const std::string file = TextAt(line, "file"), status = TextAt(line, "status");
    if (file.empty() || status.empty()) return false;
    const std::string name = file + '\0' + TextAt(line, "fileBytes") + '\0' + TextAt(line, "settings");
    mFates[StableHash(name)] = {.status = mStatuses.NumberOf(status),
                                .kind = mKinds.NumberOf(TextAt(line, "kind")),
                                .bytes = static_cast<std::uint64_t>(NumberAt(line, "bytes")),
                                .milliseconds = NumberAt(line, "ms")};
    return true;
}

std::string Sum::Add(const std::string& name) {
    errno = 0;
    std::ifstream file(name, std::ios::binary);
    for (std::string text; std::getline(file, text);) {
        if (text.empty()) continue;
        ++(AddLine(text) ? mLines : mNone);
    }
    if (!file.eof()) return std::generic_category().message(errno == 0 ? EIO : errno);
    ++mLogs;
    return {};
}

/// How many files there are of each word but the empty one.
Json Sum::CountsBy(const Words& words, std::uint32_t Fate::* field, std::string_view first) const {
    std::map<std::uint32_t, std::size_t> counts;
    for (const auto& [key, fate] : mFates)
        ++counts[fate.*field];
    Json json = Json::object();
    if (!first.empty()) json[std::string(first)] = 0;
    words.ForEach([&](const std::string& word, std::uint32_t number) {
        if (!word.empty() && counts.contains(number)) json[word] = counts.at(number);
    });
    return json;
}

Json Sum::Told() const {
    std::uint64_t bytes = 0;
    double milliseconds = 0;
    for (const auto& [key, fate] : mFates) {
        bytes += fate.bytes;
        milliseconds += fate.milliseconds;
    }
    return {{"logs", mLogs},
            {"lines", mLines},
            {"otherLines", mNone},
            {"files", mFates.size()},
            {"statuses", CountsBy(mStatuses, &Fate::status, "written")},
            {"kinds", CountsBy(mKinds, &Fate::kind, "")},
            {"bytes", bytes},
            {"seconds", milliseconds / 1000}};
}

std::string TextOf(const Json& told) {
    std::string text = std::format("{} files in {} logs", told["files"].dump(), told["logs"].dump());
    const char* between = ": ";
    for (const auto& [status, count] : told["statuses"].items()) {
        const std::string word = status == "read" ? "skipped" : status == "again" ? "to be tried again" : status;
        text += std::format("{}{} {}", std::exchange(between, ", "), count.dump(), Printable(word));
    }
    text += "\n";
    for (const auto& [kind, count] : told["kinds"].items())
        text += std::format("{:>8} {}\n", count.dump(), Printable(kind));
    return text;
}

}  // namespace

int ReportBatch(const std::vector<std::string>& logs, bool json) {
    Sum sum;
    bool isWhole = true;
    for (const std::string& log : logs) {
        const std::string wrong = sum.Add(log);
        if (wrong.empty()) continue;
        isWhole = false;
        WriteError(std::format("kavra: {}: error: cannot be read: {}\n", log, wrong));
    }
    const Json told = sum.Told();
    WriteOutput(json ? JsonText(told) : TextOf(told));
    if (told["statuses"].contains("again")) return kTryAgain;
    return isWhole && !told["statuses"].contains("failed") ? kAllDone : kSomeFailed;
}

}  // namespace Kavra::App
