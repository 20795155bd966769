/// Everything that a file says of itself, for people and as JSON.
#pragma once

#include "Description.h"

#include <kavra/devices/IImageInspector.h>

#include <string>

namespace Kavra::App {

/// A line or more for each part, indented by two characters and more; text of the file is escaped.
std::string InspectionText(const Devices::IFileInspection& file);

/// Adds "fileType" and "parts" to the description of a file.
void AddInspection(Json& json, const Devices::IFileInspection& file);

}  // namespace Kavra::App
