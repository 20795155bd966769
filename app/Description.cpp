#include "Description.h"

#include <array>
#include <format>

namespace Kavra::App {

std::string TextureTypeName(Devices::ETextureType type) {
    switch (type) {
        case Devices::kTexture1D:
            return "1-D";
        case Devices::kTexture2D:
            return "2-D";
        case Devices::kTextureCube:
            return "cube map";
        case Devices::kTextureVolume:
            return "volume";
        default:
            return std::format("texture type {}", static_cast<int>(type));
    }
}

std::string OrientationName(Devices::EDataOrientation orientation) {
    static constexpr std::array kNames = {"as displayed", "mirrored",    "upside down",  "rotated by 180 degrees",
                                          "transposed",   "turned left", "turned right", "transverse"};
    const int number = orientation;
    if (number < 0 || number >= static_cast<int>(kNames.size())) return std::format("orientation {}", number);
    return std::format("{} ({})", kNames[static_cast<std::size_t>(number)], number);
}

Json FailureJson(const Report& report) {
    return {{"file", report.File()}, {"error", report.LastText("cannot be read")}};
}

std::string JsonText(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Kavra::App
