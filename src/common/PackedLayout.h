/// Packed pixels: what a row of them takes, and how a block of them is described.
#pragma once

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/ImageDescription.h>

#include <cstdint>
#include <limits>

namespace Kavra::Common {

/// The decoding exponent of pixels that come without one.
inline constexpr double kDefaultGamma = 2.2;

/// Returns the bytes of a packed row, by the host's figure; 0 for formats without bytes per pixel.
inline std::int64_t PackedRowBytes(Devices::EFormat format, int width) {
    return std::int64_t{Utilities::AFormatConvertor::BytesPerPixel(format)} * width;
}

/// Whether a description can hold a pitch of so many bytes.
constexpr bool FitsPitch(std::int64_t rowBytes) {
    return rowBytes >= 0 && rowBytes <= std::numeric_limits<std::int32_t>::max();
}

/// What a saver is told of a flat picture: size, format and pitch, and nothing else.
inline Devices::ImageDescription DescribeRows(int width, int height, Devices::EFormat format, std::int32_t rowPitch) {
    Devices::ImageDescription desc;
    desc.width = width;
    desc.height = height;
    desc.format = format;
    desc.rowPitch = rowPitch;
    return desc;
}

/// Sets size, format, pitch and bytes to those of a flat picture in packed rows; all else stays. The row must fit a
/// pitch.
inline void SetPacked(Devices::ImageDescription& desc, int width, int height, Devices::EFormat format) {
    const std::int64_t rowBytes = PackedRowBytes(format, width);
    desc.width = width;
    desc.height = height;
    desc.format = format;
    desc.rowPitch = static_cast<std::int32_t>(rowBytes);
    desc.dataSize = static_cast<std::uint64_t>(rowBytes) * static_cast<std::uint64_t>(height);
}

/// Returns the description of a flat upright picture in packed rows: no alpha that means anything, and the default
/// gamma. The row must fit a pitch.
inline Devices::ImageDescription DescribePacked(int width, int height, Devices::EFormat format) {
    Devices::ImageDescription desc;
    SetPacked(desc, width, height, format);
    desc.depth = 1;
    desc.textureType = Devices::kTexture2D;
    desc.defaultOrientation = true;
    desc.gamma = kDefaultGamma;
    return desc;
}

}  // namespace Kavra::Common
