/// Another order of rows and columns for an image.
#pragma once

#include "load/geometry/PixelGrid.h"

#include <kavra/devices/EDataOrientation.h>

#include <OpenImageIO/imagebuf.h>

namespace Kavra::Devices {

/// The static members of `OIIOImageHandler` with these names, which say what they do.
int ToOIIOOrientation(const EDataOrientation& orientation);
OIIO::ImageBuf ReorientImage(const OIIO::ImageBuf& image, int from, int to);

/// The pixels of a grid in another order, without moving one. Orientations are Exif numbers, `from` one of 1 to 8.
PixelGrid Reoriented(PixelGrid grid, int from, int to);

}  // namespace Kavra::Devices
