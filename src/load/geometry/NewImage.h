/// Memory for images.
#pragma once

#include "load/geometry/Raster.h"

#include <OpenImageIO/imagebuf.h>

#include <cstddef>

namespace Kavra::Devices {

/// Whether a block of so many bytes is to be had: within the ceiling of the host's blocks, and of the process. The
/// image library ends the process when it cannot get the memory for an image, so whoever makes one asks first.
bool CanAllocate(std::size_t bytes);

/// The bytes of all pixels of `spec`; 0 when there are none, or when the number is too large for a size.
std::size_t PixelBytes(const OIIO::ImageSpec& spec);

/// An image of `spec` whose pixels are still to be written, in memory that the system maps in large pages where it can:
/// for a large image the first touch costs more than the writing. Uninitialised when there is no memory for it.
OIIO::ImageBuf NewImage(const OIIO::ImageSpec& spec);

/// An image over the raster's pixels, which it must not outlive; nothing is copied. Its spec says size, type and number
/// of channels and nothing else. The faces of a cube map stand on one another, and its full height is one face's.
/// Uninitialised when the raster's rows are more than its bytes: so no image ever reaches beyond the block under it.
OIIO::ImageBuf WrapImage(const Raster& raster);

}  // namespace Kavra::Devices
