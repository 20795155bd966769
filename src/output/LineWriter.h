/// Writing a picture line by line.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

class IWriteImageLineProvider;

/// What `IImageHandler::writeImageOneLineAtATime` does. Throws what the allocator, the image library and the provider
/// throw.
bool WriteImageLines(const KString& path, double resolution, IWriteImageLineProvider* provider, int width, int height,
                     int channels);

}  // namespace Kavra::Devices
