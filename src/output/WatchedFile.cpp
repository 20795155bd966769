#include "output/WatchedFile.h"

#include "common/Boundary.h"
#include "common/Utf8.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <cerrno>

namespace Kavra::Devices {

WatchedFile::WatchedFile(const KString& path) : IOProxy(Common::ToUtf8(path), Write), mPath(path.ToChars()) {}

bool WatchedFile::seek(std::int64_t offset) {
    if (offset < 0) return false;
    m_pos = offset;
    return true;
}

std::size_t WatchedFile::read(void* bytes, std::size_t size) {
    const std::size_t done = pread(bytes, size, m_pos);
    m_pos += static_cast<std::int64_t>(done);
    return done;
}

std::size_t WatchedFile::write(const void* bytes, std::size_t size) {
    const std::size_t done = pwrite(bytes, size, m_pos);
    m_pos += static_cast<std::int64_t>(done);
    return done;
}

std::size_t WatchedFile::pread(void* bytes, std::size_t size, std::int64_t offset) {
    const std::lock_guard lock(mMutex);
    if (mFailed || !mFile || !MoveTo(offset)) return 0;
    const std::size_t done = std::fread(bytes, 1, size, mFile.get());
    mFileOffset = -1;  // a stream must be positioned between reading and writing
    return done;
}

std::size_t WatchedFile::pwrite(const void* bytes, std::size_t size, std::int64_t offset) {
    const std::lock_guard lock(mMutex);
    if (!mFailed) {
        errno = 0;
        mFailed = !Store(bytes, size, offset);
        if (mFailed && mError == 0) mError = errno;
    }
    mSize = std::max(mSize, static_cast<std::size_t>(offset) + size);
    return size;
}

bool WatchedFile::Store(const void* bytes, std::size_t size, std::int64_t offset) {
    if (!mFile) {
        // Below here are libraries in C, through which nothing may be thrown.
        std::FILE* file = nullptr;
        mError = Common::AtBoundary(ENOMEM, [&] { return OS::wfopen(&file, mPath.c_str(), L"w+b"); });
        if (mError != 0) return false;
        mFile.reset(file);
    }
    if (!MoveTo(offset) || std::fwrite(bytes, 1, size, mFile.get()) != size) return false;
    mFileOffset += static_cast<std::int64_t>(size);
    return true;
}

bool WatchedFile::MoveTo(std::int64_t offset) {
    if (offset == mFileOffset) return true;
    if (fseeko(mFile.get(), offset, SEEK_SET) != 0) return false;
    mFileOffset = offset;
    return true;
}

bool WatchedFile::Finish() {
    if (!mFile) return false;
    errno = 0;
    const bool closed = std::fclose(mFile.release()) == 0;
    if (!closed && mError == 0) mError = errno;
    return closed && !mFailed;
}

}  // namespace Kavra::Devices
