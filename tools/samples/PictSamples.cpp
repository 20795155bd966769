#include "PictSamples.h"

#include "Dither.h"
#include "legacy/PictFile.h"

namespace Kavra::Samples {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::array<int, 3> kSteps = {6, 7, 6};

Bytes ToDots(const Picture& grey) {
    Bytes black;
    for (int y = 0; y < grey.height; ++y) {
        for (int x = 0; x < grey.width; ++x)
            black.push_back(*grey.At(x, y) < Threshold(x, y) ? 1 : 0);
    }
    return black;
}

}  // namespace

void WritePictSamples(const std::string& folder) {
    const Picture dunes = Paint(144, 96, Dunes, true);
    WriteBytes(
        folder + "/photo.pict",
        Legacy::PictOfColours(dunes.width, dunes.height, ToBytes(dunes), 32, Legacy::PictMode::kTransparent).Bytes());
    const Picture city = Paint(192, 128, City, true);
    WriteBytes(
        folder + "/palette.pict",
        Legacy::PictOfIndices(city.width, city.height, OrderedIndices(city, kSteps), ColourCube(kSteps)).Bytes());
    const Picture grey = Brightness(Paint(480, 320, [](float x, float y) { return Spheres(x, y, 1.5F).colour; }, true));
    WriteBytes(folder + "/dots.pict", Legacy::PictOfBits(grey.width, grey.height, ToDots(grey)).Bytes());
    const Picture small = Paint(84, 56, Dunes, true);
    WriteBytes(folder + "/bands.pict", Legacy::PictOfBands(small.width, small.height, ToBytes(small), 16).Bytes());
    const Picture flower = Paint(60, 40, FlowerInMeadow, true);
    WriteBytes(folder + "/circle.pict",
               Legacy::PictThroughCircle(flower.width, flower.height, ToBytes(flower), 3).Bytes());
}

}  // namespace Kavra::Samples
