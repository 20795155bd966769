/// The pixels of a file that the library has opened.
///
/// `ImageInput::read_image` rounds the rows that it reads at a time up to the number that the attribute
/// "tiff:RowsPerStrip" names, in 32 bits: a TIFF with 2^31 - 1 of them keeps it busy for ever, and so does any other
/// file that carries an attribute of this name. Its sums overflow too, and what was not read then counts as read. So
/// the rows are asked for here, as they are stored, and converted here.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstddef>

namespace Kavra::Devices {

/// Whether the sizes and positions of a subimage are such that the library's sums over them hold, and its tiles such
/// that one of them is no giant beside the picture. Files that answer no are not to be read.
bool IsReadable(const OIIO::ImageSpec& spec);

/// Reads channels 0 to `channels` - 1 (those that the file has) of every pixel of the subimage and level into `out`, as
/// values of `type`: tight rows, top row first, slice after slice, pixels `pixelStride` bytes apart. Bytes between the
/// channels of one pixel and the next stay as they are. `spec` is the subimage's own, and `IsReadable`. False when the
/// library cannot read it all. Throws `std::bad_alloc`.
bool ReadSubimage(OIIO::ImageInput& input, const OIIO::ImageSpec& spec, int subimage, int level, int channels,
                  OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride);

}  // namespace Kavra::Devices
