/// Render targets.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IMappedMemory.h>

namespace Kavra::Devices {

/// A render target of the host. A module borrows it for one call. `MemoryTarget` is the one that lives in memory.
class KAVRA_DEVICES_API ATarget {
public:
    virtual ~ATarget();

    virtual int Width() const = 0;   ///< pixels
    virtual int Height() const = 0;  ///< rows
    virtual EFormat Format() const = 0;

    /// The pixels of layer `index` (0 for flat targets), or null when they are out of reach. The caller calls `Release`
    /// on it.
    virtual IMappedMemory* MemoryWrapper(int index) = 0;
};

}  // namespace Kavra::Devices
