/// Telling whoever watches an operation how far it is, and being stopped by them: the piece that all long loops use.
///
/// Only the operation's own thread tells and asks; what is split over cores is split in parts of some milliseconds first
/// (WatchedRange.h), so that no worker need know. Where nobody watches, a meter is one look at a thread's variable.
#pragma once

#include <kavra/devices/ProgressScope.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Kavra::Common {

/// Thrown on the operation's thread where it is to stop: everything ends by its scopes up to the boundary, which gives
/// the no-answer. No other way of doing the same is tried.
struct Cancelled {};

/// One stage of an operation, or a part of the stage that is under way where there is one, while it lives.
class ProgressMeter {
public:
    /// `total` in any unit: rows, bytes, blocks.
    ProgressMeter(Devices::EProgressStage stage, std::uint64_t total) noexcept;
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Whether anybody hears of it.
    bool IsWatched() const { return mIsWatched; }

    /// The next `count` units are about to be worked on: meters that live until `Advance` share them. Throws `Cancelled`.
    void Expect(std::uint64_t count) const {
        if (mIsWatched) Tell(count);
    }

    /// `count` more units are done. Throws `Cancelled`.
    void Advance(std::uint64_t count) {
        mDone += count;
        if (mIsWatched) Tell(0);
    }

private:
    void Tell(std::uint64_t next) const;

    std::uint64_t mTotal, mDone = 0;
    bool mIsWatched;
};

/// How much of a loop is done at a time so that it can be stopped soon: grows and shrinks with the time that the last
/// part took, but not below `least`, which keeps the cores busy.
class PartSize {
public:
    explicit PartSize(std::size_t first, std::size_t least = 1) : mSize(first), mLeast(least) {}
    std::size_t Next(std::size_t rest) {
        mBegan = std::chrono::steady_clock::now();
        mIsFull = rest >= mSize;
        return std::min(mSize, rest);
    }
    /// What was given last is done.
    void Done() {
        constexpr std::chrono::milliseconds kShort{6}, kLong{18};
        const auto took = std::chrono::steady_clock::now() - mBegan;
        if (took < kShort && mIsFull) mSize *= 2;
        if (took > kLong) mSize = std::max(mSize / 2, mLeast);
    }

private:
    std::size_t mSize, mLeast;
    bool mIsFull = false;
    std::chrono::steady_clock::time_point mBegan;
};

}  // namespace Kavra::Common
