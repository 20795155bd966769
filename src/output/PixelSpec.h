/// How OpenImageIO is told of packed host pixels.
#pragma once

#include <kavra/devices/EFormat.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// The channel type and count of `format` at a size, with as many channel names, and nothing else. The type is UNKNOWN
/// for a format that the library has no pixels for, `kUnknown` included.
OIIO::ImageSpec PixelSpec(EFormat format, int width, int height);

/// Whether the library has pixels for a format.
bool HasPixels(EFormat format);

}  // namespace Kavra::Devices
