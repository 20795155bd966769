/// Output files that appear under their name only when they are whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace Kavra::App {

/// A file in the making: written with the same extension into a hidden folder of its own beside the final name, and
/// renamed when whole. Nobody else can have put anything into that folder, and what a writer puts there beside the file
/// goes with it. Without `Commit` all of it is removed, also when the program is interrupted.
class OutputFile {
public:
    explicit OutputFile(const std::filesystem::path& final);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write.
    const std::filesystem::path& TemporaryPath() const { return mTemporary; }

    /// Gives the file its name. Empty on success, else why not.
    std::string Commit();

private:
    std::filesystem::path mFinal;
    std::filesystem::path mHidden;     ///< the folder
    int mLock = -1;                    ///< an open handle of it, by which it is known to be in use
    int mFolder = -1;                  ///< another one, by which it is named
    std::filesystem::path mTemporary;  ///< the file in it
};

/// Removes what programs that were killed have left of outputs in a folder. What belongs to programs that run stays.
void RemoveAbandoned(const std::filesystem::path& folder);

/// Why no file can take the name `path`: a folder, a device or a pipe has it. Empty when nothing speaks against it.
std::string NameObstacle(const std::filesystem::path& path);

/// Why nothing could be written into the folder of `path`, as far as a look at the file system tells: it is no folder,
/// may not be written to, or its disk is full. Empty when nothing speaks against it.
std::string FolderObstacle(const std::filesystem::path& path);

/// Why a file could not grow by so many bytes just now: its disk or its owner's share of it is full, or it may not be
/// larger. Tried, as no question to the file system answers that. Empty when nothing speaks against it.
std::string GrowthObstacle(const std::filesystem::path& path, std::uint64_t bytes);

/// Removes the unfinished files and ends the program at once when it is interrupted, whatever it is in the middle of, and
/// without even that at the second signal; a broken pipe and a file that grew too
/// large become errors of the write. To be called once, before any other thread is started.
void WatchForInterruption();

/// Removes the unfinished files and ends the program as a pipe that nobody reads ends it; returns where the caller
/// wants none of that.
void EndByBrokenPipe();

}  // namespace Kavra::App
