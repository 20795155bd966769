#include "EnvironmentSamples.h"

#include "Picture.h"
#include "Vector.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Kavra::Samples {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;

/// +y up, +x right, -z ahead.
Vector DirectionOf(float u, float v) {
    const float radius = std::sin(kPi * v);
    return {-radius * std::sin(2 * kPi * u), std::cos(kPi * v), radius * std::cos(2 * kPi * u)};
}

Colour Sum(const Colour& a, const Colour& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

/// A rectangle of light that faces the eye, which is at the origin.
struct Softbox {
    Vector centre;
    float halfWidth, halfHeight;  // metres
    Colour radiance;

    Vector Right() const { return Normalised(Cross(centre, {0, 1, 0})); }
    Vector Up() const { return Normalised(Cross(Right(), centre)); }

    /// How much of the box is seen along `direction`: 1 inside, falling off at its edge.
    float Coverage(const Vector& direction) const {
        const float facing = Dot(direction, Normalised(centre));
        if (facing <= 0) return 0;
        const Vector point = direction * (std::sqrt(Dot(centre, centre)) / facing) - centre;
        const float across = std::abs(Dot(point, Right())) / halfWidth;
        const float along = std::abs(Dot(point, Up())) / halfHeight;
        return (1 - Smooth(0.94F, 1.0F, across)) * (1 - Smooth(0.94F, 1.0F, along));
    }

    /// What a white wall with `normal` sends back of the light at `point`: the box as a small Lambertian source.
    Colour Cast(const Vector& point, const Vector& normal) const {
        const Vector toLight = centre - point;
        const float squared = std::max(Dot(toLight, toLight), 0.6F);
        const Vector ray = toLight * (1 / std::sqrt(squared));
        const float atWall = std::max(0.0F, Dot(ray, normal));
        const float atLight = std::max(0.0F, Dot(ray, Normalised(centre)));
        return Scaled(radiance, 4 * halfWidth * halfHeight * atWall * atLight / (kPi * squared));
    }
};

constexpr Softbox kSoftboxes[] = {
    {{-2.0F, 1.0F, -1.6F}, 0.75F, 0.55F, {15.0F, 15.8F, 17.0F}},
    {{2.1F, 0.35F, -0.9F}, 0.28F, 0.75F, {9.0F, 6.4F, 3.9F}},
};

/// Where a ray from the eye meets the wall of the room, and which way the wall faces.
struct Wall {
    Vector point, normal;
    float albedo;
};

Wall WallAlong(const Vector& d) {
    constexpr float kHalfSize = 3.2F, kCeiling = 2.0F, kFloor = -1.3F;
    const float tx = kHalfSize / std::max(std::abs(d.x), 1e-6F);
    const float tz = kHalfSize / std::max(std::abs(d.z), 1e-6F);
    const float ty = (d.y > 0 ? kCeiling : -kFloor) / std::max(std::abs(d.y), 1e-6F);
    if (ty < tx && ty < tz) return {d * ty, {0, d.y > 0 ? -1.0F : 1.0F, 0}, d.y > 0 ? 0.75F : 0.28F};
    if (tx < tz) return {d * tx, {d.x > 0 ? -1.0F : 1.0F, 0, 0}, 0.5F};
    return {d * tz, {0, 0, d.z > 0 ? -1.0F : 1.0F}, 0.5F};
}

/// Softly uneven, from -1 to 1.
float Mottled(const Vector& d) {
    return (std::sin(7 * d.x + 3 * d.z + 1) + std::sin(9 * d.z - 4 * d.x + 2 * d.y) + std::sin(13 * d.x + 11 * d.y)) /
           3;
}

Colour SunsetSky(const Vector& d, const Vector& sun) {
    const float height = std::max(d.y, 0.0F);
    const float toSun = std::max(Dot(d, sun), 0.0F);
    const Colour low = Mix({0.30F, 0.20F, 0.24F}, {1.30F, 0.50F, 0.16F}, std::pow(toSun, 3.0F));
    const Colour high = Mix({0.035F, 0.06F, 0.15F}, {0.10F, 0.12F, 0.22F}, toSun);
    Colour sky = Mix(low, high, 1 - std::exp(-4.5F * height));
    sky = Sum(sky, Scaled({1.6F, 0.75F, 0.25F}, std::pow(toSun, 60.0F)));
    return Sum(sky, Scaled({3.0F, 1.8F, 0.8F}, std::pow(toSun, 700.0F)));
}

}  // namespace

Colour Softboxes(float u, float v) {
    const Vector direction = DirectionOf(u, v);
    const Wall wall = WallAlong(direction);
    Colour colour = {0.06F, 0.06F, 0.065F};
    for (const Softbox& box : kSoftboxes)
        colour = Sum(colour, box.Cast(wall.point, wall.normal));
    colour = Scaled(colour, wall.albedo);
    for (const Softbox& box : kSoftboxes)
        colour = Mix(colour, box.radiance, box.Coverage(direction));
    return colour;
}

Colour Sunset(float u, float v) {
    const Vector direction = DirectionOf(u, v);
    const Vector sun = Normalised({0.45F, 0.13F, -1.0F});
    if (direction.y >= 0) {
        const float degrees = std::acos(std::min(Dot(direction, sun), 1.0F)) * 180 / kPi;
        const float disc = 1 - Smooth(2.3F, 2.7F, degrees);
        return Mix(SunsetSky(direction, sun), {300.0F, 195.0F, 95.0F}, disc);
    }
    // Waves spread the mirrored sky upwards and downwards, the more the steeper one looks.
    const Vector mirrored = Normalised({direction.x, 0.02F - 0.55F * direction.y, direction.z});
    const Vector spread = Normalised({sun.x, mirrored.y, sun.z});
    const float path = std::pow(std::max(Dot(mirrored, spread), 0.0F), 260.0F) * std::exp(9 * direction.y);
    const Colour sea =
        Mix(SunsetSky(mirrored, sun), {0.012F, 0.02F, 0.03F}, 0.45F + 0.5F * Smooth(0, 0.7F, -direction.y));
    return Sum(sea, Scaled({1.5F, 0.8F, 0.3F}, path));
}

Colour Overcast(float u, float v) {
    const Vector direction = DirectionOf(u, v);
    const Colour cloud = Scaled({0.94F, 0.98F, 1.05F}, 1.2F);
    const float horizon = 1.0F / 3;
    if (direction.y < 0) return Scaled({0.10F, 0.13F, 0.06F}, 1 - 0.3F * Smooth(0.1F, 0.9F, -direction.y));
    return Scaled(cloud, horizon * (1 + 2 * direction.y) * (1 + 0.06F * Mottled(direction)));
}

void WriteEnvironments(const std::string& folder) {
    OIIO::ImageSpec spec(OIIO::TypeDesc::HALF);
    spec.attribute("compression", "dwaa");
    const auto write = [&](const char* name, const Painter& painter) {
        WriteImage(folder + "/" + name, Paint(512, 256, painter, false), spec);
    };
    write("softboxes.exr", Softboxes);
    write("sunset.exr", Sunset);
    write("overcast.exr", Overcast);
}

}  // namespace Kavra::Samples
