/// Writing textures through OpenImageIO.
#pragma once

#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// Writes the first face or slice of a texture to a file of the kind that the path's extension names. `data` is not
/// null and the size positive. Raises no message. True when the file was written; a failed write may leave a part of
/// it.
bool SaveByLibrary(const KString& path, const ImageDescription& desc, const void* data);

}  // namespace Kavra::Devices
