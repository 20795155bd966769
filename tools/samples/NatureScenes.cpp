// Scenes of nature.

#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Kavra::Samples {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;

/// Which side of the line from `from` to `to` a point is on: above 0 right of it as one goes.
float Side(float x, float y, std::array<float, 2> from, std::array<float, 2> to) {
    return (to[0] - from[0]) * (y - from[1]) - (to[1] - from[1]) * (x - from[0]);
}

bool InTriangle(float x, float y, std::array<float, 2> a, std::array<float, 2> b, std::array<float, 2> c) {
    const float ab = Side(x, y, a, b), bc = Side(x, y, b, c), ca = Side(x, y, c, a);
    return (ab >= 0 && bc >= 0 && ca >= 0) || (ab <= 0 && bc <= 0 && ca <= 0);
}

// --- The sea ---------------------------------------------------------------------------------------------------------

constexpr float kSeaLevel = 0.60F;

/// The boat with its hull on the water line; `x` in heights of the picture.
bool PaintBoat(float x, float y, Colour& colour) {
    if (InTriangle(x, y, {0.985F, 0.14F}, {0.985F, 0.555F}, {0.765F, 0.555F})) {
        colour = Mix({0.95F, 0.92F, 0.85F}, {0.80F, 0.74F, 0.66F}, (0.985F - x) * 4);
        return true;
    }
    if (InTriangle(x, y, {1.005F, 0.10F}, {1.005F, 0.555F}, {1.22F, 0.555F})) {
        colour = y > 0.40F && y < 0.44F ? FromDisplay(0xF4E9D8) : Mix(FromDisplay(0xC8322B), FromDisplay(0xE4572E), y);
        return true;
    }
    if (x > 0.985F && x < 1.005F && y > 0.07F && y < 0.58F) {
        colour = FromDisplay(0x4A3526);
        return true;
    }
    const float depth = (y - 0.575F) / 0.055F;
    if (depth < 0 || depth > 1 || x < 0.78F + 0.07F * depth || x > 1.26F - 0.10F * depth * depth) return false;
    colour = depth < 0.25F ? FromDisplay(0xF4E9D8) : FromDisplay(0x26425E);
    return true;
}

Colour SeaSky(float x, float y) {
    const Colour sky = Mix(FromDisplay(0x2F7FC4), FromDisplay(0xCBE8F5), y / kSeaLevel);
    const float cloud = Clouds(x * 3.2F, y * 7, 301, 5) - 0.10F * std::abs(y - 0.34F) * 10;
    return Mix(sky, {0.95F, 0.96F, 0.98F}, Smooth(0.40F, 0.62F, cloud));
}

Colour Water(float x, float depth) {
    const float waves = Clouds(x * 9 / (0.35F + depth), 34 * std::sqrt(depth), 320, 4);
    Colour colour = Mix(FromDisplay(0x5FB4C9), FromDisplay(0x0E4A74), std::sqrt(depth));
    colour = Mix(colour, FromDisplay(0x0A3458), Smooth(0.45F, 0.62F, waves) * 0.6F);
    return Mix(colour, {0.75F, 0.88F, 0.92F}, Smooth(0.63F, 0.74F, waves) * 0.7F);
}

// --- The lighthouse --------------------------------------------------------------------------------------------------

constexpr float kTowerX = 0.98F;

bool PaintTower(float x, float y, Colour& colour) {
    const float side = x - kTowerX;
    const float halfWidth = 0.042F + 0.055F * (y - 0.27F);
    const float shade = 0.35F + 0.75F * Smooth(1.0F, -1.0F, side / halfWidth);
    if (y > 0.285F && y < 0.74F && std::abs(side) < halfWidth) {
        const bool red = Wrapped(y - 0.285F, 0.182F) >= 0.091F;
        colour = Scaled(red ? FromDisplay(0xC4302B) : FromDisplay(0xF2EEE6), shade);
        if (std::abs(side) < 0.010F && (std::abs(y - 0.42F) < 0.016F || std::abs(y - 0.60F) < 0.016F))
            colour = FromDisplay(0x20262E);
        return true;
    }
    if (y > 0.265F && y <= 0.29F && std::abs(side) < 0.062F) {
        colour = FromDisplay(0x2B3038);
        return true;
    }
    if (y > 0.205F && y <= 0.265F && std::abs(side) < 0.034F) {
        colour =
            std::abs(Wrapped(side + 0.5F, 0.0225F) - 0.01F) < 0.002F ? FromDisplay(0x2B3038) : Colour{2.4F, 2.0F, 1.1F};
        return true;
    }
    if (y > 0.15F && y <= 0.205F && std::abs(side) < 0.044F * (y - 0.15F) / 0.055F + 0.003F) {
        colour = Scaled(FromDisplay(0xB02A26), shade);
        return true;
    }
    return false;
}

