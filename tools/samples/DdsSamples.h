/// The DDS sample files.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes photo.dds, mips.dds, bc1.dds, dx10.dds, float.dds, cube.dds, cube-mips.dds, volume.dds, normals.dds and bump.dds
/// into `folder`.
/// Throws `std::runtime_error`.
void WriteDdsSamples(const std::string& folder);

}  // namespace Kavra::Samples
