/// \file
/// Small value structures.
#pragma once

/// A host for image handlers, and one handler: the object model (`Objects`, `OS`), the device layer with its pixel
/// helpers (`Devices`, `Utilities`), and the value structures that all of them use.
namespace Kavra {

/// Two numbers of one type: a corner or a size in pixels (x columns, y rows).
///
/// `vec2`, `vec3` and `vec4` are plain values: members in this order without padding, zero unless initialised, made by
/// braces (`vec2<int>{16, 9}`). They have no operators. `T` is `int` or `float` throughout the interfaces, and the
/// layout of both is part of the contract between host and module.
template <class T>
struct vec2 {
    T x{},    ///< columns, or a width
        y{};  ///< rows, or a height
};

/// Three numbers of one type. As a size in pixels: width, height and depth in slices. As a direction: x to the right,
/// y up, -z ahead. As a colour: red, green and blue.
template <class T>
struct vec3 {
    T x{},    ///< width; right; red
        y{},  ///< height; up; green
        z{};  ///< depth; behind; blue
};

/// Four numbers of one type. As a colour: red, green, blue and alpha.
template <class T>
struct vec4 {
    T x{},    ///< red
        y{},  ///< green
        z{},  ///< blue
        w{};  ///< alpha
};

}  // namespace Kavra
