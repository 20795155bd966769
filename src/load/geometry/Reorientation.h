/// Another order of rows and columns for an image.
#pragma once

#include <kavra/devices/EDataOrientation.h>

#include <OpenImageIO/imagebuf.h>

namespace Kavra::Devices {

/// The static members of `OIIOImageHandler` with these names, which say what they do.
int ToOIIOOrientation(const EDataOrientation& orientation);
OIIO::ImageBuf ReorientImage(const OIIO::ImageBuf& image, int from, int to);

}  // namespace Kavra::Devices
