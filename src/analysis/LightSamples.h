/// An environment map, sampled evenly over directions.
#pragma once

#include "analysis/EnvironmentMap.h"

#include <kavra/objects/Vec.h>

#include <vector>

namespace Kavra::Analysis {

struct LightSample {
    vec3<float> direction;  ///< of length 1; see EnvironmentMap.h
    vec3<float> colour;     ///< red, green, blue in linear light
    float luminance;
};

/// The samples of a map, row by row from the zenith down, each row from u = 0 on: N = min(width, 200) in a row, N / 2
/// rows, evenly spaced in the cosine of the angle from the zenith. By Archimedes' theorem of the cylinder equal steps
/// of that cosine cover equal areas of the sphere, so every sample stands for the same solid angle. Each takes the
/// nearest pixel. A map without rows or of a width below 2 gives none. Throws `std::bad_alloc`.
std::vector<LightSample> SampleMap(const EnvironmentMap& map);

/// Removes the samples whose luminance is below the mean plus one standard deviation; the others keep their order. One
/// equal to that bound stays. Where the bound is NaN, or all samples are equally bright, all stay.
void KeepBrightSamples(std::vector<LightSample>& samples);

}  // namespace Kavra::Analysis
