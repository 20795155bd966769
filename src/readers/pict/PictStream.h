/// The opcodes of a PICT picture.
#pragma once

#include "common/ByteSource.h"
#include "readers/pict/PictPicture.h"

#include <optional>

namespace Kavra::Devices {

/// The pixels that a picture may draw, those drawn over one another counted each time.
inline constexpr std::uint64_t kMaxPictPixels = std::uint64_t{1} << 31;

/// Reads a picture out of a whole file in memory. Big-endian:
///
///     offset  bytes  field
///          0    512  not used
///        512      2  size of the picture, its low 16 bits
///        514    4x2  frame: top, left, bottom, right
///        522         zero bytes, then the version: 11 01, or 11 02 FF
///                    opcodes, 1 byte each in version 1; 2 bytes at even offsets in version 2
///
/// Everything that draws anything but pixels is skipped by its size. Bitmaps are drawn once the stream is over: of
/// pictures with a bitmap that is to be stretched in its width no bitmap is kept.
///
/// Nothing when the file is damaged anywhere before the last opcode, or draws more than `kMaxPictPixels`. Time is
/// linear in the file, and no pixel is unpacked. Throws `std::bad_alloc`, also where the file and its records
/// would take more than `Common::ReaderBounds`.
std::optional<PictPicture> ReadPictPicture(Common::ByteSource& file);

}  // namespace Kavra::Devices
