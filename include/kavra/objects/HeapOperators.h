/// Allocation of objects that cross the line between host and module.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>

namespace Kavra::Objects {

/// Base of every host-visible object: whichever side deletes it, the host's own heap gets the memory back.
///
/// These operators hide the global ones: `new (allocator) T` and `new (place) T` do not compile. `::new (place) T`
/// constructs in memory that is already there.
class KAVRA_OBJECTS_API HeapOperators {
public:
    /// Null when there is no memory. It must not throw: only then does a `new` expression skip the constructor
    /// on null instead of constructing at address 0.
    static void* operator new(std::size_t bytes) noexcept;
    static void* operator new[](std::size_t bytes) noexcept;

    static void operator delete(void* block) noexcept;
    static void operator delete[](void* block) noexcept;
};

}  // namespace Kavra::Objects
