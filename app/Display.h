/// Pictures as a screen shows them.
#pragma once

#include "LoadOptions.h"

namespace Kavra::App {

/// A flat picture of any format with pixels as `kR8G8B8A8`, its alpha apart from its colours.
///
/// Floating-point colours are linear light. Where some are above 1 they are exposed and compressed: the geometric mean
/// of the luminance becomes 0.18 and the brightest white (`Exposure`). All are then encoded with the curve of sRGB.
/// Negative values and NaN are 0. `associated` says that colours are multiplied by alpha.
LoadedImage ToDisplay(const LoadedImage& image, bool associated);

}  // namespace Kavra::App
