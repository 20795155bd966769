/// The rows of a bitmap, as they are stored and unpacked.
#pragma once

#include "common/ByteSource.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// How the rows of a bitmap are stored. Rows of fewer than 8 bytes are stored as they are. All others are PackBits
/// packets after a count of their bytes:
///
///     pixel size  unpacked row                                        count
///     1, 2, 4, 8  row bytes; the highest bits are the leftmost pixel  1 byte up to 250 row bytes, else 2
///     16          x rrrrr ggggg bbbbb, big-endian                     2 bytes
///     32          a run of all red, then green, then blue; with four  2 bytes
///                 components an unused one first
///
/// Unpacked rows of 32 bits hold four bytes a pixel: an unused one, red, green, blue.
struct PictRowLayout {
    int width = 0;       ///< pixels
    int pixelSize = 1;   ///< bits: 1, 2, 4, 8, 16 or 32
    int components = 1;  ///< 3 or 4 at 32 bits
    /// Up to 8 bits without the high bit of its field. Above it the field as it is, whose high bit is set in the files
    /// of all known writers: such rows are packed however narrow they are.
    unsigned rowBytes = 0;

    bool IsDirect() const { return pixelSize > 8; }
    bool IsPacked() const { return rowBytes >= 8; }
    /// Whether a row is long enough for its pixels.
    bool HoldsItsPixels() const;
    /// Bytes of a row once it is unpacked: the most that its packets may give.
    std::size_t UnpackedBytes() const;
};

/// The stored bytes of the row at the source's position, without their count; the source goes past them. Nothing when
/// the source ends before them or the count is larger than any row needs.
std::optional<std::span<const unsigned char>> NextPictRow(Common::ByteSource& source, const PictRowLayout& layout);

/// Whether the packets of a stored row are whole and give no more than an unpacked row.
bool IsSoundPictRow(std::span<const unsigned char> stored, const PictRowLayout& layout);

/// Unpacks rows of any layouts, one after another.
class PictRowBuffer {
public:
    /// The unpacked row: `UnpackedBytes()` of them, zero where the packets give fewer. Valid until the next call.
    std::span<const unsigned char> Unpack(std::span<const unsigned char> stored, const PictRowLayout& layout);

private:
    std::vector<unsigned char> mBytes;
    std::size_t mUsed = 0;  // all bytes from here on are zero
};

}  // namespace Kavra::Devices
