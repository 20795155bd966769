#include "Scene.h"

#include <algorithm>
#include <cmath>

namespace Kavra::Samples {
namespace {

constexpr float kHorizon = 0.62F;

Colour Sky(float x, float y) {
    const Colour high = {0.05F, 0.10F, 0.28F};
    const Colour middle = {0.42F, 0.30F, 0.42F};
    const Colour low = {1.0F, 0.55F, 0.22F};
    const float t = y / kHorizon;
    Colour sky = t < 0.6F ? Mix(high, middle, t / 0.6F) : Mix(middle, low, (t - 0.6F) / 0.4F);
    const float dx = (x - 0.64F) * 1.5F;
    const float dy = y - 0.47F;
    const float distance = std::sqrt(dx * dx + dy * dy);
    sky = Add(sky, {1.0F, 0.6F, 0.3F}, 0.5F * std::exp(-distance * distance * 40));
    if (distance < 0.045F) sky = {3.0F, 2.4F, 1.5F};
    const float cloud = Ridge(x * 5 + 3 * y, 90, 4) * Ridge(y * 22, 95, 3) * 2.6F;
    return Mix(sky, {0.95F, 0.55F, 0.45F}, std::max(0.0F, cloud - 0.62F) * (1 - std::abs(t - 0.55F)));
}

Colour AboveWater(float x, float y) {
    struct Range {
        float base, height, scale;
        int seed;
        Colour colour;
    };
    static constexpr Range kRanges[] = {
        {0.50F, 0.24F, 3.0F, 10, {0.20F, 0.17F, 0.30F}},
        {0.58F, 0.20F, 5.0F, 30, {0.09F, 0.10F, 0.19F}},
        {0.63F, 0.13F, 9.0F, 50, {0.025F, 0.045F, 0.06F}},
    };
    Colour colour = Sky(x, y);
    for (const Range& range : kRanges) {
        const float top = range.base - range.height * (Ridge(x * range.scale, range.seed, 6) - 0.25F);
        if (y > top) colour = Mix(range.colour, Mix(range.colour, {0.6F, 0.4F, 0.35F}, 0.35F), (y - top) * 3);
    }
    return colour;
}

/// Light of a rectangle of `halfWidth` x `halfHeight` around (u, v), soft at its edge.
float Softbox(float u, float v, float centreU, float centreV, float halfWidth, float halfHeight) {
    const float du = std::max(0.0F, std::abs(u - centreU) - halfWidth) / 0.006F;
    const float dv = std::max(0.0F, std::abs(v - centreV) - halfHeight) / 0.012F;
    return std::exp(-(du * du + dv * dv));
}

}  // namespace

Colour Landscape(float x, float y) {
    if (y <= kHorizon) return AboveWater(x, y);
    const float depth = (y - kHorizon) / (1 - kHorizon);
    const float ripple = std::sin(y * 420 / (0.4F + depth)) * 0.012F * depth + (Noise(y * 90, 70) - 0.5F) * 0.02F;
    const Colour mirrored = AboveWater(x + ripple, std::clamp(kHorizon - (y - kHorizon) * 1.25F, 0.0F, kHorizon));
    return Mix(mirrored, {0.03F, 0.06F, 0.12F}, 0.25F + 0.45F * depth);
}

Colour Studio(float u, float v) {
    const Colour floor = {0.10F, 0.09F, 0.08F};
    const Colour wall = {0.22F, 0.22F, 0.24F};
    const Colour ceiling = {0.30F, 0.31F, 0.34F};
    Colour colour = v < 0.5F ? Mix(ceiling, wall, v / 0.5F) : Mix(wall, floor, (v - 0.5F) / 0.12F);
    colour = Add(colour, {1.0F, 1.0F, 1.05F}, 18 * Softbox(u, v, 0.27F, 0.30F, 0.07F, 0.11F));
    return Add(colour, {1.0F, 0.72F, 0.45F}, 7 * Softbox(u, v, 0.74F, 0.38F, 0.035F, 0.07F));
}

Colour LetterF(float x, float y) {
    const bool stem = x > 0.30F && x < 0.44F && y > 0.15F && y < 0.85F;
    const bool topArm = x >= 0.30F && x < 0.75F && y > 0.15F && y < 0.31F;
    const bool middleArm = x >= 0.30F && x < 0.64F && y > 0.44F && y < 0.59F;
    if (stem || topArm || middleArm) return {0.98F, 0.96F, 0.90F};
    return Mix({0.10F, 0.28F, 0.52F}, {0.80F, 0.36F, 0.20F}, (x + y) / 2);
}

float ToDisplay(float linear) {
    linear = std::clamp(linear, 0.0F, 1.0F);
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

}  // namespace Kavra::Samples
