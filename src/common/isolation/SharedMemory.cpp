#include "common/isolation/SharedMemory.h"

#include "common/Limits.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <limits>

namespace Kavra::Common {

Descriptor NewSharedMemory() {
    return Descriptor(memfd_create("kavra-pixels", MFD_CLOEXEC | MFD_ALLOW_SEALING));
}

void* MapSealed(int file, std::uint64_t offset, std::uint64_t bytes) {
    // What is behind the end of a file that has shrunk ends whoever touches it.
    if (fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) return nullptr;
    struct stat status{};
    if (fstat(file, &status) != 0 || status.st_size < 0 || bytes < 1) return nullptr;
    if (Sum<std::uint64_t>(offset, bytes) > static_cast<std::uint64_t>(status.st_size)) return nullptr;
    void* const pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, static_cast<off_t>(offset));
    return pages != MAP_FAILED ? pages : nullptr;
}

bool CopyShared(int file, std::uint64_t offset, std::span<unsigned char> out) {
    while (!out.empty()) {
        if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return false;
        const ssize_t count = pread(file, out.data(), out.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        out = out.subspan(static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
    }
    return true;
}

}  // namespace Kavra::Common
