#include "common/RegularFile.h"

#include <kavra/objects/OS.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace Kavra::OS {
namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : mNumber(number) {}
    ~Descriptor() {
        if (mNumber >= 0) close(mNumber);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return mNumber; }
    int Release() { return std::exchange(mNumber, -1); }

private:
    int mNumber;
};

struct OpenMode {
    int flags = 0;
    bool empties = false;  ///< the file's old contents go
};

/// What a mode of `fopen` asks for; nothing when it is none. Files are not emptied by these flags: what is no regular
/// file must be refused first.
std::optional<OpenMode> ParseMode(std::string_view mode) {
    if (mode.empty()) return std::nullopt;
    const char kind = mode.front();
    if (kind != 'r' && kind != 'w' && kind != 'a') return std::nullopt;
    mode.remove_prefix(1);
    if (mode.find_first_not_of("+btex") != std::string_view::npos) return std::nullopt;
    OpenMode result{kind == 'r' ? O_RDONLY : O_WRONLY | O_CREAT, kind == 'w'};
    if (mode.contains('+')) result.flags = (result.flags & ~O_ACCMODE) | O_RDWR;
    if (mode.contains('x') && kind != 'r') result.flags |= O_EXCL;
    if (kind == 'a') result.flags |= O_APPEND;
    return result;
}

/// 0 for a regular file, else the error that says why not.
int Refusal(const struct stat& status) {
    if (S_ISREG(status.st_mode)) return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

/// Opens and checks; the descriptor goes to `file`.
int OpenRegular(std::FILE** file, const char* path, const char* mode, const OpenMode& how) {
    // Looked at before it is opened, since even that can wake a pipe's writer or move a device; and again after, since
    // the path may mean something else by then.
    struct stat status{};
    if (stat(path, &status) == 0) {
        if (const int refusal = Refusal(status)) return refusal;
    }
    Descriptor descriptor(open(path, how.flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666));
    if (descriptor.Get() < 0) return errno;
    if (fstat(descriptor.Get(), &status) != 0) return errno;
    if (const int refusal = Refusal(status)) return refusal;
    if (how.empties && ftruncate(descriptor.Get(), 0) != 0) return errno;
    *file = fdopen(descriptor.Get(), mode);
    if (*file == nullptr) return errno;
    descriptor.Release();
    return 0;
}

}  // namespace

int fopen(std::FILE** file, const char* path, const char* mode) {
    if (file == nullptr) return EINVAL;
    *file = nullptr;
    if (path == nullptr || mode == nullptr) return EINVAL;
    const std::optional<OpenMode> how = ParseMode(mode);
    return how ? OpenRegular(file, path, mode, *how) : EINVAL;
}

int wfopen(std::FILE** file, const wchar_t* path, const wchar_t* mode) {
    if (file == nullptr) return EINVAL;
    *file = nullptr;
    if (path == nullptr || mode == nullptr) return EINVAL;
    try {
        return fopen(file, ToUtf8(path).c_str(), ToUtf8(mode).c_str());
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

bool IsRegularFile(const wchar_t* path) {
    return Common::IsRegularFile(path);
}

}  // namespace Kavra::OS
