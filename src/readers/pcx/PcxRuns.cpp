#include "readers/pcx/PcxRuns.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::LittleAt;

namespace {

constexpr unsigned char kCountMark = 0xC0;
constexpr std::size_t kMaxCount = 0x3F;

// Long stretches are decoded in steps of some bytes that stand for themselves and the run behind them. Both are stored
// in pieces of a fixed size, whatever their lengths; what is too much is overwritten by the next step.
constexpr std::size_t kBlock = 64;  // bytes that are searched for counts at a time
constexpr std::size_t kLiterals = 16;
constexpr std::size_t kShortRun = 16;
constexpr std::size_t kLongRun = kMaxCount + 1;
constexpr std::size_t kStepOut = kLiterals + kLongRun;

constexpr bool IsCount(unsigned char byte) {
    return (byte & kCountMark) == kCountMark;
}

/// A bit for each byte, the lowest for the first: set where the byte would be a count.
std::uint64_t CountMarks(std::span<const unsigned char, kBlock> bytes) {
    std::uint64_t marks = 0;
    for (std::size_t at = 0; at < kBlock; at += 8) {
        std::array<unsigned char, 8> eight;
        std::copy_n(bytes.subspan(at).begin(), eight.size(), eight.begin());
        const auto word = LittleAt<std::uint64_t, 0>(eight);
        const std::uint64_t lowBits = (word & (word << 1) & 0x8080808080808080U) >> 7;
        marks |= (lowBits * 0x0102040810204080U >> 56) << at;  // the product gathers the eight bits in its top byte
    }
    return marks;
}

}  // namespace

PcxRuns::PcxRuns(ByteSource& source, std::size_t capacity, std::size_t lineBytes)
    : mSource(source), mLine(capacity), mCapacity(capacity), mLineBytes(lineBytes), mTaken(lineBytes) {}

std::span<const unsigned char> PcxRuns::NextLine() {
    mIsOutOfData = false;
    mDone = std::min(mRunLength, mCapacity);
    std::fill_n(mLine.begin(), mDone, mRunValue);
    mRunLength -= mDone;
    mTaken = 0;

    const std::size_t end = std::min(mCapacity, mLineBytes);
    while (mDone < end) {
        TakeCodes(end);
        if (mDone < end && !TakeCode()) break;
    }
    if (mTaken == 0) mTaken = mDone;
    return std::span(mLine).first(mDone);
}

/// Decodes as long as neither the bytes at hand nor the line can end within a step. A step has no branch that depends
/// on whether bytes are repeated: pictures with much noise would mispredict it every few pixels.
void PcxRuns::TakeCodes(std::size_t end) {
    std::span<const unsigned char> ahead = mAhead;
    std::size_t done = mDone;
    while (ahead.size() > kBlock && done + kStepOut <= end) {
        const std::uint64_t marks = CountMarks(ahead.first<kBlock>());
        std::size_t at = 0;
        while (at <= kBlock - kLiterals && done + kStepOut <= end) {
            const std::span<const unsigned char> in = ahead.subspan(at);
            const std::span<unsigned char> out = std::span(mLine).subspan(done);
            const auto literals = static_cast<std::size_t>(std::countr_zero(marks >> at | 1U << kLiterals));
            std::ranges::copy(in.first<kLiterals>(), out.begin());
            at += literals;
            done += literals;
            if (literals == kLiterals) continue;

            const std::size_t count = in[literals] & kMaxCount;
            const unsigned char value = in[literals + 1];
            const std::span<unsigned char> run = out.subspan(literals);
            std::ranges::fill(run.first<kShortRun>(), value);
            if (count > kShortRun) std::ranges::fill(run.subspan<kShortRun, kLongRun - kShortRun>(), value);
            at += 2;
            done += count;
        }
        ahead = ahead.subspan(at);
    }
    mAhead = ahead;
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
    AddRun(*first & kMaxCount, *value);
    return true;
}

void PcxRuns::AddRun(std::size_t length, unsigned char value) {
    const std::size_t total = mDone + length;
    if (total > mCapacity) {
        mTaken = std::min(total, mLineBytes);
        mRunLength = total - mTaken;
        mRunValue = value;
    }
    const std::size_t fits = std::min(length, mCapacity - mDone);
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
