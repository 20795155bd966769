/// Small value structures.
#pragma once

namespace Kavra {

template <class T>
struct vec2 {
    T x{}, y{};
};

template <class T>
struct vec3 {
    T x{}, y{}, z{};
};

template <class T>
struct vec4 {
    T x{}, y{}, z{}, w{};
};

}  // namespace Kavra
