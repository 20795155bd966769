/// Textures that a host keeps.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IMappedMemory.h>

namespace Kavra::Devices {

/// A texture of the host, reference-counted. `MemoryTexture` is the one that lives in memory.
class KAVRA_DEVICES_API ASimpleTexture {
public:
    virtual ~ASimpleTexture();

    virtual int Width() const = 0;   ///< pixels
    virtual int Height() const = 0;  ///< rows
    virtual EFormat Format() const = 0;

    /// The pixels of layer `index` (0 for flat textures), or null when they are out of reach. The caller calls
    /// `Release` on it.
    virtual IMappedMemory* MemoryWrapper(int index) = 0;

    /// Writes the texture to a file, by whatever way the texture knows. True when it was written.
    virtual bool Save(const KString& path) = 0;

    virtual void AddRef() = 0;
    virtual void ReleaseRef() = 0;
};

}  // namespace Kavra::Devices
