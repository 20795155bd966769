/// The samples of textures as they ship.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes materials.dds, leaf.ktx2 and sky.ktx2 into `folder`. Throws `std::runtime_error`.
void WriteTextureSamples(const std::string& folder);

}  // namespace Kavra::Samples
