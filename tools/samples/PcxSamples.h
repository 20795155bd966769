/// The PCX sample files.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes photo.pcx (24 bits), palette.pcx (256 colours), planes.pcx (16 colours in four planes) and letter.pcx (1 bit)
/// into `folder`. Throws `std::runtime_error`.
void WritePcxSamples(const std::string& folder);

}  // namespace Kavra::Samples
