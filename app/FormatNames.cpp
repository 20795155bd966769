#include "FormatNames.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr std::array kFormats = {
    FormatName{kUnknown, "kUnknown", "", 0},
    FormatName{kBC1, "kBC1", "bc1", 4},
    FormatName{kBC1Srgb, "kBC1Srgb", "", 4},
    FormatName{kBC2, "kBC2", "bc2", 4},
    FormatName{kBC2Srgb, "kBC2Srgb", "", 4},
    FormatName{kBC3, "kBC3", "bc3", 4},
    FormatName{kBC3Srgb, "kBC3Srgb", "", 4},
    FormatName{kBC4, "kBC4", "bc4", 1},
    FormatName{kBC4Snorm, "kBC4Snorm", "", 1},
    FormatName{kBC5, "kBC5", "bc5", 2},
    FormatName{kBC5Snorm, "kBC5Snorm", "", 2},
    FormatName{kA8, "kA8", "a8", 1},
    FormatName{kR8, "kR8", "r8", 1},
    FormatName{kL8, "kL8", "l8", 1},
    FormatName{kR16F, "kR16F", "r16f", 1},
    FormatName{kR16, "kR16", "r16", 1},
    FormatName{kL16, "kL16", "l16", 1},
    FormatName{kR32F, "kR32F", "r32f", 1},
    FormatName{kR16G16F, "kR16G16F", "rg16f", 2},
    FormatName{kR16G16, "kR16G16", "rg16", 2},
    FormatName{kR8G8B8A8, "kR8G8B8A8", "rgba8", 4},
    FormatName{kR8G8B8A8Alt, "kR8G8B8A8Alt", "", 4},
    FormatName{kB8G8R8A8, "kB8G8R8A8", "bgra8", 4},
    FormatName{kB8G8R8X8, "kB8G8R8X8", "bgrx8", 4},
    FormatName{kR8G8B8X8, "kR8G8B8X8", "rgbx8", 4},
    FormatName{kR32G32F, "kR32G32F", "rg32f", 2},
    FormatName{kR16G16B16A16F, "kR16G16B16A16F", "rgba16f", 4},
    FormatName{kR16G16B16A16, "kR16G16B16A16", "rgba16", 4},
    FormatName{kR32G32B32F, "kR32G32B32F", "rgb32f", 3},
    FormatName{kR32G32B32A32F, "kR32G32B32A32F", "rgba32f", 4},
    FormatName{kBC6H, "kBC6H", "bc6h", 3},
    FormatName{kBC6HSigned, "kBC6HSigned", "", 3},
    FormatName{kBC7, "kBC7", "bc7", 4},
    FormatName{kBC7Srgb, "kBC7Srgb", "", 4},
};

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    constexpr auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

const FormatName* Find(EFormat format) {
    const auto found = std::ranges::find(kFormats, format, &FormatName::format);
    return found == kFormats.end() ? nullptr : &*found;
}

}  // namespace

std::span<const FormatName> AllFormats() {
    return kFormats;
}

std::optional<EFormat> ParseFormat(std::string_view text) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    for (const FormatName& name : kFormats) {
        if (isNumber ? name.format == number
                     : EqualIgnoringCase(text, name.enumerator) ||
                           (!name.shortName.empty() && EqualIgnoringCase(text, name.shortName))) {
            return name.format;
        }
    }
    return std::nullopt;
}

std::string Enumerator(EFormat format) {
    const FormatName* name = Find(format);
    return name != nullptr ? std::string(name->enumerator) : std::to_string(static_cast<int>(format));
}

int Channels(EFormat format) {
    const FormatName* name = Find(format);
    return name != nullptr ? name->channels : 0;
}

}  // namespace Kavra::App
