/// How a source is combined with what was drawn before it.
#pragma once

#include "readers/pict/PictPicture.h"

#include <array>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

/// A run of pixels: equally long spans of red, green and blue.
using PictRun = std::array<std::span<std::uint16_t>, 3>;
using PictConstRun = std::array<std::span<const std::uint16_t>, 3>;

/// Combines a run of source pixels with the canvas pixels under it. Black and white mean exactly 0 and 65535 in all
/// three channels.
///
///     mode                  source black  source white  any other source
///     0, 8 to 31, from 40   foreground    background    background
///     1                     foreground    canvas        canvas
///     3                     background    canvas        canvas
///     4                     background    foreground    canvas
///     5                     canvas        foreground    canvas
///     7                     canvas        background    canvas
///
///     mode  each channel of canvas c, source s and operation colour o
///     2     c XOR NOT s
///     6     c XOR s
///     32    (65536 - o) c / 65536 + o s / 65536, each product divided for itself
///     33    the smaller of c + s and o
///     34    c + s modulo 65536
///     35    the larger of c - s and o
///     36    s; c where the source is the background colour
///     37    the larger of c and s
///     38    c - s modulo 65536
///     39    the smaller of c and s
void TransferPictRun(std::uint16_t mode, const PictColours& colours, const PictConstRun& source, const PictRun& canvas);

}  // namespace Kavra::Devices
