#include "frame/host/devices/OperationProgress.h"

#include <kavra/devices/ProgressScope.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

namespace Kavra::Devices {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kQuiet{10};
constexpr std::size_t kMaxDepth = 16;
constexpr std::size_t kStages = 6;

struct Watcher {
    IProgress* progress;
    Watcher* below;
};

/// A stage within others fills the part of the outermost one that begins at `begin`.
struct Stage {
    EProgressStage stage = kProgressReading;
    float begin = 0, part = 0;       ///< of the outermost stage
    float inner = 0, innerPart = 0;  ///< where what it begins itself starts, and how much that is
};

struct ThreadsProgress {
    Watcher* top = nullptr;
    std::array<Stage, kMaxDepth> stages{};
    std::size_t depth = 0;                 ///< of the stages under way; those beyond the last one are counted alone
    std::array<float, kStages> reached{};  ///< that the operation has told of
    std::array<bool, kStages> hasEnded{};  ///< whether it has told of the end
    Clock::time_point told;
    bool isStopped = false;  ///< of the operation that is under way
    bool isAsking = false;
};

constinit thread_local ThreadsProgress tProgress;

/// The place of a stage among those that are remembered; what a later version adds has none of its own.
std::size_t PlaceOf(EProgressStage stage) {
    return std::min(static_cast<std::size_t>(stage), kStages - 1);
}

bool Ask(EProgressStage stage, float fraction) noexcept {
    ThreadsProgress& mine = tProgress;
    mine.isAsking = true;
    try {
        mine.isStopped = !mine.top->progress->Progress(stage, fraction);
    } catch (...) {
        mine.isStopped = true;
    }
    mine.isAsking = false;
    mine.told = Clock::now();  // afterwards: however slow it is, it takes no more than its share of the time
    return !mine.isStopped;
}

/// The outermost stage is at `fraction`.
bool Tell(float fraction) noexcept {
    ThreadsProgress& mine = tProgress;
    const EProgressStage stage = mine.stages.front().stage;
    const std::size_t place = PlaceOf(stage);
    mine.reached[place] = std::max(mine.reached[place], fraction);
    const bool isEnd = mine.reached[place] >= 1 && !mine.hasEnded[place];
    if (!isEnd && Clock::now() - mine.told < kQuiet) return true;
    mine.hasEnded[place] = mine.reached[place] >= 1;
    return Ask(stage, mine.reached[place]);
}

}  // namespace

void ForgetProgress() noexcept {
    ThreadsProgress& mine = tProgress;
    if (mine.top == nullptr || mine.isAsking) return;
    mine.isStopped = false;
    mine.reached = {};
    mine.hasEnded = {};
    mine.told = {};
}

bool IsStopped() noexcept {
    return tProgress.isStopped && !tProgress.isAsking;
}

void PushProgress(IProgress* progress) {
    tProgress.top = new Watcher{.progress = progress, .below = tProgress.top};
}

void PopProgress() noexcept {
    if (tProgress.top != nullptr) delete std::exchange(tProgress.top, tProgress.top->below);
}

bool BeginStage(EProgressStage stage) noexcept {
    ThreadsProgress& mine = tProgress;
    if (mine.top == nullptr || mine.top->progress == nullptr || mine.isAsking) return false;
    if (mine.depth < kMaxDepth) {
        Stage& begun = mine.stages[mine.depth];
        begun = {.stage = stage, .begin = 0, .part = 1, .inner = 0, .innerPart = 0};
        if (mine.depth > 0) {
            begun.begin = mine.stages[mine.depth - 1].inner;
            begun.part = mine.stages[mine.depth - 1].innerPart;
        }
        begun.inner = begun.begin;
    }
    ++mine.depth;
    return true;
}

bool AdvanceStage(float fraction, float part) noexcept {
    ThreadsProgress& mine = tProgress;
    if (mine.depth == 0 || mine.isAsking || mine.top == nullptr || mine.top->progress == nullptr) return true;
    if (mine.isStopped) return false;
    Stage& stage = mine.stages[std::min(mine.depth, kMaxDepth) - 1];
    if (mine.depth <= kMaxDepth) {
        stage.inner = stage.begin + stage.part * std::clamp(fraction, 0.0F, 1.0F);
        stage.innerPart = stage.part * std::clamp(part, 0.0F, 1.0F);
    }
    return Tell(stage.inner);
}

void EndStage() noexcept {
    if (tProgress.depth > 0) --tProgress.depth;
}

}  // namespace Kavra::Devices
