/// Decoding fax compression by ITU-T Recommendations T.4 (Group 3) and T.6 (Group 4): rows as runs of two colours.
#pragma once

#include "common/ByteSource.h"
#include "readers/ccitt/CcittBits.h"
#include "readers/ccitt/CcittCodes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

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

/// A code word that stands in no table.
struct BadCode {
    const wchar_t* table = L"";  ///< the one that does not have it
    std::int64_t position = 0;   ///< pixels before it, as the runs count them: it may lie beyond the width

    /// The warning that a reader raises for it. A drawing may have a million rows, each with one of these: no memory is
    /// asked for.
    std::array<wchar_t, 80> Message() const;
};

/// The ends of a row's runs, in pixels from its start, the first run white, then black and white in turn. Runs may be
/// empty; the last one ends at the width. Behind it the width follows twice more, so that whoever looks for a change to
/// the right of some place finds one of either colour.
class Row {
public:
    /// A row of this width (0 or more) in white.
    explicit Row(std::int32_t width);

    std::int32_t Width() const { return mWidth; }
    /// Runs that a row may hold. Pairs of empty runs could go on for ever.
    std::size_t Capacity() const { return static_cast<std::size_t>(mWidth) + 4; }

    /// Memory for `Capacity()` ends and two more.
    std::int32_t* Ends() { return mEnds.data() + 1; }
    /// The ends; the place before the first one may be read too and is 0.
    const std::int32_t* Ends() const { return mEnds.data() + 1; }

    /// Says that `count` ends are set, at least one and at most two more than `Capacity()`; the last becomes the width.
    void Close(std::size_t count);

    /// Sets the bits of black pixels and clears those of white ones, highest bit first. The bits behind the width are
    /// cleared. `packed` has (width + 7) / 8 bytes.
    void Fill(std::span<unsigned char> packed) const;

private:
    std::int32_t mWidth;
    std::size_t mCount = 0;
    std::vector<std::int32_t> mEnds;
};

/// Why a row ended.
enum class RowEnd {
    kComplete,   ///< it reached the width, or a code said that it ends
    kEndOfData,  ///< no bit was left; the rest is white
    kBadCode,
};

/// Decodes the codes of a row into runs. Made for one row and used once.
///
/// Data that end in the middle of a code go on with zeros. When the code cannot be decoded so, or no bit was left for
/// it, the data end before it.
class RowDecoder {
public:
    /// `row` receives the runs and is closed unless a code is bad; `reference` is the row before.
    RowDecoder(Input& input, const Row& reference, Row& row);

    /// Skips the bits up to the next end of line, and it; `zerosTaken` says that its first zeros ended the row before.
    /// False at the end of the data.
    [[nodiscard]] bool SkipEndOfLine(bool zerosTaken);
    /// Skips the rest of a byte.
    void SkipToByte();
    /// The next bit; 0 at the end of the data.
    bool TakeBit();

    /// White and black runs in turn. An end of line leaves the rest white.
    RowEnd OneDimensional();
    /// Changes told by their distance from those of the reference row. An end of line or an extension code
    /// gives the rest the current colour.
    RowEnd TwoDimensional();
    /// A row without codes.
    RowEnd CloseInWhite();

    BitWindow Window() const { return mWindow; }
    /// Up to which bit the look-ups reached.
    std::uint64_t Reach() const { return mReach; }
    bool EndedOnEndOfLine() const { return mEndedOnEndOfLine; }
    BadCode FoundBadCode() const { return {mTable, mPosition}; }

private:
    bool Need(int bits);
    TableEntry TakeVerticals();
    template <int Bits>
    State TakeRun(const std::array<TableEntry, std::size_t{1} << Bits>& table);
    State TakeRun();
    bool TakeRunPair();
    RowEnd TakeEndOfLine();

    bool IsBlack() const { return mCount % 2 == 1; }
    bool IsPassPending() const { return mCount == 0 || mEnds[mCount - 1] < mWidth; }
    bool EndRun(std::int64_t position);
    RowEnd CloseWithCurrentColour();
    RowEnd Stop();

    Input& mInput;
    Row& mRow;
    const std::int32_t* mChange;  // of the reference row: the next one of the other colour
    std::int32_t* mEnds;
    const std::size_t mCapacity;
    std::size_t mCount = 0;
    const std::int64_t mWidth;
    std::int64_t mPosition = 0;
    BitWindow mWindow;
    std::uint64_t mLastReach = 0;  // of the last look-up
    std::uint64_t mReach = 0;
    bool mEndedOnEndOfLine = false;
    const wchar_t* mTable;
};

/// Decodes row after row. Bits of the image are 0 for white and 1 for black, the leftmost pixel in the highest bit; the
/// bits behind the width are 0. One thread at a time.
///
/// - A bad code costs its row and is told of; the next call goes on with the next row, whose codes begin at the
///   bits that stood ready before the bad row, followed by the bytes that it did not draw (`Input`). The reference row
///   stays.
/// - Where the data end every further row is white.
/// - Runs are cut at the width. A row that ends too early is white from there, or, where an end of line or an extension
///   code ends a two-dimensional row, of the colour that was due.
/// - No end of block is known, unless `IsAtEnd` is asked: whatever follows is decoded.
///
/// Time is linear in the rows and in the data, memory in the width.
class Decoder {
public:
    /// The image begins at the source's position. The source must outlive the decoder. `width` is in pixels; below 1
    /// there are no rows.
    Decoder(Common::ByteSource& source, std::int32_t width, Mode mode, BitOrder order);

    /// Decodes as many rows as fill `rows`, at (width + 7) / 8 bytes each.
    [[nodiscard]] Outcome DecodeRows(std::span<unsigned char> rows);

    /// Decodes a row without showing it.
    [[nodiscard]] Outcome SkipRow() { return DecodeRow({}); }

    /// Whether no row of Group 4 follows: an end of block does, or no bit is left. Steps over a single end of line, which
    /// some writers begin rows with. To be asked between rows, by readers that know where an image ends.
    bool IsAtEnd();

    /// Which code was bad in the last row that was lost to one.
    const BadCode& LastBadCode() const { return mBadCode; }

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
    BadCode mBadCode;
};

}  // namespace Kavra::Devices::Ccitt
