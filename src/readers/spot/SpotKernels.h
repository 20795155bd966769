/// Rows of samples into rows of pixels. `out` holds exactly the pixels that `in` gives and does not overlap it.
/// RGBA pixels come out opaque.
#pragma once

#include "readers/SampleTables.h"
#include "readers/spot/SpotHeader.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

/// What each 8-bit sample becomes.
using SampleTable = Table256<unsigned char>;
/// What each 8-bit sample contributes to the four bytes of a pixel.
using PixelTable = Table256<std::uint32_t>;

/// A pixel is the sum of what its three samples contribute.
struct PixelTables {
    PixelTable red, green, blue;
};

/// A row of each colour, all of the same length.
struct ColourRows {
    std::span<const unsigned char> red, green, blue;
};

/// The components of one colour.
SampleTable RedTable(const SpotPalette& palette);
/// The whole pixel: red, green, blue, 255.
PixelTable ColourTable(const SpotPalette& palette);
/// Red, green and blue each through the palette's components of that colour.
PixelTables ComponentTables(const SpotPalette& palette);

/// Bytes through a table, faster than `LookUp`.
void GreyFromSamples(std::span<unsigned char> out, std::span<const unsigned char> in, const SampleTable& table);

void RgbaFromRows(std::span<unsigned char> out, const ColourRows& in);
void RgbaFromRows(std::span<unsigned char> out, const ColourRows& in, const PixelTables& tables);

/// `in` holds pixels of three bytes.
void RgbaFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, bool blueFirst);
void RgbaFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, bool blueFirst,
                    const PixelTables& tables);

/// Turns the bytes of each number of 2 or 4 of them round.
void SwapNumbers(std::span<unsigned char> numbers, std::size_t numberBytes);

/// Sample `band` of each pixel of three samples of 2 or 4 bytes.
void SampleFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, std::size_t sampleBytes,
                      int band);

}  // namespace Kavra::Devices
