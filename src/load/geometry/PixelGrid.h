/// A grid of pixels in memory that can be mirrored and rotated without moving a pixel.
#pragma once

#include <cstddef>

namespace Kavra::Devices {

/// A mirroring, or a rotation by a multiple of 90 degrees, named as in `OIIO::ImageBufAlgo`.
enum class Rotation {
    kNone,       ///< the pixels stay where they are
    kFlip,       ///< top and bottom change places
    kFlop,       ///< left and right change places
    kRotate90,   ///< by 90 degrees clockwise
    kRotate180,  ///< by 180 degrees
    kRotate270,  ///< by 90 degrees anticlockwise
};

/// Pixels in rows, read wherever the strides lead. It does not own them.
struct PixelGrid {
    const unsigned char* first;   ///< the upper left pixel
    std::ptrdiff_t columnStride;  ///< bytes from a pixel to its right neighbour, of either sign
    std::ptrdiff_t rowStride;     ///< bytes from a pixel to the one below, of either sign
    std::size_t width, height;    ///< pixels, at least 1
    std::size_t pixelBytes;       ///< at least 1
};

/// The same pixels, seen mirrored or rotated.
PixelGrid Rotated(const PixelGrid& grid, Rotation rotation);

/// Copies the pixels into packed rows: `width * height * pixelBytes` bytes, which the grid must not overlap. On all
/// cores.
void CopyPixels(const PixelGrid& grid, unsigned char* rows);

}  // namespace Kavra::Devices
