/// \file
/// Allocation of objects that cross the line between host and module.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>

namespace Kavra::Objects {

/// Base of every host-visible object: whichever side deletes it, the host's own heap gets the memory back.
/// Descriptions, memory wrappers, images and handlers derive from it, so `new` and `delete` of them go through
/// `ObjModel::mHeapAllocator` in every library. Pixel blocks do not: they come from `ObjModel::mDefaultAllocator` (see
/// `IMemoryAllocator.h`).
///
/// These operators hide the global ones: `new (allocator) T` and `new (place) T` do not compile. `::new (place) T`
/// constructs in memory that is already there.
///
/// Threads: any.
class KAVRA_OBJECTS_API HeapOperators {
public:
    /// Returns null when there is no memory, so whoever writes `new` checks the result. It must not throw: only then
    /// does a `new` expression skip the constructor on null instead of constructing at address 0.
    static void* operator new(std::size_t bytes) noexcept;
    /// The same for arrays.
    static void* operator new[](std::size_t bytes) noexcept;

    /// Gives the memory back to the allocator that it came from; does nothing for null.
    static void operator delete(void* block) noexcept;
    /// The same for arrays.
    static void operator delete[](void* block) noexcept;
};

}  // namespace Kavra::Objects
