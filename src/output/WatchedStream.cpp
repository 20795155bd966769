#include "output/WatchedStream.h"

#include <cstdio>
#include <new>

namespace Kavra::Devices {

namespace {

ssize_t Write(void* file, const char* bytes, std::size_t size) {
    return static_cast<ssize_t>(static_cast<WatchedFile*>(file)->write(bytes, size));
}

int Seek(void* file, off64_t* offset, int origin) {
    auto& watched = *static_cast<WatchedFile*>(file);
    const auto end = static_cast<std::int64_t>(watched.size());
    const std::int64_t from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? watched.tell() : end;
    if (!watched.seek(from + *offset)) return -1;
    *offset = watched.tell();
    return 0;
}

/// A stream whose bytes go through functions of one's own (https://man7.org/linux/man-pages/man3/fopencookie.3.html).
Common::FileHandle OpenOver(WatchedFile& file) {
    Common::FileHandle stream(
        fopencookie(&file, "wb", {.read = nullptr, .write = Write, .seek = Seek, .close = nullptr}));
    if (!stream) throw std::bad_alloc();
    return stream;
}

}  // namespace

WatchedStream::WatchedStream(WatchedFile& file)
    : Common::FileHandle(OpenOver(file)), IOFile(Common::FileHandle::get(), Write) {}

void WatchedStream::HandOn() {
    (void)std::fflush(handle());
}

}  // namespace Kavra::Devices
