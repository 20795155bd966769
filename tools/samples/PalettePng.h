/// A PNG file with a palette, which the image library does not write.
#pragma once

#include "Picture.h"

#include <string>

namespace Kavra::Samples {

/// Writes `picture` (display values) as an 8-bit palette PNG with a 6 x 6 x 6 colour cube, uncompressed inside
/// (PNG: ISO/IEC 15948; stored blocks: RFC 1951). Throws `std::runtime_error`.
void WritePalettePng(const std::string& path, const Picture& picture);

}  // namespace Kavra::Samples
