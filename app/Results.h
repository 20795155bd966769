/// What is told of all files together: as JSON, in one line for people, and by the exit status.
#pragma once

#include "Description.h"

#include <vector>

namespace Kavra::App {

/// Has `AddResult` keep what becomes of each file, for `ResultsText`. To be called before there are any.
void KeepResults();

/// Says that standard output is one JSON document, to which nothing may be added.
void PrintJsonAlone();
bool PrintsJsonAlone();

/// Takes down what became of a file. Threads: one at a time.
void AddResult(const Report& report);

/// Prints the results, where they are kept: one JSON array with an object for each file, in the order in which they were
/// added.
void PrintResults();

/// The object of one file: `file`, `outputs`, `status` (written, kept, planned, read or failed), `error` where it failed,
/// and `warnings`, which are all messages.
Json WorkJson(const Report& report);

/// "998 written, 2 failed" on standard error for several files, unless only errors are printed.
void PrintSummary(const std::vector<Report>& reports);

/// Remembers a failure that may be none the next time: memory or the disk was full. To be called on the thread of the
/// work, behind it. Threads: any.
void WatchForTemporary(const Report& report);
/// The same by the last words of what is said.
void WatchForTemporary(std::string_view text);

/// Whether there was such a failure.
bool HadTemporaryFailure();

}  // namespace Kavra::App