Colour StormSky(float x, float y) {
    const float cloud = Clouds(x * 2.4F + 0.6F * y, y * 4.2F, 340, 6);
    Colour sky = Mix(FromDisplay(0x1D2A3C), FromDisplay(0x8FA5B5), Smooth(0.30F, 0.68F, cloud));
    sky = Mix(sky, FromDisplay(0xE9C58F), Smooth(0.42F, 0.72F, y) * 0.75F);
    // Two beams, the wider the farther.
    const float dx = x - kTowerX, dy = y - 0.235F;
    const float distance = std::hypot(dx, dy);
    const float across = std::abs(dy + 0.13F * dx) / (0.02F + 0.13F * distance);
    const float beam = std::exp(-across * across * 2.5F) * std::exp(-1.1F * distance) * (dx < 0 ? 1.0F : 0.6F);
    sky = Add(sky, {1.0F, 0.85F, 0.50F}, 0.75F * beam);
    return Add(sky, {1.0F, 0.80F, 0.45F}, 0.9F * std::exp(-distance * distance * 160));
}

Colour StormSea(float x, float y) {
    const float depth = (y - 0.70F) / 0.30F;
    const float swell = Clouds(x * (6 - 3 * depth), y * 26 - 10 * depth, 360, 5);
    const Colour water = Mix(FromDisplay(0x5B7480), FromDisplay(0x122C3C), 0.3F + depth * 0.7F);
    return Mix(water, {0.80F, 0.86F, 0.88F}, Smooth(0.52F, 0.68F, swell) * (0.35F + 0.65F * depth));
}

// --- Petals ----------------------------------------------------------------------------------------------------------

/// How far from the middle of its petal a direction is, -1 to 1 at its sides.
float InPetal(float angle, int count, float offset) {
    return Wrapped(angle * static_cast<float>(count) / (2 * kPi) + offset, 1) * 2 - 1;
}

/// The radius to which a petal reaches at that place.
float PetalEdge(float side, float length) {
    return length * (1 - 0.30F * std::pow(std::abs(side), 2.6F));
}

}  // namespace

Colour Mist(float x, float y) {
    const float dx = (x - 0.70F) * 1.5F, dy = y - 0.26F;
    const float toSun = std::hypot(dx, dy);
    Colour colour = Mix(FromDisplay(0x9FB8D9), FromDisplay(0xF6D9B8), y * 1.6F);
    colour = Add(colour, {0.55F, 0.40F, 0.20F}, std::exp(-toSun * toSun * 9));
    colour = Mix(colour, {1.0F, 0.96F, 0.86F}, 1 - Smooth(0.068F, 0.076F, toSun));
    constexpr int kHills = 6;
    for (int hill = 0; hill < kHills; ++hill) {
        const float near = static_cast<float>(hill) / (kHills - 1);
        const float scale = 3.4F + 1.4F * near;
        const float top =
            0.40F + 0.50F * near - (0.22F - 0.06F * near) * (Ridge(x * scale + 7 * near, 200 + 20 * hill, 5) - 0.3F);
        if (y < top) continue;
        const Colour crest = Mix(FromDisplay(0x9CAFCB), FromDisplay(0x14304A), std::sqrt(near));
        colour = Mix(crest, FromDisplay(0xD9DCE2), (y - top) * (3.2F - 1.6F * near));
    }
    return colour;
}

Colour Sea(float x, float y) {
    x *= 1.5F;
    Colour colour{};
    if (PaintBoat(x, y, colour)) return colour;
    if (y < kSeaLevel) return SeaSky(x, y);
    const float depth = (y - kSeaLevel) / (1 - kSeaLevel);
    const Colour water = Water(x, depth);
    const float sway = (Noise(y * 70, 330) - 0.5F) * 0.10F * depth;
    const float mirrored = 0.63F - (y - 0.63F) * 1.5F;
    if (y > 0.63F && mirrored > 0 && PaintBoat(x + sway, mirrored, colour)) return Mix(colour, water, 0.55F);
    return water;
}

