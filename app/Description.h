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

/// Adds why a file failed (`AddReason`): the reason, else the last message, else `otherwise`.
void AddFailure(Json& json, const Report& report, const std::string& otherwise);

/// The JSON of a file that failed: its name, and why.
Json FailureJson(const Report& report);

/// JSON as text with a newline at its end. Text that is no UTF-8 is mended, numbers that JSON has not are null. Beside the
/// key of a file's name that is no UTF-8, such as `file`, stands `fileBytes` with the name as it is, each byte but letters,
/// digits and -._~/ as %E9.
std::string JsonText(Json json);

}  // namespace Kavra::App
