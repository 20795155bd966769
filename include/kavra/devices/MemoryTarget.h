/// \file
/// A render target in memory.
#pragma once

#include <kavra/devices/ATarget.h>

#include <memory>

namespace Kavra::Devices {

/// A target whose pixels are a block of its own, zero at first. Rows lie `Pitch()` bytes apart. Good for programs
/// without a renderer, and for tests: it counts what was mapped and handed out.
///
///     MemoryTarget target(256, 256, kR32G32B32A32F);
///     Draw(target.Pixels(), target.Pitch());
///     handler->SaveTarget(L"shot.png", &target, false);
///
/// It has one layer. Its memory may be mapped for reading, writing or both, any number of times at once; every map
/// gives the same pointer, and mapping copies nothing.
///
/// Threads: the counts are atomic, and windows may be handed out and mapped on any thread; the pixels are their users'
/// affair. The target must outlive what it handed out.
class KAVRA_DEVICES_API MemoryTarget : public ATarget {
public:
    /// `width` and `height` are in pixels, `pitch` in bytes; 0 means bytes per pixel x width. Throws
    /// `std::invalid_argument` for sizes below 1, a format without bytes per pixel or a pitch shorter than a row,
    /// `std::bad_alloc` when there is no memory.
    MemoryTarget(int width, int height, EFormat format, int pitch = 0);
    ~MemoryTarget() override;

    int Width() const override;
    int Height() const override;
    EFormat Format() const override;
    /// Never null for layer 0, always null for others.
    IMappedMemory* MemoryWrapper(int index) override;

    /// The pixels, for the one who made the target: `Pitch()` x `Height()` bytes, valid as long as the target.
    unsigned char* Pixels();
    /// Bytes from one row to the next.
    int Pitch() const;

    /// How often the pixels are mapped now: 0 when everyone who mapped them has unmapped them.
    int MapCount() const;
    /// How many memory wrappers were handed out and not released yet.
    int WrapperCount() const;

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};

}  // namespace Kavra::Devices
