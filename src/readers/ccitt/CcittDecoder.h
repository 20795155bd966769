/// Decoding bilevel images by ITU-T T.4 (Group 3) and T.6 (Group 4).
#pragma once

#include "readers/ccitt/CcittInput.h"
#include "readers/ccitt/CcittRow.h"
#include "readers/ccitt/CcittRowDecoder.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Kavra::Devices::Ccitt {

enum class Mode {
    kGroup3 = 0,                ///< one-dimensional; each row begins behind the next end of line
    kRows = 1,                  ///< one-dimensional rows without end of line, each from a byte boundary
    kGroup3TwoDimensional = 2,  ///< behind each end of line a bit: 1 for a one-dimensional row
    kGroup4 = 3,                ///< two-dimensional rows without anything between them
};

enum class Outcome {
    kDecoded,
    kEndOfData,  ///< the row at which the data end is white from there on; rows behind it are left as they are
    kBadCode,    ///< the row with the bad code and those behind it are left as they are
};

/// Decodes row after row. Bits of the image are 0 for white and 1 for black, the leftmost pixel in the highest bit; the
/// bits behind the width are 0. One thread at a time.
///
/// - A bad code raises one warning and costs its row; the next call goes on with the next row, whose codes begin at the
///   bits that stood ready before the bad row, followed by the bytes that it did not draw (`Input`). The reference row
///   stays.
/// - Where the data end nothing is raised, and every further row is white.
/// - Runs are cut at the width. A row that ends too early is white from there, or, where an end of line or an extension
///   code ends a two-dimensional row, of the colour that was due.
/// - No end of block is known: whatever follows is decoded.
///
/// Time is linear in the rows and in the data, memory in the width.
class Decoder {
public:
    /// The image begins at the source's position. The source must outlive the decoder. `width` is in pixels; below 1
    /// there are no rows.
    Decoder(Common::ByteSource& source, std::int32_t width, Mode mode, BitOrder order);

    /// Decodes as many rows as `rows` has room for, at (width + 7) / 8 bytes each.
    Outcome DecodeRows(std::span<unsigned char> rows);

    /// Rows that were not lost to a bad code.
    std::uint64_t RowsDecoded() const { return mRowsDecoded; }

private:
    RowEnd DecodeRuns(RowDecoder& row) const;
    Outcome DecodeRow(std::span<unsigned char> packed);

    Input mInput;
    Mode mMode;
    std::size_t mRowBytes;
    Row mReference;
    Row mCurrent;
    bool mEndOfLineBegun = false;  // by its zeros, which ended the row before
    std::uint64_t mRowsDecoded = 0;
};

}  // namespace Kavra::Devices::Ccitt
