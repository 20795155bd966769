// What is told of the stages of operations, whoever offers these.

#include "support/Watching.h"

#include <kavra/devices/LastFailure.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string_view>

using namespace Kavra::Devices;
using Kavra::Tests::Watcher;

namespace {

/// An operation of one stage in `steps` equal steps; whether it came to its end.
bool Operate(int steps = 4, EProgressStage stage = kProgressReading) {
    BeginOperation();
    bool isDone = true;
    if (BeginStage(stage)) {
        for (int i = 0; i <= steps && isDone; ++i)
            isDone = AdvanceStage(static_cast<float>(i) / static_cast<float>(steps), 0);
        EndStage();
    }
    EndOperation(isDone);
    return isDone;
}

class Throwing final : public IProgress {
public:
    bool Progress(EProgressStage, float) override {
        ++calls;
        throw std::runtime_error("not today");
    }
    int calls = 0;
};

/// Runs an operation of its own while it is asked.
class Nosy final : public IProgress {
public:
    bool Progress(EProgressStage, float) override {
        ++calls;
        isInnerDone = Operate();
        return false;
    }
    int calls = 0;
    bool isInnerDone = false;
};

}  // namespace

TEST(ProgressScope, NobodyIsToldWithoutOne) {
    EXPECT_FALSE(BeginStage(kProgressReading));
    EXPECT_TRUE(AdvanceStage(0.5F, 0));
    EXPECT_TRUE(Operate());
}

TEST(ProgressScope, TheFirstCallAndTheEndAreToldHoweverFastItGoes) {
    Watcher watcher;
    const ProgressScope scope(watcher);
    EXPECT_TRUE(Operate());
    ASSERT_GE(watcher.calls.size(), 2U);
    EXPECT_EQ(watcher.calls.front().fraction, 0);
    EXPECT_EQ(watcher.calls.back().fraction, 1);
    EXPECT_TRUE(watcher.Rises());
}

TEST(ProgressScope, NoMoreIsToldThanOnceInTenMilliseconds) {
    Watcher watcher;
    const ProgressScope scope(watcher);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_TRUE(Operate(1'000'000));
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begun);
    EXPECT_LE(watcher.calls.size(), static_cast<std::size_t>(took.count()) / 10 + 2);
}

TEST(ProgressScope, FalseStopsTheOperationAndNotTheNextOne) {
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    EXPECT_FALSE(Operate());
    EXPECT_EQ(LastFailure().kind, kFailureCancelled);
    EXPECT_STREQ(LastFailure().text, "stopped");
    EXPECT_EQ(watcher.calls.size(), 1U);
    EXPECT_TRUE(Operate());
    EXPECT_EQ(LastFailure().kind, kFailureNone);
}

TEST(ProgressScope, AStoppedOperationIsNotAskedAboutAgainWhateverItTriesNext) {
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    BeginOperation();
    EXPECT_FALSE(Operate());
    SetLastFailure({.kind = kFailureDamaged, .text = "what another way says"});
    EXPECT_FALSE(Operate());
    EndOperation(false);
    EXPECT_EQ(watcher.calls.size(), 1U);
    EXPECT_EQ(LastFailure().kind, kFailureCancelled);
}

TEST(ProgressScope, WhatIsSaidOfWaysThatFailedBeforeIsForgottenWhereItIsStopped) {
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    BeginOperation();
    SetLastFailure({.kind = kFailureDamaged, .text = "the first way"});
    EXPECT_FALSE(Operate());
    EndOperation(false);
    EXPECT_EQ(LastFailure().kind, kFailureCancelled);
}

TEST(ProgressScope, AnExceptionCountsAsFalse) {
    Throwing throwing;
    const ProgressScope scope(throwing);
    EXPECT_FALSE(Operate());
    EXPECT_EQ(LastFailure().kind, kFailureCancelled);
    EXPECT_EQ(throwing.calls, 1);
}

