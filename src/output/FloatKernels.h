/// Runs of floats: what they range over, and as bytes.
#pragma once

#include <array>
#include <cstddef>

namespace Kavra::Devices {

/// Values that are worked on at a time. The places of a group stand for the channels in turn, so a run starts at a
/// first channel, and channels are as many as divide the group evenly.
constexpr std::size_t kFloatGroup = 16;

/// The minimum and maximum at each place of a group, infinities of the wrong sign where there is none.
struct FloatExtremes {
    alignas(64) std::array<float, kFloatGroup> minimum, maximum;
};

/// How the values at each place become bytes: (value - minimum) x 255 / span.
struct FloatMapping {
    alignas(64) std::array<double, kFloatGroup> minimum, span;
};

/// Takes `count` values of any alignment into account; NaN is no value. One thread.
void WidenExtremes(FloatExtremes& extremes, const unsigned char* values, std::size_t count);

/// Writes a byte for each of `count` values of any alignment: in double precision in the order of the formula, limited
/// to 0..255 and truncated; NaN is 0. One thread.
void ShowFloats(const FloatMapping& mapping, const unsigned char* values, std::size_t count, unsigned char* out);

}  // namespace Kavra::Devices
