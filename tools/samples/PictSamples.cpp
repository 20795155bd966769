#include "PictSamples.h"

#include "legacy/PictFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace Kavra::Samples {
namespace {

using Bytes = std::vector<unsigned char>;

void WriteFile(const std::string& path, const Legacy::ByteBuilder& content) {
    std::ofstream file(path, std::ios::binary);
    const std::span<const unsigned char> bytes = content.Bytes();
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

Bytes ToBytes(const Picture& picture) {
    Bytes bytes(picture.values.size());
    std::ranges::transform(picture.values, bytes.begin(), [](float value) {
        return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
    });
    return bytes;
}

/// Steps of a channel in the palette, and the thresholds of ordered dithering (4 x 4, after Bayer).
constexpr std::array<int, 3> kSteps = {6, 7, 6};
constexpr std::array<int, 16> kThresholds = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};

std::vector<Legacy::PictEntry> Cube() {
    std::vector<Legacy::PictEntry> colours;
    for (int red = 0; red < kSteps[0]; ++red) {
        for (int green = 0; green < kSteps[1]; ++green) {
            for (int blue = 0; blue < kSteps[2]; ++blue) {
                const auto level = [](int step, int steps) {
                    return static_cast<std::uint8_t>(step * 255 / (steps - 1));
                };
                colours.push_back({level(red, kSteps[0]), level(green, kSteps[1]), level(blue, kSteps[2])});
            }
        }
    }
    return colours;
}

/// Where in its 4 x 4 cell the threshold of a pixel stands, above 0 and below 1.
float Threshold(int x, int y) {
    return (static_cast<float>(kThresholds[static_cast<std::size_t>(y % 4 * 4 + x % 4)]) + 0.5F) / 16;
}

Bytes ToCubeIndices(const Picture& picture) {
    Bytes indices;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            int index = 0;
            for (std::size_t c = 0; c < 3; ++c) {
                const float level = std::clamp(picture.At(x, y)[c], 0.0F, 1.0F) * static_cast<float>(kSteps[c] - 1);
                index = index * kSteps[c] + static_cast<int>(level + Threshold(x, y) * 0.999F);
            }
            indices.push_back(static_cast<unsigned char>(index));
        }
    }
    return indices;
}

Bytes ToDots(const Picture& grey) {
    Bytes black;
    for (int y = 0; y < grey.height; ++y) {
        for (int x = 0; x < grey.width; ++x)
            black.push_back(*grey.At(x, y) < Threshold(x, y) ? 1 : 0);
    }
    return black;
}

}  // namespace

void WritePictSamples(const std::string& folder, const Picture& photo) {
    const Picture small = Paint(144, 96, Landscape, true);
    WriteFile(folder + "/photo.pict",
              Legacy::PictOfColours(small.width, small.height, ToBytes(small), 32, Legacy::PictMode::kTransparent));
    const Picture middle = Paint(192, 128, Landscape, true);
    WriteFile(folder + "/palette.pict",
              Legacy::PictOfIndices(middle.width, middle.height, ToCubeIndices(middle), Cube()));
    const Picture grey = Brightness(photo);
    WriteFile(folder + "/dots.pict", Legacy::PictOfBits(grey.width, grey.height, ToDots(grey)));
}

}  // namespace Kavra::Samples
