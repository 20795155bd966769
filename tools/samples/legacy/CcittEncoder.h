/// Encoding bilevel images by ITU-T T.4 (Group 3) and T.6 (Group 4).
#pragma once

#include "legacy/Bitmap.h"

#include <vector>

namespace Kavra::Legacy {

// Bits of the image are 0 for white and 1 for black. Codes run from the highest bit of each byte to its lowest; the
// last byte is filled up with zeros.

/// Group 4 with the end of block.
std::vector<unsigned char> EncodeGroup4(const Bitmap& image);

/// One-dimensional rows behind an end of line each, and the six ends of line that close a page.
std::vector<unsigned char> EncodeGroup3(const Bitmap& image);

/// One-dimensional rows that begin at a byte each, without any end of line.
std::vector<unsigned char> EncodeRows(const Bitmap& image);

/// Behind each end of line a bit and a row: a one-dimensional one, then `period` - 1 two-dimensional ones, and so on.
std::vector<unsigned char> EncodeGroup3TwoDimensional(const Bitmap& image, int period);

}  // namespace Kavra::Legacy
