/// CALS raster files (MIL-R-28002, type 1).
#pragma once

#include "legacy/Bitmap.h"
#include "legacy/ByteBuilder.h"

#include <string>

namespace Kavra::Legacy {

/// What the header says beyond what it must.
struct CalsHeader {
    std::string orientation = "000,270";  ///< of the rows and of the columns, in degrees
    std::string density = "0300";         ///< dots per inch
    std::string counts{};                 ///< pixels a row and rows; those of the image when empty
};

/// The 2048 bytes of a header: records of 128 bytes, padded with spaces.
ByteBuilder CalsHeaderBytes(const CalsHeader& header);

/// The image behind its header. Bits that are 1 are the paper's black, as in any fax.
ByteBuilder CalsFile(const Bitmap& image, CalsHeader header = {});

}  // namespace Kavra::Legacy
