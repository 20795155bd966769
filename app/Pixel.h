/// Colours of any picture.
#pragma once

#include <array>

namespace Kavra::App {

/// Red, green, blue, alpha.
using Pixel = std::array<float, 4>;

}  // namespace Kavra::App
