#include "common/mips/AlphaCoverage.h"

#include "common/resample/ResampleMethod.h"

#include <hwy/base.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>

namespace Kavra::Common {

namespace {

constexpr float kNothing = 1e-6F;  // of the threshold: what would have to be multiplied by more is not brought there

/// The number of alphas that is nearest to `wanted` among those that can be seen at once, which are the largest; equal ones
/// are seen together, and those of 0 never are. Puts the largest first.
std::size_t SeenAtOnce(std::span<float> alphas, std::size_t wanted) {
    if (wanted == 0) return 0;
    const auto last = alphas.begin() + static_cast<std::ptrdiff_t>(wanted) - 1;
    std::ranges::nth_element(alphas, last, std::greater<>());
    const float value = *last;
    const auto above = std::partition(alphas.begin(), alphas.end(), [value](float a) { return a > value; });
    const auto fewer = static_cast<std::size_t>(above - alphas.begin());
    if (!(value > 0)) return fewer;
    const auto more = fewer + static_cast<std::size_t>(std::count(above, alphas.end(), value));
    return wanted - fewer < more - wanted ? fewer : more;
}

}  // namespace

float SeenFrom(ElementType element, float threshold) {
    const float full = FullScale(element);
    if (IsInteger(element)) {
        float least = std::floor(threshold * full);
        while (least / full < threshold)
            ++least;
        return least - 0.5F;
    }
    if (element != ElementType::kHalf) return threshold;
    const auto half = [](std::uint16_t bits) { return hwy::F32FromF16(hwy::float16_t::FromBits(bits)); };
    auto bits = hwy::BitCastScalar<std::uint16_t>(hwy::F16FromF32(threshold));
    if (half(bits) < threshold) ++bits;
    if (bits == 0) return threshold;
    const float middle = (half(bits) + half(static_cast<std::uint16_t>(bits - 1))) / 2;
    return bits % 2 == 0 ? middle : std::nextafter(middle, full);
}

float ScaleForCoverage(std::span<float> alphas, float threshold, double share) {
    const float nothing = threshold * kNothing;
    for (float& alpha : alphas)
        if (!(alpha > nothing)) alpha = 0;
    const auto wanted = static_cast<std::size_t>(std::llround(share * static_cast<double>(alphas.size())));
    const std::size_t seen = SeenAtOnce(alphas, std::min(wanted, alphas.size()));
    const auto end = alphas.begin() + static_cast<std::ptrdiff_t>(seen);
    std::ranges::nth_element(alphas, end, std::greater<>());

    // The least number with which they are seen, and the largest with which the others are not.
    const float least = seen > 0 ? *std::min_element(alphas.begin(), end) : std::numeric_limits<float>::infinity();
    const float rest = seen < alphas.size() ? *std::max_element(end, alphas.end()) : 0.0F;
    const auto brings = [threshold](float alpha, float scale) { return alpha * scale >= threshold; };
    if (seen > 0 && !brings(least, 1)) {
        float scale = threshold / least;
        while (!brings(least, scale))
            scale = std::nextafter(scale, std::numeric_limits<float>::infinity());
        return scale;
    }
    if (!brings(rest, 1)) return 1;
    float scale = threshold / rest;
    while (brings(rest, scale))
        scale = std::nextafter(scale, 0.0F);
    return scale;
}

}  // namespace Kavra::Common
