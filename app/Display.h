/// Pictures as a screen shows them.
#pragma once

#include "ColourChange.h"
#include "LoadOptions.h"
#include "Source.h"

namespace Kavra::App {

/// A flat picture of any format with pixels as `kR8G8B8A8` with the curve of sRGB, its alpha apart from its colours.
/// `source` says what its values are. Light is multiplied by `brightness` and mapped as `tone` says. Negative values
/// and NaN are 0.
LoadedImage ToDisplay(const LoadedImage& image, const Source& source, ToneMap tone = ToneMap::kReinhardIfBright,
                      float brightness = 1);

}  // namespace Kavra::App
