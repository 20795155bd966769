/// Writing textures through the host's DDS writer.
#pragma once

#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// Writes all faces or slices of a texture, one mip level. `data` is not null and the size positive. Warns "fail to
/// construct DDSWriter" where the writer does not take what is described. True when the file was written.
bool SaveDDS(const KString& path, const ImageDescription& desc, const void* data);

}  // namespace Kavra::Devices
