/// Vectors of three floats.
#pragma once

#include <cmath>

namespace Kavra::Samples {

struct Vector {
    float x, y, z;

    Vector operator+(const Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vector operator-(const Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vector operator*(float f) const { return {x * f, y * f, z * f}; }
};

inline float Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline Vector Normalised(const Vector& a) {
    return a * (1 / std::sqrt(Dot(a, a)));
}

}  // namespace Kavra::Samples
