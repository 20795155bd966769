/// Watching an operation, and stopping it.
#pragma once

#include <kavra/devices/ProgressScope.h>

#include <cstddef>
#include <thread>
#include <vector>

namespace Kavra::Tests {

/// Writes down what it hears, and stops at one of the calls.
class Watcher final : public Devices::IProgress {
public:
    struct Call {
        Devices::EProgressStage stage;
        float fraction;
    };

    static constexpr std::size_t kEnd = ~std::size_t{0};

    /// `stopAt`: the number of the call that is answered with false, from 1; `kEnd`: the first at the end of a stage,
    /// which there always is; 0: none.
    explicit Watcher(std::size_t stopAt = 0) : mStopAt(stopAt) {}

    bool Progress(Devices::EProgressStage stage, float fraction) override {
        calls.push_back({stage, fraction});
        isOwnThread = isOwnThread && std::this_thread::get_id() == mThread;
        const bool stops = calls.size() == mStopAt || (mStopAt == kEnd && fraction >= 1);
        mHasStopped = mHasStopped || stops;
        return !stops;
    }

    /// Whether it stopped, and heard of nothing more.
    bool Stopped() const {
        return mHasStopped && (mStopAt == kEnd ? calls.back().fraction >= 1 : calls.size() == mStopAt);
    }

    bool Heard(Devices::EProgressStage stage) const {
        for (const Call& call : calls)
            if (call.stage == stage) return true;
        return false;
    }

    /// Whether the fractions of each stage that was heard of are 0 to 1 and never fall.
    bool Rises() const {
        float reached[kStages] = {};
        for (const Call& call : calls) {
            float& last = reached[call.stage];
            if (!(call.fraction >= last && call.fraction <= 1)) return false;
            last = call.fraction;
        }
        return true;
    }

    /// Whether each stage that was heard of ended at 1.
    bool Ends() const {
        float reached[kStages] = {};
        bool heard[kStages] = {};
        for (const Call& call : calls) {
            reached[call.stage] = call.fraction;
            heard[call.stage] = true;
        }
        for (int stage = 0; stage < kStages; ++stage)
            if (heard[stage] && reached[stage] != 1) return false;
        return !calls.empty();
    }

    std::vector<Call> calls;
    bool isOwnThread = true;

private:
    static constexpr int kStages = Devices::kProgressAnalysing + 1;

    std::size_t mStopAt;
    bool mHasStopped = false;
    std::thread::id mThread = std::this_thread::get_id();
};

}  // namespace Kavra::Tests
