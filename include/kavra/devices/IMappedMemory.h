/// Access to the pixels of a target or texture.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

enum EMapMode : int {
    kMapRead = 1,
    kMapWrite = 2,
};

/// A window on the memory of a target or texture, as `MemoryWrapper` hands it out. Whoever received it calls
/// `Release` when done, after every `Map` was matched by an `Unmap`.
class KAVRA_DEVICES_API IMappedMemory {
public:
    virtual ~IMappedMemory();

    /// The first row, valid until `Unmap`, and the bytes from one row to the next; null when it cannot be mapped.
    virtual void* Map(int mode, int& pitch) = 0;
    virtual void Unmap() = 0;
    virtual void Release() = 0;
};

}  // namespace Kavra::Devices
