/// The mean of a picture.
#pragma once

#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/Vec.h>

namespace Kavra::Devices {

/// What `IImageHandler::GetAverageColor` does with a block. Throws what the host's helper throws.
vec4<float> AverageColor(const ImageDescription& desc, const void* data, bool flag);

}  // namespace Kavra::Devices
