/// The curve of sRGB.
#pragma once

#include <cmath>
#include <concepts>

namespace Kavra::Common {

/// IEC 61966-2-1, from what is stored to light and back, both 0 to 1, in the precision of `T`.
template <std::floating_point T>
T LightOfSrgb(T v) {
    return v <= static_cast<T>(0.04045)
               ? v / static_cast<T>(12.92)
               : std::pow((v + static_cast<T>(0.055)) / static_cast<T>(1.055), static_cast<T>(2.4));
}
template <std::floating_point T>
T SrgbOfLight(T v) {
    return v <= static_cast<T>(0.0031308)
               ? v * static_cast<T>(12.92)
               : static_cast<T>(1.055) * std::pow(v, T{1} / static_cast<T>(2.4)) - static_cast<T>(0.055);
}

}  // namespace Kavra::Common
