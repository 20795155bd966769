#include "OutputFile.h"

#include <signal.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <format>
#include <mutex>
#include <set>
#include <thread>

namespace Kavra::App {
namespace {

/// The hidden files that exist now.
struct Unfinished {
    std::mutex mutex;
    std::set<std::filesystem::path> paths;
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

std::filesystem::path HiddenName(const std::filesystem::path& final) {
    static std::atomic<unsigned> counter = 0;
    return final.parent_path() / std::format(".kavra-{}-{}{}", getpid(), counter++, final.extension().string());
}

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

OutputFile::OutputFile(const std::filesystem::path& final) : mFinal(Resolve(final)), mTemporary(HiddenName(mFinal)) {
    Unfinished& unfinished = TheUnfinished();
    const std::lock_guard lock(unfinished.mutex);
    unfinished.paths.insert(mTemporary);
}

OutputFile::~OutputFile() {
    Unfinished& unfinished = TheUnfinished();
    const std::lock_guard lock(unfinished.mutex);
    std::error_code ignored;
    std::filesystem::remove(mTemporary, ignored);
    unfinished.paths.erase(mTemporary);
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

void WatchForInterruption() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // What the caller told this process to ignore (nohup, a background job) stays ignored.
        struct sigaction action{};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        int signal = 0;
        sigwait(&signals, &signal);
        Unfinished& unfinished = TheUnfinished();
        const std::lock_guard lock(unfinished.mutex);
        for (const std::filesystem::path& path : unfinished.paths)
            unlink(path.c_str());
        _exit(128 + signal);
    }).detach();
}

}  // namespace Kavra::App
