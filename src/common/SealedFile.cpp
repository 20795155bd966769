#include "common/SealedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace Kavra::Common {

namespace {

bool WriteAll(int file, std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

int NewSealedFile(std::span<const unsigned char> bytes) {
    const int file = memfd_create("kavra-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) return -1;
    constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (WriteAll(file, bytes) && fcntl(file, F_ADD_SEALS, kSeals) == 0) return file;
    close(file);
    return -1;
}

}  // namespace Kavra::Common
