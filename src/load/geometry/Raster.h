/// Pixels in memory, and what is done to them on their way: parts cut out, rows packed, another size, another order of
/// rows and columns.
#pragma once

#include "common/PixelBlock.h"
#include "load/geometry/PackedRows.h"

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

namespace Kavra::Devices {

/// Rows of pixels of a format that the image library has pixels for. Faces and slices follow one another without gaps.
/// Empty where `first` is null.
struct Raster {
    EFormat format = kUnknown;
    int width = 0, height = 0;  ///< of one face or slice, at least 1
    int faces = 1;              ///< 6 of a cube map
    int slices = 1;             ///< of a volume
    const unsigned char* first = nullptr;
    std::size_t pitch = 0;               ///< bytes from a row to the next, at least a row
    std::size_t bytes = 0;               ///< there are so many from `first` on; nothing ever looks beyond them
    Common::PixelBlock block = nullptr;  ///< where the pixels lie; null: somebody else's, who keeps them longer

    explicit operator bool() const { return first != nullptr; }
    std::size_t PixelBytes() const;
    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytes(); }
    std::size_t RowCount() const;  ///< of all faces and slices
    std::size_t PackedBytes() const { return RowCount() * RowBytes(); }
    bool HoldsItsRows() const;  ///< whether all of them lie within `bytes`
    Rows AllRows() const { return {.first = first, .pitch = pitch, .bytes = RowBytes(), .count = RowCount()}; }
};

/// Packed pixels in somebody else's memory of `bytes` bytes.
Raster PackedRaster(EFormat format, int width, int height, const void* pixels, std::size_t bytes);

/// The same in a block of their own.
Raster PackedRaster(EFormat format, int width, int height, Common::PixelBlock block, std::size_t bytes);

/// Packed pixels with unspecified contents in a block of their own. Throws `std::bad_alloc`.
Raster NewRaster(EFormat format, int width, int height, int faces = 1, int slices = 1);

/// A rectangle of a flat raster: a view of it where it lies inside, else a raster of its own, zero where it lies outside.
/// `size` is at least 1 x 1, and the sums of the two fit an int. Throws `std::bad_alloc`.
Raster CutOut(const Raster& whole, vec2<int> origin, vec2<int> size);

/// The pixels in packed rows: the raster's own block where they lie so in it, else a copy. Throws `std::bad_alloc`.
Common::PixelBlock Pack(Raster raster);

}  // namespace Kavra::Devices
