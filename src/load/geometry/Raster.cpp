#include "load/geometry/Raster.h"

#include "common/PixelFormats.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Kavra::Devices {

namespace {

bool Contains(const Raster& whole, vec2<int> origin, vec2<int> size) {
    return origin.x >= 0 && origin.y >= 0 && origin.x + size.x <= whole.width && origin.y + size.y <= whole.height;
}

/// Bytes before a pixel of a flat raster.
std::size_t OffsetOf(const Raster& raster, int x, int y) {
    return static_cast<std::size_t>(y) * raster.pitch + static_cast<std::size_t>(x) * raster.PixelBytes();
}

/// Copies what of the rectangle at `origin` lies inside `whole` to `block`, which holds all of it in packed rows.
void CopyInside(const Raster& whole, vec2<int> origin, vec2<int> size, unsigned char* block) {
    const int left = std::max(origin.x, 0), top = std::max(origin.y, 0);
    const int right = std::min(origin.x + size.x, whole.width), bottom = std::min(origin.y + size.y, whole.height);
    if (left >= right || top >= bottom) return;
    const auto indent = static_cast<std::size_t>(std::int64_t{left} - origin.x);
    const auto skipped = static_cast<std::size_t>(std::int64_t{top} - origin.y);
    const std::size_t pitch = static_cast<std::size_t>(size.x) * whole.PixelBytes();
    MoveRows(block + skipped * pitch + indent * whole.PixelBytes(), pitch,
             {.first = whole.first + OffsetOf(whole, left, top),
              .pitch = whole.pitch,
              .bytes = static_cast<std::size_t>(right - left) * whole.PixelBytes(),
              .count = static_cast<std::size_t>(bottom - top)});
}

}  // namespace

std::size_t Raster::PixelBytes() const {
    return static_cast<std::size_t>(Common::FactsOf(format).BytesPerPixel());
}

std::size_t Raster::RowCount() const {
    return static_cast<std::size_t>(height) * static_cast<std::size_t>(faces) * static_cast<std::size_t>(slices);
}

bool Raster::HoldsItsRows() const {
    const std::size_t rows = RowCount(), rowBytes = RowBytes();
    if (first == nullptr || rows == 0 || rowBytes == 0 || pitch < rowBytes) return false;
    return rowBytes <= bytes && rows - 1 <= (bytes - rowBytes) / pitch;
}

Raster PackedRaster(EFormat format, int width, int height, const void* pixels, std::size_t bytes) {
    Raster raster{.format = format, .width = width, .height = height};
    raster.first = static_cast<const unsigned char*>(pixels);
    raster.pitch = raster.RowBytes();
    raster.bytes = bytes;
    return raster;
}

Raster PackedRaster(EFormat format, int width, int height, Common::PixelBlock block, std::size_t bytes) {
    Raster raster = PackedRaster(format, width, height, block.get(), bytes);
    raster.block = std::move(block);
    return raster;
}

Raster NewRaster(EFormat format, int width, int height, int faces, int slices) {
    Raster raster{.format = format, .width = width, .height = height, .faces = faces, .slices = slices};
    raster.pitch = raster.RowBytes();
    raster.block = NewRows(raster.RowCount(), raster.pitch, Contents::kUnspecified);
    raster.first = raster.block.get();
    raster.bytes = raster.PackedBytes();
    return raster;
}

Raster CutOut(const Raster& whole, vec2<int> origin, vec2<int> size) {
    if (Contains(whole, origin, size)) {
        const std::size_t offset = OffsetOf(whole, origin.x, origin.y);
        return {.format = whole.format,
                .width = size.x,
                .height = size.y,
                .first = whole.first + offset,
                .pitch = whole.pitch,
                .bytes = whole.bytes - offset};
    }
    const std::size_t rowBytes = static_cast<std::size_t>(size.x) * whole.PixelBytes();
    const auto rows = static_cast<std::size_t>(size.y);
    Common::PixelBlock block = NewRows(rows, rowBytes);
    CopyInside(whole, origin, size, block.get());
    return PackedRaster(whole.format, size.x, size.y, std::move(block), rows * rowBytes);
}

Common::PixelBlock Pack(Raster raster) {
    const bool isPacked = raster.block && raster.first == raster.block.get() && raster.pitch == raster.RowBytes();
    return isPacked ? std::move(raster.block) : PackRows(raster.AllRows());
}

}  // namespace Kavra::Devices
