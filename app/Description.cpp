#include "Description.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <array>
#include <format>
#include <string_view>
#include <utility>

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

namespace {

/// Whether a name is text; `OS::FromUtf8` makes a lone surrogate of each byte that is none.
bool IsText(const std::string& name) {
    return std::ranges::none_of(OS::FromUtf8(name.c_str()), [](wchar_t c) { return c >= 0xDC80 && c <= 0xDCFF; });
}

/// Each byte but letters, digits and -._~/ as %E9, as in addresses (RFC 3986).
std::string Escaped(const std::string& name) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string escaped;
    for (const char c : name)
        escaped += kPlain.contains(c) ? std::string(1, c) : std::format("%{:02X}", static_cast<unsigned char>(c));
    return escaped;
}

bool AreText(const Json& names) {
    if (names.is_string()) return IsText(names.get<std::string>());
    return !names.is_array() || std::ranges::all_of(names, AreText);
}

Json EscapedNames(const Json& names) {
    if (names.is_string()) return Escaped(names.get<std::string>());
    Json all = Json::array();
    for (const Json& name : names)
        all.push_back(EscapedNames(name));
    return all;
}

/// Beside names that are no UTF-8, which JSON cannot hold, puts them as they are: `fileBytes` beside `file`.
void AddNameBytes(Json& json) {
    if (json.is_array()) std::ranges::for_each(json, AddNameBytes);
    if (!json.is_object()) return;
    for (const std::string key : {"file", "other", "output", "outputs"}) {
        if (json.contains(key) && !AreText(json[key])) json[key + "Bytes"] = EscapedNames(json[key]);
    }
}

}  // namespace

void AddFailure(Json& json, const Report& report, const std::string& otherwise) {
    const Reason& why = report.Why();
    AddReason(json, why.IsKnown() ? why : OwnReason(report.LastText(otherwise)));
}

Json FailureJson(const Report& report) {
    Json json = {{"file", report.File()}};
    AddFailure(json, report, "cannot be read");
    return json;
}

std::string JsonText(Json json) {
    AddNameBytes(json);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Kavra::App