TEST(ProgressScope, TheInnermostHearsAndTheOuterOneAgainAfterIt) {
    Watcher outer, inner;
    const ProgressScope outerScope(outer);
    {
        const ProgressScope innerScope(inner);
        EXPECT_TRUE(Operate());
        EXPECT_TRUE(outer.calls.empty());
        EXPECT_FALSE(inner.calls.empty());
    }
    const std::size_t heard = inner.calls.size();
    EXPECT_TRUE(Operate());
    EXPECT_FALSE(outer.calls.empty());
    EXPECT_EQ(inner.calls.size(), heard);
}

TEST(ProgressScope, ANullOneWithinAnotherLeavesNobodyWatching) {
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    PushProgress(nullptr);
    EXPECT_TRUE(Operate());
    PopProgress();
    EXPECT_TRUE(watcher.calls.empty());
    EXPECT_FALSE(Operate());
}

TEST(ProgressScope, PoppingMoreThanThereIsDoesNothing) {
    PopProgress();
    EXPECT_TRUE(Operate());
}

TEST(ProgressScope, OfOneThreadIsNotAnotherThreads) {
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    bool isDone = false;
    std::thread([&] { isDone = Operate(); }).join();
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(watcher.calls.empty());
}

TEST(ProgressScope, AnOperationWithinTheCallIsNotWatched) {
    Nosy nosy;
    const ProgressScope scope(nosy);
    EXPECT_FALSE(Operate());
    EXPECT_EQ(nosy.calls, 1);
    EXPECT_TRUE(nosy.isInnerDone);
    EXPECT_EQ(LastFailure().kind, kFailureCancelled);
}

TEST(ProgressScope, AStageWithinAnotherIsAPartOfIt) {
    Watcher watcher;
    const ProgressScope scope(watcher);
    BeginOperation();
    ASSERT_TRUE(BeginStage(kProgressReading));
    EXPECT_TRUE(AdvanceStage(0.5F, 0.5F));
    ASSERT_TRUE(BeginStage(kProgressConverting));
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
    EXPECT_TRUE(AdvanceStage(0.5F, 0));  // a half of the second half
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
    EXPECT_TRUE(AdvanceStage(0.25F, 0));
    EndStage();
    EndStage();
    EndOperation(true);
    ASSERT_EQ(watcher.calls.size(), 3U);
    EXPECT_FALSE(watcher.Heard(kProgressConverting));
    EXPECT_FLOAT_EQ(watcher.calls[0].fraction, 0.5F);
    EXPECT_FLOAT_EQ(watcher.calls[1].fraction, 0.75F);
    EXPECT_FLOAT_EQ(watcher.calls[2].fraction, 0.75F);  // never falls
}

TEST(ProgressScope, StagesWithinOneAnotherMayBeDeeperThanIsRemembered) {
    Watcher watcher;
    const ProgressScope scope(watcher);
    BeginOperation();
    constexpr int kDeep = 40;
    for (int i = 0; i < kDeep; ++i) {
        ASSERT_TRUE(BeginStage(kProgressSaving));
        EXPECT_TRUE(AdvanceStage(0, 1));
    }
    for (int i = 0; i < kDeep; ++i) {
        EXPECT_TRUE(AdvanceStage(1, 0));
        EndStage();
    }
    EndOperation(true);
    EXPECT_TRUE(watcher.Rises());
    EXPECT_TRUE(watcher.Ends());
}

TEST(ProgressScope, FractionsOutOfRangeAreTakenAsItsEnds) {
    Watcher watcher;
    const ProgressScope scope(watcher);
    BeginOperation();
    ASSERT_TRUE(BeginStage(kProgressReading));
    EXPECT_TRUE(AdvanceStage(-3, 0));
    EXPECT_TRUE(AdvanceStage(7, 0));
    EndStage();
    EndOperation(true);
    EXPECT_TRUE(watcher.Rises());
    EXPECT_TRUE(watcher.Ends());
}
