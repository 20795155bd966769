/// Rows of pixels, copied.
#pragma once

#include "common/PixelBlock.h"

#include <cstddef>

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

/// What a new block holds.
enum class Contents { kZero, kUnspecified };

/// A block for packed rows. Throws `std::bad_alloc`, also when their bytes cannot be counted.
Common::PixelBlock NewRows(std::size_t count, std::size_t bytes, Contents contents = Contents::kZero);

/// The rows one after another, in a block of their own. Throws `std::bad_alloc`.
Common::PixelBlock PackRows(const Rows& rows, Packing packing = {});

/// Copies rows, of which `readable` bytes are there, to places `toPitch` bytes apart in the `capacity` bytes at `to`,
/// and makes zero what no row fills. A row goes no further than the next one's place, the last one as far as the
/// capacity.
void PlaceRows(unsigned char* to, std::size_t toPitch, std::size_t capacity, const Rows& rows, std::size_t readable);

}  // namespace Kavra::Devices
