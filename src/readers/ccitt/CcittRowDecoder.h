/// The codes of one row of fax data.
#pragma once

#include "readers/ccitt/CcittInput.h"
#include "readers/ccitt/CcittRow.h"
#include "readers/ccitt/CcittTables.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kavra::Devices::Ccitt {

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
    /// Pixels before the bad code, as the runs count them: it may lie beyond the width.
    std::int64_t Position() const { return mPosition; }
    /// The table that does not have the bad code.
    const wchar_t* Table() const { return mTable; }

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

}  // namespace Kavra::Devices::Ccitt
