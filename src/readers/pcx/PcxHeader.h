/// What a PCX file says of itself in its first 128 bytes.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

inline constexpr std::size_t kPcxHeaderBytes = 128;

struct PcxHeader {
    std::uint8_t version = 0;
    std::uint8_t encoding = 0;
    std::uint8_t bitsPerPlane = 0;
    std::uint8_t planes = 0;
    std::uint16_t xMin = 1, yMin = 1, xMax = 0, yMax = 0;  ///< until they are read there are no pixels
    std::array<unsigned char, 48> palette{};
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
[[nodiscard]] Common::Result<PcxHeader> ReadPcxHeader(Common::ByteSource& source);

/// Whether the file is one that the reader knows: it may have no pixels all the same, or lack its palette.
bool IsPcx(Common::ByteSource& source);

/// The header of a file that the common reading shows: of the versions 0, 2, 3, 4 and 5 with pixels of up to 8 bits
/// over all planes, or with three or four planes of colours of 4 or 8 bits. A line that the header says nothing of has
/// the bytes of its row. The position of the source does not matter and is not kept.
[[nodiscard]] Common::Result<PcxHeader> ReadCommonPcxHeader(Common::ByteSource& source);

/// Whether the file is one that the common reading shows.
bool IsCommonPcx(Common::ByteSource& source);

}  // namespace Kavra::Devices
