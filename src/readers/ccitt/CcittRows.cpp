#include "readers/ccitt/CcittRows.h"

#include <algorithm>
#include <format>
#include <utility>

namespace Kavra::Devices::Ccitt {

// --- A row -----------------------------------------------------------------------------------------------------------

namespace {

/// Sets the bits from `begin` (included) to `end` (excluded).
void SetBits(std::span<unsigned char> packed, std::size_t begin, std::size_t end) {
    if (begin >= end) return;
    const std::size_t first = begin / 8;
    const std::size_t last = (end - 1) / 8;
    const unsigned head = 0xFFU >> begin % 8;
    const unsigned tail = 0xFF00U >> ((end - 1) % 8 + 1);
    if (first == last) {
        packed[first] |= static_cast<unsigned char>(head & tail);
        return;
    }
    packed[first] |= static_cast<unsigned char>(head);
    std::ranges::fill(packed.subspan(first + 1, last - first - 1), 0xFF);
    packed[last] |= static_cast<unsigned char>(tail);
}

}  // namespace

Row::Row(std::int32_t width) : mWidth(width), mEnds(Capacity() + 5) {
    Close(1);
}

void Row::Close(std::size_t count) {
    mCount = count;
    std::fill_n(mEnds.begin() + static_cast<std::ptrdiff_t>(count), 3, mWidth);
}

void Row::Fill(std::span<unsigned char> packed) const {
    std::ranges::fill(packed, 0);
    const std::span<const std::int32_t> ends(Ends(), mCount);
    for (std::size_t black = 1; black < ends.size(); black += 2) {
        SetBits(packed, static_cast<std::size_t>(ends[black - 1]), static_cast<std::size_t>(ends[black]));
    }
}

// --- Its codes -------------------------------------------------------------------------------------------------------

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

// --- Row after row ---------------------------------------------------------------------------------------------------

std::array<wchar_t, 80> BadCode::Message() const {
    std::array<wchar_t, 80> message{};  // the names and numbers need less
    std::format_to_n(message.data(), message.size() - 1, L"Bad code word in {} at scanline (x {})", table, position);
    return message;
}

Decoder::Decoder(Common::ByteSource& source, std::int32_t width, Mode mode, BitOrder order)
    : mInput(source, order),
      mMode(mode),
      mRowBytes((static_cast<std::size_t>(std::max(width, 0)) + 7) / 8),
      mReference(std::max(width, 0)),
      mCurrent(std::max(width, 0)) {}

Outcome Decoder::DecodeRows(std::span<unsigned char> rows) {
    if (mRowBytes == 0) return Outcome::kDecoded;
    for (; rows.size() >= mRowBytes; rows = rows.subspan(mRowBytes)) {
        const Outcome result = DecodeRow(rows.first(mRowBytes));
        if (result != Outcome::kDecoded) return result;
    }
    return Outcome::kDecoded;
}

bool Decoder::IsAtEnd() {
    constexpr int kBits = kAllZeros + 1;
    constexpr std::uint64_t kOne = std::uint64_t{1} << kAllZeros;  // the first bit is the lowest
    constexpr std::uint64_t kMask = (kOne << 1) - 1;
    for (;;) {
        BitWindow window = mInput.Refill(mInput.Window());
        const bool isLine = (window.bits & kMask) == kOne;
        const bool isBlock = isLine && (window.bits >> kBits & kMask) == kOne;
        if (isLine) window.Drop(kBits);
        mInput.Keep(window, mInput.Position(window));
        if (isBlock || window.count <= 0) return true;
        if (!isLine) return false;
    }
}

Outcome Decoder::DecodeRow(std::span<unsigned char> packed) {
    RowDecoder row(mInput, mReference, mCurrent);
    const RowEnd end = DecodeRuns(row);
    if (end == RowEnd::kBadCode) {
        mBadCode = row.FoundBadCode();
        mInput.GiveUp(row.Reach());
        return Outcome::kBadCode;
    }
    if (!packed.empty()) mCurrent.Fill(packed);
    std::swap(mCurrent, mReference);
    ++mRowsDecoded;
    if (end == RowEnd::kEndOfData) {
        mInput.Finish();
        return Outcome::kEndOfData;
    }
    mInput.Keep(row.Window(), row.Reach());
    mEndOfLineBegun = row.EndedOnEndOfLine();
    return Outcome::kDecoded;
}

RowEnd Decoder::DecodeRuns(RowDecoder& row) const {
    switch (mMode) {
        case Mode::kGroup3:
            return row.SkipEndOfLine(mEndOfLineBegun) ? row.OneDimensional() : row.CloseInWhite();
        case Mode::kRows:
            row.SkipToByte();
            return row.OneDimensional();
        case Mode::kGroup3TwoDimensional:
            if (!row.SkipEndOfLine(mEndOfLineBegun)) return row.CloseInWhite();
            return row.TakeBit() ? row.OneDimensional() : row.TwoDimensional();
        case Mode::kGroup4:
            break;
    }
    return row.TwoDimensional();
}

}  // namespace Kavra::Devices::Ccitt
