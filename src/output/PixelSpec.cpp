#include "output/PixelSpec.h"
#include "formats/PixelFormatMapping.h"


namespace Kavra::Devices {

OIIO::ImageSpec PixelSpec(EFormat format, int width, int height) {
    if (format == kUnknown) return OIIO::ImageSpec(width, height, 1, OIIO::TypeDesc::UNKNOWN);
    const OIIO::ImageSpec base(1, 1, 4, OIIO::TypeDesc::UINT8);
    const OIIO::ImageSpec pixel = FormatToImageSpec(format, base);
    return OIIO::ImageSpec(width, height, pixel.nchannels, pixel.format);
}

bool HasPixels(EFormat format) {
    return PixelSpec(format, 1, 1).format != OIIO::TypeDesc::UNKNOWN;
}

}  // namespace Kavra::Devices
