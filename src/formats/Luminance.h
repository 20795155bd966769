/// 8-bit colour to 8-bit grey.
#pragma once

#include "common/PixelRun.h"

#include <cstdint>

namespace Kavra::Formats {

/// The order of the colours in a 4-byte pixel; the fourth byte is not looked at.
enum class ColourOrder : std::uint8_t { kRedFirst, kBlueFirst };

/// The grey bytes of 4-byte pixels: (0.587 green + 0.299 red) + 0.114 blue of a red-first pixel, (0.587 green + 0.114
/// blue) + 0.299 red of a blue-first one, in single precision in this order, plus 0.5 and truncated in double
/// precision. One thread.
void GreyFromColours(const Common::PixelRun& run, ColourOrder order);

}  // namespace Kavra::Formats
