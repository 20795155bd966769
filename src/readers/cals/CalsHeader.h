/// The header of a CALS raster file.
#pragma once

#include "readers/ByteSource.h"

#include <kavra/devices/EDataOrientation.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Kavra::Devices {

/// 2048 bytes: records of 128 bytes of text, "key: value", padded with spaces (MIL-R-28002).
///
///     record  offset  key        value
///          0       0  srcdocid:  text; this record or the next one tells that the file is CALS
///          1     128  dstdocid:  text
///          6     768  rtype:     kind of raster, 1
///          7     896  rorient:   two angles in degrees, of the rows and of the columns
///          8    1024  rpelcnt:   pixels a row, rows
///
/// Records that are not listed are not used.
class CalsHeader {
public:
    static constexpr std::size_t kBytes = 2048;

    CalsHeader() = default;
    /// The header at the start of a file, which may be shorter; what is missing reads as zero.
    explicit CalsHeader(ByteSource& source);

    // Whatever the record says; 0 where it has no number. Neither is checked.
    std::int32_t Width() const { return Counts().first; }
    std::int32_t Height() const { return Counts().second; }

    /// Rows that run to the right below each other for angles that are not listed.
    EDataOrientation Orientation() const;

private:
    std::pair<std::int32_t, std::int32_t> Counts() const;

    std::array<unsigned char, kBytes> mBytes{};
};

}  // namespace Kavra::Devices
