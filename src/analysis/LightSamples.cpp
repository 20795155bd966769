#include "analysis/LightSamples.h"

#include <Imath/half.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace Kavra::Analysis {
namespace {

constexpr int kMaxColumns = 200;

// 2 pi, 1 / pi and 1 / (2 pi), rounded to single precision.
constexpr float kTwoPi = 6.2831855F, kInversePi = 0.31830987F, kInverseTwoPi = 0.15915494F;

float Luminance(const vec3<float>& colour) {
    constexpr auto red = static_cast<float>(kRedWeight);
    constexpr auto green = static_cast<float>(kGreenWeight);
    constexpr auto blue = static_cast<float>(kBlueWeight);
    return green * colour.y + red * colour.x + blue * colour.z;
}

// The fetches: the first three channels of one pixel as floats.

template <class T>
std::array<float, 3> FetchElements(const unsigned char* pixel) {
    T elements[3];
    std::memcpy(elements, pixel, sizeof elements);
    return {static_cast<float>(elements[0]), static_cast<float>(elements[1]), static_cast<float>(elements[2])};
}

vec3<float> FetchFloats(const unsigned char* pixel) {
    const auto [red, green, blue] = FetchElements<float>(pixel);
    return {red, green, blue};
}

vec3<float> FetchHalves(const unsigned char* pixel) {
    const auto [red, green, blue] = FetchElements<half>(pixel);
    return {red, green, blue};
}

vec3<float> FetchRedFirst(const unsigned char* pixel) {
    const auto [red, green, blue] = FetchElements<std::uint8_t>(pixel);
    return {red * kByteScale, green * kByteScale, blue * kByteScale};
}

vec3<float> FetchBlueFirst(const unsigned char* pixel) {
    const vec3<float> swapped = FetchRedFirst(pixel);
    return {swapped.z, swapped.y, swapped.x};
}

using Fetch = vec3<float> (*)(const unsigned char* pixel);

Fetch FetchFor(PixelKind kind) {
    switch (kind) {
        case PixelKind::kRedFirstBytes:
            return FetchRedFirst;
        case PixelKind::kBlueFirstBytes:
            return FetchBlueFirst;
        case PixelKind::kHalves:
            return FetchHalves;
        default:
            return FetchFloats;
    }
}

/// The whole number at or below `position`, which lies at least a thousandth of `size` away from both ends: samples
/// keep half a step away from the poles and the seam.
std::size_t NearestIndex(float position, std::int32_t size) {
    return static_cast<std::size_t>(std::min(position, static_cast<float>(size - 1)));
}

/// A ring of directions at one height over the horizon, and the row of pixels that shows it.
class Ring {
public:
    /// `v` is the fraction of the sphere's surface above the ring, in (0, 1).
    Ring(const EnvironmentMap& map, float v)
        : mMap(map),
          mY(1.0F - 2.0F * v),
          mRadius(std::sqrt(std::max(0.0F, 1.0F - mY * mY))),
          mRow(map.Row(NearestIndex(std::acos(mY) * kInversePi * static_cast<float>(map.height), map.height))) {}

    LightSample At(float u, Fetch fetch) const {
        const float phi = u * kTwoPi;
        const vec3<float> direction = {-mRadius * std::sin(phi), mY, mRadius * std::cos(phi)};
        const vec3<float> colour = fetch(mRow + Column(direction) * PixelBytes(mMap.kind));
        return {direction, colour, Luminance(colour)};
    }

private:
    std::size_t Column(const vec3<float>& direction) const {
        float turn = std::atan2(-direction.x, direction.z) * kInverseTwoPi;
        if (turn < 0) turn += 1.0F;
        return NearestIndex(static_cast<float>(mMap.width) * turn, mMap.width);
    }

    const EnvironmentMap& mMap;
    float mY;
    float mRadius;
    const unsigned char* mRow;
};

bool AllEquallyBright(const std::vector<LightSample>& samples) {
    return std::ranges::all_of(
        samples, [&samples](float luminance) { return luminance == samples.front().luminance; },
        &LightSample::luminance);
}

}  // namespace

std::vector<LightSample> SampleMap(const EnvironmentMap& map) {
    std::vector<LightSample> samples;
    const int columns = std::min(map.width, kMaxColumns);
    const int rings = columns / 2;
    if (map.height < 1 || rings < 1) return samples;
    samples.reserve(static_cast<std::size_t>(columns + 1) * static_cast<std::size_t>(rings + 1));
    const float du = 1.0F / static_cast<float>(columns);
    const float dv = 1.0F / static_cast<float>(rings);
    const Fetch fetch = FetchFor(map.kind);
    for (float v = dv / 2; v < 1.0F; v += dv) {
        const Ring ring(map, v);
        for (float u = du / 2; u < 1.0F; u += du)
            samples.push_back(ring.At(u, fetch));
    }
    return samples;
}

void KeepBrightSamples(std::vector<LightSample>& samples) {
    // Of equal samples the rounded sums would keep all or none, by chance.
    if (samples.empty() || AllEquallyBright(samples)) return;
    float sum = 0;
    float sumOfSquares = 0;
    for (const LightSample& sample : samples) {
        sum += sample.luminance;
        sumOfSquares += sample.luminance * sample.luminance;
    }
    const auto count = static_cast<float>(samples.size());
    const float mean = sum / count;
    const float variance = sumOfSquares / count - mean * mean;
    const float threshold = mean + std::sqrt(variance);
    std::erase_if(samples, [threshold](const LightSample& sample) { return sample.luminance < threshold; });
}

}  // namespace Kavra::Analysis
