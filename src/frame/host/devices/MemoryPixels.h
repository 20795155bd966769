/// The block behind a target or texture in memory, and the window through which others see it.
#pragma once

#include "common/PixelBlock.h"

#include <kavra/devices/EFormat.h>
#include <kavra/devices/IMappedMemory.h>

#include <atomic>

namespace Kavra::Devices {

/// Rows of pixels, zero at first, `Pitch()` bytes apart. The object is its own only window: handing it out is counted,
/// so whoever forgets to release it leaks nothing, and the count tells. Threads: the counts are atomic; the pixels are
/// their users' affair.
class MemoryPixels final : public IMappedMemory {
public:
    /// `pitch` 0 means bytes per pixel x width. Throws `std::invalid_argument` for sizes below 1, a format without
    /// bytes per pixel, a pitch shorter than a row or a row beyond an int, and `std::bad_alloc`.
    MemoryPixels(int width, int height, EFormat format, int pitch);

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }
    EFormat Format() const { return mFormat; }
    int Pitch() const { return mPitch; }
    unsigned char* Pixels() { return mBlock.get(); }
    int MapCount() const { return mMaps; }
    int WrapperCount() const { return mWrappers; }

    /// This window, handed out once more; null for any layer but 0.
    IMappedMemory* HandOut(int layer);

    void* Map(int mode, int& pitch) override;
    void Unmap() override;
    void Release() override;

private:
    int mWidth;
    int mHeight;
    EFormat mFormat;
    int mPitch;
    Common::PixelBlock mBlock;
    std::atomic<int> mMaps{0};
    std::atomic<int> mWrappers{0};
};

}  // namespace Kavra::Devices
