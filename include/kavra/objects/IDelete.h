/// \file
/// An object that its holder can destroy without knowing its class.
#pragma once

#include <kavra/objects/HeapOperators.h>

namespace Kavra::Objects {

/// What an object that crosses the line between host and module is destroyed by. Descriptions, memory blocks and image
/// handlers derive from it.
///
/// Call `Delete` exactly once, on the interface pointer that was received; never `free` or `std::free` such an object.
/// The code of its destructor lies in the library that made it, so an object must go before that module is unloaded
/// (memory blocks are the exception: their code is the host's, see `IMemoryWrapper`).
///
/// Vtable slots: 0 destructor, 1 `Delete`.
class KAVRA_OBJECTS_API IDelete : public HeapOperators {
public:
    virtual ~IDelete();

    /// Destroys the object through its virtual destructor and gives its memory back to the heap that it came from. The
    /// object must have been made with `new`.
    virtual void Delete();
};

}  // namespace Kavra::Objects
