#include "BandSamples.h"

#include "Picture.h"
#include "legacy/BandFile.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace Kavra::Samples {
namespace {

using Legacy::BandRaster;

BandRaster Photo() {
    const Picture picture = Paint(120, 80, Fields, true);
    return {.columns = picture.width, .rows = picture.height, .bands = 3, .samples = ToBytes(picture)};
}

/// Calls `add(altitude)` for each pixel of the map.
template <class Add>
void Survey(const BandRaster& raster, const Add& add) {
    for (int y = 0; y < raster.rows; ++y) {
        for (int x = 0; x < raster.columns; ++x) {
            add(Altitude((static_cast<float>(x) + 0.5F) / static_cast<float>(raster.columns),
                         (static_cast<float>(y) + 0.5F) / static_cast<float>(raster.rows)));
        }
    }
}

/// In steps of 1/40 metre, which uses most of 16 bits.
BandRaster Height() {
    BandRaster raster{.columns = 128, .rows = 96, .bits = 16, .cell = 30};
    Survey(raster, [&raster](float altitude) {
        const int steps = std::clamp(static_cast<int>(altitude * 40), 0, 65535);
        raster.samples.push_back(static_cast<unsigned char>(steps & 0xFF));
        raster.samples.push_back(static_cast<unsigned char>(steps >> 8));
    });
    return raster;
}

/// Sea, and eight belts of the land: each has a number of its own and the palette its colour.
BandRaster Map() {
    constexpr std::array<float, 8> kBelts = {-120, 0, 15, 150, 400, 750, 1050, 1250};
    BandRaster raster{.columns = 128, .rows = 96, .cell = 30};
    // Programs differ in what they make of entry 0, so no pixel has it.
    raster.palette = {{0, 0, 0},     {24, 60, 120},  {52, 110, 170},  {225, 210, 150}, {120, 170, 80},
                      {60, 130, 60}, {150, 140, 90}, {130, 115, 105}, {170, 165, 165}, {250, 250, 250}};
    Survey(raster, [&](float altitude) {
        const auto belts = std::ranges::count_if(kBelts, [altitude](float above) { return altitude >= above; });
        raster.samples.push_back(static_cast<unsigned char>(1 + belts));
    });
    return raster;
}

/// The sea in steps of depth and the land, 4 bits each; the sea's deepest step has number 0 and a colour.
BandRaster Coast() {
    constexpr std::array<float, 5> kDepths = {-155, -125, -85, -40, 0};
    BandRaster raster{.columns = 95, .rows = 72, .bits = 4, .cell = 40};
    raster.palette = {{16, 44, 92}, {26, 66, 124}, {42, 96, 158}, {70, 132, 190}, {120, 172, 214}, {214, 200, 160}};
    Survey(raster, [&](float altitude) {
        const auto steps = std::ranges::count_if(kDepths, [altitude](float above) { return altitude >= above; });
        raster.samples.push_back(static_cast<unsigned char>(steps));
    });
    return raster;
}

/// Numbers of 16 bits that begin with their highest byte, band after band with a gap between them.
BandRaster DeepPhoto() {
    const Picture picture = Paint(48, 32, Fields, true);
    BandRaster raster{.columns = picture.width, .rows = picture.height, .bands = 3, .bits = 16, .layout = "BSQ"};
    raster.bigEndian = true;
    raster.bandGapBytes = 64;
    raster.extension = ".bsq";
    for (const unsigned char byte : ToBytes(picture))
        raster.samples.insert(raster.samples.end(), {byte, byte});
    return raster;
}

}  // namespace

void WriteCommonBandSamples(const std::string& folder) {
    const std::filesystem::path place(folder);
    std::filesystem::create_directories(place);
    Legacy::WriteBandFiles(place / "coast", Coast());
    Legacy::WriteBandFiles(place / "fields", DeepPhoto());
}

void WriteBandSamples(const std::string& folder) {
    const std::filesystem::path place(folder);
    std::filesystem::create_directories(place);
    Legacy::WriteBandFiles(place / "photo", Photo());
    Legacy::WriteBandFiles(place / "height", Height());
    Legacy::WriteBandFiles(place / "map", Map());
}

}  // namespace Kavra::Samples
