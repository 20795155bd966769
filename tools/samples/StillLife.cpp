// Spheres on a table, seen along rays.

#include "Scene.h"
#include "Vector.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kavra::Samples {
namespace {

struct Ball {
    Vector centre;
    float radius;
    Colour colour;
    float mirror;  ///< how much of what it sees it shows
};

constexpr Ball kBalls[] = {
    {{-0.95F, 0.80F, 4.4F}, 0.80F, {0.70F, 0.06F, 0.05F}, 0.12F},
    {{0.55F, 1.00F, 5.0F}, 1.00F, {0.75F, 0.77F, 0.80F}, 0.65F},
    {{0.25F, 0.36F, 3.3F}, 0.36F, {0.92F, 0.55F, 0.04F}, 0.10F},
};
constexpr Vector kEye = {0, 1.45F, 0};

struct Hit {
    float distance = std::numeric_limits<float>::infinity();
    const Ball* ball = nullptr;  ///< null is the table, if the distance is finite
};

Hit Cast(const Vector& from, const Vector& ray) {
    Hit hit;
    if (ray.y < -1e-4F) hit.distance = -from.y / ray.y;
    for (const Ball& ball : kBalls) {
        const Vector to = from - ball.centre;
        const float half = Dot(to, ray);
        const float root = half * half - Dot(to, to) + ball.radius * ball.radius;
        const float distance = root < 0 ? -1 : -half - std::sqrt(root);
        if (distance > 1e-3F && distance < hit.distance) hit = {distance, &ball};
    }
    return hit;
}

Colour Room(const Vector& ray) {
    const Colour wall = Mix(FromDisplay(0x6F7F8C), FromDisplay(0xD5DEE4), ray.y + 0.2F);
    const bool window = ray.x < -0.30F && ray.x > -0.62F && ray.y > 0.35F && ray.y < 0.75F;
    return window ? Colour{5, 5.2F, 5.5F} : wall;
}

/// The table is a round one, its cloth in squares.
constexpr float kTableX = 0, kTableZ = 4.4F, kTableRadius = 2.35F;

Colour Lit(const Vector& point, const Vector& normal, const Colour& colour) {
    const Vector light = Normalised({-0.62F, 0.85F, -0.55F});
    const float facing = std::max(0.0F, Dot(normal, light));
    const bool inShade = facing > 0 && Cast(point + normal * 2e-3F, light).ball != nullptr;
    float open = 1;  // near a ball less of the room is seen
    for (const Ball& ball : kBalls) {
        const Vector to = ball.centre - point;
        const float squared = Dot(to, to);
        if (squared > ball.radius * ball.radius * 1.01F) {
            open *= 1 - 0.8F * std::max(0.0F, Dot(normal, to * (1 / std::sqrt(squared)))) * ball.radius * ball.radius /
                            squared;
        }
    }
    return Scaled(colour, 0.30F * open + (inShade ? 0.05F : 1.0F) * facing * 1.05F);
}

Colour TableAt(const Vector& point) {
    const bool dark = Wrapped(std::floor(point.x / 0.42F) + std::floor(point.z / 0.42F), 2) > 0.5F;
    return Lit(point, {0, 1, 0}, dark ? FromDisplay(0x8FA9B8) : FromDisplay(0xF0EDE4));
}

bool IsTable(const Vector& point) {
    return std::hypot(point.x - kTableX, point.z - kTableZ) < kTableRadius;
}

Colour Seen(const Vector& from, const Vector& ray, int reflections) {
    const Hit hit = Cast(from, ray);
    const Vector point = from + ray * std::min(hit.distance, 1e4F);
    if (hit.ball == nullptr) return hit.distance < 1e4F && IsTable(point) ? TableAt(point) : Room(ray);
    const Vector normal = (point - hit.ball->centre) * (1 / hit.ball->radius);
    const Vector mirrored = ray - normal * (2 * Dot(ray, normal));
    Colour colour = Lit(point, normal, hit.ball->colour);
    const float facing = std::max(0.0F, -Dot(ray, normal));
    const float share = hit.ball->mirror + (0.9F - hit.ball->mirror) * std::pow(1 - facing, 5.0F);
    if (reflections > 0) colour = Mix(colour, Seen(point + normal * 2e-3F, mirrored, reflections - 1), share);
    const Vector light = Normalised({-0.62F, 0.85F, -0.55F});
    return Add(colour, {1, 1, 1}, 2.2F * std::pow(std::max(0.0F, Dot(mirrored, light)), 90.0F));
}

}  // namespace

StillLife Spheres(float x, float y, float aspect) {
    const Vector ray = Normalised({(x - 0.5F) * aspect * 0.92F, -(y - 0.5F) * 0.92F - 0.16F, 1});
    const Hit hit = Cast(kEye, ray);
    const Vector point = kEye + ray * std::min(hit.distance, 1e4F);
    const bool seen = hit.ball != nullptr || (hit.distance < 1e4F && IsTable(point));
    constexpr float kWall = 9;
    return {Seen(kEye, ray, 2), seen ? 1.0F : 0.0F, seen ? hit.distance : kWall};
}

}  // namespace Kavra::Samples
