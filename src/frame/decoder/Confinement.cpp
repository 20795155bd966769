#include "frame/decoder/Confinement.h"

#include "frame/decoder/CallFilter.h"

#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <limits>
#include <vector>

namespace Kavra::Decoder {

namespace {

// The parts of the kernel's interface that are younger than the headers may be (landlock(7)).
constexpr std::uint64_t kFileSystemOfFirst = (1ULL << 13) - 1;
constexpr std::uint64_t kRefer = 1ULL << 13, kTruncate = 1ULL << 14, kIoctl = 1ULL << 15;
constexpr std::uint64_t kBindAndConnect = 3;
constexpr std::uint64_t kAbstractSocketsAndSignals = 3;
constexpr int kWithRefer = 2, kWithTruncate = 3, kWithNetwork = 4, kWithIoctl = 5, kWithScopes = 6;

struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

/// The length of the structure that a version of the kernel knows.
std::size_t RulesetBytes(int version) {
    constexpr std::size_t kField = sizeof(std::uint64_t);
    return version >= kWithScopes ? 3 * kField : version >= kWithNetwork ? 2 * kField : kField;
}

/// Nothing is allowed: no path may be opened, made, renamed or removed, no port used, no process outside signalled.
bool ForbidFiles(int version) {
    if (version < 1) return true;
    Ruleset rules{.files = kFileSystemOfFirst};
    if (version >= kWithRefer) rules.files |= kRefer;
    if (version >= kWithTruncate) rules.files |= kTruncate;
    if (version >= kWithIoctl) rules.files |= kIoctl;
    if (version >= kWithNetwork) rules.network = kBindAndConnect;
    if (version >= kWithScopes) rules.scopes = kAbstractSocketsAndSignals;
    const auto ruleset = static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, RulesetBytes(version), 0));
    if (ruleset < 0) return false;
    const bool isDone = syscall(SYS_landlock_restrict_self, ruleset, 0) == 0;
    close(ruleset);
    return isDone;
}

/// The bytes of address space that the process has now.
std::uint64_t AddressBytes() {
    std::FILE* const file = std::fopen("/proc/self/statm", "re");
    if (file == nullptr) return 0;
    unsigned long long pages = 0;
    const int count = std::fscanf(file, "%llu", &pages);
    std::fclose(file);
    return count == 1 ? pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

/// The system's names for limits are an enumeration in some headers and numbers in others.
template <class Resource>
bool Limit(Resource resource, std::uint64_t value) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return false;
    limit.rlim_cur = limit.rlim_max = std::min<rlim_t>(limit.rlim_max, value);
    return setrlimit(resource, &limit) == 0;
}

bool LimitResources(const Bounds& bounds) {
    constexpr std::uint64_t kThreadBytes = std::uint64_t{16} << 20;  // of a stack and what belongs to it
    const auto threads = static_cast<std::uint64_t>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
    const std::uint64_t own = AddressBytes() + threads * kThreadBytes;
    const std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const std::uint64_t all = bounds.addressBytes > most - own ? most : bounds.addressBytes + own;
    (void)std::signal(SIGXFSZ, SIG_IGN);  // a block that does not fit is one that there is no memory for
    constexpr std::uint64_t kFiles = 64;
    return Limit(RLIMIT_AS, all) && Limit(RLIMIT_FSIZE, bounds.addressBytes) && Limit(RLIMIT_CPU, bounds.seconds) &&
           Limit(RLIMIT_CORE, 0) && Limit(RLIMIT_NOFILE, kFiles) && Limit(RLIMIT_MEMLOCK, 0) &&
           Limit(RLIMIT_MSGQUEUE, 0);
}

}  // namespace

Common::DecoderGreeting SystemGreeting() {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return {.landlock = static_cast<std::int32_t>(std::max(version, 0L)), .filtersCalls = CanFilterCalls()};
}

bool Confine(const Bounds& bounds, const Common::DecoderGreeting& system) {
    if (!LimitResources(bounds)) return false;
    if (prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0 || prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
    return ForbidFiles(system.landlock) && (!system.filtersCalls || FilterCalls());
}

void CloseOthers(const int* kept, std::size_t count) {
    std::vector<int> numbers(kept, kept + count);
    std::ranges::sort(numbers);
    unsigned next = STDERR_FILENO + 1;
    for (const int number : numbers) {
        const auto open = static_cast<unsigned>(number);
        if (open > next) (void)close_range(next, open - 1, 0);
        next = std::max(next, open + 1);
    }
    (void)close_range(next, std::numeric_limits<unsigned>::max(), 0);
}

}  // namespace Kavra::Decoder
