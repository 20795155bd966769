/// What the light operations say of one environment map.
#pragma once

#include "LoadOptions.h"

#include <string>
#include <vector>

namespace Kavra::App {

struct LightFinding {
    vec3<float> direction;  ///< of length 1: +y up, +x right, -z ahead (the middle of the map)
    vec3<float> colour;     ///< mean over the light, red, green, blue
    double luminance = 0;   ///< of the colour
    double share = 0;       ///< of the luminances of all lights found, 0 to 1

    /// Degrees from ahead to the right, -180 to 180, and from the horizon up, -90 to 90.
    double Azimuth() const;
    double Elevation() const;
};

struct LightFindings {
    Devices::ImageDescription desc;
    vec4<float> averageColor;
    vec3<float> intensity;  ///< brightest channel of the mean, mean of the brightest channel, luminance
    vec3<float> weightedAverage;
    bool upperHemisphere = false;
    std::vector<LightFinding> lights;  ///< in falling order of their shares
    std::size_t oddPixels = 0;         ///< that hold NaN or an infinity

    std::size_t Pixels() const;
    /// Whether there are lights, and all of them are black.
    bool AreLightsBlack() const;
    /// Whether the map is twice as wide as high, as equirectangular ones are.
    bool IsTwiceAsWide() const { return desc.width == 2LL * desc.height; }
};

struct LightOptions {
    unsigned lights = 8;  ///< at most
    bool upperHemisphere = false;
};

LightFindings MeasureLight(Devices::IImageHandler& handler, const LoadedImage& map, const LightOptions& options);

/// Everything about one file, for people.
std::string LightText(const std::string& file, const LightFindings& findings);

/// One line a file, for several of them: the head of the table, and a file's line. `width` is of the longest name.
std::string LightTableHead(std::size_t width);
std::string LightTableLine(const std::string& file, std::size_t width, const LightFindings& findings);

}  // namespace Kavra::App
