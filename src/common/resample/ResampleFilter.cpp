#include "common/resample/ResampleFilter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Kavra::Common {

namespace {

using Devices::EResampleFilter;

float NaturalWidth(EResampleFilter filter) {
    switch (filter) {
        case Devices::kResampleMitchell:
        case Devices::kResampleCatmullRom:
            return 4.0F;
        case Devices::kResampleLanczos3:
            return 6.0F;
        case Devices::kResampleBilinear:
        case Devices::kResampleTriangle:
            return 2.0F;
        case Devices::kResampleNearest:
        case Devices::kResampleBox:
            return 1.0F;
    }
    return 1.0F;
}

/// Mitchell and Netravali 1988, equation 8, with x from -1 to 1.
float Mitchell(float x) {
    constexpr float kB = 1.0F / 3.0F, kC = 1.0F / 3.0F, kSixth = 1.0F / 6.0F;
    x = std::fabs(x);
    if (x > 1.0F) return 0.0F;
    x *= 2.0F;
    const float x2 = x * x;
    if (x >= 1.0F) {
        return kSixth * ((-kB - 6.0F * kC) * x * x2 + (6.0F * kB + 30.0F * kC) * x2 + (-12.0F * kB - 48.0F * kC) * x +
                         (8.0F * kB + 24.0F * kC));
    }
    return kSixth *
           ((12.0F - 9.0F * kB - 6.0F * kC) * x * x2 + (-18.0F + 12.0F * kB + 6.0F * kC) * x2 + (6.0F - 2.0F * kB));
}

/// The same at B = 0, C = 1/2, times two, with x from -2 to 2: E. Catmull and R. Rom, "A Class of Local Interpolating
/// Splines", 1974.
float CatmullRom(float x) {
    x = std::fabs(x);
    const float x2 = x * x;
    const float x3 = x * x2;
    if (x >= 2.0F) return 0.0F;
    return x < 1.0F ? 3.0F * x3 - 5.0F * x2 + 2.0F : -x3 + 5.0F * x2 - 8.0F * x + 4.0F;
}

/// sin(pi x) sin(pi x / 3) of the windowed sinc, with one sine: sin(3a) = 3 sin(a) - 4 sin(a)^3.
float Lanczos3(float x) {
    constexpr float kLobes = 3.0F, kPi = std::numbers::pi_v<float>;
    x = std::fabs(x);
    if (x > kLobes) return 0.0F;
    if (x < 0.0001F) return 1.0F;
    const float s = std::sin(x * (1.0F / kLobes) * kPi);
    return kLobes / (x * x * (kPi * kPi)) * s * ((-4.0F * s * s + 3.0F) * s);
}

}  // namespace

ResampleFilter::ResampleFilter(EResampleFilter filter, float growth)
    : kind(filter),
      width(NaturalWidth(filter) * (filter == Devices::kResampleBilinear ? growth : std::max(1.0F, growth))) {}

float ResampleFilter::Weight(float x) const {
    switch (kind) {
        case Devices::kResampleMitchell:
            return Mitchell(x * (2.0F / width));
        case Devices::kResampleCatmullRom:
            return CatmullRom(x * (4.0F / width));
        case Devices::kResampleLanczos3:
            return Lanczos3(x * (6.0F / width));
        case Devices::kResampleBilinear:
        case Devices::kResampleTriangle: {
            const float distance = std::fabs(x * (2.0F / width));
            return distance < 1.0F ? 1.0F - distance : 0.0F;
        }
        case Devices::kResampleNearest:
        case Devices::kResampleBox:
            return std::fabs(x) <= width * 0.5F ? 1.0F : 0.0F;
    }
    return 0.0F;
}

}  // namespace Kavra::Common