Colour Dunes(float x, float y) {
    Colour colour = Mix(FromDisplay(0x4E86BC), FromDisplay(0xF7D9AE), y * 2.0F);
    const float dx = (x - 0.20F) * 1.5F, dy = y - 0.20F;
    colour = Mix(colour, {1.0F, 0.93F, 0.72F}, 1 - Smooth(0.055F, 0.063F, std::hypot(dx, dy)));
    struct Dune {
        float crestX, crestY, fallLeft, fallRight, bend;
    };
    // From the farthest: where the crest is, how steeply its outline falls, how the edge of the shadow bends.
    static constexpr Dune kDunes[] = {
        {0.78F, 0.37F, 0.22F, 0.30F, 0.20F},
        {0.34F, 0.42F, 0.30F, 0.24F, -0.28F},
        {0.66F, 0.50F, 0.34F, 0.20F, 0.34F},
        {0.16F, 0.66F, 0.20F, 0.22F, -0.40F},
    };
    float haze = 0.45F;
    for (const Dune& dune : kDunes) {
        const float aside = x - dune.crestX;
        const float fall = aside < 0 ? dune.fallLeft : dune.fallRight;
        const float top = dune.crestY + fall * (std::sqrt(aside * aside + 0.004F) - 0.063F) +
                          0.012F * std::sin(x * 17 + dune.crestX * 30);
        haze -= 0.12F;
        if (y < top) continue;
        const float down = y - dune.crestY;
        const float edge = dune.crestX + dune.bend * down + 0.10F * std::sin(down * 9) * down * 3;
        const float ripple =
            std::sin((y * 150 + 26 * std::sin(x * 7 + y * 5) + 5 * Noise(x * 30, y * 30, 411)) / (0.5F + y));
        const Colour lit = Mix(FromDisplay(0xF2B562), FromDisplay(0xE79A46), down * 2.2F + 0.14F * ripple);
        const Colour shadow = Mix(FromDisplay(0x8C4A2F), FromDisplay(0xB0683C), down * 1.8F + 0.10F * ripple);
        colour = Mix(lit, shadow, Smooth(-0.006F, 0.006F, x - edge));
        colour = Mix(colour, FromDisplay(0xF7D9AE), haze);
    }
    return colour;
}

Colour Lighthouse(float x, float y) {
    x *= 1.5F;
    Colour colour{};
    if (PaintTower(x, y, colour)) return colour;
    const float rock = 0.715F + 0.75F * std::pow(std::abs(x - kTowerX), 1.7F) - 0.10F * (Ridge(x * 9, 370, 5) - 0.5F);
    if (y > rock && y < 0.93F + 0.03F * Noise(x * 12, 375)) {
        const float grain = Clouds(x * 14 + y * 8, y * 20, 380, 5);
        return Mix(FromDisplay(0x1C2024), FromDisplay(0x87796A), Smooth(0.30F, 0.75F, grain - 0.5F * (y - rock)));
    }
    // Breakers at the foot of the rock.
    const float surf = std::exp(-std::pow((y - 0.915F) * 14, 2.0F)) * Smooth(0.62F, 0.0F, std::abs(x - kTowerX));
    const Colour ground = y < 0.70F ? StormSky(x, y) : StormSea(x, y);
    return Mix(ground, {0.92F, 0.95F, 0.96F}, surf * Smooth(0.25F, 0.55F, Clouds(x * 16, y * 22, 390, 4)));
}

Colour Galaxy(float x, float y) {
    // Seen at a slant, its long axis rising to the right.
    const float across = (x - 0.5F) * 1.5F, down = y - 0.5F;
    const float u = across * 0.90F - down * 0.44F, v = (across * 0.44F + down * 0.90F) * 1.75F;
    const float radius = std::max(std::hypot(u, v), 1e-3F), angle = std::atan2(v, u);
    const float arms = std::pow(0.5F + 0.5F * std::cos(2 * angle - 5.2F * std::log(radius) + 0.6F), 2.2F);
    const float dust = Clouds(u * 16 + 20, v * 16 + 20, 430, 5);
    float light = 0.95F * (arms + 0.10F) * std::exp(-radius * 4.6F) * (0.35F + 1.3F * dust);
    light += 6.5F * std::exp(-radius * radius * 520) + 0.8F * std::exp(-radius * 16);
    const int column = static_cast<int>(x * 96), row = static_cast<int>(y * 64);
    if (Hash(column, row, 440) > 0.985F) light += 0.25F + 1.6F * std::pow(Hash(column, row, 441), 4.0F);
    return {0.006F + light, 0.006F + light, 0.008F + light};
}

