/// Writing a file so that under its name there is all of it or what was there before.
#pragma once

#include "common/FileHandle.h"

#include <cstddef>
#include <filesystem>

namespace Kavra::Common {

/// A file beside its final name: gone again unless it is committed. Its name cannot be known beforehand, and it is
/// written only where nothing has that name. A final name that something other than a regular file has is refused.
class UnfinishedFile {
public:
    explicit UnfinishedFile(std::filesystem::path finalPath);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    /// Adds bytes, of which whoever watches hears. False when that fails now or anything failed before. Throws
    /// `Cancelled`.
    bool Write(const void* data, std::size_t bytes);

    /// Closes the file and gives it its name. A full disk may show only now.
    bool Commit();

    /// What failed first, an `errno` value, `EINVAL` for a name that is refused; 0 where nothing did.
    int Error() const { return mError; }

private:
    bool Fail(int error);

    std::filesystem::path mFinal;
    std::filesystem::path mPath;
    FileHandle mFile;
    int mError = 0;
};

}  // namespace Kavra::Common
