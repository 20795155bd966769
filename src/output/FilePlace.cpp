#include "output/FilePlace.h"

#include "common/Utf8.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>

namespace Kavra::Devices {

namespace {

/// Whether a file that takes this one's name is as good to everyone who knows it: no link leads to it but its name, and
/// it is ours to write.
bool IsReplaceable(const std::string& path) {
    struct stat old{};
    return lstat(path.c_str(), &old) == 0 && S_ISREG(old.st_mode) && old.st_nlink == 1 && old.st_uid == geteuid() &&
           faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

bool IsFree(const std::string& path) {
    struct stat old{};
    return lstat(path.c_str(), &old) != 0 && errno == ENOENT;
}

std::wstring RandomText() {
    std::uint64_t number = 0;
    (void)getrandom(&number, sizeof(number), GRND_NONBLOCK);
    std::wstring text;
    for (int digit = 0; digit < 16; ++digit, number >>= 4)
        text += L"0123456789abcdef"[number & 15];
    return text;
}

/// A hidden name in the same folder, with the same extension.
std::wstring NameBeside(std::wstring_view path) {
    const std::size_t folder = path.rfind(L'/') + 1;  // 0 without one
    const std::size_t dot = path.rfind(L'.');
    const bool hasExtension = dot != std::wstring_view::npos && dot >= folder;
    std::wstring name(path.substr(0, folder));
    name += L".kavra-" + std::to_wstring(getpid()) + L"-" + RandomText();
    if (hasExtension) name += path.substr(dot);
    return name;
}

/// Makes an empty file with the permissions of another; false when there is something under its name, or it cannot be
/// made.
bool MakeLike(const std::string& path, const std::string& model) {
    struct stat old{};
    if (stat(model.c_str(), &old) != 0) return false;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) return false;
    const bool made = fchmod(file, old.st_mode & 0777) == 0;
    close(file);
    if (!made) unlink(path.c_str());
    return made;
}

}  // namespace

FilePlace::FilePlace(const KString& path) : mPath(path.ToChars()), mWasFree(IsFree(Common::ToUtf8(mPath.c_str()))) {
    std::string own = Common::ToUtf8(mPath.c_str());
    if (!IsReplaceable(own)) return;
    std::wstring besidePath = NameBeside(mPath);
    std::string beside = Common::ToUtf8(besidePath.c_str());
    if (!MakeLike(beside, own)) return;
    mPath = std::move(besidePath);
    mBeside = std::move(beside);
    mOwn = std::move(own);
}

FilePlace::~FilePlace() {
    if (!mBeside.empty()) unlink(mBeside.c_str());
}

void FilePlace::Discard() {
    if (mWasFree) unlink(Common::ToUtf8(mPath.c_str()).c_str());
}

bool FilePlace::Commit() {
    if (mBeside.empty()) return true;
    if (std::rename(mBeside.c_str(), mOwn.c_str()) != 0) return false;
    mBeside.clear();
    return true;
}

}  // namespace Kavra::Devices
