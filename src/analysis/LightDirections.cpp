// The lights of an environment map: what is markedly brighter than the rest, gathered greedily.

#include "analysis/LightDirections.h"

#include "analysis/LightSamples.h"
#include "common/Progress.h"
#include "common/Reasons.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace Kavra::Devices {
namespace {

using Analysis::LightSample;
using Samples = std::vector<LightSample>;

// The cosine of 18.2 degrees: the reach of a light's first sample.
constexpr float kJoinCosine = 0.95F;

struct Light {
    vec3<float> direction;
    vec3<float> colour;
};

float Dot(const vec3<float>& a, const vec3<float>& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

void Add(vec3<float>& sum, const vec3<float>& term) {
    sum.x += term.x;
    sum.y += term.y;
    sum.z += term.z;
}

void Divide(vec3<float>& vector, float divisor) {
    vector.x /= divisor;
    vector.y /= divisor;
    vector.z /= divisor;
}

/// The first of the brightest samples. A NaN is brighter than nothing, and nothing than it: it wins in the first place
/// only.
std::size_t Brightest(const Samples& samples) {
    std::size_t brightest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i].luminance > samples[brightest].luminance) brightest = i;
    }
    return brightest;
}

/// Takes the brightest sample and all that join it out of `samples`, which must not be empty; the others keep their
/// order. A sample joins when its direction points along the sum of those gathered so far. The sum is not brought back
/// to length 1, so a light reaches the wider the more it has gathered: a large bright area is one light. One pass that
/// closes the gaps as it goes, since removing the samples one by one would move all that follow each time.
Light TakeLight(Samples& samples) {
    const std::size_t seed = Brightest(samples);
    Light light = {samples[seed].direction, samples[seed].colour};
    std::size_t kept = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i == seed) continue;
        const LightSample& sample = samples[i];
        if (Dot(sample.direction, light.direction) > kJoinCosine) {
            Add(light.direction, sample.direction);
            Add(light.colour, sample.colour);
        } else {
            samples[kept++] = sample;
        }
    }
    const auto members = static_cast<float>(samples.size() - kept);
    samples.resize(kept);
    const float squaredLength = Dot(light.direction, light.direction);
    if (squaredLength != 0) Divide(light.direction, std::sqrt(squaredLength));
    Divide(light.colour, members);
    return light;
}

}  // namespace

unsigned FindLightDirections(const ImageDescription& desc, const void* data, vec3<float>* directions,
                             vec3<float>* colours, unsigned maxCount) {
    const auto map = Analysis::EnvironmentMapOf(desc, data);
    const bool hasRoom = maxCount > 0 && directions != nullptr && colours != nullptr;
    if (!map || !Common::Require(hasRoom, kFailureArguments, "there is nowhere to put the lights")) return 0;
    Samples samples = Analysis::SampleMap(*map);
    Analysis::KeepBrightSamples(samples);
    unsigned found = 0;
    Common::ProgressMeter meter(kProgressAnalysing, samples.size());
    for (; found < maxCount && !samples.empty(); ++found) {
        const std::size_t before = samples.size();
        const Light light = TakeLight(samples);
        meter.Advance(before - samples.size());
        directions[found] = light.direction;
        colours[found] = light.colour;
    }
    meter.Advance(samples.size());
    return found;
}

}  // namespace Kavra::Devices
