/// \file
/// The process-wide parts of the object model.
#pragma once

#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/Export.h>
#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/IMessageSink.h>

#include <cstddef>

/// The object model: how objects are made, named, counted, registered and destroyed across the line between a host and
/// the modules that it loads.
namespace Kavra::Objects {

/// What all modules of a process share: the class factory, the two allocators and the receiver of messages. Static
/// members only.
///
/// Lifetime: everything here exists from before the first constructor of the program runs until after the last
/// destructor; nothing of it is destroyed. What a host puts in place of a part stays the host's and must outlive its
/// use: an allocator its blocks, a sink the last message.
///
/// Threads: every function may be called from any thread at any time. The two allocator pointers are plain variables:
/// set them while no other thread allocates, best before modules are loaded.
class KAVRA_OBJECTS_API ObjModel {
public:
    /// The process-wide factory. It is never destroyed: the code of a prototype may be gone by then.
    static ClassFactory& Factory();

    /// Reports an error to the message sink. `detail` is passed on and may be null, a null `message` is the empty
    /// text; the other arguments are for hosts that show where an error came from, and are ignored here.
    static void Error(const wchar_t* message, const wchar_t* detail, const wchar_t* file, const wchar_t* function,
                      int line);

    /// Where pixel blocks come from. A host may put its own allocator here: blocks of the one before stay valid, since
    /// every block remembers the one that made it. Never null.
    ///
    /// The one that is here at the start hands out blocks aligned to 64 bytes. A large block is memory of its own that
    /// the system zeroes as it is touched, backed by huge pages where it can. A large block that is freed may be kept
    /// for the next one: at most one, of at most `kKeptBlockBytes`, given only to a request of at least half its size.
    static IMemoryAllocator* mDefaultAllocator;

    /// Where `HeapOperators` gets memory for objects: descriptions, wrappers, images, handlers. Replaceable like
    /// `mDefaultAllocator`. Never null.
    static IMemoryAllocator* mHeapAllocator;

    /// The largest freed block, in bytes, that the built-in default allocator keeps for the next request.
    static constexpr std::size_t kKeptBlockBytes = std::size_t{512} << 20;

    /// The largest single block, in bytes, that the built-in default allocator gives; larger requests throw
    /// `std::bad_alloc`, which makes a load fail instead of the machine. At the start this is the machine's memory.
    static std::size_t BlockCeiling();
    /// Sets the ceiling in bytes; 0 means the machine's memory again. Blocks that were given out stay.
    static void SetBlockCeiling(std::size_t bytes);

    /// What the built-in default allocator has given out. Blocks of a host's own allocator are not counted.
    static AllocationCounters BlockCounters();
    /// What the built-in allocator of objects has given out.
    static AllocationCounters ObjectCounters();

    /// Gives the kept block back to the system.
    static void ReleaseKeptBlock();

    /// Replaces the receiver of messages and returns the one before; null puts the default one back. The sink stays
    /// its caller's and must outlive its use, messages that other threads are just raising included.
    static IMessageSink* SetMessageSink(IMessageSink* sink);
    /// The receiver of messages; never null.
    static IMessageSink* MessageSink();
};

}  // namespace Kavra::Objects
