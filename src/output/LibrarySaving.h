/// Writing textures through OpenImageIO.
#pragma once

#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// Writes the first face or slice of a texture to a file of the kind that the path's extension names. `data` is not
/// null and the size positive. Where `desc.rowPitch` is shorter than a row the rows overlap. Raises no message. True
/// when the file was written; a failed write leaves an old file, or where there was none perhaps a part of the new one.
bool SaveByLibrary(const KString& path, const ImageDescription& desc, const void* data);

}  // namespace Kavra::Devices
