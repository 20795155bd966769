/// Pixels of a PICT picture: from the bytes of an unpacked row to indices and colours, how these are combined with what
/// was drawn before, and from colours to the bytes of the result.
#pragma once

#include "readers/pict/PictBitmap.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

/// The colours that transfer modes draw with.
struct PictColours {
    PictColour foreground = kPictBlack;
    PictColour background = kPictWhite;
    PictColour operation = kPictBlack;  ///< the weights of a blend, the limits of the pins
};

// The arithmetic of a channel of 16 bits in the modes that both readings draw alike: of canvas c, source s and operation
// colour o. More than the low 16 bits of a result mean nothing.
using PictValue = std::uint32_t;

inline constexpr auto kPictAddPin = [](int c, int s, int o) { return std::min(c + s, o); };
inline constexpr auto kPictAddOver = [](PictValue c, PictValue s, PictValue) { return c + s; };
inline constexpr auto kPictSubtractPin = [](int c, int s, int o) { return std::max(c - s, o); };
inline constexpr auto kPictMaximum = [](PictValue c, PictValue s, PictValue) { return std::max(c, s); };
inline constexpr auto kPictSubtractOver = [](PictValue c, PictValue s, PictValue) { return c - s; };
inline constexpr auto kPictMinimum = [](PictValue c, PictValue s, PictValue) { return std::min(c, s); };

/// A run of pixels: equally long spans of red, green and blue.
using PictRun = std::array<std::span<std::uint16_t>, 3>;
using PictConstRun = std::array<std::span<const std::uint16_t>, 3>;

// `row` is an unpacked row of `layout`; `first` is the pixel of it to begin with. As many pixels as `out` is long.

/// Palette indices, one a byte, of pixels of 1, 2, 4 or 8 bits.
void PictIndices(std::span<const unsigned char> row, const PictRowLayout& layout, std::size_t first,
                 std::span<unsigned char> out);

/// The largest of them, 0 where there are none.
unsigned char LargestIndex(std::span<const unsigned char> indices);

/// The colours of indices that are all below the number of colours.
void PictIndexedColours(std::span<const PictColour> colours, std::span<const unsigned char> indices,
                        const PictRun& out);

/// Colours of pixels of 16 or 32 bits, widened so that the largest value becomes 65535.
void PictDirectColours(std::span<const unsigned char> row, const PictRowLayout& layout, std::size_t first,
                       const PictRun& out);

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

/// The high byte of each channel and alpha 255: four bytes a pixel.
void PictToRgba(const PictConstRun& colours, std::span<unsigned char> out);

}  // namespace Kavra::Devices
