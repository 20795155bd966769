/// Where the lights of an environment map are.
#pragma once

#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/Vec.h>

namespace Kavra::Devices {

/// What `IImageHandler::FindIBLLightDirections` does. Throws `std::bad_alloc`.
unsigned FindLightDirections(const ImageDescription& desc, const void* data, vec3<float>* directions,
                             vec3<float>* colours, unsigned maxCount);

}  // namespace Kavra::Devices
