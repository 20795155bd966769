/// Memory that runs out when a test wants it to.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstddef>

namespace Kavra::Tests {

/// Stands in for one of the host's allocators for as long as it lives, and refuses every request after the first
/// `allowed` ones.
class FailingAllocator final : public Objects::IMemoryAllocator {
public:
    FailingAllocator(Objects::IMemoryAllocator*& place, int allowed);
    ~FailingAllocator() override;
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    void* Allocate(std::size_t bytes) override;
    void* AllocateZeroed(std::size_t bytes) override;
    void Free(void* block, std::size_t bytes) noexcept override;

    bool HasRefused() const { return mRefused; }
    /// Blocks given out and not yet given back.
    int LiveBlocks() const { return mLive; }
    /// The bytes of the largest block given out.
    std::size_t LargestBlock() const { return mLargest; }

private:
    void Take(std::size_t bytes);

    Objects::IMemoryAllocator*& mPlace;
    Objects::IMemoryAllocator* mReal;
    int mAllowed;
    int mLive = 0;
    std::size_t mLargest = 0;
    bool mRefused = false;
};

}  // namespace Kavra::Tests
