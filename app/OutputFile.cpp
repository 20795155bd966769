#include "OutputFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <format>
#include <mutex>
#include <random>
#include <set>
#include <thread>

namespace Kavra::App {
namespace {

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
    return final.parent_path() / std::format(".kavra-{:08x}{:08x}", random(), random());
}

/// Makes the folder for its owner only, or leaves that to the writer, who says what is wrong where it cannot be made.
std::filesystem::path MakeHiddenFolder(const std::filesystem::path& final) {
    std::filesystem::path folder = HiddenName(final);
    while (mkdir(folder.c_str(), S_IRWXU) != 0 && errno == EEXIST)
        folder = HiddenName(final);
    return folder;
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

}  // namespace

OutputFile::OutputFile(const std::filesystem::path& final) : mFinal(Resolve(final)) {
    Unfinished& unfinished = TheUnfinished();
    const std::lock_guard lock(unfinished.mutex);
    mHidden = MakeHiddenFolder(mFinal);
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
    unfinished.folders.erase(mHidden);
}

std::string OutputFile::Commit() {
    std::string obstacle = NameObstacle(mFinal);
    if (!obstacle.empty()) return obstacle;
    std::error_code error;
    std::filesystem::rename(mTemporary, mFinal, error);
    return error ? ErrorText(error.value()) : std::string();
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
    return {};
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
