/// A texture in memory.
#pragma once

#include <kavra/devices/ASimpleTexture.h>
#include <kavra/objects/HeapOperators.h>

#include <memory>

namespace Kavra::Devices {

/// A reference-counted texture whose pixels are a block of its own, zero at first. Made with `new`, it starts without
/// references and destroys itself when the last one is released. It saves itself through `Sys::ImageHandler()`.
class KAVRA_DEVICES_API MemoryTexture : public ASimpleTexture, public Objects::HeapOperators {
public:
    /// As for `MemoryTarget`.
    MemoryTexture(int width, int height, EFormat format, int pitch = 0);
    ~MemoryTexture() override;

    int Width() const override;
    int Height() const override;
    EFormat Format() const override;
    IMappedMemory* MemoryWrapper(int index) override;
    bool Save(const KString& path) override;
    void AddRef() override;
    void ReleaseRef() override;

    unsigned char* Pixels();
    int Pitch() const;
    int RefCount() const;
    int MapCount() const;
    int WrapperCount() const;

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};

}  // namespace Kavra::Devices
