/// Sample environment maps: equirectangular pictures of all that a point sees, in linear light.
#pragma once

#include "Scene.h"

#include <string>

namespace Kavra::Samples {

// `u` and `v` run from 0 to 1 with the columns and rows: u = 1/4 looks left, 1/2 ahead, 3/4 right, v = 0 up.

/// A grey room with two softboxes: a large cool one on the left, a narrow warm one on the right, and what they cast on
/// the walls.
Colour Softboxes(float u, float v);

/// The sun low over the sea, ahead and a little to the right: a disc of five degrees in a sky that reddens around it.
Colour Sunset(float u, float v);

/// A closed cloud cover, three times as bright at the zenith as at the horizon (P. Moon and D. Spencer, "Illumination
/// from a non-uniform sky", 1942; the standard overcast sky of the CIE), over grass.
Colour Overcast(float u, float v);

/// Writes `softboxes.exr`, `sunset.exr` and `overcast.exr`. Throws `std::runtime_error`.
void WriteEnvironments(const std::string& folder);

}  // namespace Kavra::Samples
