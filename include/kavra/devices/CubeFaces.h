/// \file
/// How the faces of cube maps lie.
///
/// Seen from inside, with y up and a left-handed system of axes (+z ahead, +x at the right): OpenGL 4.6, table 8.19, which
/// DDS files follow. Faces have the order +x -x +y -y +z -z, 0 to 5.
#pragma once

#include <kavra/objects/Vec.h>

#include <cmath>

namespace Kavra::Devices {

/// A place on a face.
struct CubePlace {
    int face = 0;  ///< 0 to 5
    float s = 0,   ///< from left to right, -1 to 1 from edge to edge
        t = 0;     ///< from top to bottom, as well
};

/// The direction, of no certain length, towards a place: its largest part is that of the face, and 1. Places beyond the
/// edges lie on the face's plane. Faces that are none count as the last. Threads: any.
inline vec3<float> CubeDirection(const CubePlace& place) {
    const float s = place.s, t = place.t;
    switch (place.face) {
        case 0:
            return {1, -t, -s};
        case 1:
            return {-1, -t, s};
        case 2:
            return {s, 1, t};
        case 3:
            return {s, -1, -t};
        case 4:
            return {s, -t, 1};
        default:
            return {-s, -t, -1};
    }
}

/// The place that a direction of any length but 0 points to. Threads: any.
inline CubePlace CubePlaceOf(const vec3<float>& direction) {
    const vec3<float>& d = direction;
    const float x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
    if (x >= y && x >= z) return d.x > 0 ? CubePlace{0, -d.z / x, -d.y / x} : CubePlace{1, d.z / x, -d.y / x};
    if (y >= z) return d.y > 0 ? CubePlace{2, d.x / y, d.z / y} : CubePlace{3, d.x / y, -d.z / y};
    return d.z > 0 ? CubePlace{4, d.x / z, -d.y / z} : CubePlace{5, -d.x / z, -d.y / z};
}

}  // namespace Kavra::Devices
