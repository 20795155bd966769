/// Where the two readings of a raster part.
#pragma once

#include "readers/spot/SpotHeader.h"

namespace Kavra::Devices {

/// What the contract's reading does otherwise with a raster than the common one, in words for `ILegacyObserver`, or null
/// where both show the same. `file` has the contract's samples. Where only the values decide, they are searched.
const char* HowSpotDiffers(Common::ByteSource& file, const SpotHeader& contract, const SpotHeader& common);

}  // namespace Kavra::Devices
