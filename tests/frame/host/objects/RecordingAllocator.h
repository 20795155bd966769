/// An allocator of a test's own, and ways to put things in place for the length of a test.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace Kavra::Tests {

/// Keeps a list of what it gave and got back.
class RecordingAllocator final : public Objects::IMemoryAllocator {
public:
    struct Entry {
        void* block;
        std::size_t bytes;
        bool operator==(const Entry&) const = default;
    };

    void* Allocate(std::size_t bytes) override {
        const std::lock_guard lock(mMutex);
        if (refuses) throw std::bad_alloc();
        void* const block = std::aligned_alloc(64, (bytes + 63) / 64 * 64);
        given.push_back({block, bytes});
        return block;
    }
    void Free(void* block, std::size_t bytes) noexcept override {
        const std::lock_guard lock(mMutex);
        returned.push_back({block, bytes});
        std::free(block);
    }

    bool refuses = false;
    std::vector<Entry> given;
    std::vector<Entry> returned;

private:
    std::mutex mMutex;
};

/// Puts `value` into `slot` and the old one back at the end.
template <class T>
class Instead {
public:
    Instead(T& slot, T value) : mSlot(slot), mBefore(std::exchange(slot, value)) {}
    ~Instead() { mSlot = mBefore; }
    Instead(const Instead&) = delete;
    Instead& operator=(const Instead&) = delete;

private:
    T& mSlot;
    T mBefore;
};

}  // namespace Kavra::Tests
