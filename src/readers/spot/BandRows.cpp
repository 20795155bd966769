#include "readers/spot/BandRows.h"

#include "readers/spot/ByteCounts.h"

#include <algorithm>

namespace Kavra::Devices {

namespace {

/// Read at a time: little enough to stay in the caches until it is converted.
constexpr std::int64_t kChunkBytes = std::int64_t{128} << 10;

std::uint64_t Position(std::int64_t start, std::int64_t row, std::int64_t rowBytes, std::int64_t byte) {
    return static_cast<std::uint64_t>(Sum(Sum(start, Product(row, rowBytes)), byte));
}

/// A second view of a file.
ReadResult<ByteSource> WholeOf(ByteSource& file) {
    return file.Seek(0).and_then([&] { return file.Slice(file.Size()); });
}

}  // namespace

BandRows::BandRows(ByteSource& file, std::initializer_list<std::int64_t> slots, std::int64_t slotBytes)
    : mSlotBytes(slotBytes), mChunkRows(slotBytes == 0 ? 0 : kChunkBytes / slotBytes) {
    for (const std::int64_t start : slots)
        mSlots.push_back({.source = WholeOf(file).value(), .start = start});
}

void BandRows::Read(std::int64_t row, std::int64_t first, std::span<unsigned char> line) {
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

void BandRows::ReadAll(std::int64_t first, std::size_t bytes, std::span<unsigned char> out) {
    const std::size_t rows = out.size() / bytes;
    for (std::size_t row = ReadTouchingRows(first, bytes, out); row < rows; ++row) {
        const std::span<unsigned char> line = out.subspan(row * bytes, bytes);
        if (!Holds(static_cast<std::int64_t>(row), first, bytes)) {
            if (row == 0) {
                std::ranges::fill(line, 0);
            } else {
                std::ranges::copy(out.subspan((row - 1) * bytes, bytes), line.begin());
            }
        }
        Read(static_cast<std::int64_t>(row), first, line);
    }
}

std::span<const unsigned char> BandRows::Find(std::int64_t row, std::int64_t first, std::size_t bytes) {
    if (mChunkRows == 0 || first / mSlotBytes >= static_cast<std::int64_t>(mSlots.size())) return {};
    Slot& slot = mSlots[static_cast<std::size_t>(first / mSlotBytes)];
    first %= mSlotBytes;
    if (static_cast<std::int64_t>(bytes) > mSlotBytes - first) return {};
    if (slot.chunk.empty() || row >= slot.chunkRow + mChunkRows) FillChunk(slot, row);
    const auto start = static_cast<std::size_t>((row - slot.chunkRow) * mSlotBytes + first);
    if (start + bytes > slot.chunkBytes) return {};
    return std::span(slot.chunk).subspan(start, bytes);
}

void BandRows::FillChunk(Slot& slot, std::int64_t row) const {
    slot.chunk.resize(static_cast<std::size_t>(mChunkRows * mSlotBytes));
    slot.chunkRow = row;
    slot.chunkBytes = slot.source.Seek(Position(slot.start, row, mSlotBytes, 0)) ? slot.source.ReadSome(slot.chunk) : 0;
}

/// Whether nothing of a line is left as it was in the row before.
bool BandRows::Holds(std::int64_t row, std::int64_t first, std::size_t bytes) const {
    const std::int64_t last = Sum(first, static_cast<std::int64_t>(bytes));
    return last <= mSlotBytes && Position(mSlots.front().start, row, mSlotBytes, last) <= mSlots.front().source.Size();
}

/// Reads lines that touch one another all at once; the result is how many became whole.
std::size_t BandRows::ReadTouchingRows(std::int64_t first, std::size_t bytes, std::span<unsigned char> out) {
    Slot& slot = mSlots.front();
    const bool touch = first == 0 && mSlotBytes == static_cast<std::int64_t>(bytes);
    if (!touch || !slot.source.Seek(static_cast<std::uint64_t>(slot.start))) return 0;
    return slot.source.ReadSome(out) / bytes;
}

std::span<const unsigned char> BandLine::OfRow(std::int64_t row) {
    const std::span<const unsigned char> found = mRows.Find(row, mFirst, mBytes.size());
    if (!found.empty()) {
        mIsBehind = true;
        return found;
    }
    if (mIsBehind) mRows.Read(row - 1, mFirst, mBytes);
    mIsBehind = false;
    mRows.Read(row, mFirst, mBytes);
    return mBytes;
}

}  // namespace Kavra::Devices
