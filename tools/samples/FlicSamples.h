/// The FLC sample file.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes balloon.flc into `folder`: a balloon rises over the lake, then stays. Throws `std::runtime_error`.
void WriteFlicSamples(const std::string& folder);

}  // namespace Kavra::Samples
