/// Where the two readings of a raster part.
#pragma once

#include "readers/spot/SpotHeader.h"

#include <string>

namespace Kavra::Devices {

/// What the contract's reading does otherwise than the common one with the raster that a path leads to, in words for
/// `ILegacyObserver`, or null where both show the same or the common one shows nothing. `contract` is the contract's
/// header, null where that reading knows the raster and does not show it. Where only the values decide, they are searched.
const char* HowSpotDiffers(const std::wstring& path, const SpotHeader* contract);

}  // namespace Kavra::Devices
