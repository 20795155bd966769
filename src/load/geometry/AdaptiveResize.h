/// Another size for an image.
#pragma once

#include <OpenImageIO/imagebuf.h>

namespace Kavra::Devices {

/// `OIIOImageHandler::AdaptiveResize`, which says what it does.
bool AdaptiveResize(OIIO::ImageBuf& dst, const OIIO::ImageBuf& src, bool highQuality);

}  // namespace Kavra::Devices
