/// Describing a file in full.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>

namespace Kavra::Devices {

/// What `IImageInspector::Inspect` does: asks the image library first, but of DDS files only about pixels, and of
/// legacy ones nothing; then the host's readers, which know less. Throws what the allocator and the libraries throw.
IFileInspection* InspectFile(const KString& path);

}  // namespace Kavra::Devices
