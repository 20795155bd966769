#include "readers/spot/SpotRows.h"

#include "common/Limits.h"

#include <algorithm>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

using Common::Product;
using Common::Sum;

/// At a time, of all slots together: enough to keep all cores busy, and little enough to stay in the caches until it is
/// converted.
constexpr std::int64_t kGatheredBytes = std::int64_t{2} << 20;

std::uint64_t Position(std::int64_t start, std::int64_t row, std::int64_t rowBytes, std::int64_t byte) {
    return static_cast<std::uint64_t>(Sum(Sum(start, Product(row, rowBytes)), byte));
}

}  // namespace

SpotRows::SpotRows(ByteSource& file, std::initializer_list<std::int64_t> slots, std::int64_t slotBytes)
    : mSlotBytes(slotBytes) {
    for (const std::int64_t start : slots)
        mSlots.push_back({.source = file.Again(), .start = start, .gathered = {}});
}

void SpotRows::Read(std::int64_t row, std::int64_t first, std::span<unsigned char> line) {
    const std::int64_t last = Sum(first, static_cast<std::int64_t>(line.size()));
    std::int64_t slotFirst = 0;
    for (Slot& slot : mSlots) {
        const std::int64_t slotLast = Sum(slotFirst, mSlotBytes);
        const std::int64_t from = std::max(first, slotFirst);
        const std::int64_t to = std::min(last, slotLast);
        if (from < to && slot.source.Seek(Position(slot.start, row, mSlotBytes, from - slotFirst))) {
            (void)slot.source.ReadSome(
                line.subspan(static_cast<std::size_t>(from - first), static_cast<std::size_t>(to - from)));
        }
        slotFirst = slotLast;
    }
}

void SpotRows::ReadAll(std::int64_t first, std::size_t bytes, std::int64_t count, Common::RowSink& out) {
    std::vector<unsigned char> above(bytes);  // of the rows that the sink hands out next, where they need it
    for (std::int64_t row = 0; row < count;) {
        const std::span<unsigned char> lines = out.NextRows(static_cast<std::size_t>(count - row));
        std::size_t at = bytes * ReadTouchingRows(row, first, bytes, lines);
        for (row += static_cast<std::int64_t>(at / bytes); at < lines.size(); at += bytes, ++row) {
            const std::span<unsigned char> line = lines.subspan(at, bytes);
            if (!Holds(row, first, bytes)) {
                std::ranges::copy(at == 0 ? std::span(above) : lines.subspan(at - bytes, bytes), line.begin());
            }
            Read(row, first, line);
        }
        if (row < count && !Holds(row, first, bytes)) std::ranges::copy(lines.last(bytes), above.begin());
    }
}

std::int64_t SpotRows::Gather(std::int64_t row) {
    if (mSlotBytes == 0) return 0;
    std::int64_t rows = kGatheredBytes / static_cast<std::int64_t>(mSlots.size()) / mSlotBytes;
    mGatheredRow = row;
    for (Slot& slot : mSlots) {
        const auto capacity = static_cast<std::uint64_t>(rows * mSlotBytes);
        slot.gathered.resize(static_cast<std::size_t>(std::min(capacity, slot.source.Size())));
        const bool inFile = slot.source.Seek(Position(slot.start, row, mSlotBytes, 0)).has_value();
        const std::size_t bytes = inFile ? slot.source.ReadSome(slot.gathered) : 0;
        rows = static_cast<std::int64_t>(bytes) / mSlotBytes;
    }
    return rows;
}

bool SpotRows::IsInOneSlot(std::int64_t first, std::size_t bytes) const {
    return mSlotBytes > 0 && first / mSlotBytes < static_cast<std::int64_t>(mSlots.size()) &&
           static_cast<std::int64_t>(bytes) <= mSlotBytes - first % mSlotBytes;
}

std::span<const unsigned char> SpotRows::Gathered(std::int64_t row, std::int64_t first, std::size_t bytes) const {
    const Slot& slot = mSlots[static_cast<std::size_t>(first / mSlotBytes)];
    const std::int64_t start = (row - mGatheredRow) * mSlotBytes + first % mSlotBytes;
    return std::span(slot.gathered).subspan(static_cast<std::size_t>(start), bytes);
}

/// Whether nothing of a line is left as it was in the row before.
bool SpotRows::Holds(std::int64_t row, std::int64_t first, std::size_t bytes) const {
    const std::int64_t last = Sum(first, static_cast<std::int64_t>(bytes));
    return last <= mSlotBytes && Position(mSlots.front().start, row, mSlotBytes, last) <= mSlots.front().source.Size();
}

/// Reads lines from row `row` on that touch one another, all at once; the result is how many became whole.
std::size_t SpotRows::ReadTouchingRows(std::int64_t row, std::int64_t first, std::size_t bytes,
                                       std::span<unsigned char> out) {
    Slot& slot = mSlots.front();
    const bool touch = first == 0 && mSlotBytes == static_cast<std::int64_t>(bytes);
    if (!touch || !slot.source.Seek(Position(slot.start, row, mSlotBytes, 0))) return 0;
    return slot.source.ReadSome(out) / bytes;
}

std::span<const unsigned char> SpotLine::Read(std::int64_t row) {
    if (mRow != row - 1) mRows.Read(row - 1, mFirst, mBytes);
    mRow = row;
    mRows.Read(row, mFirst, mBytes);
    return mBytes;
}

}  // namespace Kavra::Devices
