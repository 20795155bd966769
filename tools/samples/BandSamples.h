/// The band raster sample files.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes the rasters photo (three bands), height (16 bits) and map (a palette) into `folder`, each in files of its
/// own beside one another. Throws `std::runtime_error`.
void WriteBandSamples(const std::string& folder);

}  // namespace Kavra::Samples
