/// The PICT sample files.
#pragma once

#include "Picture.h"

#include <string>

namespace Kavra::Samples {

/// Writes photo.pict (32-bit colour), palette.pict (8-bit indices) and dots.pict (1 bit) into `folder`. `photo` is
/// 8-bit material. Throws `std::runtime_error`.
void WritePictSamples(const std::string& folder, const Picture& photo);

}  // namespace Kavra::Samples
