/// \file
/// Access to the pixels of a target or texture.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// What memory is mapped for. The values are bits: `kMapRead | kMapWrite` asks for both.
enum EMapMode : int {
    kMapRead = 1,   ///< the caller reads the pixels; they are what was drawn last
    kMapWrite = 2,  ///< the caller writes the pixels, which count from `Unmap` on
};

/// A window on the memory of a target or texture, as `MemoryWrapper` hands it out. Implemented by hosts. A module maps
/// it once, for reading, copies what it wants and gives it back:
///
///     int pitch = 0;
///     if (IMappedMemory* memory = target->MemoryWrapper(0)) {
///         if (const void* rows = memory->Map(kMapRead, pitch)) {
///             ...
///             memory->Unmap();
///         }
///         memory->Release();
///     }
///
/// Whoever received a window calls `Release` on it exactly once, after every successful `Map` was matched by an
/// `Unmap`. A `Map` that failed is not matched. Maps may be nested where the implementation says so; those of
/// `MemoryTarget` and `MemoryTexture` may, and give the same pointer each time.
///
/// Threads: a module calls on the thread of the operation it was asked for, never on another. An implementation need
/// not stand calls from two threads at once.
class KAVRA_DEVICES_API IMappedMemory {
public:
    virtual ~IMappedMemory();

    /// Returns the first byte of the first row, valid until `Unmap`, and sets `pitch` to the bytes from one row to the
    /// next; null when the memory cannot be mapped in this `mode`, a set of `EMapMode` bits. The pitch must not be
    /// shorter than a row of the picture.
    virtual void* Map(int mode, int& pitch) = 0;
    /// Ends one `Map`. The pointer is not used any more.
    virtual void Unmap() = 0;
    /// Gives the window back; it is not used any more.
    virtual void Release() = 0;
};

}  // namespace Kavra::Devices
