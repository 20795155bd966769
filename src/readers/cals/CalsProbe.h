/// Recognising CALS raster files.
#pragma once

#include "readers/ByteSource.h"

namespace Kavra::Devices {

/// Whether the header - text records of 128 bytes - begins with a document identifier and its raster type is 1. The
/// position of the source does not matter and is not kept.
bool IsCals(ByteSource& source);

}  // namespace Kavra::Devices
