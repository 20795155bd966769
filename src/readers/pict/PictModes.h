/// How the common reading combines the pixels of a PICT bitmap with those under it: QuickDraw's transfer modes on a page
/// of 8 bits a channel (Inside Macintosh: Imaging With QuickDraw, chapters 3 and 4).
#pragma once

#include "readers/pict/PictTransfer.h"

#include <array>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

/// Red, green, blue, alpha.
using PictPixel = std::array<unsigned char, 4>;

/// The high byte of each channel, and alpha 255.
PictPixel ToPictPixel(const PictColour& colour);

/// The mode that a bitmap is drawn in: dithering (64) taken away, which needs fewer colours than there are here, and
/// pattern modes (8 to 15) read as those of the same name for bitmaps. A mode that there is not copies.
std::uint16_t ToPictMode(std::uint16_t field);

/// Whether the mode weighs black and white against each other, and so gives them the foreground and background colour.
constexpr bool IsBooleanPictMode(std::uint16_t mode) {
    return mode >= 1 && mode <= 7;
}

/// The colours that modes draw with.
struct PictInks {
    PictPixel foreground, background, highlight;
    PictColour operation;
};

/// Combines source pixels with the pixels of the page under them, which are as many and not the same memory. Only mode 0
/// takes over alpha; pixels that any other mode draws are opaque.
///
/// s, p and n are the bits of the source, of the page, and those of the source the other way round; f and b those of
/// the foreground and background colour. So black is the foreground colour, white the background's or what was there,
/// and what is between them has some of both.
///
///     mode                  page becomes            mode                 page becomes
///     0 copy                s                       4 not source copy    (n & b) | (s & f)
///     1 or                  (n & f) | (s & p)       5 not source or      (s & f) | (n & p)
///     2 xor                 p ^ n                   6 not source xor     p ^ s
///     3 bic                 (n & b) | (s & p)       7 not source bic     (s & b) | (n & p)
///
/// Each channel of c (the page), s and the operation colour o by itself, in 16 bits:
///
///     32 blend              (s o + c (65535 - o)) / 65535, rounded
///     33 add pin            the smaller of c + s and o
///     34 add over           c + s modulo 65536
///     35 subtract pin       the larger of c - s and o
///     37 add max            the larger of c and s
///     38 subtract over      c - s modulo 65536
///     39 add min            the smaller of c and s
///
///     36 transparent        s; unchanged where the source is the background colour
///     50 highlight          where the source is not the background colour: this and the highlight colour change places
void DrawPictPixels(std::uint16_t mode, const PictInks& inks, std::span<const unsigned char> source,
                    std::span<unsigned char> page);

}  // namespace Kavra::Devices
