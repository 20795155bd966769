/// The DDS sample files.
#pragma once

#include "Picture.h"

#include <string>

namespace Kavra::Samples {

/// Writes photo.dds, mips.dds, bc1.dds, dx10.dds, float.dds, cube.dds, cube-mips.dds and volume.dds into `folder`.
/// `photo` is 8-bit material, `light` linear light. Throws `std::runtime_error`.
void WriteDdsSamples(const std::string& folder, const Picture& photo, const Picture& light);

}  // namespace Kavra::Samples
