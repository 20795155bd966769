#include "Paint.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Kavra::Samples {
namespace {

/// A letter of 5 x 7 squares, rows from the top, the leftmost square the highest of five bits.
struct Letter {
    char character;
    std::array<unsigned char, 7> rows;
};

constexpr std::array<Letter, 36> kLetters = {{
    {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}}, {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'2', {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F}}, {'3', {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E}},
    {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}}, {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
    {'6', {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}}, {'7', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08}},
    {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}}, {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}},
    {'A', {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}}, {'B', {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E}},
    {'C', {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}}, {'D', {0x1E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1E}},
    {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}}, {'F', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10}},
    {'G', {0x0E, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0F}}, {'H', {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
    {'I', {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}}, {'J', {0x07, 0x02, 0x02, 0x02, 0x02, 0x12, 0x0C}},
    {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}}, {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}},
    {'M', {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11}}, {'N', {0x11, 0x19, 0x15, 0x13, 0x11, 0x11, 0x11}},
    {'O', {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}}, {'P', {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10}},
    {'Q', {0x0E, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0D}}, {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}},
    {'S', {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E}}, {'T', {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
    {'U', {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}}, {'V', {0x11, 0x11, 0x11, 0x11, 0x11, 0x0A, 0x04}},
    {'W', {0x11, 0x11, 0x11, 0x15, 0x15, 0x1B, 0x11}}, {'X', {0x11, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x11}},
    {'Y', {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04}}, {'Z', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1F}},
}};

float Eased(float t) {
    return t * t * (3 - 2 * t);
}

}  // namespace

Colour Scaled(const Colour& colour, float factor) {
    return {colour[0] * factor, colour[1] * factor, colour[2] * factor};
}

Colour Mix(const Colour& a, const Colour& b, float t) {
    t = std::clamp(t, 0.0F, 1.0F);
    return {a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t};
}

Colour Add(const Colour& a, const Colour& b, float weight) {
    return {a[0] + b[0] * weight, a[1] + b[1] * weight, a[2] + b[2] * weight};
}

Colour FromDisplay(unsigned rgb) {
    const auto linear = [rgb](int shift) {
        const float value = static_cast<float>((rgb >> shift) & 0xFF) / 255;
        return value <= 0.04045F ? value / 12.92F : std::pow((value + 0.055F) / 1.055F, 2.4F);
    };
    return {linear(16), linear(8), linear(0)};
}

float Smooth(float from, float to, float value) {
    return Eased(std::clamp((value - from) / (to - from), 0.0F, 1.0F));
}

float Wrapped(float value, float period) {
    return value - period * std::floor(value / period);
}

float Hash(int x, int y, int seed) {
    auto bits = static_cast<std::uint32_t>(x) * 374761393U + static_cast<std::uint32_t>(y) * 2246822519U +
                static_cast<std::uint32_t>(seed) * 668265263U;
    bits = (bits ^ (bits >> 13)) * 1274126177U;
    return static_cast<float>((bits ^ (bits >> 16)) & 0xFFFF) / 65535.0F;
}

float Noise(float x, int seed) {
    const float cell = std::floor(x);
    const float smooth = Eased(x - cell);
    const int i = static_cast<int>(cell);
    return Hash(i, 0, seed) * (1 - smooth) + Hash(i + 1, 0, seed) * smooth;
}

float Noise(float x, float y, int seed) {
    const float cellX = std::floor(x), cellY = std::floor(y);
    const float across = Eased(x - cellX), down = Eased(y - cellY);
    const int i = static_cast<int>(cellX), j = static_cast<int>(cellY);
    const auto row = [&](int at) { return Hash(i, at, seed) * (1 - across) + Hash(i + 1, at, seed) * across; };
    return row(j) * (1 - down) + row(j + 1) * down;
}

float Ridge(float x, int seed, int octaves) {
    float sum = 0;
    float weight = 0.5F;
    for (int octave = 0; octave < octaves; ++octave, x *= 2.1F, weight *= 0.5F)
        sum += weight * Noise(x, seed + octave);
    return sum;
}

float Clouds(float x, float y, int seed, int octaves) {
    float sum = 0;
    float weight = 0.5F;
    for (int octave = 0; octave < octaves; ++octave, x *= 2.03F, y *= 2.03F, weight *= 0.5F)
        sum += weight * Noise(x, y, seed + octave);
    return sum;
}

float Stroke(float x, float y, std::array<float, 2> from, std::array<float, 2> to, float halfWidth) {
    const float dx = to[0] - from[0], dy = to[1] - from[1];
    const float along = ((x - from[0]) * dx + (y - from[1]) * dy) / std::max(dx * dx + dy * dy, 1e-12F);
    const float t = std::clamp(along, 0.0F, 1.0F);
    return std::hypot(x - from[0] - t * dx, y - from[1] - t * dy) < halfWidth ? 1.0F : 0.0F;
}

float Text(float x, float y, std::string_view text) {
    const int column = static_cast<int>(std::floor(x * 7)), row = static_cast<int>(std::floor(y * 7));
    if (row < 0 || row > 6 || column < 0 || column % 6 == 5) return 0;
    const auto place = static_cast<std::size_t>(column / 6);
    if (place >= text.size()) return 0;
    const auto* letter = std::ranges::find(kLetters, text[place], &Letter::character);
    if (letter == kLetters.end()) return 0;
    return ((letter->rows[static_cast<std::size_t>(row)] >> (4 - column % 6)) & 1) != 0 ? 1.0F : 0.0F;
}

float TextWidth(std::string_view text) {
    return (static_cast<float>(text.size()) * 6 - 1) / 7;
}

}  // namespace Kavra::Samples
