/// Rows of pixels, copied.
#pragma once

#include <cstddef>

#include "common/PixelBlock.h"

namespace Kavra::Devices {

/// Rows of pixels in memory, taken every `pitch` bytes.
struct Rows {
    const unsigned char* first;
    std::size_t pitch;
    std::size_t bytes;  ///< of a row
    std::size_t count;
};

/// Copies the rows to others at `to`, which is taken every `toPitch` bytes. The two may overlap: what arrives is what
/// was there before.
void MoveRows(unsigned char* to, std::size_t toPitch, const Rows& rows);

/// What happens to rows that are packed.
struct Packing {
    /// Where the pitch is shorter than a row, a row runs on into the ones below it, and what would lie beyond the last
    /// one's pitch is zero. Without, only so much of each row is read, and its end is zero.
    bool overlaps = false;
    /// Pixels are of four bytes, and the first and third of each are exchanged.
    bool swapsRedAndBlue = false;
};

/// A zeroed block of packed rows. Throws `std::bad_alloc`, also when their bytes cannot be counted.
Common::PixelBlock NewRows(std::size_t count, std::size_t bytes);

/// The rows one after another, in a block of their own. Throws `std::bad_alloc`.
Common::PixelBlock PackRows(const Rows& rows, Packing packing = {});

}  // namespace Kavra::Devices
