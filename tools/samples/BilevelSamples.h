/// The sample files of the bilevel formats.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes drawing.cal, drawing-turned.cal, engraving.rlc and engraving-directory.rlc into `folder`.
/// Throws `std::runtime_error`.
void WriteBilevelSamples(const std::string& folder);

/// Writes drawing-lines.cal, which the common reading alone shows, into `folder`, which is there. Throws likewise.
void WriteCommonBilevelSamples(const std::string& folder);

}  // namespace Kavra::Samples
