#include "LightFindings.h"

#include "FormatNames.h"

#include <Imath/half.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <format>
#include <functional>
#include <numbers>
#include <span>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr double kDegrees = 180 / std::numbers::pi;

/// Linear RGB with the primaries of ITU-R BT.709, with the weights that `GetIBLIntensity` uses.
double Luminance(const vec3<float>& colour) {
    return 0.212671 * colour.x + 0.71516 * colour.y + 0.072169 * colour.z;
}

std::string ColourText(const vec3<float>& c) {
    return std::format("{:<9.4g} {:<9.4g} {:<9.4g}", c.x, c.y, c.z);
}

std::string LightLine(std::size_t number, const LightFinding& light) {
    const auto& [x, y, z] = light.direction;
    return std::format("  {:>3}  {:+.3f} {:+.3f} {:+.3f}  {:>7.1f}  {:>9.1f}   {}  {:<9.4g}  {:>5.1f} %\n", number, x,
                       y, z, light.Azimuth(), light.Elevation(), ColourText(light.colour), light.luminance,
                       100 * light.share);
}

/// What a light counts for: nothing where it is no light.
double Weight(const LightFinding& light) {
    return light.luminance > 0 ? light.luminance : 0;
}

/// The strongest comes first: the search knows lights in the order of their brightest samples.
void FindShares(std::vector<LightFinding>& lights) {
    double total = 0;
    for (const LightFinding& light : lights)
        total += Weight(light);
    for (LightFinding& light : lights)
        light.share = total > 0 ? Weight(light) / total : 0;
    std::ranges::stable_sort(lights, std::greater(), Weight);
}

template <class Channel>
std::size_t CountOdd(const LoadedImage& map) {
    const ImageDescription& desc = map.desc;
    const auto* row = static_cast<const unsigned char*>(map.block->mData);
    std::size_t count = 0;
    for (int y = 0; y < desc.height; ++y, row += desc.rowPitch) {
        const std::span pixels(reinterpret_cast<const std::array<Channel, 4>*>(row),
                               static_cast<std::size_t>(desc.width));
        count += static_cast<std::size_t>(std::ranges::count_if(pixels, [](const auto& pixel) {
            return !std::ranges::all_of(pixel, [](Channel c) { return std::isfinite(static_cast<float>(c)); });
        }));
    }
    return count;
}

std::size_t OddPixels(const LoadedImage& map) {
    if (map.desc.format == kR16G16B16A16F) return CountOdd<half>(map);
    return map.desc.format == kR32G32B32A32F ? CountOdd<float>(map) : 0;
}

}  // namespace

double LightFinding::Azimuth() const {
    return std::atan2(direction.x, -direction.z) * kDegrees;
}

double LightFinding::Elevation() const {
    return std::asin(std::clamp(static_cast<double>(direction.y), -1.0, 1.0)) * kDegrees;
}

std::size_t LightFindings::Pixels() const {
    return static_cast<std::size_t>(desc.width) * static_cast<std::size_t>(desc.height);
}

bool LightFindings::AreLightsBlack() const {
    return !lights.empty() && std::ranges::all_of(lights, [](const LightFinding& light) {
        return light.colour.x == 0 && light.colour.y == 0 && light.colour.z == 0;
    });
}

LightFindings MeasureLight(IImageHandler& handler, const LoadedImage& map, const LightOptions& options) {
    LightFindings findings;
    const void* data = map.block->mData;
    findings.desc = map.desc;
    findings.oddPixels = OddPixels(map);
    findings.upperHemisphere = options.upperHemisphere;
    findings.averageColor = handler.GetAverageColor(map.desc, data, false);
    findings.intensity = handler.GetIBLIntensity(map.desc, data, options.upperHemisphere, &findings.weightedAverage);
    std::vector<vec3<float>> directions(options.lights), colours(options.lights);
    const unsigned count =
        handler.FindIBLLightDirections(map.desc, data, directions.data(), colours.data(), options.lights);
    for (unsigned i = 0; i < count; ++i)
        findings.lights.push_back({directions[i], colours[i], Luminance(colours[i]), 0});
    FindShares(findings.lights);
    return findings;
}

std::string LightText(const std::string& file, const LightFindings& findings) {
    const vec4<float>& mean = findings.averageColor;
    const std::string_view scope =
        findings.upperHemisphere ? "upper hemisphere, by the cosine from the zenith" : "whole sphere";
    std::string text = std::format(
        "{}: {} x {}, {}\n"
        "  average color       {:.4g} {:.4g} {:.4g}, alpha {:.4g}\n"
        "  weighted average    {:.4g} {:.4g} {:.4g} ({})\n"
        "  brightest channel   {:.4g}\n"
        "  mean brightest      {:.4g}\n"
        "  luminance           {:.4g}\n",
        file, findings.desc.width, findings.desc.height, Enumerator(findings.desc.format), mean.x, mean.y, mean.z,
        mean.w, findings.weightedAverage.x, findings.weightedAverage.y, findings.weightedAverage.z, scope,
        findings.intensity.x, findings.intensity.y, findings.intensity.z);
    if (findings.lights.empty()) return text + "  no lights\n";
    text += "       direction x y z       azimuth  elevation   color r g b                    luminance    share\n";
    for (std::size_t i = 0; i < findings.lights.size(); ++i)
        text += LightLine(i + 1, findings.lights[i]);
    return text;
}

std::string LightTableHead(std::size_t width) {
    return std::format("{:<{}}  {:>9} {:>9} {:>9}  {:>6}  {}\n", "file", width, "brightest", "mean br.", "luminance",
                       "lights", "strongest: azimuth, elevation, color");
}

std::string LightTableLine(const std::string& file, std::size_t width, const LightFindings& findings) {
    std::string line = std::format("{:<{}}  {:>9.4g} {:>9.4g} {:>9.4g}  {:>6}", file, width, findings.intensity.x,
                                   findings.intensity.y, findings.intensity.z, findings.lights.size());
    if (!findings.lights.empty()) {
        const LightFinding& light = findings.lights.front();
        line += std::format("  {:.1f}, {:.1f}, {:.4g} {:.4g} {:.4g}", light.Azimuth(), light.Elevation(),
                            light.colour.x, light.colour.y, light.colour.z);
    }
    return line + "\n";
}

}  // namespace Kavra::App
