/// Lines that libraries print by themselves on standard error, given to the file that they belong to.
#pragma once

#include "Messages.h"

#include <string>

namespace Kavra::App {

/// From now on what others write to standard error waits in memory until it is known whose it is. Where the program dies
/// of a signal, it is printed first. Not with sanitizers, whose words are the program's last. To be called once, before
/// there are other threads.
void CatchLibraryLines();

/// Where the program itself writes its messages.
int ErrorStream();

/// This thread works on the file of a report, as long as it lives. Lines that come meanwhile are warnings of that file
/// where no other thread works on one, else of the run: "kavra: warning: ...".
class LibraryLineScope {
public:
    explicit LibraryLineScope(Report& report);
    ~LibraryLineScope();
    LibraryLineScope(const LibraryLineScope&) = delete;
    LibraryLineScope& operator=(const LibraryLineScope&) = delete;

private:
    Report& mReport;
    bool mIsOuter;
};

/// Says the lines that have come by now of `file`, or of the report's own where that is empty; within a
/// `LibraryLineScope` of this thread, outside of any nothing.
void TakeLibraryLines(Report& report, const std::string& file);

/// Prints those that are left as those of the run.
void PrintLibraryLines();

}  // namespace Kavra::App
