#include "readers/spot/BandPalette.h"

#include "readers/TextScanner.h"
#include "readers/spot/SideFiles.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace Kavra::Devices {

namespace {

constexpr std::uint64_t kMostPaletteBytes = 0x100000;

/// Takes the first line off `text`, its line feed included, and returns it without.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return line;
}

/// Sets the entry that a line gives; false when it gives none.
bool ApplyLine(std::string_view line, BandPalette& palette) {
    if (line.starts_with('!')) return false;
    TextScanner scanner(line);
    std::array<std::int32_t, 4> numbers{};
    for (std::int32_t& number : numbers) {
        const std::optional<std::int32_t> scanned = scanner.Integer();
        if (!scanned) return false;
        number = *scanned;
    }
    const auto [index, red, green, blue] = numbers;
    if (index < 1 || index > 255) return false;
    palette[static_cast<std::size_t>(index)] = {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                                static_cast<std::uint8_t>(blue)};
    return true;
}

}  // namespace

BandPalette GreyRamp() {
    BandPalette palette;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        palette[i] = {grey, grey, grey};
    }
    return palette;
}

bool IsGrey(const BandPalette& palette) {
    return std::ranges::all_of(
        palette, [](const BandColour& colour) { return colour.red == colour.green && colour.green == colour.blue; });
}

std::optional<BandPalette> ParseBandPalette(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    BandPalette palette = GreyRamp();
    bool anySet = false;
    while (!text.empty())
        anySet |= ApplyLine(TakeLine(text), palette);
    return anySet ? std::optional(palette) : std::nullopt;
}

std::optional<BandPalette> ReadBandPalette(const KString& path) {
    const std::optional<std::string> text = ReadWhole(path, kMostPaletteBytes);
    return text ? ParseBandPalette(*text) : std::nullopt;
}

}  // namespace Kavra::Devices
