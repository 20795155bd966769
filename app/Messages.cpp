#include "Messages.h"

#include "StandardStreams.h"

#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <format>

namespace Kavra::App {
namespace {

thread_local MessageScope* currentScope = nullptr;

constexpr std::size_t kPrinted = 3;  // of equal messages in a row, before the others are only counted

bool printsEvery = false;

/// Adds a text that is said `count` times as it is printed.
void AppendFolded(const std::string& text, std::size_t count, std::vector<std::string>& texts) {
    const std::size_t printed = printsEvery ? count : std::min(count, kPrinted);
    texts.insert(texts.end(), printed, text);
    if (printed < count) texts.push_back(std::format("{} ({} more)", text, count - printed));
}

}  // namespace

void PrintEveryMessage() {
    printsEvery = true;
}

void Report::Say(std::string_view kind, std::string_view text, std::string_view file) {
    if (file.empty()) file = mFile;
    const bool isRepeated =
        !mRuns.empty() && mRuns.back().kind == kind && mRuns.back().file == file && mRuns.back().text == text;
    if (!isRepeated) mRuns.push_back({std::string(kind), std::string(file), std::string(text), 0});
    ++mRuns.back().count;
    ++mCount;
}

void Report::NoteOnce(std::string_view text) {
    if (!WasSaidSince(0, text)) Say("note", text);
}

void Report::Fail(std::string_view text, std::string_view file) {
    mFailed = true;
    Say("error", text, file);
}

void Report::FailUnlessSaid(std::size_t mark, std::string_view text, std::string_view file) {
    mFailed = true;
    if (IsOnlyNotedSince(mark)) Say("error", text, file);
}

void Report::Take(const Report& other) {
    mRuns.insert(mRuns.end(), other.mRuns.begin(), other.mRuns.end());
    mCount += other.mCount;
    mFailed = mFailed || other.mFailed;
    out += other.out;
}

bool Report::IsOnlyNotedSince(std::size_t mark) const {
    std::size_t end = mCount;
    for (auto run = mRuns.rbegin(); run != mRuns.rend() && end > mark; ++run) {
        if (run->kind != "note") return false;
        end -= run->count;
    }
    return true;
}

bool Report::WasSaidSince(std::size_t mark, std::string_view text) const {
    std::size_t end = mCount;
    for (auto run = mRuns.rbegin(); run != mRuns.rend() && end > mark; ++run) {
        if (run->text == text) return true;
        end -= run->count;
    }
    return false;
}

std::vector<std::string> Report::Texts() const {
    std::vector<std::string> texts;
    for (const Run& run : mRuns)
        AppendFolded(run.text, run.count, texts);
    return texts;
}

std::string Report::LastText(std::string_view fallback) const {
    return mRuns.empty() ? std::string(fallback) : mRuns.back().text;
}

void Report::Print() const {
    WriteOutput(out);
    for (const Run& run : mRuns) {
        std::vector<std::string> texts;
        AppendFolded(run.text, run.count, texts);
        for (const std::string& text : texts)
            WriteError(std::format("kavra: {}: {}: {}\n", run.file, run.kind, text));
    }
}

MessageScope::MessageScope(Report& report, std::string file)
    : mReport(report), mFile(std::move(file)), mOuter(currentScope) {
    currentScope = this;
}

MessageScope::~MessageScope() {
    currentScope = mOuter;
}

MessageRouter::MessageRouter() {
    Objects::ObjModel::SetMessageSink(this);
}

MessageRouter::~MessageRouter() {
    Objects::ObjModel::SetMessageSink(nullptr);
}

void MessageRouter::Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) {
    const std::string_view kindText = kind == Objects::EMessageKind::kError ? "error" : "warning";
    std::string message = OS::ToUtf8(text);
    if (detail != nullptr) message += ": " + OS::ToUtf8(detail);
    if (currentScope != nullptr) {
        currentScope->mReport.Say(kindText, message, currentScope->mFile);
    } else {
        WriteError(std::format("kavra: {}: {}\n", kindText, message));
    }
}

}  // namespace Kavra::App
