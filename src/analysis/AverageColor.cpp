#include "analysis/AverageColor.h"

#include <kavra/devices/ImageHandlerHelper.h>

namespace Kavra::Devices {

vec4<float> AverageColor(const ImageDescription& desc, const void* data, bool flag) {
    if (desc.textureType != kTexture2D) return {};
    Utilities::ImageHandlerHelper helper;
    return helper.GetAverageColor2D(desc, data, flag);
}

}  // namespace Kavra::Devices
