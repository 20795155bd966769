/// Recognising RLC run-length rasters.
#pragma once

#include "readers/ByteSource.h"

namespace Kavra::Devices {

/// Whether the file reads as rows of runs: there is no magic number, so the rows themselves are checked - all of them,
/// or of a file with a directory the first quarter, at least 100. No file of 2 GiB or more is one. The position
/// of the source does not matter and is not kept.
bool IsRlc(ByteSource& source);

}  // namespace Kavra::Devices
