/// The allocators that are there unless a host puts its own in their place.
#pragma once

#include "frame/host/objects/LargeBlocks.h"

#include <kavra/objects/IMemoryAllocator.h>

#include <atomic>
#include <cstddef>

namespace Kavra::Objects {

/// Small blocks from the C library, large ones from `LargeBlocks.h`; counts what it gives out.
class BuiltInAllocator final : public IMemoryAllocator {
public:
    void* Allocate(std::size_t bytes) override { return Give(bytes, 0, Contents::kAny); }
    void* AllocateZeroed(std::size_t bytes) override { return Give(bytes, 0, Contents::kZero); }
    void Free(void* block, std::size_t bytes) noexcept override { TakeBack(block, bytes, 0); }

    /// A block of `bytes` bytes and `extra` more, which neither the ceiling nor the counters see. Throws
    /// `std::bad_alloc`.
    void* Give(std::size_t bytes, std::size_t extra, Contents contents);
    /// Takes back what `Give` gave for the same numbers.
    void TakeBack(void* block, std::size_t bytes, std::size_t extra) noexcept;

    /// The largest `bytes` that are given; 0 sets it to the machine's memory.
    std::size_t Ceiling() const;
    void SetCeiling(std::size_t bytes) { mCeiling = bytes; }

    AllocationCounters Counters() const;

private:
    void NoteRequest(std::size_t bytes);

    std::atomic<std::size_t> mCeiling{0};
    std::atomic<std::size_t> mLiveBlocks{0};
    std::atomic<std::size_t> mLiveBytes{0};
    std::atomic<std::size_t> mTotalBlocks{0};
    std::atomic<std::size_t> mLargestBytes{0};
};

/// The two instances: for pixel blocks, and for objects. They are there before any code runs and never go.
BuiltInAllocator& BlockAllocator() noexcept;
BuiltInAllocator& ObjectAllocator() noexcept;

/// `allocator` as one of the two, or null when it is somebody else's.
BuiltInAllocator* AsBuiltIn(IMemoryAllocator* allocator) noexcept;

}  // namespace Kavra::Objects
