/// Showing floating-point pixels with 8 bits a channel.
#pragma once

#include "common/PixelBlock.h"

#include <cstddef>

namespace Kavra::Devices {

/// Rows of pixels of 32-bit floats, of any alignment.
struct FloatRows {
    const unsigned char* first;
    std::size_t pitch;  ///< bytes from one row to the next, at least a row
    std::size_t width, height;
    std::size_t channels;  ///< 1, 2 or 4
};

/// Bytes of a pixel as `FloatsAsBytes` makes it: 1 of one channel, else 4.
constexpr std::size_t ShownBytes(std::size_t channels) {
    return channels == 1 ? 1 : 4;
}

/// Packed pixels of bytes: the values of a channel, mapped linearly so that the ends of its range become 0 and 255, and
/// truncated. With `stretch` the range is what the channel holds; a channel of one value in 0..1 keeps it, times 255,
/// any other is 0. Without, the range is 0..1, made wider where values lie outside. Two channels are shown as red and
/// green, blue 0 and alpha 255; four in their order. NaN is 0, and so is a whole channel that holds an infinity.
///
/// All in double precision, as (value - minimum) x 255 / span. On all cores. Throws `std::bad_alloc`.
Common::PixelBlock FloatsAsBytes(const FloatRows& rows, bool stretch);

}  // namespace Kavra::Devices
