#include "memory/ShortMemory.h"

#include <kavra/objects/ObjModel.h>

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>

namespace Kavra::Tests {

namespace {

constexpr std::size_t kMaxRequests = 20000;

struct Attempt {
    bool done = false, refused = false, hasRightMessages = false;
    LiveMemory before{}, after{};
};

Attempt Try(const Expected& expected, const std::function<bool()>& operation, std::size_t request, Refusal refusal) {
    FixedRecorder messages;
    Attempt attempt;
    attempt.before = CountLiveMemory();
    {
        const Shortage shortage(request, refusal);
        attempt.done = operation();
        attempt.refused = Shortage::HasRefused();
    }
    attempt.after = CountLiveMemory();
    const Messages texts = messages.Texts();
    attempt.hasRightMessages = attempt.done ? texts.empty() : std::ranges::contains(expected, texts);
    return attempt;
}

void Judge(const Attempt& attempt, std::size_t request) {
    EXPECT_TRUE(attempt.hasRightMessages) << request;
    EXPECT_EQ(attempt.after.hostBlocks, attempt.before.hostBlocks) << request;
    EXPECT_TRUE(attempt.done || attempt.refused) << request;
}

/// What the parent is told even by a child that is killed: the request that it is about to refuse.
class Progress {
public:
    Progress()
        : mRequest(static_cast<std::atomic<std::size_t>*>(
              mmap(nullptr, sizeof(*mRequest), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    ~Progress() { munmap(mRequest, sizeof(*mRequest)); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    std::atomic<std::size_t>& Request() { return *mRequest; }

private:
    std::atomic<std::size_t>* mRequest;
};

struct LibraryRun {
    const Expected& expected;
    const std::function<void()>& before;
    const std::function<bool()>& operation;
    const std::function<void(const Outcome&)>& afterwards;

    /// Refuses one request after another, from the one in `request` on.
    [[noreturn]] void InChild(Refusal refusal, std::atomic<std::size_t>& request) const {
        constexpr rlimit kNoCore{0, 0};
        constexpr unsigned kMaxSeconds = 120;
        setrlimit(RLIMIT_CORE, &kNoCore);
        alarm(kMaxSeconds);
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);  // what the library says as it ends the process
        for (; request < kMaxRequests; ++request) {
            before();
            const Attempt attempt = Try(expected, operation, request, refusal);
            Judge(attempt, request);
            afterwards({.done = attempt.done});
            if (!attempt.refused) break;
        }
        std::fflush(stdout);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }

    void Run(Refusal refusal) const {
        Progress progress;
        for (bool isOver = false; !isOver; ++progress.Request()) {
            std::fflush(stdout);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) InChild(refusal, progress.Request());
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            isOver = WIFEXITED(status);
            if (isOver) {
                EXPECT_EQ(WEXITSTATUS(status), 0);
            } else {
                ASSERT_EQ(WTERMSIG(status), SIGABRT) << progress.Request();
                afterwards({.wasKilled = true});
            }
        }
    }
};

}  // namespace

FixedRecorder::FixedRecorder() : mPrevious(Objects::ObjModel::SetMessageSink(this)) {}

FixedRecorder::~FixedRecorder() {
    Objects::ObjModel::SetMessageSink(mPrevious);
}

void RunShortOfMemory(const Expected& expected, const std::function<bool()>& operation,
                      const std::function<void()>& afterwards) {
    const WatchedAllocators allocators;
    ASSERT_TRUE(operation());  // takes what is taken once and kept
    for (const Refusal refusal : {Refusal::kOne, Refusal::kAllSince}) {
        for (std::size_t request = 0; request < kMaxRequests; ++request) {
            const Attempt attempt = Try(expected, operation, request, refusal);
            Judge(attempt, request);
            EXPECT_EQ(attempt.after, attempt.before) << request;
            afterwards();
            if (!attempt.refused) break;
        }
    }
}

void RunLibraryShortOfMemory(const Expected& expected, const std::function<void()>& before,
                             const std::function<bool()>& operation,
                             const std::function<void(const Outcome&)>& afterwards) {
    const WatchedAllocators allocators;
    OIIO::attribute("threads", 1);  // a child has none but its own
    before();
    ASSERT_TRUE(operation());
    const LibraryRun run{expected, before, operation, afterwards};
    run.Run(Refusal::kOne);
    run.Run(Refusal::kAllSince);
}

}  // namespace Kavra::Tests
