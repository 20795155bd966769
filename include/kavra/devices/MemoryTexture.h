/// \file
/// A texture in memory.
#pragma once

#include <kavra/devices/ASimpleTexture.h>
#include <kavra/objects/HeapOperators.h>

#include <memory>

namespace Kavra::Devices {

/// A reference-counted texture whose pixels are a block of its own, zero at first. Rows lie `Pitch()` bytes apart. Made
/// with `new`, it starts without references and destroys itself when the last one is released; on the stack it must not
/// be referenced.
///
///     auto* texture = new MemoryTexture(64, 64, kR8G8B8A8);
///     texture->AddRef();
///     Fill(texture->Pixels(), texture->Pitch());
///     IImage* image = handler->CreateImage(texture);   // takes a reference of its own
///     ...
///     texture->ReleaseRef();
///
/// It has one layer, which may be mapped for reading, writing or both, any number of times at once; every map gives the
/// same pointer, and mapping copies nothing.
///
/// Threads: the counts are atomic; the pixels are their users' affair.
class KAVRA_DEVICES_API MemoryTexture : public ASimpleTexture, public Objects::HeapOperators {
public:
    /// As for `MemoryTarget`: sizes in pixels, `pitch` in bytes, 0 for packed rows. Throws `std::invalid_argument` for
    /// sizes below 1, a format without bytes per pixel or a pitch shorter than a row, `std::bad_alloc` when there is no
    /// memory for the pixels.
    MemoryTexture(int width, int height, EFormat format, int pitch = 0);
    ~MemoryTexture() override;

    int Width() const override;
    int Height() const override;
    EFormat Format() const override;
    /// Never null for layer 0, always null for others.
    IMappedMemory* MemoryWrapper(int index) override;
    /// Saves through `Sys::ImageHandler()`, as a flat texture, by its `SaveTexture(path, desc, data)`. False when no
    /// handler is set.
    bool Save(const KString& path) override;
    void AddRef() override;
    /// Destroys the texture with its last reference.
    void ReleaseRef() override;

    /// The pixels, for the one who made the texture: `Pitch()` x `Height()` bytes, valid as long as the texture.
    unsigned char* Pixels();
    int Pitch() const;         ///< bytes from one row to the next
    int RefCount() const;      ///< references taken and not released
    int MapCount() const;      ///< maps that were not unmapped yet
    int WrapperCount() const;  ///< memory wrappers that were not released yet

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};

}  // namespace Kavra::Devices
