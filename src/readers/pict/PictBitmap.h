/// Bitmaps and pixel maps inside a PICT picture: where they stand, and their rows as they are stored and unpacked.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Pixels from (left, top) up to but not including (right, bottom). Every rectangle of a picture uses the coordinates
/// of its frame.
struct PictRect {
    int top = 0, left = 0, bottom = 0, right = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
};

inline PictRect Intersection(const PictRect& a, const PictRect& b) {
    return {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
}

/// Red, green and blue, 0 to 65535.
using PictColour = std::array<std::uint16_t, 3>;

inline constexpr PictColour kPictBlack = {0, 0, 0};
inline constexpr PictColour kPictWhite = {0xFFFF, 0xFFFF, 0xFFFF};

/// How the file keeps rows.
enum class PictRowStorage : std::uint8_t {
    kByRowBytes,  ///< as the contract's reading tells from the row bytes (`PictRowLayout`)
    // As the common reading has found out:
    kPlain,       ///< as they are
    kWithoutPad,  ///< of 32 bits: three bytes a pixel, without the unused one
    kByteCounts,  ///< PackBits packets after a count of 1 byte
    kWordCounts,  ///< PackBits packets after a count of 2 bytes
};

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
    PictRowStorage storage = PictRowStorage::kByRowBytes;

    bool IsDirect() const { return pixelSize > 8; }
    bool IsPacked() const {
        return storage == PictRowStorage::kByRowBytes ? rowBytes >= 8 : storage >= PictRowStorage::kByteCounts;
    }
    /// Whether the count of a packed row has two bytes.
    bool HasWordCounts() const;
    /// Whether a row is long enough for its pixels.
    bool HoldsItsPixels() const;
    /// Bytes of a stored row that is not packed.
    std::size_t PlainBytes() const;
    /// Bytes of a row once it is unpacked: the most that its packets may give.
    std::size_t UnpackedBytes() const;
};

/// The stored bytes of the row at the source's position, without their count; the source goes past them. Fails when the
/// source ends before them or the count is larger than any row needs.
[[nodiscard]] Common::Result<std::span<const unsigned char>> NextPictRow(Common::ByteSource& source,
                                                                         const PictRowLayout& layout);

/// Whether the packets of a stored row are whole and give no more than an unpacked row.
bool IsSoundPictRow(std::span<const unsigned char> stored, const PictRowLayout& layout);

/// Whether they are whole and give exactly the pixels of a row, or these and its padding: no other way of storing rows
/// looks so by chance.
bool IsWholePictRow(std::span<const unsigned char> stored, const PictRowLayout& layout);

/// Unpacks rows of any layouts, one after another.
class PictRowBuffer {
public:
    /// The unpacked row: `UnpackedBytes()` of them, zero where what is stored gives fewer. Valid until the next call.
    std::span<const unsigned char> Unpack(std::span<const unsigned char> stored, const PictRowLayout& layout);

private:
    std::vector<unsigned char> mBytes;
    std::size_t mUsed = 0;  // all bytes from here on are zero
};

/// A bitmap or pixel map that the picture draws.
struct PictRecord {
    PictRect bounds;  ///< of the stored pixels, never empty
    PictRect source;
    PictRect destination;
    PictRect covered;  ///< what is drawn: the destination inside the bounds and the frame; empty: nothing
    std::uint16_t mode = 0;
    PictRowLayout layout;
    std::vector<PictColour> colours;  ///< of indexed pixels, up to 256; none: a ramp of 256 greys
    std::uint64_t rows = 0;           ///< offset in the file of the first row that is drawn
};

/// What the opcode says of the bitmap that follows it.
enum class PictBitmapKind {
    kIndexed,        ///< one-bit bitmap or pixel map of palette indices
    kIndexedRegion,  ///< the same with a mask region, which has no effect
    kDirect,         ///< pixel map of colours
};

// Each leaves the source behind what it read, and fails where that is damaged. The sources are whole files in memory:
// offsets are counted from their start.

[[nodiscard]] Common::Result<PictRect> ReadPictRect(Common::ByteSource& source);
[[nodiscard]] Common::Result<PictColour> ReadPictColour(Common::ByteSource& source);

/// The colours of a table, up to 256. None where the table says that it is empty.
[[nodiscard]] Common::Result<std::vector<PictColour>> ReadPictColourTable(Common::ByteSource& source);

/// Skips a region or polygon, whose size (2 bytes) counts itself.
[[nodiscard]] Common::Result<> SkipPictRegion(Common::ByteSource& source);

/// Skips a pattern: its kind and 8 bytes; then a pixel map where the kind is 1, a colour where it is 2.
[[nodiscard]] Common::Result<> SkipPictPattern(Common::ByteSource& source);

/// Reads a bitmap after its opcode and looks through its rows without unpacking them.
[[nodiscard]] Common::Result<PictRecord> ReadPictRecord(Common::ByteSource& source, PictBitmapKind kind,
                                                        const PictRect& frame);

}  // namespace Kavra::Devices
