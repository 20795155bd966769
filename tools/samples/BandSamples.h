/// The band raster sample files.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes the rasters photo (three bands), height (16 bits) and map (a palette) into `folder`, each in files of its
/// own beside one another. Throws `std::runtime_error`.
void WriteBandSamples(const std::string& folder);

/// Writes the rasters coast (4 bits and a palette) and fields (three bands of 16 bits, big-endian), which the common
/// reading alone shows as they were meant, likewise.
void WriteCommonBandSamples(const std::string& folder);

}  // namespace Kavra::Samples
