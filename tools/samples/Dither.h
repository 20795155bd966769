/// Pictures in few colours.
#pragma once

#include "Picture.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Kavra::Samples {

using PaletteColour = std::array<unsigned char, 3>;  ///< red green blue, display values

/// Red, green and blue in so many steps each, blue the fastest.
std::vector<PaletteColour> ColourCube(const std::array<int, 3>& steps);

/// The threshold of ordered dithering at a pixel (4 x 4, after Bayer), above 0 and below 1.
float Threshold(int x, int y);

/// Each pixel of a display picture as an index into the cube of those steps, by ordered dithering.
std::vector<unsigned char> OrderedIndices(const Picture& picture, const std::array<int, 3>& steps);

/// The index of the nearest colour.
std::size_t Nearest(const std::vector<PaletteColour>& palette, const float* colour);

/// Each pixel's nearest colour, its error spread over the pixels not yet done (Floyd and Steinberg, 1976).
std::vector<unsigned char> DiffusedIndices(Picture picture, const std::vector<PaletteColour>& palette);

}  // namespace Kavra::Samples
