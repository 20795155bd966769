/// What a batch has done, a line of JSON a file.
#pragma once

#include "ResultWatch.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_set>

namespace Kavra::App {

/// A number of 64 bits that is the same for the same bytes everywhere and in all versions (FNV-1a, and then mixed so that
/// all of its bits count).
std::uint64_t StableHash(std::string_view bytes);

/// Such a number of an input as it is now: its name, size and time of change, and the settings that it is worked on with.
std::uint64_t KeyOf(const std::string& file, std::uint64_t settings);

/// Lines are appended each by one write, so that several programs may share a log, and one that is killed leaves whole
/// lines.
class BatchLog {
public:
    BatchLog() = default;
    ~BatchLog();
    BatchLog(const BatchLog&) = delete;
    BatchLog& operator=(const BatchLog&) = delete;

    /// Opens a log to append to. Empty on success, else why not.
    std::string Open(const std::filesystem::path& path);

    /// Reads which inputs are done: all but those that failed for want of memory or of space on a disk, and, where
    /// `retries`, those that failed at all. What is no line of a log is passed over.
    void ReadDone(const std::filesystem::path& path, bool retries);
    bool IsDone(std::uint64_t key) const { return mDone.contains(key); }

    /// Adds a line for a file. Does nothing where no log is open.
    void Add(const Report& report, const WorkFacts& facts, std::uint64_t settings);

    /// Why a line could not be added; empty when all were.
    const std::string& Loss() const { return mLoss; }

private:
    int mFile = -1;
    std::string mLoss;
    std::unordered_set<std::uint64_t> mDone;
};

}  // namespace Kavra::App
