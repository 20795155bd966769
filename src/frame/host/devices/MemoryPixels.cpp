#include "frame/host/devices/MemoryPixels.h"

#include "common/PackedLayout.h"

#include <cstdint>
#include <stdexcept>

namespace Kavra::Devices {

namespace {

int CheckedPitch(int width, int height, EFormat format, int pitch) {
    const std::int64_t row = Common::PackedRowBytes(format, width);
    if (width < 1 || height < 1) throw std::invalid_argument("a picture needs a pixel at least");
    if (row < 1) throw std::invalid_argument("a format without bytes per pixel");
    if (!Common::FitsPitch(row)) throw std::invalid_argument("a row beyond the pitch's range");
    if (pitch != 0 && pitch < row) throw std::invalid_argument("a pitch shorter than a row");
    return pitch != 0 ? pitch : static_cast<int>(row);
}

}  // namespace

MemoryPixels::MemoryPixels(int width, int height, EFormat format, int pitch)
    : mWidth(width),
      mHeight(height),
      mFormat(format),
      mPitch(CheckedPitch(width, height, format, pitch)),
      mBlock(Common::NewZeroedBlock(static_cast<std::size_t>(mPitch) * static_cast<std::size_t>(height))) {}

IMappedMemory* MemoryPixels::HandOut(int layer) {
    if (layer != 0) return nullptr;
    ++mWrappers;
    return this;
}

void* MemoryPixels::Map(int mode, int& pitch) {
    constexpr int kModes = kMapRead | kMapWrite;
    if ((mode & kModes) == 0 || (mode & ~kModes) != 0) return nullptr;
    ++mMaps;
    pitch = mPitch;
    return mBlock.get();
}

void MemoryPixels::Unmap() {
    --mMaps;
}

void MemoryPixels::Release() {
    --mWrappers;
}

}  // namespace Kavra::Devices
