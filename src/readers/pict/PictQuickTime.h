/// Pictures that QuickTime has put into a PICT picture, compressed or not ("Inside Macintosh: QuickTime", chapter 3).
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/pict/PictCommonRecord.h"

#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// The data of opcode 0x8200 behind their length, up to `end`: where and how a compressed picture is drawn, and the
/// picture. Nothing where its compression is not JPEG, PNG, BMP or GIF, or it is not whole enough for a size.
/// The source is a whole file in memory, and is left anywhere.
std::optional<PictCommonRecord> ReadPictCompressed(Common::ByteSource& source, std::uint64_t end,
                                                   const PictState& state);

/// The same of opcode 0x8201: a bitmap with an opcode of its own.
std::optional<PictCommonRecord> ReadPictUncompressed(Common::ByteSource& source, std::uint64_t end,
                                                     const PictState& state);

/// The pixels of a compressed picture, three bytes each. Less than all where it breaks off.
std::vector<unsigned char> DecodePictCompressed(std::span<const unsigned char> file, const PictCompressed& picture);

}  // namespace Kavra::Devices
