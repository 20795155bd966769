#include "FlicSamples.h"

#include "Dither.h"
#include "legacy/FlicFile.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Kavra::Samples {
namespace {

constexpr int kWidth = 160, kHeight = 107;
constexpr int kMoving = 14;
/// A program that plays only as many chunks as the file has frames needs this many to show them all: three chunks for
/// the first, two for each further one that moves, one for each that does not.
constexpr int kFrames = 3 + 2 * (kMoving - 1) + 1;

constexpr std::array<int, 3> kSteps = {6, 7, 6};  // of red, green, blue

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
    std::ranges::copy(ColourCube(kSteps), movie.palette.begin());
    for (int frame = 0; frame < kFrames; ++frame) {
        const float t = static_cast<float>(std::min(frame, kMoving - 1)) / (kMoving - 1);
        const float x = 0.12F + 0.62F * t;
        const float y = 0.52F - 0.30F * std::sin(t * 1.5707963F);
        movie.frames.push_back(OrderedIndices(
            Paint(kWidth, kHeight, [x, y](float u, float v) { return Scene(u, v, x, y); }, true), kSteps));
    }
    WriteBytes(folder + "/balloon.flc", Legacy::MakeFlic(movie).Bytes());
}

}  // namespace Kavra::Samples
