/// Blocks of BC1 as bytes.
#pragma once

#include <cstdint>

namespace Kavra::Common {

/// Writes the 8 bytes of a block: both ends of 5, 6 and 5 bits, and an index of 2 bits a pixel.
void PackBc1(std::uint32_t first, std::uint32_t second, std::uint32_t indices, unsigned char* out);

/// Writes a block of one colour, of three components from 0 to 255: all pixels a third of the way between two ends,
/// which lies nearer to it than an end can. `inOrder`: with the larger end first, as four colours need it in BC1 itself.
void PackOneColour(const float* colour, bool inOrder, unsigned char* out);

}  // namespace Kavra::Common
