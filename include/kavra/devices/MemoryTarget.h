/// A render target in memory.
#pragma once

#include <kavra/devices/ATarget.h>

#include <memory>

namespace Kavra::Devices {

/// A target whose pixels are a block of its own, zero at first. Rows lie `pitch` bytes apart.
class KAVRA_DEVICES_API MemoryTarget : public ATarget {
public:
    /// `pitch` 0 means bytes per pixel x width. Throws `std::invalid_argument` for sizes below 1, a format without
    /// bytes per pixel or a pitch shorter than a row, `std::bad_alloc` when there is no memory.
    MemoryTarget(int width, int height, EFormat format, int pitch = 0);
    ~MemoryTarget() override;

    int Width() const override;
    int Height() const override;
    EFormat Format() const override;
    IMappedMemory* MemoryWrapper(int index) override;

    /// The pixels, for the one who made the target.
    unsigned char* Pixels();
    int Pitch() const;

    /// How often the pixels are mapped now, and how many memory wrappers are not released yet.
    int MapCount() const;
    int WrapperCount() const;

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};

}  // namespace Kavra::Devices
