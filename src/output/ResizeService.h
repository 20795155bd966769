/// Another size for a block of pixels.
#pragma once

#include <kavra/devices/IImageHandler.h>

#include <cstddef>

namespace Kavra::Devices {

/// What `IImageHandler::Resize` does. Throws what the allocator and the image library throw.
IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                             const vec3<int>& srcSize, EFormat format, ETextureType type, const vec3<int>& dstSize,
                             int& dstPitch, EImageFilterType filter);

}  // namespace Kavra::Devices
