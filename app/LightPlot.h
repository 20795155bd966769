/// A picture of an environment map and its lights, to be pinned to a wall.
#pragma once

#include "EnvironmentFile.h"
#include "LightFindings.h"

namespace Kavra::App {

/// The size of the map in the plot; the legend comes below it.
constexpr int kPlotWidth = 1024, kPlotMapHeight = 512;

/// The map, tone-mapped; a grid of directions; each light with a ring, whose area grows with the light's share, and a
/// number; and below it what was measured and a row for each light.
LoadedImage DrawLightPlot(const std::string& title, const SmallEnvironment& map, const LightFindings& findings);

}  // namespace Kavra::App
