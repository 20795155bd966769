#include "LibraryLines.h"

#include "Printable.h"
#include "StandardStreams.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <format>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

namespace Kavra::App {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif
#else
constexpr bool kIsSanitized = false;
#endif

constexpr std::array kDeadly = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV};

int errorStream = STDERR_FILENO;
int caught = -1;  // a file in memory; standard error, where it is open

using Lines = std::vector<std::string>;

/// Whose lines they are. Those that came while a thread was alone wait for it when another one begins.
struct Owners {
    std::mutex mutex;
    off_t read = 0;  ///< bytes of `caught` that were taken
    int active = 0;  ///< threads that work on files
    std::thread::id alone;
    Lines ofAlone;
};

Owners& TheOwners() {
    static Owners& owners = *new Owners;  // outlives every thread that may still use it
    return owners;
}

thread_local bool isWorking = false;

/// Appends what is still to be taken to `text`. Only calls that a signal's handler may do.
template <class Take>
off_t ReadFrom(off_t at, const Take& take) {
    constexpr std::size_t kBuffer = 4096;
    std::array<char, kBuffer> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled by the read
    for (;;) {
        const ssize_t count = pread(caught, buffer.data(), buffer.size(), at);
        if (count <= 0) return at;
        take(buffer.data(), static_cast<std::size_t>(count));
        at += count;
    }
}

/// What has come since the last time. The file is emptied when it has grown and nobody is at work.
Lines TakeNew(Owners& owners) {
    constexpr off_t kMaxKept = 1 << 20;
    if (caught < 0) return {};
    std::string text;
    owners.read = ReadFrom(owners.read, [&](const char* bytes, std::size_t count) { text.append(bytes, count); });
    if (owners.active == 0 && owners.read > kMaxKept && ftruncate(caught, 0) == 0) owners.read = 0;
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty()) lines.push_back(Printable(line));
    return lines;
}

void PrintAsOfRun(const Lines& lines) {
    Report run("");
    for (const std::string& line : lines)
        run.Say("warning", line);
    for (const std::string& text : run.Texts())
        WriteError(std::format("kavra: warning: {}\n", text));
}

void DieAloud(int number) {
    (void)ReadFrom(TheOwners().read,
                   [](const char* bytes, std::size_t count) { (void)!write(errorStream, bytes, count); });
    (void)raise(number);
}

}  // namespace

void CatchLibraryLines() {
    if (kIsSanitized) return;
    const int real = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int file = memfd_create("kavra-lines", MFD_CLOEXEC);
    const bool isReady = real >= 0 && file >= 0 && fcntl(file, F_SETFL, O_APPEND) == 0;
    if (!isReady || dup2(file, STDERR_FILENO) < 0) {
        if (real >= 0) close(real);
        if (file >= 0) close(file);
        return;
    }
    (void)TheOwners();  // before a signal needs them
    errorStream = real;
    caught = file;
    for (const int number : kDeadly) {
        struct sigaction action{};
        action.sa_handler = DieAloud;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        (void)sigaction(number, &action, nullptr);
    }
}

int ErrorStream() {
    return errorStream;
}

LibraryLineScope::LibraryLineScope(Report& report) : mReport(report), mIsOuter(!std::exchange(isWorking, true)) {
    if (!mIsOuter) return;
    Owners& owners = TheOwners();
    const std::lock_guard lock(owners.mutex);
    Lines lines = TakeNew(owners);
    if (owners.active == 1 && owners.alone != std::thread::id()) {
        owners.ofAlone.insert(owners.ofAlone.end(), lines.begin(), lines.end());
    } else {
        PrintAsOfRun(lines);
    }
    if (++owners.active == 1) owners.alone = std::this_thread::get_id();
}

LibraryLineScope::~LibraryLineScope() {
    if (!mIsOuter) return;
    TakeLibraryLines(mReport, {});
    isWorking = false;
    Owners& owners = TheOwners();
    const std::lock_guard lock(owners.mutex);
    if (owners.alone == std::this_thread::get_id()) owners.alone = {};
    --owners.active;
}

void TakeLibraryLines(Report& report, const std::string& file) {
    if (caught < 0 || !isWorking) return;
    Owners& owners = TheOwners();
    const std::lock_guard lock(owners.mutex);
    Lines mine;
    if (owners.alone == std::this_thread::get_id()) mine = std::exchange(owners.ofAlone, {});
    Lines lines = TakeNew(owners);
    if (owners.active > 1) {
        PrintAsOfRun(lines);
    } else {
        mine.insert(mine.end(), lines.begin(), lines.end());
        owners.alone = std::this_thread::get_id();
    }
    mine.erase(std::ranges::unique(mine).begin(), mine.end());  // a file may be read more than once
    for (const std::string& line : mine)
        report.Say("warning", line, file);
}

void PrintLibraryLines() {
    Owners& owners = TheOwners();
    const std::lock_guard lock(owners.mutex);
    PrintAsOfRun(TakeNew(owners));
}

}  // namespace Kavra::App
