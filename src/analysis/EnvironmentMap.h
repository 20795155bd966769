/// Equirectangular environment maps in memory: which pixel formats they may have, and where their pixels lie.
///
/// A map is the inside of a sphere, seen from its centre and unrolled. `u` runs with the columns, `v` with the rows,
/// both from 0 to 1:
///
///            u = 0      1/4      1/2      3/4       1
///     v = 0    +---------+--------+--------+--------+     +y: the zenith, all of the first row
///              |         |        |        |        |
///        1/2  +z        -x       -z       +x       +z     the horizon
///            behind    left     ahead    right   behind
///              |         |        |        |        |
///         1    +---------+--------+--------+--------+     -y: the nadir, all of the last row
///
/// y is up, x is right, -z is ahead, so the axes are right-handed. With the angle from the zenith
/// theta = pi v and the angle round the vertical phi = 2 pi u:
///
///     x = -sin(theta) sin(phi)     y = cos(theta)     z = sin(theta) cos(phi)
///     u = atan2(-x, z) / (2 pi), plus 1 where that is negative     v = acos(y) / pi
#pragma once

#include <kavra/devices/ImageDescription.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Kavra::Analysis {

/// How the four channels of a pixel are stored. The colours are read as floats: bytes times `kByteScale`, halves and
/// floats as they are; the fourth channel is never looked at.
enum class PixelKind : std::uint8_t { kRedFirstBytes, kBlueFirstBytes, kHalves, kFloats };

constexpr float kByteScale = 1.0F / 255.0F;

/// What a colour adds to the luminance: the middle row of the matrix from linear RGB to CIE XYZ for the primaries and
/// the white point of ITU-R BT.709, to six places (C. Poynton, "Frequently Asked Questions about Color", 1997, question
/// 18). They add up to 1.
constexpr double kRedWeight = 0.212671, kGreenWeight = 0.71516, kBlueWeight = 0.072169;

/// Bytes of one pixel.
constexpr std::size_t PixelBytes(PixelKind kind) {
    return kind == PixelKind::kFloats ? 16 : kind == PixelKind::kHalves ? 8 : 4;
}

/// A view of a map; owns nothing. The pixels may have any alignment.
struct EnvironmentMap {
    PixelKind kind;
    std::int32_t width;    ///< pixels per row; a size below 1 is an empty map
    std::int32_t height;   ///< rows
    std::ptrdiff_t pitch;  ///< bytes from one row to the next: may be anything, also negative
    const unsigned char* firstRow;

    const unsigned char* Row(std::size_t y) const { return firstRow + static_cast<std::ptrdiff_t>(y) * pitch; }
};

/// The map that `desc` describes at `data`; nothing when there is no data, the texture is not a two-dimensional one, or
/// its pixels are not four channels of bytes, halves or floats.
std::optional<EnvironmentMap> EnvironmentMapOf(const Devices::ImageDescription& desc, const void* data);

}  // namespace Kavra::Analysis
