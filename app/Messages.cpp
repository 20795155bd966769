#include "Messages.h"

#include "LibraryLines.h"
#include "Printable.h"
#include "StandardStreams.h"

#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <format>
#include <utility>

namespace Kavra::App {
namespace {

thread_local MessageScope* currentScope = nullptr;

constexpr std::size_t kPrinted = 3;  // of equal messages in a row, before the others are only counted

bool printsEvery = false;
bool printsOnlyErrors = false;

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

void PrintOnlyErrors() {
    printsOnlyErrors = true;
}

bool PrintsOnlyErrors() {
    return printsOnlyErrors;
}

void Report::Say(std::string_view kind, std::string_view text, std::string_view file) {
    if (file.empty()) file = mFile;
    const bool isRepeated =
        !mRuns.empty() && mRuns.back().kind == kind && mRuns.back().file == file && mRuns.back().text == text;
    if (!isRepeated)
        mRuns.push_back({.kind = std::string(kind), .file = std::string(file), .text = std::string(text), .count = 0});
    ++mRuns.back().count;
    ++mCount;
}

void Report::NoteOnce(std::string_view text) {
    if (!WasSaidSince(0, text)) Say("note", text);
}

void Report::Fail(std::string_view text, std::string_view file) {
    Fail(OwnReason(text), file);
}

void Report::Fail(const Reason& reason, std::string_view file) {
    mFailed = true;
    if (!mWhy.IsKnown()) mWhy = reason;
    mPending = {};
    Say("error", reason.text, file);
    mRuns.back().isOwn = true;
}

bool Report::FailWithReason(std::size_t mark, const std::string& before, std::string_view file) {
    mFailed = true;
    Reason reason = mPending.IsKnown() ? std::exchange(mPending, {}) : LastReason();
    if (HasOwnErrorSince(mark)) return true;
    if (!reason.IsKnown()) return false;
    reason.text = before + reason.text;
    Fail(reason, file);
    return true;
}

void Report::FailUnlessSaid(std::size_t mark, std::string_view text, std::string_view file) {
    if (FailWithReason(mark, std::string(text) + ": ", file)) return;
    if (IsOnlyNotedSince(mark)) Fail(text, file);
}

void Report::FailToRead(std::size_t mark, const std::string& place) {
    if (FailWithReason(mark, place, {})) return;
    if (IsOnlyNotedSince(mark)) Fail(place + "cannot be read");
}

void Report::Remember(bool hasAnswered) {
    mPending = hasAnswered ? Reason() : LastReason();
}

void Report::Take(const Report& other) {
    mRuns.insert(mRuns.end(), other.mRuns.begin(), other.mRuns.end());
    mCount += other.mCount;
    mFailed = mFailed || other.mFailed;
    if (!mWhy.IsKnown()) mWhy = other.mWhy;
    out += other.out;
    work.Take(other.work);
}

bool Report::IsPrinted(const Run& run) const {
    if (!printsOnlyErrors || run.kind == "error") return true;
    return mFailed && run.kind != "note" &&
           std::ranges::none_of(mRuns, [](const Run& other) { return other.kind == "error"; });
}

bool Report::IsOnlyNotedSince(std::size_t mark) const {
    std::size_t end = mCount;
    for (auto run = mRuns.rbegin(); run != mRuns.rend() && end > mark; ++run) {
        if (run->kind != "note") return false;
        end -= run->count;
    }
    return true;
}

bool Report::HasOwnErrorSince(std::size_t mark) const {
    std::size_t end = mCount;
    for (auto run = mRuns.rbegin(); run != mRuns.rend() && end > mark; ++run) {
        if (run->isOwn) return true;
        end -= run->count;
    }
    return false;
}

bool Report::IsEcho(std::size_t run) const {
    if (printsEvery || run == 0 || mRuns[run].text != "format is not supported") return false;
    return mRuns[run - 1].text == "Frame index out of range" && mRuns[run - 1].file == mRuns[run].file;
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
    for (std::size_t i = 0; i < mRuns.size(); ++i) {
        const Run& run = mRuns[i];
        std::vector<std::string> texts;
        if (IsPrinted(run) && !IsEcho(i)) AppendFolded(run.text, run.count, texts);
        for (const std::string& text : texts)
            WriteError(std::format("kavra: {}\n", PrintableName(std::format("{}: {}: {}", run.file, run.kind, text))));
    }
}

MessageScope::MessageScope(Report& report, std::string file)
    : mReport(report), mFile(std::move(file)), mOuter(currentScope) {
    currentScope = this;
}

MessageScope::~MessageScope() {
    currentScope = mOuter;
    if (mOuter == nullptr) TakeLibraryLines(mReport, mFile);
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
