/// The opcodes of a PICT picture, and what they say of it.
#pragma once

#include "common/ByteSource.h"
#include "readers/pict/PictBitmap.h"
#include "readers/pict/PictTransfer.h"

#include <cstdint>
#include <vector>

namespace Kavra::Devices {

/// The opcodes that mean something here. The same numbers in version 1, where they have one byte.
namespace PictOpcode {
inline constexpr std::uint16_t kBackgroundPattern = 0x12;
inline constexpr std::uint16_t kPenPattern = 0x13;
inline constexpr std::uint16_t kFillPattern = 0x14;
inline constexpr std::uint16_t kForeground = 0x1A;
inline constexpr std::uint16_t kBackground = 0x1B;
inline constexpr std::uint16_t kOperationColour = 0x1F;
inline constexpr std::uint16_t kBitsRect = 0x90;
inline constexpr std::uint16_t kBitsRegion = 0x91;
inline constexpr std::uint16_t kPackBitsRect = 0x98;
inline constexpr std::uint16_t kPackBitsRegion = 0x99;
inline constexpr std::uint16_t kDirectBitsRect = 0x9A;
inline constexpr std::uint16_t kDirectBitsRegion = 0x9B;  // in the common reading
inline constexpr std::uint16_t kEnd = 0xFF;
}  // namespace PictOpcode

/// Which of its forms a stream of opcodes has.
enum class PictVersion {
    k1,  ///< opcodes of 1 byte
    k2,  ///< opcodes of 2 bytes at even offsets
};

/// Reads the version that a stream begins with, and any number of zero bytes before it.
[[nodiscard]] Common::Result<PictVersion> ReadPictVersion(Common::ByteSource& file);

/// Reads the opcode at the position, or behind the byte that makes its offset even.
[[nodiscard]] Common::Result<std::uint16_t> ReadPictOpcode(Common::ByteSource& file, PictVersion version);

/// Skips what follows any other opcode. Fails when the source ends in it, or a length is less than its own two bytes.
[[nodiscard]] Common::Result<> SkipPictOperands(Common::ByteSource& source, std::uint16_t opcode);

/// What a picture says, and where in its file the pixels lie.
struct PictPicture {
    PictRect frame;                   ///< never empty in a picture that was read
    std::vector<PictRecord> records;  ///< those that draw anything, in the order of the picture
    PictColours colours;              ///< as they are at the end of the stream: nothing is drawn before
    /// One record of palette indices: these are copied, and looked up in the record's colours when they are put out.
    /// Anything else is drawn in 16-bit colour.
    bool indexed = false;

    /// What a record takes, with its places in the lists of those that wait and those that are being drawn; lists grow
    /// by doubling, and are copied when they do.
    static std::uint64_t BytesOf(const PictRecord& record) { return 512 + record.colours.size() * sizeof(PictColour); }
    /// What all records take.
    std::uint64_t WorkingBytes() const {
        std::uint64_t bytes = 0;
        for (const PictRecord& record : records)
            bytes += BytesOf(record);
        return bytes;
    }
};

/// The pixels that a picture may draw, those drawn over one another counted each time.
inline constexpr std::uint64_t kMaxPictPixels = std::uint64_t{1} << 31;

struct PictHeader {
    std::uint16_t size = 0;  ///< of the picture, its low 16 bits; never more than the file has
    PictRect frame;          ///< as it is stored
};

/// The header of a picture, behind the bytes that every file begins with. The position of the source does not matter;
/// it is left behind the header.
[[nodiscard]] Common::Result<PictHeader> ReadPictHeader(Common::ByteSource& file);

/// Reads a picture out of a whole file in memory. Everything that draws anything but pixels is skipped by its size.
/// Bitmaps are drawn once the stream is over: of pictures with a bitmap that is to be stretched in its width no bitmap
/// is kept.
///
/// Fails when the file is damaged anywhere before the last opcode, or draws more than `kMaxPictPixels`. Time is
/// linear in the file, and no pixel is unpacked. Throws `std::bad_alloc`, also where the file and its records
/// would take more than `Common::ReaderBounds`.
[[nodiscard]] Common::Result<PictPicture> ReadPictPicture(Common::ByteSource& file);

}  // namespace Kavra::Devices
