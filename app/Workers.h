/// Working on several inputs at a time.
#pragma once

#include "Messages.h"

#include <functional>
#include <string>
#include <vector>

namespace Kavra::App {

/// Calls `work` once for each report, `jobs` at a time (0: all cores), and prints the reports in the order given, each
/// as soon as it and all before it are done. An exception of `work` is that file's error and stops no other. A progress
/// bar is shown for more than one item when standard error is a terminal. True when no report failed.
bool ForEachReport(std::vector<Report>& reports, int jobs, const std::function<void(std::size_t, Report&)>& work);

/// Does one file's work; an exception is that file's error.
void Attempt(Report& report, const std::function<void()>& work);

/// The same as `ForEachReport` for one file.
bool ForOneReport(const std::string& file, const std::function<void(Report&)>& work);

/// The same, where more is to be done for the file afterwards: it has a result now only where nothing comes of that.
bool Prepare(const std::string& file, const std::function<void(Report&)>& work);

/// Calls `work(first, end)` for parts of 0..`count` that are at least `minPart` long, on as many threads as there are
/// cores. An exception of `work` is thrown again when all have ended.
void InParts(std::size_t count, std::size_t minPart, const std::function<void(std::size_t, std::size_t)>& work);

/// A report for each name, in order.
std::vector<Report> MakeReports(const std::vector<std::string>& files);

/// A bar on standard error, drawn only on a terminal and only for more than one item.
class Progress {
public:
    explicit Progress(std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Draws the bar again where it changed.
    void Show(std::size_t done);
    /// Takes the bar off the screen, so that something else can be printed.
    void Hide();

    /// Whether there is such a bar now, so that no other is to be drawn.
    static bool IsShown();

private:
    std::size_t mTotal;
    bool mActive;
    bool mDrawn = false;
    std::size_t mShown = 0;
};

}  // namespace Kavra::App
