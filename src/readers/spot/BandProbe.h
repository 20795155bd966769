/// Recognising band rasters.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Whether the path belongs to a band raster: beside it, under the same name, lie a ".bil" file that is not empty and a
/// ".hdr" file that describes it. The path may have any extension, but needs one.
bool IsBandRaster(const KString& path);

}  // namespace Kavra::Devices
