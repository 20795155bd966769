/// The rows of a raster as they lie in its pixel file.
#pragma once

#include "readers/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// A row is one stretch of bytes, or several of the same length, called slots: what stands side by side in a row may
/// lie far apart in the file. In the file the stretches of one slot follow one another without a gap.
///
/// A row begins as a copy of the one before, the first as zeros: so bytes that the file does not hold are those of the
/// row before, and bytes behind the last slot are zero.
class BandRows {
public:
    /// Rows of `slotBytes` bytes for each of `slots`, which say where in the file the first row of a slot begins.
    BandRows(ByteSource& file, std::initializer_list<std::int64_t> slots, std::int64_t slotBytes);

    /// Makes `line`, the bytes from `first` on of the row before, those of row `row`.
    void Read(std::int64_t row, std::int64_t first, std::span<unsigned char> line);

    /// The `bytes` bytes from `first` on of all rows, one after another in `out`.
    void ReadAll(std::int64_t first, std::size_t bytes, std::span<unsigned char> out);

    /// The same of one row without copying, valid until a row further on is asked for; nothing where the file does not
    /// hold them all, or holds them too far apart.
    std::span<const unsigned char> Find(std::int64_t row, std::int64_t first, std::size_t bytes);

private:
    struct Slot {
        ByteSource source;  // each its own, for its own buffer
        std::int64_t start = 0;
        std::vector<unsigned char> chunk = {};  // some rows
        std::int64_t chunkRow = 0;              // the first of them
        std::size_t chunkBytes = 0;             // as many as the file holds
    };

    bool Holds(std::int64_t row, std::int64_t first, std::size_t bytes) const;
    std::size_t ReadTouchingRows(std::int64_t first, std::size_t bytes, std::span<unsigned char> out);
    void FillChunk(Slot& slot, std::int64_t row) const;

    std::vector<Slot> mSlots;
    std::int64_t mSlotBytes;
    std::int64_t mChunkRows;
};

/// A part of one row after another.
class BandLine {
public:
    /// The `bytes` bytes from `first` on. The rows must outlive the line.
    BandLine(BandRows& rows, std::int64_t first, std::size_t bytes) : mRows(rows), mFirst(first), mBytes(bytes) {}

    /// Of row 0, then of each that follows. Valid until a row further on is asked for.
    std::span<const unsigned char> OfRow(std::int64_t row);

private:
    BandRows& mRows;
    std::int64_t mFirst;
    std::vector<unsigned char> mBytes;
    bool mIsBehind = false;  // the row before is not in mBytes
};

}  // namespace Kavra::Devices
