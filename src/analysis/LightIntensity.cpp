// How bright an environment map is, seen from its centre.
//
// The mean of a quantity q over all directions is its integral over the sphere divided by the sphere's. With the
// latitude phi, from +pi/2 in the first row to -pi/2 in the last, and the azimuth lambda, a patch of the sphere covers
//
//                 y, latitude +pi/2         the solid angle  d(omega) = cos(phi) d(phi) d(lambda):
//                 |   __---- row y          a parallel circle at latitude phi has the radius cos(phi).
//                 | _-  |
//                 |- phi|                   All pixels have the same d(phi) and d(lambda), which cancel:
//                 +-----+------ horizon
//                   cos(phi)                mean of q = sum of q w / sum of w,   w = cos(phi) of the pixel's row.
//
// Row y of H covers the fractions y / H to (y + 1) / H of the way down, so the latitude of its middle is
// phi = (1/2 - (y + 1/2) / H) pi, which is written ((H - y - 0.5) / H - 0.5) pi below.
//
// What the upper hemisphere sends to a horizontal surface counts by the cosine of the angle from the zenith as well
// (Lambert's law), which is pi/2 - phi: w = cos(phi) cos(pi/2 - phi). The surface is lit by the rows above the horizon
// only, of H / 2 whole ones.

#include "analysis/LightIntensity.h"

#include "analysis/RowColours.h"
#include "common/OrderedParts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Kavra::Devices {
namespace {

using Analysis::ColourSums;
using Analysis::EnvironmentMap;

constexpr std::size_t kSerialBytes = std::size_t{1} << 17;  // one core is done before another could help

struct WeightedSums {
    double weight = 0;
    ColourSums colours;

    /// Every pixel of the row has the same weight, so it is applied once to their sums.
    void AddRow(const ColourSums& row, std::size_t width, double rowWeight) {
        weight += static_cast<double>(width) * rowWeight;
        colours.red += row.red * rowWeight;
        colours.green += row.green * rowWeight;
        colours.blue += row.blue * rowWeight;
        colours.brightest += row.brightest * rowWeight;
    }

    float Mean(double sum) const { return static_cast<float>(sum / weight); }
};

double RowWeight(std::size_t y, std::size_t height, bool upperHemisphere) {
    const auto rows = static_cast<double>(height);
    const double phi = ((rows - static_cast<double>(y) - 0.5) / rows - 0.5) * std::numbers::pi;
    const double area = std::cos(phi);
    return upperHemisphere ? area * std::cos(std::numbers::pi / 2 - phi) : area;
}

/// An empty map has sums of zero, whose means are NaN.
WeightedSums SumMap(const EnvironmentMap& map, bool upperHemisphere) {
    WeightedSums sums;
    if (map.width < 1 || map.height < 1) return sums;
    const auto width = static_cast<std::size_t>(map.width);
    const auto height = static_cast<std::size_t>(map.height);
    const std::size_t serialRows = kSerialBytes / (width * Analysis::PixelBytes(map.kind));
    std::size_t y = 0;
    Common::ForEachInOrderOf<ColourSums>(
        kProgressAnalysing, upperHemisphere ? height / 2 : height, serialRows,
        [&](std::size_t row) { return Analysis::SumRow(map.Row(row), width, map.kind); },
        [&](const ColourSums& row) { sums.AddRow(row, width, RowWeight(y++, height, upperHemisphere)); });
    return sums;
}

vec3<float> Intensity(const WeightedSums& sums) {
    const ColourSums& c = sums.colours;
    return {
        sums.Mean(std::max(std::max(c.red, c.green), c.blue)), sums.Mean(c.brightest),
        sums.Mean(Analysis::kRedWeight * c.red + Analysis::kGreenWeight * c.green + Analysis::kBlueWeight * c.blue)};
}

}  // namespace

vec3<float> LightIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                           vec3<float>* averageColour) {
    const auto map = Analysis::EnvironmentMapOf(desc, data);
    if (!map) return kNoLightIntensity;
    const WeightedSums sums = SumMap(*map, upperHemisphere);
    const ColourSums& c = sums.colours;
    if (averageColour != nullptr) *averageColour = {sums.Mean(c.red), sums.Mean(c.green), sums.Mean(c.blue)};
    return Intensity(sums);
}

}  // namespace Kavra::Devices
