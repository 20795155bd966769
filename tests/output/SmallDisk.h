/// A disk that is soon full.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace Kavra::Tests {

/// While it lives no file of this process can grow beyond `bytes`: writes fail as they do on a full disk.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) : mOldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mOldLimit);
        const rlimit limit{bytes, mOldLimit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &mOldLimit);
        std::signal(SIGXFSZ, mOldHandler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    void (*mOldHandler)(int);
    rlimit mOldLimit{};
};

}  // namespace Kavra::Tests
