/// Pixels of band rasters that the contract's reading has no such pixels of: packed, big-endian and signed samples,
/// any number of bands, no-data values.
#pragma once

#include "readers/spot/SpotConvert.h"

#include <kavra/devices/EFormat.h>

namespace Kavra::Devices {

/// One band is grey, or of the colours of its palette; the first three of more are red, green and blue. Two are two
/// pictures in grey.
int SpotCommonFrames(const SpotHeader& header);

/// The smallest format that holds the samples: unsigned ones up to 8 and 16 bits, and signed and longer ones all of which
/// are such numbers (`fitsWords`), are integers and have an alpha where there is a no-data value. All others are floats of their
/// values.
EFormat SpotCommonFormat(const SpotHeader& header);

/// Decodes frame `frame`, from 0 up, in that format into `out`. A pixel of which all samples are the no-data value gets
/// the alpha 0, where the format has one. The file holds all rows.
void DecodeSpotCommon(Common::ByteSource& file, const SpotHeader& header, int frame, const PixelRows& out);

/// Has a header know whether its integers, signed or of 32 bits, all lie between 0 and 65535 or are the no-data value: the
/// format depends on it. Those of a file that is cut, or takes long to look through, count as others.
void LookAtIntegers(Common::ByteSource& file, SpotHeader& header);

/// Bytes that this holds beside a few rows of pixels.
std::uint64_t SpotCommonWorkingBytes(const SpotHeader& header);

/// Whether a pixel of the raster, decoded so, is transparent. The format has an alpha.
bool HasTransparentPixel(Common::ByteSource& file, const SpotHeader& header);

}  // namespace Kavra::Devices
