/// Light on a screen.
#pragma once

#include "Canvas.h"
#include "EnvironmentFile.h"

namespace Kavra::App {

/// The hue of a light, as bright as a screen can show it; black for none.
Display HueOf(const vec3<float>& colour);

/// Draws a map into the top left `width` x `height` pixels of the canvas, which it fills whatever its own size.
///
/// Display values are shown as they are. Light is exposed (`Exposure`, a map of little contrast without stretching it
/// to white) and encoded with the curve of sRGB.
void DrawMap(Canvas& canvas, const SmallEnvironment& map, int width, int height);

}  // namespace Kavra::App
