/// Writing PICT pictures that hold one image.
#pragma once

#include "legacy/ByteBuilder.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Legacy {

using PictEntry = std::array<unsigned char, 3>;  ///< red, green, blue

/// How an image is combined with what is under it. Most programs do not look at it.
enum class PictMode : std::uint16_t {
    kCopy = 0,
    kTransparent = 36,  ///< all but the background colour, which is white: on a white page the image as it is
    kMinimum = 39,      ///< on a white page the image as it is
};

// Pictures of version 2 at 72 dpi with rows in PackBits (Inside Macintosh: Imaging With QuickDraw, appendix A). Pixels
// are in rows from the top without padding.
//
// Rows of direct colour have two-byte counts at any width: other programs expect these above 125 pixels at 16 bits
// and above 62 at 32 bits.

/// Indices of 8 bits into up to 256 colours.
ByteBuilder PictOfIndices(int width, int height, std::span<const unsigned char> indices,
                          std::span<const PictEntry> colours);

/// Three bytes a pixel: red, green, blue. `bits` is 16 (5 bits a channel, the high ones of each byte) or 32.
ByteBuilder PictOfColours(int width, int height, std::span<const unsigned char> rgb, int bits, PictMode mode);

/// One byte a pixel: black where it is not zero. Stored in 1 bit a pixel.
ByteBuilder PictOfBits(int width, int height, std::span<const unsigned char> black);

// What only readers see as it is that follow the whole description (`--legacy common`):

/// Three bytes a pixel in 32 bits and as many bands as fit, each a bitmap of its own that is copied.
ByteBuilder PictOfBands(int width, int height, std::span<const unsigned char> rgb, int rowsOfBand);

/// Three bytes a pixel in 16 bits, copied and enlarged so many times, with a circle for its mask that fills the height.
ByteBuilder PictThroughCircle(int width, int height, std::span<const unsigned char> rgb, int times);

/// A row in PackBits, with units of 1 or 2 bytes.
std::vector<unsigned char> PackPictRow(std::span<const unsigned char> row, std::size_t unit);

}  // namespace Kavra::Legacy
