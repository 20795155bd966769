/// Colours without alpha to pixels with one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// Writes `count` packed pixels of three elements at `in` to `out` with a fourth one behind each, whose bits are the
/// lowest of `opaque`. Elements have 1, 2 or 4 bytes and any alignment; the two do not overlap. On all cores.
///
/// Each pixel is read and written once: the limit is the memory, 3 and 4 elements a pixel.
void AddOpaqueAlpha(const unsigned char* in, std::size_t count, std::size_t elementBytes, std::uint32_t opaque,
                    unsigned char* out);

/// The same one pixel after the other.
void AddOpaqueAlphaPlainly(const unsigned char* in, std::size_t count, std::size_t elementBytes, std::uint32_t opaque,
                           unsigned char* out);

}  // namespace Kavra::Devices
