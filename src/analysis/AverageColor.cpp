#include "analysis/AverageColor.h"

#include "common/Reasons.h"

#include <kavra/devices/ImageHandlerHelper.h>

namespace Kavra::Devices {

vec4<float> AverageColor(const ImageDescription& desc, const void* data, bool flag) {
    if (!Common::Require(desc.textureType == kTexture2D, kFailureUnsupported,
                         "only flat pictures have an average here"))
        return {};
    (void)Common::Require(data != nullptr, kFailureArguments, "there are no pixels");
    Utilities::ImageHandlerHelper helper;
    return helper.GetAverageColor2D(desc, data, flag);
}

}  // namespace Kavra::Devices
