/// \file
/// Textures that a host keeps.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IMappedMemory.h>

namespace Kavra::Devices {

/// A texture of the host, reference-counted and implemented by hosts. `MemoryTexture` is the one that lives in memory.
///
/// Whoever keeps a texture beyond a call takes a reference. An image object made from a texture
/// (`IImageHandler::CreateImage`) keeps one until it is destroyed, because it lets the texture save itself as long as
/// nothing was pasted into the image; its pixels are copied when it is made, and not looked at again.
///
/// Threads: references may be taken and released on any thread, and the last one may go on any thread. Everything else
/// is called on the thread of the operation that a module was asked for.
class KAVRA_DEVICES_API ASimpleTexture {
public:
    virtual ~ASimpleTexture();

    virtual int Width() const = 0;       ///< pixels
    virtual int Height() const = 0;      ///< rows
    virtual EFormat Format() const = 0;  ///< of its pixels, in memory order

    /// The pixels of layer `index` (0 for flat textures), or null when they are out of reach. The caller maps what it
    /// gets and calls `Release` on it. Modules ask for layer 0 only.
    virtual IMappedMemory* MemoryWrapper(int index) = 0;

    /// Writes the texture to a file, by whatever way the texture knows. True when it was written. Its messages and what
    /// it leaves after a failure are its own.
    virtual bool Save(const KString& path) = 0;

    virtual void AddRef() = 0;      ///< takes a reference
    virtual void ReleaseRef() = 0;  ///< gives one back; the last one destroys the texture
};

}  // namespace Kavra::Devices
