/// What the chunks of an FLI or FLC animation do to its frame and palette, and the frame they do it to.
#pragma once

#include "common/ByteSource.h"
#include "common/PixelBlock.h"
#include "common/Result.h"
#include "readers/Reading.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Red, green and blue of each of 256 indices.
using FlicPalette = std::array<unsigned char, 768>;

/// One flat block of palette indices, rows without gaps: what is written past the end of a row goes on in the next,
/// what is written past the end of the frame is dropped.
class FlicFrame {
public:
    /// All indices 0. Throws `std::bad_alloc`.
    FlicFrame(std::uint32_t width, std::uint32_t height);

    /// What a frame of this size takes.
    static std::uint64_t BytesOf(std::uint32_t width, std::uint32_t height);

    std::uint32_t Width() const { return mWidth; }
    std::uint32_t Height() const { return mHeight; }
    std::span<const unsigned char> Indices() const { return {mIndices.get(), mSize}; }

    /// Those of `count` indices from `offset` on that lie in the frame, to be written.
    std::span<unsigned char> At(std::uint64_t offset, std::uint64_t count);

    /// Sets all indices to 0. Takes time for what was written since the last time, not for the whole frame: a file may
    /// ask for it in every few bytes.
    void Clear();

private:
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::size_t mSize;
    Common::PixelBlock mIndices;
    std::vector<std::uint64_t> mWritten;  // a bit for each stretch of indices
};

// Bodies of chunks. All numbers are little-endian, `n` is a signed byte.
//
// Each function reads one body from where the source stands and leaves it where the fields ended, which need not be
// where the chunk says that it ends. Each fails when the file ended first: what could be read is in place then, and
// nothing that follows can be relied on.

/// The number of packets (2 bytes); of each: entries to skip (1), entries that follow (1, 0 means 256), their red,
/// green and blue. Each component is multiplied by `scale` modulo 256. Colours beyond entry 255 are left unread.
[[nodiscard]] Common::Result<> DecodeFlicPalette(Common::ByteSource& source, FlicPalette& palette, unsigned scale);

/// All indices as they are.
[[nodiscard]] Common::Result<> DecodeFlicCopy(Common::ByteSource& source, FlicFrame& frame);

/// Of each row: an unused byte, then packets until it is full: `n`, then a byte to be written `n` times, or -`n` bytes
/// where that is negative. What passes the end of the row is not written; of bytes it is not read either.
[[nodiscard]] Common::Result<> DecodeFlicByteRun(Common::ByteSource& source, FlicFrame& frame);

/// The first row and the number of rows (2 bytes each); of each row: the number of packets (1); of each packet: columns
/// to skip since the last one (1), `n`, then `n` bytes, or one to be written -`n` times where that is negative.
[[nodiscard]] Common::Result<> DecodeFlicByteDelta(Common::ByteSource& source, FlicFrame& frame);

/// The number of rows (2 bytes). Of each row: words (2 bytes), of which the first below 0x4000 is the number of
/// packets. Before it, one with bit 14 moves down by its low 14 bits, one with bit 15 alone gives the row's last index.
/// Of each packet: the column (1), `n`, then `n` words, or one where that is not positive.
///
/// Unlike in other programs, the column counts from the start of the row for every packet, one word is written as often
/// as the column, taken as a signed byte, is below zero, and a move that is written as a negative number goes far down.
[[nodiscard]] Common::Result<> DecodeFlicWordDelta(Common::ByteSource& source, FlicFrame& frame);
/// The same; the reading, where there is one, is asked for all that others would draw otherwise.
[[nodiscard]] Common::Result<> CompareFlicWordDelta(Common::ByteSource& source, FlicFrame& frame, Reading* reading);

// The same bodies in the common reading. A source holds the one body and nothing else.

/// Colours beyond entry 255 are passed over. Of 6 bits a component, the highest two follow the lowest once more.
[[nodiscard]] Common::Result<> DecodeFlicCommonPalette(Common::ByteSource& source, FlicPalette& palette,
                                                       bool hasSixBits);

/// The bytes of a row: as the frame has them, or filled up to a multiple of two or four where the body is that long.
std::uint64_t FlicCopyRowBytes(std::uint64_t bodyBytes, const FlicFrame& frame);

[[nodiscard]] Common::Result<> DecodeFlicCommonCopy(Common::ByteSource& source, FlicFrame& frame);

/// Of each row: words, of which the first below 0x4000 is the number of packets. Before it, one with both high bits is,
/// as a signed number, below zero by the rows to move down, and one with the highest alone gives the row's last index.
/// Of each packet: columns to skip since the last one (1), `n`, then `n` words, or one to be written -`n` times where
/// that is negative.
[[nodiscard]] Common::Result<> DecodeFlicCommonWordDelta(Common::ByteSource& source, FlicFrame& frame);

}  // namespace Kavra::Devices
