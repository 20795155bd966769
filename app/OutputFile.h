/// Output files that appear under their name only when they are whole.
#pragma once

#include <filesystem>
#include <string>

namespace Kavra::App {

/// A file in the making: written under a hidden name in the same folder, with the same extension, and renamed when whole.
/// Without `Commit` the hidden file is removed, also when the program is interrupted.
class OutputFile {
public:
    explicit OutputFile(std::filesystem::path final);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write.
    const std::filesystem::path& TemporaryPath() const { return mTemporary; }

    /// Gives the file its name. Empty on success, else why not.
    std::string Commit();

private:
    std::filesystem::path mFinal;
    std::filesystem::path mTemporary;
};

/// Why nothing can be written at `path`, as far as a look at the file system tells: a folder or device of that name,
/// a folder that may not be written to, a full disk. Empty when nothing speaks against it.
std::string WriteObstacle(const std::filesystem::path& path);

/// Removes the unfinished files and ends the program when it is interrupted. To be called once, before any other
/// thread is started.
void WatchForInterruption();

}  // namespace Kavra::App
