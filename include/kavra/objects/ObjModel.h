/// The process-wide parts of the object model.
#pragma once

#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/Export.h>
#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/IMessageSink.h>

#include <cstddef>

namespace Kavra::Objects {

class KAVRA_OBJECTS_API ObjModel {
public:
    /// The process-wide factory. It is never destroyed: the code of a prototype may be gone by then.
    static ClassFactory& Factory();

    /// Reports an error to the message sink. `detail` is passed on; the other arguments are for hosts that show
    /// where an error came from, and are ignored here.
    static void Error(const wchar_t* message, const wchar_t* detail, const wchar_t* file, const wchar_t* function,
                      int line);

    /// Where pixel blocks come from. A host may put its own allocator here at any time: every block remembers
    /// the one that made it. Never null.
    ///
    /// The one that is here at the start hands out blocks aligned to 64 bytes. A large block is memory of its own
    /// that the system zeroes as it is touched, backed by huge pages where it can. A large block that is freed may
    /// be kept for the next one: at most one, of at most `kKeptBlockBytes`, given only to a request of at least half
    /// its size.
    static IMemoryAllocator* mDefaultAllocator;

    /// Where `HeapOperators` gets memory for objects. Replaceable like `mDefaultAllocator`.
    static IMemoryAllocator* mHeapAllocator;

    static constexpr std::size_t kKeptBlockBytes = std::size_t{512} << 20;

    /// The largest single block that the built-in default allocator gives; larger requests throw
    /// `std::bad_alloc`. At the start this is the machine's memory.
    static std::size_t BlockCeiling();
    /// Sets the ceiling; 0 means the machine's memory again.
    static void SetBlockCeiling(std::size_t bytes);

    /// What the two built-in allocators have given out.
    static AllocationCounters BlockCounters();
    static AllocationCounters ObjectCounters();

    /// Gives the kept block back to the system.
    static void ReleaseKeptBlock();

    /// Replaces the receiver of messages and returns the one before; null puts the default one back. The sink
    /// stays its caller's and must outlive its use.
    static IMessageSink* SetMessageSink(IMessageSink* sink);
    static IMessageSink* MessageSink();
};

}  // namespace Kavra::Objects
