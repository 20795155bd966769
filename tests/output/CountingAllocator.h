/// Memory that is counted, and that runs out when a test wants it to.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <new>

namespace Kavra::Tests {

/// Stands in one of the object model's two places for an allocator, `ObjModel::mDefaultAllocator` or `mHeapAllocator`,
/// for as long as it lives. Each block is a malloc of its own, so that a sanitizer sees every byte beyond its end.
class CountingAllocator final : public Objects::IMemoryAllocator {
public:
    explicit CountingAllocator(Objects::IMemoryAllocator*& place) : mPlace(place), mPrevious(place) { place = this; }
    ~CountingAllocator() override { mPlace = mPrevious; }
    CountingAllocator(const CountingAllocator&) = delete;
    CountingAllocator& operator=(const CountingAllocator&) = delete;

    void* Allocate(std::size_t bytes) override {
        const std::lock_guard lock(mMutex);
        if (mGranted == 0 || bytes > kMaxBytes) throw std::bad_alloc();
        --mGranted;
        const std::size_t rounded = (bytes + 63) / 64 * 64;
        void* const block = std::aligned_alloc(64, rounded == 0 ? 64 : rounded);
        if (block == nullptr) throw std::bad_alloc();
        mBlocks[block] = bytes;
        return block;
    }
    void Free(void* block, std::size_t bytes) noexcept override {
        const std::lock_guard lock(mMutex);
        const auto found = mBlocks.find(block);
        // A block that is freed twice, or with another size.
        if (found == mBlocks.end() || found->second != bytes) std::abort();
        mBlocks.erase(found);
        std::free(block);
    }

    /// Blocks given out and not given back.
    std::size_t LiveBlocks() const { return mBlocks.size(); }

    /// From now on only so many more blocks are to be had.
    void Grant(std::size_t blocks) { mGranted = blocks; }
    void GrantAll() { mGranted = std::numeric_limits<std::size_t>::max(); }

private:
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

    Objects::IMemoryAllocator*& mPlace;
    Objects::IMemoryAllocator* mPrevious;
    std::mutex mMutex;
    std::map<void*, std::size_t> mBlocks;
    std::size_t mGranted = std::numeric_limits<std::size_t>::max();
};

}  // namespace Kavra::Tests
