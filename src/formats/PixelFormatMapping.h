/// Between the host's pixel formats and the image library's specs.
#pragma once

#include <kavra/devices/EFormat.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// The static members of `OIIOImageHandler` with these names, which say what they do.
OIIO::ImageSpec FormatToImageSpec(const EFormat& format, const OIIO::ImageSpec& base);
EFormat ImageSpecToFormat(const OIIO::ImageSpec& spec);
bool NeedConvert(EFormat from, int fromKind, EFormat to, int toKind);

}  // namespace Kavra::Devices
