/// Light on a screen.
#pragma once

#include "Canvas.h"
#include "EnvironmentFile.h"

namespace Kavra::App {

/// The hue of a light, as bright as a screen can show it; black for none.
Display HueOf(const vec3<float>& colour);

/// Draws a map into the top left `width` x `height` pixels of the canvas, which it fills whatever its own size.
///
/// Display values are shown as they are. Light is shown by the global operator of E. Reinhard, M. Stark, P. Shirley and
/// J. Ferwerda, "Photographic Tone Reproduction for Digital Images", 2002, equation 4: luminance L becomes
/// l (1 + l / w^2) / (1 + l) with l = 0.18 L / (logarithmic mean of all L) and w the l of the brightest pixel; colours
/// keep their proportions. Then comes the sRGB curve (IEC 61966-2-1).
void DrawMap(Canvas& canvas, const SmallEnvironment& map, int width, int height);

}  // namespace Kavra::App
