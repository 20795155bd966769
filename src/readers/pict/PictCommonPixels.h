/// Pixels of a PICT bitmap in the common reading: from the bytes of an unpacked row to colours.
#pragma once

#include "readers/pict/PictCommonRecord.h"

#include <array>
#include <cstddef>
#include <span>

namespace Kavra::Devices {

/// The colours of indices. Where there is no table, 2^n greys from black to white, or in a bitmap of one bit white and
/// black; an index beyond a table is black. In a picture of one bit that has nothing but black and white these are the
/// foreground and background colour, unless its mode gives them these by itself.
std::array<PictPixel, 256> PictCommonPalette(const PictCommonRecord& record);

/// Writes the pixels of an unpacked row from pixel `first` on: red, green, blue, and alpha where the fourth component is
/// that (`hasAlpha`), else 255. As many as `out` has four bytes for.
void PictCommonPixels(std::span<const unsigned char> row, const PictRowLayout& layout,
                      const std::array<PictPixel, 256>& palette, bool hasAlpha, std::size_t first,
                      std::span<unsigned char> out);

/// Whether any pixel of a row of four components has a fourth that is not 0.
bool HasPictAlpha(std::span<const unsigned char> row, const PictRowLayout& layout);

}  // namespace Kavra::Devices
