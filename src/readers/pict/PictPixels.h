/// From the bytes of an unpacked row to indices and colours, and from colours to the bytes of the result.
#pragma once

#include "readers/pict/PictTransfer.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

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

/// The high byte of each channel and alpha 255: four bytes a pixel.
void PictToRgba(const PictConstRun& colours, std::span<unsigned char> out);

}  // namespace Kavra::Devices
