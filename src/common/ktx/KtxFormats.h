/// The formats of Vulkan that textures in KTX2 files have
/// (https://registry.khronos.org/vulkan/specs/latest/html/vkspec.html, "VkFormat").
#pragma once

#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <optional>

namespace Kavra::Devices::Ktx {

/// What a number of a format says.
struct FormatMeaning {
    Dds::StoredLayout layout;  ///< how pixels are stored, and what they are delivered as
    bool isSrgb = false;       ///< the number says sRGB
    bool hasSrgbTwin = false;  ///< the number does not, and another one would
    bool isOpaque = false;     ///< the number says that what could be alpha is none
};

/// Nothing for numbers that are not read: signed and 32-bit integers, depth, planes, and blocks other than BC1 to BC7.
std::optional<FormatMeaning> MeaningOf(std::uint32_t vkFormat);

/// The number that pixels of `format` are written as. `kL8`, `kA8` and `kL16` are red, X is alpha: a channel order says
/// the rest. Where sRGB has no number of its own, the plain one. Nothing for formats that have neither.
std::optional<std::uint32_t> NumberOf(EFormat format, bool isSrgb, bool isOpaque);

/// The numbers that are written.
enum VkFormat : std::uint32_t {
    kVkUndefined = 0,
    kVkR8Unorm = 9,
    kVkR8Srgb = 15,
    kVkR8G8Unorm = 16,
    kVkR8G8B8A8Unorm = 37,
    kVkR8G8B8A8Srgb = 43,
    kVkB8G8R8A8Unorm = 44,
    kVkB8G8R8A8Srgb = 50,
    kVkR16Unorm = 70,
    kVkR16Sfloat = 76,
    kVkR16G16Unorm = 77,
    kVkR16G16Sfloat = 83,
    kVkR16G16B16A16Unorm = 91,
    kVkR16G16B16A16Sfloat = 97,
    kVkR32Sfloat = 100,
    kVkR32G32Sfloat = 103,
    kVkR32G32B32Sfloat = 106,
    kVkR32G32B32A32Sfloat = 109,
    kVkBC1RgbUnorm = 131,
    kVkBC1RgbSrgb = 132,
    kVkBC1RgbaUnorm = 133,
    kVkBC1RgbaSrgb = 134,
    kVkBC2Unorm = 135,
    kVkBC2Srgb = 136,
    kVkBC3Unorm = 137,
    kVkBC3Srgb = 138,
    kVkBC4Unorm = 139,
    kVkBC4Snorm = 140,
    kVkBC5Unorm = 141,
    kVkBC5Snorm = 142,
    kVkBC6HUfloat = 143,
    kVkBC6HSfloat = 144,
    kVkBC7Unorm = 145,
    kVkBC7Srgb = 146,
};

}  // namespace Kavra::Devices::Ktx