Cutout Flower(float x, float y) {
    const float dx = (x - 0.5F) * 1.5F, dy = y - 0.5F;
    const float radius = std::hypot(dx, dy), angle = std::atan2(dy, dx);
    if (radius < 0.135F) {
        const float seeds =
            std::sin(34 * std::log(radius + 0.03F) + 13 * angle) * std::sin(34 * std::log(radius + 0.03F) - 13 * angle);
        const Colour heart = Mix(FromDisplay(0x6B3A12), FromDisplay(0xF2B21C), Smooth(0.02F, 0.12F, radius));
        return {Mix(heart, FromDisplay(0x4A2408), 0.5F + 0.5F * seeds), 1};
    }
    for (const bool front : {true, false}) {
        const float side = InPetal(angle, 11, front ? 0.0F : 0.5F);
        const float edge = PetalEdge(side, front ? 0.40F : 0.465F);
        if (radius > edge) continue;
        const float along = (radius - 0.135F) / (edge - 0.135F);
        Colour petal = Mix(FromDisplay(0xB0135E), FromDisplay(0xF58FBC), Smooth(0.0F, 1.0F, along));
        petal = Mix(petal, FromDisplay(0xFBD3E4), 0.5F * Smooth(0.75F, 1.0F, along));
        const float line = std::pow(std::abs(std::sin(side * 7)), 3.0F) * 0.22F * (1 - along);
        const float shade = (front ? 1.0F : 0.62F) * (1 - 0.55F * std::pow(std::abs(side), 5.0F)) * (1 - line);
        return {Scaled(petal, shade), 1};
    }
    return {FromDisplay(0xF58FBC), 0};
}

Colour FlowerInMeadow(float x, float y) {
    const Cutout flower = Flower(x, y);
    if (flower.coverage > 0) return flower.colour;
    const float blades = Clouds(x * 46 + 4 * Noise(y * 6, 452), y * 7 + x * 6, 450, 4);
    Colour meadow = Mix(FromDisplay(0x123D1B), FromDisplay(0x7CB342), Smooth(0.30F, 0.72F, blades));
    meadow = Mix(meadow, FromDisplay(0xF3F0C0), Smooth(0.78F, 0.84F, Noise(x * 24, y * 16, 455)));
    const float dx = (x - 0.52F) * 1.5F, dy = y - 0.55F;
    return Scaled(meadow, 0.35F + 0.65F * Smooth(0.36F, 0.60F, std::hypot(dx, dy)));
}

Cutout Leaf(float x, float y) {
    // `along` runs from the stem to the tip, `aside` from the midrib, which bends a little.
    const float px = (x - 0.5F) * 1.5F, py = y - 0.5F;
    const float along = (px * 0.94F - py * 0.34F + 0.56F) / 1.20F;
    const float aside = px * 0.34F + py * 0.94F + 0.09F * std::sin(along * 3.2F) - 0.03F;
    if (along > -0.10F && along < 0.08F && std::abs(aside) < 0.012F) return {FromDisplay(0x7A4A21), 1};
    const float t = std::clamp(along, 0.0F, 1.0F);
    const float teeth = 0.022F * std::abs(Wrapped(along * 13 + 0.8F * std::abs(aside) * 10, 1) - 0.35F);
    const float edge = 0.40F * std::pow(t, 0.55F) * std::pow(1 - t, 0.85F) * 1.55F - teeth;
    const Colour green = Mix(FromDisplay(0x3F7D20), FromDisplay(0x9BB32B), Clouds(x * 9, y * 7, 460, 4) * 1.2F);
    const Colour red = Mix(FromDisplay(0xD9480F), FromDisplay(0xF2A104), Clouds(x * 11 + 5, y * 9, 470, 4) * 1.2F);
    const float autumn =
        Smooth(0.25F, 0.75F, 0.55F * t + std::abs(aside) * 1.3F + 0.5F * (Clouds(x * 5, y * 5, 480, 4) - 0.5F));
    Colour colour = Mix(green, red, autumn);
    if (std::abs(aside) > edge || along < 0 || along > 1) return {colour, 0};
    const float vein = std::abs(Wrapped((along - 0.55F * std::abs(aside)) * 8.5F, 1) - 0.5F);
    colour =
        Mix(colour, FromDisplay(0xF6E3A1), 0.65F * Smooth(0.07F, 0.02F, vein) * Smooth(0.0F, 0.05F, std::abs(aside)));
    if (std::abs(aside) < 0.011F * (1.2F - t)) colour = FromDisplay(0xF6E3A1);
    if (aside > 0) colour = Scaled(colour, 0.80F);
    return {colour, 1};
}

