/// How OpenImageIO is told of packed host pixels.
#pragma once

#include "common/PixelFormats.h"

#include <kavra/devices/EFormat.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// A picture as the library's own constructor describes it: sizes, type and channels, which have names. That one ends
/// the process when there is no memory for the names; this throws `std::bad_alloc`.
OIIO::ImageSpec PictureSpec(int width, int height, int channels, OIIO::TypeDesc type);

/// The same for pixels of a host's format, which must be one that the library has pixels for. A single channel is named
/// "R".
OIIO::ImageSpec PixelSpec(EFormat format, int width, int height);

/// Whether the library has pixels for a format.
constexpr bool HasPixels(EFormat format) {
    return Common::FactsOf(format).inLibrary;
}

}  // namespace Kavra::Devices
