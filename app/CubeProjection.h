/// Cube maps and equirectangular maps of the same surroundings.
///
/// A map is twice as wide as high: the zenith (+y) along its upper edge, the nadir along its lower, +z in the middle, +x
/// three quarters across. Faces are those of `CubeLayout`.
#pragma once

#include "LoadOptions.h"

namespace Kavra::App {

/// The map, 4 N x 2 N pixels, of a cube map of N x N; both hold four floats a pixel. It is sampled at twice the size, across
/// the edges of faces, and shrunk by the resampler.
LoadedImage ToEquirect(const LoadedImage& cube);

/// The cube map, a quarter of the width a side, of a map of four floats a pixel. Rows are shortened to their true length on
/// the sphere by the resampler before, so that the poles do not flicker, and faces are sampled at twice the size and shrunk.
LoadedImage FromEquirect(const LoadedImage& map);

}  // namespace Kavra::App
