/// Between the host's pixel formats and the image library's specs.
#pragma once

#include "common/PixelFormats.h"

#include <kavra/devices/EFormat.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// The library's name of an element type.
constexpr OIIO::TypeDesc::BASETYPE LibraryType(Common::ElementType element) {
    switch (element) {
        case Common::ElementType::kNone:
            return OIIO::TypeDesc::UNKNOWN;
        case Common::ElementType::kUInt8:
            return OIIO::TypeDesc::UINT8;
        case Common::ElementType::kUInt16:
            return OIIO::TypeDesc::UINT16;
        case Common::ElementType::kHalf:
            return OIIO::TypeDesc::HALF;
        case Common::ElementType::kFloat:
            return OIIO::TypeDesc::FLOAT;
    }
    return OIIO::TypeDesc::UNKNOWN;
}

/// The static members of `OIIOImageHandler` with these names, which say what they do.
OIIO::ImageSpec FormatToImageSpec(const EFormat& format, const OIIO::ImageSpec& base);
EFormat ImageSpecToFormat(const OIIO::ImageSpec& spec);
bool NeedConvert(EFormat from, int fromKind, EFormat to, int toKind);

}  // namespace Kavra::Devices