Cutout Moon(float x, float y) {
    const float dx = (x - 0.5F) * 1.5F / 0.43F, dy = (y - 0.5F) / 0.43F;
    const float radius = std::hypot(dx, dy);
    if (radius > 1) return {{0.9F, 0.9F, 0.9F}, 0.55F * std::exp(-(radius - 1) * 8)};
    struct Crater {
        float x, y, radius;
    };
    static constexpr Crater kCraters[] = {{0.10F, 0.68F, 0.15F},   {-0.30F, 0.42F, 0.10F}, {0.46F, 0.30F, 0.12F},
                                          {-0.55F, -0.10F, 0.08F}, {0.22F, 0.10F, 0.06F},  {-0.10F, -0.72F, 0.09F},
                                          {0.62F, -0.30F, 0.10F},  {-0.38F, 0.74F, 0.08F}, {0.70F, 0.52F, 0.05F},
                                          {-0.72F, 0.36F, 0.07F},  {0.36F, -0.66F, 0.05F}};
    const float seas = Clouds(dx * 1.5F + 3.4F, dy * 1.5F + 9.2F, 490, 5);
    float grey = 0.62F - 0.42F * Smooth(0.46F, 0.60F, seas) + 0.16F * (Clouds(dx * 9, dy * 9, 495, 4) - 0.5F);
    for (const Crater& crater : kCraters) {
        const float cx = (dx - crater.x) / crater.radius, cy = (dy - crater.y) / crater.radius;
        const float place = std::hypot(cx, cy);
        if (place > 1.3F) continue;
        const float slope = (cx + cy) * 0.7F;
        grey += (place < 0.8F ? -0.10F - 0.14F * slope * place : 0.30F * slope * (1.3F - place));
    }
    const float height = std::sqrt(std::max(0.0F, 1 - dx * dx - dy * dy));
    grey *= 0.16F + 0.92F * std::max(0.0F, 0.62F * height + 0.50F * dx * -1 - 0.30F * dy + 0.22F);
    return {{grey, grey, grey}, 1};
}

Cutout Flame(float x, float y) {
    const float sway = 0.035F * std::sin(y * 7) * (1 - y);
    const float aside = x - 0.5F - sway;
    if (y > 0.80F && std::abs(aside) < 0.012F && y < 0.90F) return {{0.02F, 0.015F, 0.01F}, 1};
    const float t = std::clamp((y - 0.06F) / 0.80F, 0.0F, 1.0F);
    const float edge = 0.215F * std::pow(t, 1.25F) * std::sqrt(std::max(0.0F, 1 - std::pow(t, 5.0F))) + 0.004F;
    const float place = std::abs(aside) / edge;
    const float inside = y > 0.06F && y < 0.86F ? Smooth(1.06F, 0.72F, place) : 0.0F;
    const float heart = std::exp(-std::pow(aside / 0.075F, 2.0F) - std::pow((y - 0.60F) / 0.20F, 2.0F));
    Colour colour = Mix({1.6F, 0.28F, 0.03F}, {5.5F, 2.6F, 0.5F}, Smooth(1.0F, 0.2F, place));
    colour = Mix(colour, {14.0F, 10.5F, 5.0F}, heart);
    colour = Mix(colour, {0.25F, 0.45F, 2.2F}, 0.85F * Smooth(0.74F, 0.86F, y));
    const float glow = 0.35F * std::exp(-std::pow((x - 0.5F) / 0.26F, 2.0F) - std::pow((y - 0.55F) / 0.34F, 2.0F));
    return {Mix({1.2F, 0.45F, 0.10F}, colour, inside), std::max(inside, glow)};
}

}  // namespace Kavra::Samples
