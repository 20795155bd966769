/// Headers of CALS raster files as real files have them.
///
/// Described in MIL-R-28002 and MIL-STD-1840: records of 128 bytes, "key: value", 2048 bytes of them, then the image.
/// Files in the field have lines instead of padded records, records with their line ends behind the 128 bytes, other
/// numbers of records and other orders of them; so keys are looked for, in any case, wherever a record or a word
/// begins, and the image begins where the text ends: behind the sixteenth record or 2048 bytes where all of these are
/// text, else behind the last record that has a key.
#pragma once

#include "common/ByteSource.h"

#include <kavra/devices/EDataOrientation.h>

#include <cstdint>

namespace Kavra::Devices {

struct CalsCommonHeader {
    std::int32_t rasterType = 1;  ///< as it stands there; 1 where it is missing
    std::int32_t width = 0;       ///< at least 1
    std::int32_t height = 0;      ///< 0 where it is missing
    /// By the directions of pixels and of rows, the second relative to the first, counterclockwise as ITU-T T.417 has
    /// it; upright where they are missing or are no such directions.
    EDataOrientation orientation = kTopLeft;
    std::uint64_t dataStart = 0;  ///< offset of the image, inside the file
};

/// Reads the header of a file that begins with one of the keys and tells its pixels a row. The position of the
/// source does not matter and is not kept.
[[nodiscard]] Common::Result<CalsCommonHeader> ReadCalsCommonHeader(Common::ByteSource& source);

}  // namespace Kavra::Devices
