#include "FlicSamples.h"

#include "Picture.h"
#include "legacy/FlicFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <stdexcept>

namespace Kavra::Samples {
namespace {

constexpr int kWidth = 160, kHeight = 107;
constexpr int kMoving = 14;
/// A program that plays only as many chunks as the file has frames needs this many to show them all: three chunks for
/// the first, two for each further one that moves, one for each that does not.
constexpr int kFrames = 3 + 2 * (kMoving - 1) + 1;

constexpr std::array<int, 3> kSteps = {6, 7, 6};  // of red, green, blue

/// Ordered dithering: a threshold for each pixel (Bayer's matrix of 4 x 4).
float Threshold(int x, int y) {
    constexpr std::array<int, 16> kOrder = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
    return (static_cast<float>(kOrder[static_cast<std::size_t>(y % 4 * 4 + x % 4)]) + 0.5F) / 16;
}

std::vector<unsigned char> Indices(const Picture& picture) {
    std::vector<unsigned char> indices;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            int index = 0;
            for (int c = 0; c < 3; ++c) {
                const int steps = kSteps[static_cast<std::size_t>(c)];
                const float level = std::clamp(picture.At(x, y)[c], 0.0F, 1.0F) * static_cast<float>(steps - 1);
                index = index * steps + std::min(static_cast<int>(level + Threshold(x, y)), steps - 1);
            }
            indices.push_back(static_cast<unsigned char>(index));
        }
    }
    return indices;
}

void FillPalette(Legacy::FlicMovie& movie) {
    const auto [reds, greens, blues] = kSteps;
    for (int i = 0; i < reds * greens * blues; ++i) {
        movie.palette[static_cast<std::size_t>(i)] = {
            static_cast<std::uint8_t>(i / (greens * blues) * 255 / (reds - 1)),
            static_cast<std::uint8_t>(i / blues % greens * 255 / (greens - 1)),
            static_cast<std::uint8_t>(i % blues * 255 / (blues - 1))};
    }
}

/// The landscape with a balloon at a place, all from 0 to 1.
Colour Scene(float x, float y, float balloonX, float balloonY) {
    const float dx = (x - balloonX) * 1.5F;
    const float dy = y - balloonY;
    const float height = dy > 0 ? dy * 0.75F : dy;
    if (dx * dx + height * height < 0.0075F) {
        const int stripe = static_cast<int>(std::floor((dx / std::sqrt(0.0080F - height * height) + 1) * 3.5F));
        return stripe % 2 == 0 ? Colour{0.75F, 0.06F, 0.04F} : Colour{0.9F, 0.75F, 0.35F};
    }
    if (std::abs(dx) < 0.018F && dy > 0.125F && dy < 0.16F) return {0.10F, 0.05F, 0.02F};
    return Landscape(x, y);
}

}  // namespace

void WriteFlicSamples(const std::string& folder) {
    Legacy::FlicMovie movie{.width = kWidth, .height = kHeight};
    FillPalette(movie);
    for (int frame = 0; frame < kFrames; ++frame) {
        const float t = static_cast<float>(std::min(frame, kMoving - 1)) / (kMoving - 1);
        const float x = 0.12F + 0.62F * t;
        const float y = 0.52F - 0.30F * std::sin(t * 1.5707963F);
        movie.frames.push_back(
            Indices(Paint(kWidth, kHeight, [x, y](float u, float v) { return Scene(u, v, x, y); }, true)));
    }
    const Legacy::ByteBuilder file = Legacy::MakeFlic(movie);
    const std::string path = folder + "/balloon.flc";
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(file.Bytes().data()), static_cast<std::streamsize>(file.Size()));
    if (!stream.flush()) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace Kavra::Samples
