/// The colours of PCX pictures as the format's description and the programs that follow it have them.
#pragma once

#include "common/ByteSource.h"
#include "readers/SampleTables.h"
#include "readers/pcx/PcxHeader.h"

#include <cstdint>

namespace Kavra::Devices {

struct PcxCommonColours {
    Table256<std::uint32_t> pixels{};  ///< of each index: red, green, blue and 255, see `PackedPixel`
    std::uint64_t dataEnd = 0;         ///< where the rows end at the latest: at the palette or at the file's end
};

/// Finds the colours of a picture with up to 8 bits a pixel (of others there is `dataEnd` alone).
///
/// Up to 4 bits, the header's palette: its first entries, in as far as the version has one (0 and 3 have not) and they
/// are not all alike; else black and white for one bit, greys where the header says grey, and the 16 colours of the
/// EGA. Four colours in one plane may be those of a CGA, which the header tells in two of its bytes.
///
/// More than 4 bits: the 256 colours at the end of the file, told by the marker before them; where that is missing, the
/// end of the rows tells whether there is room for a palette behind them. To know it takes decoding the rows. Where
/// there is none, indices below 16 are the header's colours and others greys.
PcxCommonColours FindCommonPcxColours(Common::ByteSource& source, const PcxHeader& header);

}  // namespace Kavra::Devices
