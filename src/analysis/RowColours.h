/// The colours of one row of an environment map, added up.
#pragma once

#include "analysis/EnvironmentMap.h"

namespace Kavra::Analysis {

/// Sums over pixels, in linear light: of the three colours, and of each pixel's brightest one.
struct ColourSums {
    double red = 0, green = 0, blue = 0, brightest = 0;
};

/// The sums over the `width` pixels from `row` on, which is all that is read. The pixels are added in double precision
/// as four sums, pixel x to sum x mod 4, and these as (0 + 1) + (2 + 3): the order, and so the result to the last bit,
/// is the same on every processor. Sums of bytes are exact up to 4 million pixels, sums of halves up to 8192, whatever
/// their order. The brightest of r, g, b is max(max(r, g), b) with max(a, b) = a < b ? b : a, so a NaN counts where it
/// is red and is passed over elsewhere. One thread.
ColourSums SumRow(const unsigned char* row, std::size_t width, PixelKind kind);

}  // namespace Kavra::Analysis
