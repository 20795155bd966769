/// Descriptions of images, for people and as JSON.
#pragma once

#include "Messages.h"

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/ETextureType.h>

#include <nlohmann/json.hpp>

#include <string>

namespace Kavra::App {

using Json = nlohmann::ordered_json;

/// "2-D", "cube map", ...
std::string TextureTypeName(Devices::ETextureType type);

/// "top-left (0)", ...
std::string OrientationName(Devices::EDataOrientation orientation);

/// The JSON of a file that failed: its name and the last message, or "cannot be read".
Json FailureJson(const Report& report);

/// JSON as text with a newline at its end. Text that is no UTF-8 is mended, numbers that JSON has not are null.
std::string JsonText(const Json& json);

}  // namespace Kavra::App
