#include "OutputFile.h"

#include "WritePolicy.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <format>
#include <mutex>
#include <random>
#include <set>
#include <string_view>
#include <thread>

namespace Kavra::App {
namespace {

constexpr std::string_view kHiddenStart = ".kavra-";

/// The hidden folders that may exist now.
struct Unfinished {
    std::mutex mutex;
    std::set<std::filesystem::path> folders;
};

Unfinished& TheUnfinished() {
    static Unfinished& unfinished = *new Unfinished;  // outlives every thread that may still use it
    return unfinished;
}

/// The file that a name stands for: a link is written through, not replaced.
std::filesystem::path Resolve(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) return path;
    std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target;
}

/// A name in the same folder that nobody can know beforehand.
std::filesystem::path HiddenName(const std::filesystem::path& final) {
    std::random_device random;
    return final.parent_path() / std::format("{}{:08x}{:08x}", kHiddenStart, random(), random());
}

/// Makes the folder for its owner only, or leaves that to the writer, who says what is wrong where it cannot be made.
/// While this program lives, the folder is locked, so that nobody takes it for an abandoned one.
std::filesystem::path MakeHiddenFolder(const std::filesystem::path& final, int& lock) {
    for (;;) {
        std::filesystem::path folder = HiddenName(final);
        if (mkdir(folder.c_str(), S_IRWXU) != 0) {
            if (errno == EEXIST) continue;
            return folder;
        }
        lock = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        struct stat status{};
        const bool isThere = lock < 0 || (flock(lock, LOCK_SH | LOCK_NB) == 0 && fstat(lock, &status) == 0 &&
                                          status.st_nlink > 0 && access(folder.c_str(), F_OK) == 0);
        if (isThere || errno == ENOLCK || errno == EOPNOTSUPP) return folder;
        close(lock);  // somebody took it for abandoned before it was locked
        lock = -1;
    }
}

/// A writer that is still at work may add a file while the folder is emptied. Once it is gone it takes no more.
void RemoveFolder(const std::filesystem::path& folder) {
    constexpr int kTries = 100;
    std::error_code failed;
    for (int i = 0; i < kTries; ++i) {
        std::filesystem::remove_all(folder, failed);
        if (!failed) return;
    }
}

/// The folder's name by way of its handle, whatever its own length: hosts take no long ones. A folder that was removed
/// is not made again under this name.
std::filesystem::path NameOfHandle(int handle, const std::filesystem::path& folder) {
    std::error_code ignored;
    std::filesystem::path name = std::format("/proc/self/fd/{}", handle);
    return handle >= 0 && std::filesystem::is_directory(name, ignored) ? name : folder;
}

/// The last thing that the program does: the lock is kept, so that no other file is begun.
void AbandonUnfinished() {
    Unfinished& unfinished = TheUnfinished();
    unfinished.mutex.lock();
    std::ranges::for_each(unfinished.folders, RemoveFolder);
}

/// What the caller told this process to ignore (nohup, a background job) stays ignored.
bool IsIgnored(int number) {
    struct sigaction action{};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Another signal ends the program as it ends others, whatever keeps it from tidying up.
void EndByTheNext(const sigset_t& signals) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (sigismember(&signals, number) == 1) (void)signal(number, SIG_DFL);
    }
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

bool endsByBrokenPipe = true;

std::string ErrorText(int code) {
    return std::generic_category().message(code);
}

std::filesystem::path NearestFolder(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path folder = std::filesystem::absolute(path, error).parent_path();
    while (!folder.empty() && !std::filesystem::exists(folder, error) && folder != folder.parent_path()) {
        folder = folder.parent_path();
    }
    return folder;
}

/// Tried: what is no real file system, as /proc, allows by its permissions what it then refuses. What else is wrong with
/// the folder is no answer. Nothing interrupts it between its two steps.
bool TakesFiles(const std::filesystem::path& folder) {
    const std::lock_guard lock(TheUnfinished().mutex);
    const std::filesystem::path name = HiddenName(folder / "file");
    if (mkdir(name.c_str(), S_IRWXU) == 0) {
        rmdir(name.c_str());
        return true;
    }
    return errno != ENOENT && errno != EPERM && errno != ENOSYS && errno != EOPNOTSUPP;
}

}  // namespace

