/// Hearing of every file as its work is done.
#pragma once

#include "Messages.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace Kavra::App {

/// What is known of a file's work beside its report.
struct WorkFacts {
    double milliseconds = 0;
    std::int64_t goodRows = -1;  ///< of a file that ends early; negative where that is not known
    bool isTemporary = false;    ///< it failed for want of memory or of space on a disk
};

using ResultWatcher = std::function<void(const Report&, const WorkFacts&)>;

/// Has `watcher` called with every result, one at a time, in the order of the files. No sums are printed then.
void WatchResults(ResultWatcher watcher);

/// Takes the facts of a report's work on this thread, while it lives.
class WorkTimer {
public:
    explicit WorkTimer(const Report& report) : mReport(report) {}
    ~WorkTimer();
    WorkTimer(const WorkTimer&) = delete;
    WorkTimer& operator=(const WorkTimer&) = delete;

private:
    const Report& mReport;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

}  // namespace Kavra::App
