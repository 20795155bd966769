/// The header of a PCX file.
#pragma once

#include "common/ByteSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Kavra::Devices {

inline constexpr std::size_t kPcxHeaderBytes = 128;

/// The 128 bytes at the start, little-endian; what is not listed is not used.
///
///     offset  bytes  field
///          0      1  manufacturer, 10
///          1      1  version: 0, 2, 3 or 5
///          2      1  encoding: 0 raw, 1 run-length coded
///          3      1  bits a pixel, in each plane
///          4    4x2  first column, first row, last column, last row
///         16     48  palette of 16 colours
///         65      1  planes
///         66      2  bytes of one row of one plane
///         68      2  kind of palette: 2 is grey
struct PcxHeader {
    std::uint8_t version = 0;
    std::uint8_t encoding = 0;
    std::uint8_t bitsPerPlane = 0;
    std::uint8_t planes = 0;
    std::uint16_t xMin = 0, yMin = 0, xMax = 0, yMax = 0;
    std::array<unsigned char, 48> palette{};  ///< red, green, blue of each entry
    std::uint16_t bytesPerLine = 0;
    std::uint16_t paletteInfo = 0;

    int Bits() const { return bitsPerPlane * planes; }
    int Width() const { return xMax - xMin + 1; }   ///< below 1 where the columns run backwards
    int Height() const { return yMax - yMin + 1; }  ///< likewise
    bool IsPlanar() const { return planes >= 2 && Bits() != 24; }
    /// Whether the colours stand at the end of the file, 256 of them.
    bool HasTrailingPalette() const { return version == 5 && Bits() == 8; }
};

/// The header of a file that is accepted as PCX, which takes a known version and encoding and 1, 4, 8 or 24 bits a
/// pixel over all planes. The position of the source does not matter and is not kept.
std::optional<PcxHeader> ReadPcxHeader(Common::ByteSource& source);

}  // namespace Kavra::Devices
