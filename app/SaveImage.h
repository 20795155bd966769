/// Writing what was loaded to a picture file.
#pragma once

#include "LoadOptions.h"
#include "Messages.h"

#include <filesystem>

namespace Kavra::App {

/// Writes an image through the handler; the file appears under its name only when it is whole. Of a cube map or volume
/// a flat file gets the first face or slice, and the report a note. A failure is said of the output.
bool Save(Devices::IImageHandler& handler, Report& report, const LoadedImage& image, const std::filesystem::path& path);

}  // namespace Kavra::App
