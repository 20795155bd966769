#include "common/Boundary.h"

#include <kavra/devices/ImageHandlerHelper.h>
#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

vec4<float> OIIOImageHandler::GetAverageColor(const ImageDescription& desc, const void* data, bool flag) {
    if (desc.textureType != kTexture2D) return {};
    return Common::AtBoundary(vec4<float>{}, [&] {
        Utilities::ImageHandlerHelper helper;
        return helper.GetAverageColor2D(desc, data, flag);
    });
}

}  // namespace Kavra::Devices