OutputFile::OutputFile(const std::filesystem::path& final) : mFinal(Resolve(final)) {
    Unfinished& unfinished = TheUnfinished();
    const std::lock_guard lock(unfinished.mutex);
    mHidden = MakeHiddenFolder(mFinal, mLock);
    unfinished.folders.insert(mHidden);
    mFolder = open(mHidden.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    mTemporary = NameOfHandle(mFolder, mHidden) / "unfinished";
    mTemporary += mFinal.extension();
}

OutputFile::~OutputFile() {
    Unfinished& unfinished = TheUnfinished();
    const std::lock_guard lock(unfinished.mutex);
    if (mFolder >= 0) close(mFolder);
    RemoveFolder(mHidden);
    if (mLock >= 0) close(mLock);
    unfinished.folders.erase(mHidden);
}

std::string OutputFile::Commit() {
    std::string obstacle = NameObstacle(mFinal);
    if (!obstacle.empty()) return obstacle;
    if (KeepsOldFiles()) {
        if (renameat2(AT_FDCWD, mTemporary.c_str(), AT_FDCWD, mFinal.c_str(), RENAME_NOREPLACE) == 0) return {};
        if (errno != EINVAL && errno != ENOSYS) return ErrorText(errno);  // which file systems without that answer
    }
    std::error_code error;
    std::filesystem::rename(mTemporary, mFinal, error);
    return error ? ErrorText(error.value()) : std::string();
}

void RemoveAbandoned(const std::filesystem::path& folder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (!entry.path().filename().native().starts_with(kHiddenStart)) continue;
        const int lock = open(entry.path().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (lock < 0) continue;
        if (flock(lock, LOCK_EX | LOCK_NB) == 0) RemoveFolder(entry.path());
        close(lock);
    }
}

std::string NameObstacle(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) return ErrorText(EISDIR);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return "it is not a regular file";
    return {};
}

std::string FolderObstacle(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path folder = NearestFolder(path);
    if (!std::filesystem::is_directory(folder, error)) return ErrorText(ENOTDIR);
    if (access(folder.c_str(), W_OK | X_OK) != 0) return ErrorText(errno);
    struct statvfs space{};
    if (statvfs(folder.c_str(), &space) == 0 && space.f_bavail == 0 && space.f_blocks != 0) return ErrorText(ENOSPC);
    return TakesFiles(folder) ? std::string() : std::format("the folder {} takes no files", folder.string());
}

std::string GrowthObstacle(const std::filesystem::path& path, std::uint64_t bytes) {
    constexpr std::uint64_t kMin = 1 << 20;  // the last block of the disk may have room for a few more
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) return ErrorText(errno);
    const int error = posix_fallocate(file, lseek(file, 0, SEEK_END), static_cast<off_t>(std::max(bytes, kMin)));
    close(file);
    const bool isKnown = error == ENOSPC || error == EDQUOT || error == EFBIG || error == EIO;
    return isKnown ? ErrorText(error) : std::string();
}

void WatchForInterruption() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (!IsIgnored(number)) sigaddset(&signals, number);
    }
    endsByBrokenPipe = !IsIgnored(SIGPIPE);
    for (const int number : {SIGPIPE, SIGXFSZ})
        (void)signal(number, SIG_IGN);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        int number = 0;
        sigwait(&signals, &number);
        EndByTheNext(signals);
        AbandonUnfinished();
        _exit(128 + number);
    }).detach();
}

void EndByBrokenPipe() {
    if (!endsByBrokenPipe) return;
    AbandonUnfinished();
    (void)signal(SIGPIPE, SIG_DFL);
    (void)raise(SIGPIPE);
}

}  // namespace Kavra::App
