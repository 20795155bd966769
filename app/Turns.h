/// Work in order among workers that finish in any.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace Kavra::App {

/// Lets workers do one thing each in the order of their numbers, whatever order they come in. Numbers are handed out in
/// order, so the one whose turn it is always comes.
class Turns {
public:
    /// One's turn; passes it on at its end.
    class Turn {
    public:
        Turn(Turns& turns, std::size_t number) : mTurns(turns), mLock(turns.mMutex) {
            mTurns.mChanged.wait(mLock, [&] { return mTurns.mNext == number; });
        }
        ~Turn() {
            ++mTurns.mNext;
            mLock.unlock();
            mTurns.mChanged.notify_all();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Turns& mTurns;
        std::unique_lock<std::mutex> mLock;
    };

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::size_t mNext = 0;
};

}  // namespace Kavra::App
