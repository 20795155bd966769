/// The pixels of a band raster.
#pragma once

#include "common/ByteSource.h"
#include "readers/spot/BandHeader.h"

#include <kavra/devices/EFormat.h>

#include <span>

namespace Kavra::Devices {

/// The format in which a raster comes out; nothing for a raster that has none.
std::optional<EFormat> FormatOf(const BandHeader& header);

/// How many frames it has: the bands are one picture at 8 bits a sample, otherwise each is a picture of its own.
int FrameCountOf(const BandHeader& header);

/// Decodes frame `frame`, from 0 to `FrameCountOf` less 1, into `out`, which has `rows` rows without gaps of pixels in
/// the format of the raster. False, and nothing written, for a depth or a layout that cannot be decoded. The header was
/// parsed for the length of `file`.
bool DecodeBands(Common::ByteSource& file, const BandHeader& header, int frame, std::span<unsigned char> out);

}  // namespace Kavra::Devices
