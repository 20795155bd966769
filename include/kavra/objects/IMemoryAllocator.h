/// \file
/// Where pixel blocks come from, and how they are given back.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>

namespace Kavra::Objects {

/// A source of raw memory. A host may put its own behind `ObjModel::mDefaultAllocator` (pixel blocks) and
/// `ObjModel::mHeapAllocator` (objects).
///
/// An allocator must outlive every block that it gave out: a block remembers the allocator that made it and goes back
/// to that one, whichever is in place by then. Requests are 64 bytes larger than what the caller of `operator new`
/// asked for, since a header stands in front of each block.
///
/// Threads: every operation may be called from any thread at any time.
class KAVRA_OBJECTS_API IMemoryAllocator {
public:
    virtual ~IMemoryAllocator();

    /// Returns at least `bytes` bytes, aligned to 64, with unspecified contents; never null, also for 0 bytes.
    /// Throws `std::bad_alloc` when the memory cannot be had. A null answer of a foreign allocator is treated as that.
    virtual void* Allocate(std::size_t bytes) = 0;

    /// Returns the same with every byte zero. The base calls `Allocate` and clears the block; an allocator whose fresh
    /// memory is zero already overrides it and does not touch the memory.
    virtual void* AllocateZeroed(std::size_t bytes);

    /// Takes back what `Allocate` or `AllocateZeroed` returned, with the size in bytes that was asked for.
    virtual void Free(void* block, std::size_t bytes) noexcept = 0;
};

/// What an allocator has given out, for tests and diagnostics. The counters are read one after another, so while other
/// threads allocate they need not fit together.
struct AllocationCounters {
    std::size_t liveBlocks = 0;    ///< blocks given out and not yet given back
    std::size_t liveBytes = 0;     ///< the bytes that were asked for in them
    std::size_t totalBlocks = 0;   ///< blocks given out since the start
    std::size_t largestBytes = 0;  ///< the largest single request since the start, refused ones included
};

/// Returns `bytes` zeroed bytes from `allocator`; null means the default one. The caller frees them with `KavraDelete`.
/// Throws `std::bad_alloc`.
KAVRA_OBJECTS_API void* NewZeroed(std::size_t bytes, IMemoryAllocator* allocator);

/// Frees a block made by `operator new(size, allocator)` or `NewZeroed`, through the allocator that made it, whichever
/// allocator is the default one by then. Does nothing for null. A block that was freed before, never allocated or
/// overwritten in front of its first byte ends the process with a line on standard error: the heap cannot be trusted
/// any more. Threads: any.
KAVRA_OBJECTS_API void KavraDelete(void* block) noexcept;

}  // namespace Kavra::Objects

/// Returns raw bytes from a host allocator, aligned to 64, with unspecified contents. Every pixel block is made this
/// way and freed with `Kavra::Objects::KavraDelete`, never with `delete`:
///
///     void* block = ::operator new(bytes, Kavra::Objects::ObjModel::mDefaultAllocator);
///     ...
///     Kavra::Objects::KavraDelete(block);
///
/// Size 0 gives a block that can be freed. A null allocator means the default one. Throws `std::bad_alloc`.
KAVRA_OBJECTS_API void* operator new(std::size_t bytes, Kavra::Objects::IMemoryAllocator* allocator);

/// The match of the operator above: called by the compiler alone, when a constructor throws.
KAVRA_OBJECTS_API void operator delete(void* block, Kavra::Objects::IMemoryAllocator* allocator) noexcept;
