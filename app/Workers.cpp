#include "Workers.h"

#include "LibraryLines.h"
#include "ResultWatch.h"
#include "Results.h"
#include "StageBar.h"
#include "StandardStreams.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <format>
#include <mutex>
#include <new>
#include <thread>

namespace Kavra::App {
namespace {

std::atomic<int> activeBars = 0;

/// Prints finished reports in order, however they finish.
class Printer {
public:
    explicit Printer(const std::vector<Report>& reports)
        : mReports(reports), mDone(reports.size(), false), mProgress(reports.size()) {}

    void Finished(std::size_t index) {
        const std::lock_guard lock(mMutex);
        mDone[index] = true;
        if (index == mNext) mProgress.Hide();
        for (; mNext < mDone.size() && mDone[mNext]; ++mNext) {
            mReports[mNext].Print();
            AddResult(mReports[mNext]);
        }
        mProgress.Show(++mFinished);
    }

private:
    const std::vector<Report>& mReports;
    std::mutex mMutex;
    std::vector<bool> mDone;
    std::size_t mNext = 0;
    std::size_t mFinished = 0;
    Progress mProgress;
};

}  // namespace

void Attempt(Report& report, const std::function<void()>& work) {
    const LibraryLineScope lines(report);
    const WorkTimer timer(report);
    const StageBar bar;
    try {
        work();
    } catch (const std::bad_alloc&) {
        report.Fail(OwnReason("there is not enough memory", Devices::kFailureOutOfMemory));
    } catch (const std::exception& error) {
        report.Fail(error.what());
    }
    WatchForTemporary(report);
}

bool ForEachReport(std::vector<Report>& reports, int jobs, const std::function<void(std::size_t, Report&)>& work) {
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t workers = std::min(jobs > 0 ? static_cast<std::size_t>(jobs) : cores, reports.size());
    {
        Printer printer(reports);
        std::atomic<std::size_t> next = 0;
        const auto loop = [&] {
            for (std::size_t index = next++; index < reports.size(); index = next++) {
                Attempt(reports[index], [&] { work(index, reports[index]); });
                printer.Finished(index);
            }
        };
        std::vector<std::jthread> threads;
        for (std::size_t i = 1; i < workers; ++i)
            threads.emplace_back(loop);
        loop();
    }
    return std::ranges::none_of(reports, &Report::Failed);
}

bool ForOneReport(const std::string& file, const std::function<void(Report&)>& work) {
    std::vector<Report> reports = MakeReports({file});
    return ForEachReport(reports, 1, [&](std::size_t, Report& report) { work(report); });
}

bool Prepare(const std::string& file, const std::function<void(Report&)>& work) {
    Report report(file);
    Attempt(report, [&] { work(report); });
    report.Print();
    if (report.Failed() || !report.work.IsEmpty()) AddResult(report);
    return !report.Failed();
}

void InParts(std::size_t count, std::size_t minPart, const std::function<void(std::size_t, std::size_t)>& work) {
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t parts = std::clamp<std::size_t>(count / std::max<std::size_t>(minPart, 1), 1, cores);
    std::vector<std::exception_ptr> failures(parts);
    const auto attempt = [&](std::size_t part) {
        try {
            work(count * part / parts, count * (part + 1) / parts);
        } catch (...) {
            failures[part] = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> threads;
        for (std::size_t part = 1; part < parts; ++part)
            threads.emplace_back(attempt, part);
        attempt(0);
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) std::rethrow_exception(failure);
    }
}

std::vector<Report> MakeReports(const std::vector<std::string>& files) {
    std::vector<Report> reports;
    reports.reserve(files.size());
    for (const std::string& file : files)
        reports.emplace_back(file);
    return reports;
}

Progress::Progress(std::size_t total)
    : mTotal(total), mActive(total > 1 && !PrintsOnlyErrors() && isatty(ErrorStream())) {
    if (mActive) ++activeBars;
}

Progress::~Progress() {
    Hide();
    if (mActive) --activeBars;
}

bool Progress::IsShown() {
    return activeBars > 0;
}

void Progress::Show(std::size_t done) {
    if (!mActive) return;
    constexpr std::size_t kWidth = 40;
    constexpr std::size_t kMaxSteps = 500;  // a bar of many thousands of lines is not drawn for each of them
    const std::size_t step = mTotal > kMaxSteps ? kMaxSteps * done / mTotal : done;
    if (mDrawn && step == mShown) return;
    mShown = step;
    const std::size_t filled = kWidth * done / mTotal;
    const std::string bar =
        std::format("\r[{}{}] {}/{}", std::string(filled, '#'), std::string(kWidth - filled, ' '), done, mTotal);
    WriteError(bar);
    mDrawn = true;
}

void Progress::Hide() {
    if (!mDrawn) return;
    WriteError("\r\x1b[K");
    mDrawn = false;
}

}  // namespace Kavra::App
