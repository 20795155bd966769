/// The PICT sample files.
#pragma once

#include <string>

namespace Kavra::Samples {

/// Writes photo.pict (32-bit colour), palette.pict (8-bit indices) and dots.pict (1 bit) into `folder`.
/// Throws `std::runtime_error`.
void WritePictSamples(const std::string& folder);

}  // namespace Kavra::Samples
