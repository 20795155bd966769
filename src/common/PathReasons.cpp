#include "common/PathReasons.h"

#include "common/MemoryPicture.h"
#include "common/Utf8.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace Kavra::Common {

namespace {

using Devices::EFailureKind;

/// What there is about an error of the system in the way to a file, when it is nothing but a path's.
void SayOfError(const char* path, int error, EFailureKind otherwise) {
    struct stat link{};
    switch (error) {
        case ENOENT:
            return Say(Devices::kFailureNoSuchFile, lstat(path, &link) == 0 && S_ISLNK(link.st_mode)
                                                        ? "the link leads to no file"
                                                        : "there is no such file");
        case ENOTDIR:
            return Say(Devices::kFailureNoSuchFile, "there is no such file: a part of its path is no folder");
        case ELOOP:
            return Say(Devices::kFailureNoSuchFile, "its links lead in a circle");
        case ENAMETOOLONG:
            return Say(Devices::kFailureNoSuchFile, "the name is longer than the system takes");
        case ENOMEM:
            return Say(Devices::kFailureOutOfMemory, "out of memory");
        default:
            return Say(otherwise, "{}", OneLine(std::generic_category().message(error)));
    }
}

/// What something else than a regular file is; null for one.
const char* OtherThing(const struct stat& status) {
    if (S_ISREG(status.st_mode)) return nullptr;
    if (S_ISDIR(status.st_mode)) return "it is a folder";
    if (S_ISFIFO(status.st_mode)) return "it is a pipe, not a file";
    return S_ISSOCK(status.st_mode) ? "it is a socket, not a file" : "it is a device, not a file";
}

/// Whether something was said.
bool SayOfThing(const struct stat& status) {
    const char* const thing = OtherThing(status);
    if (thing != nullptr)
        Say(S_ISDIR(status.st_mode) ? Devices::kFailureIsFolder : Devices::kFailureNoRegularFile, thing);
    return thing != nullptr;
}

constexpr const char* kEmpty = "the file is empty";

/// Whether a picture in memory stands for the file: nothing of the disk is said of that.
bool SayOfMemory(const wchar_t* path) {
    const MemoryPicture* const picture = MemoryPicture::Current();
    const auto bytes = picture != nullptr ? picture->Find(path) : std::nullopt;
    if (bytes && bytes->empty()) Say(Devices::kFailureEmptyFile, kEmpty);
    return bytes.has_value();
}

void SayOfReading(const std::string& path) {
    if (path.empty()) return Say(Devices::kFailureNoSuchFile, "the name of the file is empty");
    struct stat status{};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == EACCES) return Say(Devices::kFailureNoPermission, "no permission to enter a folder on its path");
        return SayOfError(path.c_str(), errno, Devices::kFailureCannotRead);
    }
    if (SayOfThing(status)) return;
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    const int error = errno;
    if (file >= 0) close(file);
    if (file < 0 && (error == EACCES || error == EPERM))
        return Say(Devices::kFailureNoPermission, "no permission to read it");
    if (file < 0) return SayOfError(path.c_str(), error, Devices::kFailureCannotRead);
    if (status.st_size == 0) Say(Devices::kFailureEmptyFile, kEmpty);
}

/// The folder that a file is in, "." for one without.
std::string FolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Whether something was said of the folder that a file is to be in.
bool SayOfFolder(const std::string& path) {
    const std::string folder = FolderOf(path);
    struct stat status{};
    if (stat(folder.c_str(), &status) != 0) {
        if (errno == EACCES) {
            Say(Devices::kFailureNoPermission, "no permission to enter a folder on its path");
        } else {
            Say(Devices::kFailureCannotWrite,
                errno == ENOTDIR ? "a part of its path is no folder" : "there is no such folder");
        }
        return true;
    }
    if (!S_ISDIR(status.st_mode)) {
        Say(Devices::kFailureCannotWrite, "a part of its path is no folder");
        return true;
    }
    return false;
}

void SayOfMaking(const std::string& path, int error) {
    if (path.empty()) return Say(Devices::kFailureCannotWrite, "the name of the file is empty");
    if (error == ENOSPC || error == EDQUOT) return SayOfWriting(error);
    struct stat status{};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && SayOfThing(status)) return;
    if (!exists && SayOfFolder(path)) return;
    const bool mayWrite = exists ? access(path.c_str(), W_OK) == 0 : access(FolderOf(path).c_str(), W_OK | X_OK) == 0;
    const int reason = error != 0 ? error : mayWrite ? 0 : errno;
    if (reason == EACCES || reason == EPERM) {
        return Say(Devices::kFailureNoPermission,
                   exists ? "no permission to write over it" : "no permission to write into its folder");
    }
    if (reason == EROFS) return Say(Devices::kFailureCannotWrite, "its folder is on a file system that is read-only");
    SayOfWriting(reason);
}

}  // namespace

void SayOfPathToRead(const wchar_t* path) noexcept {
    try {
        if (!SayOfMemory(path)) SayOfReading(ToUtf8(path));
    } catch (...) {
        SayCaught();
    }
}

void SayOfPathToWrite(const wchar_t* path, int error) noexcept {
    try {
        SayOfMaking(ToUtf8(path), error);
    } catch (...) {
        SayCaught();
    }
}

void SayOfFolderToMake(const wchar_t* folder) noexcept {
    try {
        std::filesystem::path path = ToUtf8(folder);
        struct stat status{};
        while (stat(path.empty() ? "." : path.c_str(), &status) != 0 && path.has_relative_path())
            path = path.parent_path();
        if (!S_ISDIR(status.st_mode)) return Say(Devices::kFailureCannotWrite, "a part of its path is no folder");
        if (access(path.empty() ? "." : path.c_str(), W_OK | X_OK) == 0)
            return Say(Devices::kFailureCannotWrite, "its folder cannot be made");
        if (errno == EROFS)
            return Say(Devices::kFailureCannotWrite, "its folder is on a file system that is read-only");
        Say(Devices::kFailureNoPermission, "no permission to make its folder");
    } catch (...) {
        SayCaught();
    }
}

void SayOfWriting(int error) noexcept {
    switch (error) {
        case 0:
            return Say(Devices::kFailureCannotWrite, "the system did not take its bytes");
        case ENOSPC:
            return Say(Devices::kFailureDiskFull, "the disk is full");
        case EDQUOT:
            return Say(Devices::kFailureDiskFull, "the owner's share of the disk is full");
        case ENOMEM:
            return Say(Devices::kFailureOutOfMemory, "out of memory");
        default:
            break;
    }
    try {
        Say(Devices::kFailureCannotWrite, "{}", OneLine(std::generic_category().message(error)));
    } catch (...) {
        SayCaught();
    }
}

}  // namespace Kavra::Common
