/// Rows of one bit a pixel as pixels of colour.
#pragma once

#include <span>

namespace Kavra::Devices {

/// Writes one pixel of four bytes (red, green, blue, alpha) for each bit, highest bit of each byte first: opaque
/// black for 0, opaque white for 1. `pixels` has four bytes a pixel, `packed` at least the bits for them; further ones
/// are ignored.
void ExpandBilevelRow(std::span<const unsigned char> packed, std::span<unsigned char> pixels);

}  // namespace Kavra::Devices
