/// Writing a block of pixels to a file.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// What `IImageHandler::SaveTexture` does. Throws what the allocator and the image library throw.
bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data);

}  // namespace Kavra::Devices
