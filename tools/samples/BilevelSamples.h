/// The sample files of the bilevel formats.
#pragma once

#include "Picture.h"

#include <string>

namespace Kavra::Samples {

/// Writes drawing.cal, drawing-turned.cal, engraving.rlc and engraving-directory.rlc into `folder`. `photo` is display
/// values. Throws `std::runtime_error`.
void WriteBilevelSamples(const std::string& folder, const Picture& photo);

}  // namespace Kavra::Samples
