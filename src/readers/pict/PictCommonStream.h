/// The opcodes of a PICT picture in the common reading, and what they say of it.
///
/// After "Inside Macintosh: Imaging With QuickDraw" (1994), appendix A, and chapters 3, 4 and 7.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/pict/PictCommonRecord.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace Kavra::Devices {

/// What a picture says, and where in its file the pixels lie.
struct PictCommonPicture {
    PictRect frame;                         ///< of the page, never empty
    std::vector<PictCommonRecord> records;  ///< those that draw anything, in the order of the picture
    bool isDamaged = false;                 ///< the stream breaks off behind the last record, or in it

    /// What a record takes, with its palette or pixels while it is drawn and its places in lists that grow by doubling.
    static std::uint64_t BytesOf(const PictCommonRecord& record);
    /// What all records take.
    std::uint64_t WorkingBytes() const {
        std::uint64_t bytes = 0;
        for (const PictCommonRecord& record : records)
            bytes += BytesOf(record);
        return bytes;
    }
};

/// What drawing a picture may take, in pixels (`PictCommonRecord::Work`).
inline constexpr std::uint64_t kMaxPictWork = std::uint64_t{1} << 32;

/// Where in a file the picture begins: behind 512 bytes of the program that wrote it, at once, or behind these 512 and
/// the 128 of a MacBinary file. Nothing where no picture is there: a frame, the version, and opcodes that are whole.
/// The position of the source does not matter and is not kept.
std::optional<std::uint64_t> FindPict(Common::ByteSource& file);

/// Reads a picture out of a whole file in memory. Everything that draws anything but pixels is skipped by its size. The
/// page is the frame, or in pictures with an extended header the rectangle in which their opcodes draw, which has all
/// the pixels of a picture of more than 72 dpi.
///
/// Fails when there is no picture, when the stream breaks off before any bitmap, when it has more than `maxRecords` or
/// takes more than `kMaxPictWork` to draw. Time is linear in the file. Throws `std::bad_alloc`, also where the file and its
/// records would take more than `Common::ReaderBounds`.
[[nodiscard]] Common::Result<PictCommonPicture> ReadPictCommonPicture(
    Common::ByteSource& file, std::size_t maxRecords = std::numeric_limits<std::size_t>::max());

}  // namespace Kavra::Devices
