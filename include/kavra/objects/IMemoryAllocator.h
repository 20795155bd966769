/// Where pixel blocks come from, and how they are given back.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>

namespace Kavra::Objects {

/// A source of raw memory. A host may put its own behind `ObjModel::mDefaultAllocator`.
///
/// Threads: every operation may be called from any thread at any time.
class KAVRA_OBJECTS_API IMemoryAllocator {
public:
    virtual ~IMemoryAllocator();

    /// At least `bytes` bytes, aligned to 64, with unspecified contents; never null, also for 0 bytes.
    /// Throws `std::bad_alloc` when the memory is not to be had.
    virtual void* Allocate(std::size_t bytes) = 0;

    /// The same, every byte zero. An allocator whose fresh memory is zero already need not touch it.
    virtual void* AllocateZeroed(std::size_t bytes);

    /// Gives back what `Allocate` or `AllocateZeroed` returned, with the size it was asked for.
    virtual void Free(void* block, std::size_t bytes) noexcept = 0;
};

/// What an allocator has given out, for tests and diagnostics.
struct AllocationCounters {
    std::size_t liveBlocks = 0;    ///< blocks given out and not yet given back
    std::size_t liveBytes = 0;     ///< the bytes that were asked for in them
    std::size_t totalBlocks = 0;   ///< blocks given out since the start
    std::size_t largestBytes = 0;  ///< the largest single request since the start, refused ones included
};

/// `bytes` zeroed bytes from `allocator`, freed with `KavraDelete`. Throws `std::bad_alloc`.
KAVRA_OBJECTS_API void* NewZeroed(std::size_t bytes, IMemoryAllocator* allocator);

/// Frees a block made by `operator new(size, allocator)` or `NewZeroed`, through the allocator that made it,
/// whichever allocator is the default one by then. Null is fine.
KAVRA_OBJECTS_API void KavraDelete(void* block) noexcept;

}  // namespace Kavra::Objects

/// Raw bytes from a host allocator: every pixel block is made this way and freed with `KavraDelete`.
/// Size 0 gives a block that can be freed. Throws `std::bad_alloc`; a null allocator means the default one.
KAVRA_OBJECTS_API void* operator new(std::size_t bytes, Kavra::Objects::IMemoryAllocator* allocator);

/// The match of the operator above: called by the compiler alone, when a constructor throws.
KAVRA_OBJECTS_API void operator delete(void* block, Kavra::Objects::IMemoryAllocator* allocator) noexcept;
