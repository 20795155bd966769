/// The colour table beside a band raster.
#pragma once

#include <kavra/devices/Export.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Kavra::Devices {

struct BandColour {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const BandColour&) const = default;
};

using BandPalette = std::array<BandColour, 256>;

/// Entry i is (i, i, i).
BandPalette GreyRamp();

/// Whether red, green and blue agree in every entry.
bool IsGrey(const BandPalette& palette);

/// The palette that a text describes: lines of "index red green blue", the colours taken modulo 256. Lines that begin
/// with "!" are comments; a line without four numbers, or with an index outside 1 to 255, does not count - entry 0
/// always stays black. Entries without a line keep their grey. A NUL ends the text. Nothing when no line counts.
std::optional<BandPalette> ParseBandPalette(std::string_view text);

/// The palette in a file of at most 1 MiB.
std::optional<BandPalette> ReadBandPalette(const KString& path);

}  // namespace Kavra::Devices
