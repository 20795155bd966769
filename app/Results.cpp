#include "Results.h"

#include "ResultWatch.h"
#include "StandardStreams.h"

#include <kavra/devices/LastFailure.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <format>
#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace Kavra::App {
namespace {

bool keepsResults = false;
bool printsJsonAlone = false;
std::atomic<bool> wasTemporary = false;

/// Whoever hears of results, and what is known of work that is done and not yet told.
struct Watch {
    std::mutex mutex;
    ResultWatcher watcher;
    std::map<const Report*, WorkFacts> facts;
};

Watch& TheWatch() {
    static Watch watch;
    return watch;
}

Json& Results() {
    static Json results = Json::array();
    return results;
}

std::string_view StatusOf(const Report& report) {
    const WorkRecord& work = report.work;
    if (report.Failed()) return "failed";
    if (!work.written.empty()) return "written";
    if (!work.planned.empty()) return "planned";
    return work.kept.empty() ? "read" : "kept";
}

bool IsTemporary(Devices::EFailureKind kind) {
    return kind == Devices::kFailureDiskFull || kind == Devices::kFailureOutOfMemory;
}

/// By the words, where the operation that failed is none of the handler's.
bool IsTemporaryText(std::string_view text) {
    static const std::array kTexts = {std::generic_category().message(ENOSPC), std::generic_category().message(EDQUOT),
                                      std::generic_category().message(ENOMEM),
                                      std::string("there is not enough memory"), std::string("std::bad_alloc")};
    return std::ranges::any_of(kTexts, [&](const std::string& end) { return text.ends_with(end); });
}

}  // namespace

void KeepResults() {
    keepsResults = true;
}

void PrintJsonAlone() {
    printsJsonAlone = true;
}

bool PrintsJsonAlone() {
    return printsJsonAlone;
}

void AddResult(const Report& report) {
    if (keepsResults) Results().push_back(WorkJson(report));
    Watch& watch = TheWatch();
    WorkFacts facts;
    {
        const std::lock_guard lock(watch.mutex);
        if (!watch.watcher) return;
        if (const auto found = watch.facts.extract(&report); !found.empty()) facts = found.mapped();
    }
    watch.watcher(report, facts);
}

void WatchResults(ResultWatcher watcher) {
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    watch.watcher = std::move(watcher);
    watch.facts.clear();
}

WorkTimer::~WorkTimer() {
    Watch& watch = TheWatch();
    const std::lock_guard lock(watch.mutex);
    if (!watch.watcher) return;
    WorkFacts facts;
    facts.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - mStart).count();
    const Devices::FailureReport failure = Devices::LastFailure();
    facts.goodRows = failure.kind == Devices::kFailureEndsEarly ? failure.goodRows : -1;
    facts.isTemporary = mReport.Failed() && (IsTemporary(failure.kind) || IsTemporaryText(mReport.LastText("")));
    watch.facts.insert_or_assign(&mReport, facts);
}

void PrintResults() {
    if (keepsResults) WriteOutput(JsonText(Results()));
}

Json WorkJson(const Report& report) {
    WorkRecord all;
    all.written = report.work.written;
    for (const auto* const more : {&report.work.kept, &report.work.planned})
        all.written.insert(all.written.end(), more->begin(), more->end());
    Json json = {{"file", report.File()}, {"outputs", all.written}, {"status", StatusOf(report)}};
    if (report.Failed()) AddFailure(json, report, "cannot be read");
    json["warnings"] = report.Texts();
    return json;
}

void PrintSummary(const std::vector<Report>& reports) {
    if (reports.size() < 2 || PrintsOnlyErrors() || TheWatch().watcher) return;
    constexpr std::array kWords = {std::pair("written", "written"), std::pair("planned", "would be written"),
                                   std::pair("kept", "kept"), std::pair("read", "read"), std::pair("failed", "failed")};
    std::string text;
    for (const auto& [status, word] : kWords) {
        const auto count = std::ranges::count(reports, std::string_view(status), StatusOf);
        if (count > 0) text += std::format("{}{} {}", text.empty() ? "" : ", ", count, word);
    }
    WriteError(std::format("kavra: {}\n", text));
}

void WatchForTemporary(const Report& report) {
    if (!report.Failed()) return;
    if (IsTemporary(report.Why().kind)) wasTemporary = true;
    WatchForTemporary(report.LastText(""));
}

void WatchForTemporary(std::string_view text) {
    if (IsTemporaryText(text)) wasTemporary = true;
}

bool HadTemporaryFailure() {
    return wasTemporary;
}

}  // namespace Kavra::App
