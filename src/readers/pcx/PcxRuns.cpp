#include "readers/pcx/PcxRuns.h"

#include "readers/ByteOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace Kavra::Devices {

namespace {

constexpr unsigned char kCountMark = 0xC0;
constexpr std::size_t kMostCount = 0x3F;

// A step takes up to eight bytes that stand for themselves and the run behind them.
constexpr std::size_t kLiterals = 8;
constexpr std::size_t kRunStore = kMostCount + 1;  // a run is stored in two fixed pieces, whatever its length
constexpr std::size_t kShortRun = 16;
constexpr std::size_t kStepIn = kLiterals + 2;
constexpr std::size_t kStepOut = kLiterals + kRunStore;

constexpr bool IsCount(unsigned char byte) {
    return (byte & kCountMark) == kCountMark;
}

/// How many of the bytes come before the first count.
std::size_t LiteralsBeforeCount(const std::array<unsigned char, kLiterals>& bytes) {
    const auto word = LittleAt<std::uint64_t, 0>(bytes);
    const std::uint64_t counts = word & (word << 1) & 0x8080808080808080U;
    return static_cast<std::size_t>(std::countr_zero(counts)) / 8;
}

}  // namespace

PcxRuns::PcxRuns(ByteSource& source, std::size_t room, std::size_t lineBytes)
    : mSource(source), mLine(room), mRoom(room), mLineBytes(lineBytes) {}

std::span<const unsigned char> PcxRuns::NextLine() {
    mIsOutOfData = false;
    mDone = std::min(mRunLength, mRoom);
    std::fill_n(mLine.begin(), mDone, mRunValue);
    mRunLength -= mDone;

    const std::size_t end = std::min(mRoom, mLineBytes);
    while (mDone < end) {
        TakeCodes(end);
        if (mDone < end && !TakeCode()) break;
    }
    return std::span(mLine).first(mDone);
}

/// Decodes as long as neither the bytes at hand nor the line can end within a step. Most steps are one stretch of
/// literals and one run, without a branch that depends on their lengths.
void PcxRuns::TakeCodes(std::size_t end) {
    std::span<const unsigned char> in = mAhead;
    std::size_t done = mDone;
    while (in.size() >= kStepIn && done + kStepOut <= end) {
        std::array<unsigned char, kLiterals> bytes;
        std::copy_n(in.begin(), kLiterals, bytes.begin());
        const std::span<unsigned char> out = std::span(mLine).subspan(done, kStepOut);
        std::ranges::copy(bytes, out.begin());
        const std::size_t literals = LiteralsBeforeCount(bytes);
        done += literals;
        if (literals == kLiterals) {
            in = in.subspan(kLiterals);
            continue;
        }
        const std::size_t count = in[literals] & kMostCount;
        const unsigned char value = in[literals + 1];
        const std::span<unsigned char> run = out.subspan(literals, kRunStore);
        std::ranges::fill(run.first<kShortRun>(), value);
        if (count > kShortRun) std::ranges::fill(run.subspan<kShortRun>(), value);
        done += count;
        in = in.subspan(literals + 2);
    }
    mAhead = in;
    mDone = done;
}

/// Decodes one code. False when the data end before or inside it.
bool PcxRuns::TakeCode() {
    const std::optional<unsigned char> first = TakeByte();
    if (!first) return false;
    if (!IsCount(*first)) {
        mLine[mDone++] = *first;
        return true;
    }
    const std::optional<unsigned char> value = TakeByte();
    if (!value) return false;
    AddRun(*first & kMostCount, *value);
    return true;
}

void PcxRuns::AddRun(std::size_t length, unsigned char value) {
    const std::size_t total = mDone + length;
    if (total > mRoom) {
        mRunLength = total - std::min(total, mLineBytes);
        mRunValue = value;
    }
    const std::size_t fits = std::min(length, mRoom - mDone);
    std::fill_n(mLine.begin() + static_cast<std::ptrdiff_t>(mDone), fits, value);
    mDone += fits;
}

std::optional<unsigned char> PcxRuns::TakeByte() {
    if (mAhead.empty()) {
        (void)mSource.Skip(mPeeked);
        mAhead = mSource.Peek();
        mPeeked = mAhead.size();
    }
    mIsOutOfData = mAhead.empty();
    if (mIsOutOfData) return std::nullopt;
    const unsigned char byte = mAhead.front();
    mAhead = mAhead.subspan(1);
    return byte;
}

}  // namespace Kavra::Devices
