#include "Dither.h"

#include <algorithm>
#include <limits>

namespace Kavra::Samples {

std::vector<PaletteColour> ColourCube(const std::array<int, 3>& steps) {
    const auto level = [](int step, int count) { return static_cast<std::uint8_t>(step * 255 / (count - 1)); };
    std::vector<PaletteColour> palette;
    for (int red = 0; red < steps[0]; ++red) {
        for (int green = 0; green < steps[1]; ++green) {
            for (int blue = 0; blue < steps[2]; ++blue)
                palette.push_back({level(red, steps[0]), level(green, steps[1]), level(blue, steps[2])});
        }
    }
    return palette;
}

float Threshold(int x, int y) {
    constexpr std::array<int, 16> kOrder = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
    return (static_cast<float>(kOrder[static_cast<std::size_t>(y % 4 * 4 + x % 4)]) + 0.5F) / 16;
}

std::vector<unsigned char> OrderedIndices(const Picture& picture, const std::array<int, 3>& steps) {
    std::vector<unsigned char> indices;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            int index = 0;
            for (std::size_t c = 0; c < 3; ++c) {
                const float level = std::clamp(picture.At(x, y)[c], 0.0F, 1.0F) * static_cast<float>(steps[c] - 1);
                index = index * steps[c] + std::min(static_cast<int>(level + Threshold(x, y)), steps[c] - 1);
            }
            indices.push_back(static_cast<unsigned char>(index));
        }
    }
    return indices;
}

std::size_t Nearest(const std::vector<PaletteColour>& palette, const float* colour) {
    const auto distance = [colour](const PaletteColour& entry) {
        float sum = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const float difference = colour[c] - static_cast<float>(entry[c]) / 255;
            sum += difference * difference;
        }
        return sum;
    };
    return static_cast<std::size_t>(std::ranges::min_element(palette, {}, distance) - palette.begin());
}

std::vector<unsigned char> DiffusedIndices(Picture picture, const std::vector<PaletteColour>& palette) {
    struct Share {
        int dx, dy;
        float weight;
    };
    constexpr std::array<Share, 4> kShares = {
        {{1, 0, 7 / 16.0F}, {-1, 1, 3 / 16.0F}, {0, 1, 5 / 16.0F}, {1, 1, 1 / 16.0F}}};
    std::vector<unsigned char> indices;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::size_t index = Nearest(palette, picture.At(x, y));
            indices.push_back(static_cast<unsigned char>(index));
            for (const Share& share : kShares) {
                const int tx = x + share.dx;
                const int ty = y + share.dy;
                if (tx < 0 || tx >= picture.width || ty >= picture.height) continue;
                for (std::size_t c = 0; c < 3; ++c) {
                    const float error = picture.At(x, y)[c] - static_cast<float>(palette[index][c]) / 255;
                    picture.At(tx, ty)[c] += error * share.weight;
                }
            }
        }
    }
    return indices;
}

}  // namespace Kavra::Samples
