/// The pictures that the sample files show, computed.
#pragma once

#include <array>

namespace Kavra::Samples {

using Colour = std::array<float, 3>;  ///< linear light, red green blue

/// A lake in the mountains at dusk. `x` and `y` run from 0 to 1, left to right and top to bottom.
Colour Landscape(float x, float y);

/// A studio as an equirectangular map: grey walls, a softbox left and a smaller, warmer one right. Values above 1 are
/// light.
Colour Studio(float u, float v);

/// A letter F on a two-coloured ground, which shows every flip and turn. Display values, 0 to 1.
Colour LetterF(float x, float y);

/// Display value (0 to 1) of linear light, by the sRGB curve (IEC 61966-2-1).
float ToDisplay(float linear);

}  // namespace Kavra::Samples
