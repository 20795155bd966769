/// The file under a library's writer, watched for what the writer does not notice.
#pragma once

#include "common/FileHandle.h"

#include <kavra/devices/Export.h>

#include <OpenImageIO/filesystem.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

namespace Kavra::Devices {

/// Most of the library's writers report a picture as written though the disk was full, and the WebP writer calls itself
/// without end when a write fails. So every write to this file succeeds; whether the bytes are really there, `Finish`
/// tells. The file is made by the first write: a picture that a writer refuses leaves an old file as it is.
///
/// Threads: `pwrite` and `pread` from any, the rest one at a time.
class WatchedFile final : public OIIO::Filesystem::IOProxy {
public:
    explicit WatchedFile(const KString& path);

    /// Not "file": by that name some writers take the object for the library's own class.
    const char* proxytype() const override { return "watchedfile"; }
    bool seek(std::int64_t offset) override;
    std::size_t read(void* bytes, std::size_t size) override;
    std::size_t write(const void* bytes, std::size_t size) override;
    std::size_t pread(void* bytes, std::size_t size, std::int64_t offset) override;
    std::size_t pwrite(const void* bytes, std::size_t size, std::int64_t offset) override;
    std::size_t size() const override { return mSize; }

    /// Closes the file: whether anything was written and all of it is there.
    bool Finish();

    /// What the system said where that first failed, an `errno` value; 0 where nothing did or nothing was said.
    int Error() const { return mError; }

private:
    bool Store(const void* bytes, std::size_t size, std::int64_t offset);
    bool MoveTo(std::int64_t offset);

    std::wstring mPath;
    std::mutex mMutex;
    Common::FileHandle mFile;
    std::int64_t mFileOffset = 0;  ///< of the open file, which moves only when it must
    std::size_t mSize = 0;
    bool mFailed = false;
    int mError = 0;
};

}  // namespace Kavra::Devices
