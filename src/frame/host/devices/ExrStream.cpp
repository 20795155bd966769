#include "frame/host/devices/ExrStream.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace Kavra::Devices {

namespace {

std::uint64_t LengthOrThrow(std::FILE* file) {
    const auto length = Common::FileLength(file);
    if (!length || *length > std::uint64_t{std::numeric_limits<std::int64_t>::max()})
        throw std::system_error(EIO, std::generic_category());
    return *length;
}

}  // namespace

ExrStream::ExrStream(Common::FileHandle file)
    : IStream(""), mFile(std::move(file)), mLength(LengthOrThrow(mFile.get())) {}

ExrStream::ExrStream(std::span<const unsigned char> bytes) : IStream(""), mBytes(bytes), mLength(bytes.size()) {}

bool ExrStream::read(char bytes[], int count) {
    const std::int64_t got = count < 0 ? -1 : read(bytes, static_cast<std::uint64_t>(count), mPosition);
    if (got != count) throw std::runtime_error("unexpected end of file");
    mPosition += static_cast<std::uint64_t>(count);
    return mPosition < mLength;
}

std::int64_t ExrStream::read(void* bytes, std::uint64_t count, std::uint64_t offset) {
    if (offset >= mLength) return 0;
    const std::uint64_t wanted = std::min(count, mLength - offset);
    if (!mFile) {
        std::copy_n(mBytes.subspan(offset).begin(), wanted, static_cast<unsigned char*>(bytes));
        return static_cast<std::int64_t>(wanted);
    }
    std::uint64_t done = 0;
    while (done < wanted) {
        const ssize_t got = pread(fileno(mFile.get()), static_cast<char*>(bytes) + done, wanted - done,
                                  static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += static_cast<std::uint64_t>(got);
    }
    return static_cast<std::int64_t>(done);
}

}  // namespace Kavra::Devices
