/// Pictures to resample: patterns in every type, and how their values are looked at.
#pragma once

#include <kavra/devices/Resampler.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Tests {

using Devices::ElementType;

/// Packed pixels.
struct Picture {
    ElementType element = ElementType::kUInt8;
    int channels = 4, width = 0, height = 0;
    std::vector<unsigned char> bytes;

    std::size_t ElementBytes() const;
    std::size_t RowBytes() const;
    std::size_t Values() const { return bytes.size() / ElementBytes(); }
    float Value(std::size_t i) const;      ///< the number itself
    int Step(std::size_t i) const;         ///< numbers next to each other are one step apart; not for floats
    void Set(std::size_t i, float value);  ///< 0 to 1 for integers
    float At(int x, int y, int channel) const;
};

enum class Pattern { kNoise, kRamps, kChecks, kImpulses, kPhotograph };
inline constexpr std::array kPatterns = {Pattern::kNoise, Pattern::kRamps, Pattern::kChecks, Pattern::kImpulses,
                                         Pattern::kPhotograph};

Picture EmptyPicture(ElementType element, int channels, int width, int height);
Picture MakePicture(ElementType element, int channels, int width, int height, Pattern pattern);

/// By `ResamplePicture`, which is expected to say yes. The last channel of two or four is alpha.
Picture Resampled(const Picture& from, int width, int height, const Devices::ResampleOptions& options = {});

}  // namespace Kavra::Tests
