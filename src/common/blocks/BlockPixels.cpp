#include "common/blocks/BlockPixels.h"

#include "common/resample/ResampleKernels.h"

#include <hwy/base.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace Kavra::Common {

namespace {

using Pixel = std::array<float, 4>;

/// What an element is divided by to be 0 to 1.
float MaximumOf(ElementType element) {
    return element == ElementType::kUInt8 ? 255.0F : element == ElementType::kUInt16 ? 65535.0F : 1.0F;
}

bool IsInteger(ElementType element) {
    return element == ElementType::kUInt8 || element == ElementType::kUInt16;
}

/// The channels of a pixel as red, green, blue and alpha.
Pixel Coloured(const float* channels, const PixelFormat& format, float opaque) {
    switch (format.channels) {
        case 1:
            return {channels[0], channels[0], channels[0], format.hasAlpha ? channels[0] : opaque};
        case 2:
            if (format.hasAlpha) return {channels[0], channels[0], channels[0], channels[1]};
            return {channels[0], channels[1], 0, opaque};
        default:
            break;
    }
    const float alpha = format.channels == 4 && format.hasAlpha ? channels[3] : opaque;
    if (format.blueFirst) return {channels[2], channels[1], channels[0], alpha};
    return {channels[0], channels[1], channels[2], alpha};
}

float Limited(float value, float low, float high) {
    return std::isnan(value) ? std::max(low, 0.0F) : std::clamp(value, low, high);
}

/// The bits of the nearest half as a whole number; infinite ones are the largest that there is.
float HalfBits(float value, bool isSigned) {
    constexpr float kLargest = 65504;
    const float limited = Limited(value, isSigned ? -kLargest : 0, kLargest);
    const auto bits = hwy::BitCastScalar<std::uint16_t>(hwy::F16FromF32(limited));
    const auto size = static_cast<float>(bits & 0x7FFF);
    return (bits & 0x8000) != 0 ? -size : size;
}

float Scaled(float value, ElementType element, BlockScale scale) {
    const float unit = value / MaximumOf(element);
    switch (scale) {
        case BlockScale::kUnsigned:
            return element == ElementType::kUInt8 ? value : Limited(unit, 0, 1) * 255;
        case BlockScale::kSigned:
            return Limited(IsInteger(element) ? unit * 2 - 1 : unit, -1, 1) * 127;
        case BlockScale::kHalfBits:
            return HalfBits(unit, false);
        case BlockScale::kSignedHalfBits:
            return HalfBits(unit, true);
    }
    return 0;
}

}  // namespace

void GatherBlocks(const BlockPicture& picture, std::size_t blockRow, BlockScale scale, std::vector<float>& blocks) {
    const PixelFormat& format = picture.format;
    const auto width = static_cast<std::size_t>(picture.width), channels = static_cast<std::size_t>(format.channels);
    const std::size_t columns = BlocksAlong(picture.width);
    blocks.resize(columns * kBlockFloats);
    std::vector<float> row(width * channels + kSlack);
    const float opaque = MaximumOf(format.element);
    for (std::size_t y = 0; y < 4; ++y) {
        const std::size_t from = std::min(4 * blockRow + y, static_cast<std::size_t>(picture.height) - 1);
        GetResampleKernels().toFloats(format.element, picture.rows + from * picture.pitch, width * channels,
                                      row.data());
        for (float& value : std::span(row).first(width * channels))
            value = Scaled(value, format.element, scale);
        const float opaqueHere = Scaled(opaque, format.element, scale);
        for (std::size_t x = 0; x < 4 * columns; ++x) {
            const Pixel pixel = Coloured(row.data() + std::min(x, width - 1) * channels, format, opaqueHere);
            std::ranges::copy(pixel,
                              blocks.begin() + static_cast<std::ptrdiff_t>(x / 4 * kBlockFloats + (y * 4 + x % 4) * 4));
        }
    }
}

}  // namespace Kavra::Common
