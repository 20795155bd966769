#include "readers/ccitt/CcittRowDecoder.h"

#include <algorithm>

namespace Kavra::Devices::Ccitt {

namespace {

constexpr const wchar_t* kMainName = L"MainTable";
constexpr const wchar_t* kWhiteName = L"WhiteTable";
constexpr const wchar_t* kBlackName = L"BlackTable";
constexpr const wchar_t* kEndOfLineName = L"EOL";

constexpr int kAllZeros = static_cast<int>(kEndOfLineZeros);
/// Those that follow the ones in the main table.
constexpr int kFurtherZeros = kAllZeros - kMainBits;

constexpr bool IsVertical(State state) {
    return state >= State::kVertical && state <= State::kVerticalLeft;
}

constexpr bool IsTerminating(State state) {
    return state == State::kWhiteTerminating || state == State::kBlackTerminating;
}

constexpr bool IsMakeUp(State state) {
    return state >= State::kWhiteMakeUp && state <= State::kCommonMakeUp;
}

constexpr int Offset(TableEntry entry) {
    return entry.state == State::kVerticalLeft ? -int{entry.parameter} : int{entry.parameter};
}

/// The first change beyond a position inside the row, among those of one colour.
const std::int32_t* Beyond(const std::int32_t* change, std::int64_t position) {
    while (*change <= position)
        change += 2;
    return change;
}

}  // namespace

RowDecoder::RowDecoder(Input& input, const Row& reference, Row& row)
    : mInput(input),
      mRow(row),
      mChange(reference.Ends()),
      mEnds(row.Ends()),
      mCapacity(row.Capacity()),
      mWidth(row.Width()),
      mWindow(input.Window()),
      mTable(kMainName) {}

/// Looks so many bits ahead. False when not even one is left.
inline bool RowDecoder::Need(int bits) {
    if (mWindow.count < bits) mWindow = mInput.Refill(mWindow);
    mLastReach = mInput.Position(mWindow) + static_cast<std::uint64_t>(bits);
    mReach = std::max(mReach, mLastReach);
    return mWindow.count > 0;
}

/// Ends the current run. False when the row cannot hold it.
inline bool RowDecoder::EndRun(std::int64_t position) {
    if (mCount == mCapacity) return false;
    mEnds[mCount++] = static_cast<std::int32_t>(std::min(position, mWidth));
    return true;
}

RowEnd RowDecoder::Stop() {
    return mInput.IsBeyondEnd(mLastReach) ? CloseInWhite() : RowEnd::kBadCode;
}

RowEnd RowDecoder::CloseInWhite() {
    if (IsBlack()) mEnds[mCount++] = static_cast<std::int32_t>(std::min(mPosition, mWidth));
    mRow.Close(mCount + 1);
    return RowEnd::kEndOfData;
}

RowEnd RowDecoder::CloseWithCurrentColour() {
    if (!EndRun(mWidth)) return Stop();
    mRow.Close(mCount);
    return RowEnd::kComplete;
}

bool RowDecoder::SkipEndOfLine(bool zerosTaken) {
    constexpr std::uint64_t kZeros = (std::uint64_t{1} << kAllZeros) - 1;
    if (!zerosTaken) {
        while (Need(kAllZeros) && (mWindow.bits & kZeros) != 0)
            mWindow.Drop(1);
    }
    while (Need(1)) {
        if (TakeBit()) return true;
    }
    return false;
}

void RowDecoder::SkipToByte() {
    mWindow.Drop(mWindow.count % 8);
}

bool RowDecoder::TakeBit() {
    if (!Need(1)) return false;
    const bool bit = (mWindow.bits & 1) != 0;
    mWindow.Drop(1);
    return bit;
}

RowEnd RowDecoder::OneDimensional() {
    while (mPosition < mWidth) {
        const State state = TakeRun();
        if (IsTerminating(state)) continue;
        if (state != State::kEndOfLine) return Stop();
        mEndedOnEndOfLine = true;
        (void)CloseInWhite();
        return RowEnd::kComplete;
    }
    mRow.Close(mCount);
    return RowEnd::kComplete;
}

RowEnd RowDecoder::TwoDimensional() {
    while (mPosition < mWidth) {
        const TableEntry entry = TakeVerticals();
        switch (entry.state) {
            case State::kVertical:
            case State::kVerticalRight:
            case State::kVerticalLeft:
                break;  // the width is reached
            case State::kPass:
                mPosition = mChange[1];
                if (mPosition < mWidth) mChange = Beyond(mChange + 2, mPosition);
                break;
            case State::kHorizontal:
                if (!TakeRunPair()) return Stop();
                break;
            case State::kExtension:
                return CloseWithCurrentColour();
            case State::kEndOfLine:
                return TakeEndOfLine();
            default:
                return Stop();
        }
    }
    if (IsPassPending()) return CloseWithCurrentColour();
    mRow.Close(mCount);
    return RowEnd::kComplete;
}

/// Takes vertical codes as long as they come. The code behind them; a vertical one when the width is reached; an
/// invalid one when they lead to the left or to too many runs, or when no bit is left.
TableEntry RowDecoder::TakeVerticals() {
    BitWindow window = mWindow;  // drawings consist of these codes: all that they need stays in registers
    std::int64_t position = mPosition;
    const std::int32_t* change = mChange;
    std::int32_t* ends = mEnds + mCount;
    TableEntry entry;
    int taken = 0;
    do {
        if (window.count < kMainBits) window = mInput.Refill(window);
        entry = window.count > 0 ? kMainTable[window.bits % kMainTable.size()] : TableEntry{};
        taken = entry.length;
        window.Drop(taken);
        if (!IsVertical(entry.state)) break;
        const std::int64_t next = *change + Offset(entry);
        if (next < position || ends == mEnds + mCapacity) {
            entry = {};
            break;
        }
        position = next;
        *ends++ = static_cast<std::int32_t>(next);
        if (next < mWidth) change = Beyond(change[-1] > next ? change - 1 : change + 1, next);
    } while (position < mWidth);

    mWindow = window;
    mPosition = position;
    mChange = change;
    mCount = static_cast<std::size_t>(ends - mEnds);
    mLastReach = mInput.Position(window) - static_cast<std::uint64_t>(taken) + kMainBits;
    mReach = std::max(mReach, mLastReach);
    return entry;
}

/// Takes the codes of one run. The state of the last of them, which is a terminating one when all went well.
template <int Bits>
State RowDecoder::TakeRun(const std::array<TableEntry, std::size_t{1} << Bits>& table) {
    for (;;) {
        if (!Need(Bits)) return State::kInvalid;
        const TableEntry entry = table[mWindow.bits % table.size()];
        mWindow.Drop(entry.length);
        mPosition += entry.parameter;
        if (IsMakeUp(entry.state)) continue;
        if (!IsTerminating(entry.state) || EndRun(mPosition)) return entry.state;
        mTable = kMainName;
        return State::kInvalid;
    }
}

State RowDecoder::TakeRun() {
    mTable = IsBlack() ? kBlackName : kWhiteName;
    return IsBlack() ? TakeRun<kBlackBits>(kBlackTable) : TakeRun<kWhiteBits>(kWhiteTable);
}

/// The two runs of horizontal mode.
bool RowDecoder::TakeRunPair() {
    if (!IsTerminating(TakeRun()) || !IsTerminating(TakeRun())) return false;
    mTable = kMainName;
    if (mPosition < mWidth) mChange = Beyond(mChange, mPosition);
    return true;
}

/// The rest of the zeros of an end of line. Its one is left to be skipped, or to be a code of the next row.
RowEnd RowDecoder::TakeEndOfLine() {
    constexpr std::uint64_t kZeros = (std::uint64_t{1} << kFurtherZeros) - 1;
    const RowEnd end = CloseWithCurrentColour();
    if (end != RowEnd::kComplete) return end;
    if (!Need(kFurtherZeros)) return RowEnd::kEndOfData;
    if ((mWindow.bits & kZeros) != 0) {
        mTable = kEndOfLineName;
        return mInput.IsBeyondEnd(mLastReach) ? RowEnd::kEndOfData : RowEnd::kBadCode;
    }
    mWindow.Drop(kFurtherZeros);
    mEndedOnEndOfLine = true;
    return RowEnd::kComplete;
}

}  // namespace Kavra::Devices::Ccitt
