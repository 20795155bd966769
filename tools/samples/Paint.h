/// What the scenes are painted with: colours, noise and shapes. A coverage is 0 outside a shape, 1 inside it.
#pragma once

#include <array>
#include <string_view>

namespace Kavra::Samples {

using Colour = std::array<float, 3>;  ///< linear light, red green blue

Colour Scaled(const Colour& colour, float factor);

/// `a` at 0 and `b` at 1; `t` is clamped.
Colour Mix(const Colour& a, const Colour& b, float t);

/// `a` and `weight` times `b`.
Colour Add(const Colour& a, const Colour& b, float weight);

/// The linear light of a display colour such as 0xE63946.
Colour FromDisplay(unsigned rgb);

/// 0 below `from`, 1 above `to`, smooth between.
float Smooth(float from, float to, float value);

/// The rest to the next lower multiple of `period`, not negative.
float Wrapped(float value, float period);

/// 0 to 1, the same for the same cell and seed.
float Hash(int x, int y, int seed);

/// Smooth noise along a line or over a plane, 0 to 1, with cells of 1.
float Noise(float x, int seed);
float Noise(float x, float y, int seed);

/// The sum of octaves of noise, each twice as fine and half as strong: 0 to about 1.
float Ridge(float x, int seed, int octaves);
float Clouds(float x, float y, int seed, int octaves);

/// A stroke from one point to another, round at its ends.
float Stroke(float x, float y, std::array<float, 2> from, std::array<float, 2> to, float halfWidth);

/// A line of text in letters of 5 x 7 squares, the upper left corner at 0, 0, the letters' height 1. Knows capital
/// letters, digits and spaces.
float Text(float x, float y, std::string_view text);

/// How wide that text is.
float TextWidth(std::string_view text);

}  // namespace Kavra::Samples
