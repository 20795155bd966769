/// How bright an environment map is.
#pragma once

#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/Vec.h>

namespace Kavra::Devices {

/// The answer for what is no environment map.
inline constexpr vec3<float> kNoLightIntensity = {-999.0F, -999.0F, -999.0F};

/// What `IImageHandler::GetIBLIntensity` does. Throws `std::bad_alloc`.
vec3<float> LightIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                           vec3<float>* averageColour);

}  // namespace Kavra::Devices
