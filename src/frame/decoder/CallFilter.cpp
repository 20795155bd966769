#include "frame/decoder/CallFilter.h"

#include <sched.h>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Decoder {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kMachine = 0;
#endif

/// By which readers open and look at a file, and which are answered here, not by the system (`AnswerFileCalls`).
constexpr int kAnswered[] = {
    SYS_openat, SYS_newfstatat, SYS_faccessat,
#if defined(SYS_open)
    SYS_open,   SYS_stat,       SYS_access,
#endif
};

/// Reading and writing what is open, memory, threads, time, and the end. None takes a path or names another process.
constexpr int kAllowed[] = {
    SYS_read,
    SYS_readv,
    SYS_pread64,
    SYS_preadv,
    SYS_write,
    SYS_pwrite64,
    SYS_lseek,
    SYS_close,
    SYS_dup,
    SYS_fstat,
    SYS_ftruncate,
    SYS_fallocate,
    SYS_ppoll,
    SYS_mmap,
    SYS_munmap,
    SYS_mprotect,
    SYS_mremap,
    SYS_madvise,
    SYS_brk,
    SYS_futex,
    SYS_set_robust_list,
    SYS_rseq,
    SYS_sched_yield,
    SYS_sched_getaffinity,
    SYS_membarrier,
    SYS_getcpu,
    SYS_get_mempolicy,
    SYS_rt_sigaction,
    SYS_rt_sigprocmask,
    SYS_rt_sigreturn,
    SYS_sigaltstack,
    SYS_restart_syscall,
    SYS_gettid,
    SYS_getpid,
    SYS_clock_gettime,
    SYS_clock_getres,
    SYS_clock_nanosleep,
    SYS_nanosleep,
    SYS_gettimeofday,
    SYS_times,
    SYS_getrusage,
    SYS_sysinfo,
    SYS_uname,
    SYS_getrandom,
    SYS_exit,
    SYS_exit_group,
#if defined(SYS_poll)
    SYS_poll,
#endif
#if defined(__SANITIZE_ADDRESS__)
    SYS_pipe2,  // by one that does not block sanitizers try whether an address can be read
#endif
};

constexpr std::uint32_t kLow = 0;  ///< the offset of the lower half of an argument, of little-endian machines
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

constexpr std::uint32_t kRefuse = SECCOMP_RET_ERRNO | EACCES;
constexpr std::uint32_t kUnknown = SECCOMP_RET_ERRNO | ENOSYS;
constexpr std::uint32_t kAnswer = SECCOMP_RET_TRAP;

/// A program of the kernel's packet filter over the number of a call and its arguments.
class Program {
public:
    void Load(std::size_t offset) { Add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }
    void LoadArgument(std::size_t index) { Load(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t) + kLow); }
    void Return(std::uint32_t action) { Add(BPF_RET | BPF_K, action); }
    /// Ends with an action if what was loaded is a value.
    void ReturnIf(std::uint32_t value, std::uint32_t action) {
        mCode.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, value});
        Return(action);
    }
    void ReturnUnless(std::uint32_t value, std::uint32_t action) {
        mCode.push_back({BPF_JMP | BPF_JEQ | BPF_K, 1, 0, value});
        Return(action);
    }
    /// Ends with an action unless some of the bits are set.
    void ReturnUnlessAny(std::uint32_t bits, std::uint32_t action) {
        mCode.push_back({BPF_JMP | BPF_JSET | BPF_K, 1, 0, bits});
        Return(action);
    }
    /// Where the call is `number`, `body` decides, which loads what it likes and returns in any case.
    template <class Body>
    void Case(int number, Body&& body) {
        const std::size_t jump = mCode.size();
        mCode.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 0, static_cast<std::uint32_t>(number)});
        body(*this);
        mCode[jump].jf = static_cast<std::uint8_t>(mCode.size() - jump - 1);
    }
    std::vector<sock_filter>& Code() { return mCode; }

private:
    void Add(int code, std::uint32_t value) { mCode.push_back({static_cast<std::uint16_t>(code), 0, 0, value}); }

    std::vector<sock_filter> mCode;
};

/// Calls that are allowed with some arguments alone.
void AddCases(Program& program) {
    program.Case(SYS_clone, [](Program& p) {  // threads, no processes
        p.LoadArgument(0);
        p.ReturnUnlessAny(CLONE_THREAD, kRefuse);
        p.Return(SECCOMP_RET_ALLOW);
    });
    program.Case(SYS_clone3,
                 [](Program& p) { p.Return(kUnknown); });  // its flags cannot be seen; `clone` is asked next
    program.Case(SYS_tgkill, [](Program& p) {              // its own end
        p.LoadArgument(0);
        p.ReturnUnless(static_cast<std::uint32_t>(getpid()), kRefuse);
        p.Return(SECCOMP_RET_ALLOW);
    });
    program.Case(SYS_fcntl, [](Program& p) {
        p.LoadArgument(1);
        p.ReturnIf(F_GETFL, SECCOMP_RET_ALLOW);
        p.ReturnIf(F_GETFD, SECCOMP_RET_ALLOW);
#if defined(__SANITIZE_ADDRESS__)
        p.ReturnIf(F_SETFL, SECCOMP_RET_ALLOW);
#endif
        p.Return(kRefuse);
    });
    program.Case(SYS_prlimit64, [](Program& p) {  // of itself, and the hard limits bind
        p.LoadArgument(0);
        p.ReturnUnless(0, kRefuse);
        p.Return(SECCOMP_RET_ALLOW);
    });
    program.Case(SYS_prctl, [](Program& p) {  // names of threads
        p.LoadArgument(0);
        p.ReturnUnless(PR_SET_NAME, kRefuse);
        p.Return(SECCOMP_RET_ALLOW);
    });
    program.Case(SYS_ioctl, [](Program& p) { p.Return(SECCOMP_RET_ERRNO | ENOTTY); });
}

Program NewProgram() {
    Program program;
    program.Load(offsetof(seccomp_data, arch));
    program.ReturnUnless(kMachine, SECCOMP_RET_KILL_PROCESS);
    program.Load(offsetof(seccomp_data, nr));
    for (const int number : kAllowed)
        program.ReturnIf(static_cast<std::uint32_t>(number), SECCOMP_RET_ALLOW);
    for (const int number : kAnswered)
        program.ReturnIf(static_cast<std::uint32_t>(number), kAnswer);
    AddCases(program);
    program.Return(kRefuse);
    return program;
}

}  // namespace

bool CanFilterCalls() {
    std::uint32_t action = SECCOMP_RET_ERRNO;
    return kMachine != 0 && syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

bool FilterCalls() {
    Program program = NewProgram();
    const sock_fprog whole{.len = static_cast<unsigned short>(program.Code().size()), .filter = program.Code().data()};
    return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &whole) == 0;
}

}  // namespace Kavra::Decoder
