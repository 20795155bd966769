/// \file
/// Render targets.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IMappedMemory.h>

namespace Kavra::Devices {

/// A render target of the host, implemented by hosts. `MemoryTarget` is the one that lives in memory.
///
/// Targets are not reference-counted: a module borrows one for the time of one call (`IImageHandler::SaveTarget`,
/// `IImageHandler::CreateImage`) and keeps no pointer to it, so the host may destroy it right after. Size and format
/// must not change while the call runs.
///
/// Threads: a module uses a target on the thread of that call only.
class KAVRA_DEVICES_API ATarget {
public:
    virtual ~ATarget();

    virtual int Width() const = 0;       ///< pixels
    virtual int Height() const = 0;      ///< rows
    virtual EFormat Format() const = 0;  ///< of its pixels, in memory order

    /// The pixels of layer `index` (0 for flat targets), or null when they are out of reach. The caller maps what it
    /// gets and calls `Release` on it. Modules ask for layer 0 only.
    virtual IMappedMemory* MemoryWrapper(int index) = 0;
};

}  // namespace Kavra::Devices
