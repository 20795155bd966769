/// The rows of a raster as they lie in its pixel file.
#pragma once

#include "common/ByteSource.h"
#include "common/RowSink.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// A row is one stretch of bytes, or several of the same length, called slots: what stands side by side in a row may
/// lie far apart in the file. In the file the stretches of one slot follow one another without a gap. A line is a part
/// of a row.
///
/// A row begins as a copy of the one before, the first as zeros: so bytes that the file does not hold are those of the
/// row before, and bytes behind the last slot are zero.
class SpotRows {
public:
    /// Rows of `slotBytes` bytes for each of `slots`, which say where in the file the first row of a slot begins.
    SpotRows(Common::ByteSource& file, std::initializer_list<std::int64_t> slots, std::int64_t slotBytes);

    /// Makes `line`, the bytes from `first` on of the row before, those of row `row`.
    void Read(std::int64_t row, std::int64_t first, std::span<unsigned char> line);

    /// The lines of `bytes` bytes from `first` on of the first `count` rows, which are the rows of the sink.
    void ReadAll(std::int64_t first, std::size_t bytes, std::int64_t count, Common::RowSink& out);

    /// Whether a line lies in one slot.
    bool IsInOneSlot(std::int64_t first, std::size_t bytes) const;

    /// Brings rows from `row` on into memory and tells how many of them are there whole, for `Gathered`. Zero where the
    /// file does not hold all of the row or of any after it, or where rows are too long for that.
    std::int64_t Gather(std::int64_t row);

    /// A line in one slot of a row that was gathered, valid until others are. May be called from several threads.
    std::span<const unsigned char> Gathered(std::int64_t row, std::int64_t first, std::size_t bytes) const;

private:
    struct Slot {
        Common::ByteSource source;  // each its own, for its own buffer
        std::int64_t start = 0;
        std::vector<unsigned char> gathered;
    };

    bool Holds(std::int64_t row, std::int64_t first, std::size_t bytes) const;
    std::size_t ReadTouchingRows(std::int64_t row, std::int64_t first, std::size_t bytes, std::span<unsigned char> out);

    std::vector<Slot> mSlots;
    std::int64_t mSlotBytes;
    std::int64_t mGatheredRow = 0;  // the first of those in memory
};

/// A line of one row after another, copied out of the file.
class SpotLine {
public:
    /// The `bytes` bytes from `first` on. The rows must outlive the line.
    SpotLine(SpotRows& rows, std::int64_t first, std::size_t bytes) : mRows(rows), mFirst(first), mBytes(bytes) {}

    /// Those of a row; the row before must have been whole, or the last one asked for. Valid until the next call.
    std::span<const unsigned char> Read(std::int64_t row);

private:
    SpotRows& mRows;
    std::int64_t mFirst;
    std::vector<unsigned char> mBytes;
    std::int64_t mRow = -1;  // whose bytes these are
};

}  // namespace Kavra::Devices
