/// Rows of DDS pixels that have no format of their own, turned into one that holds them without loss.
///
/// Integers: unsigned normalised, rounded half up; a channel that is not stored is 0, alpha is full. Floats: the
/// Direct3D rules (https://learn.microsoft.com/windows/win32/direct3d11/floating-point-rules, "Integer Conversion").
#pragma once

#include "common/dds/DdsStoredLayouts.h"

namespace Kavra::Devices::Dds {

/// Channels of up to 8 bits to red, green, blue, alpha of 8 bits; of up to 16 bits to four of 16 bits.
void WidenToBytes(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);
void WidenToShorts(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// Signed and unsigned channels to as many floats as the format has: v / max, the lowest signed value being -1 as its
/// neighbour is. A half tells up to 11 bits apart, a single all 16.
void WidenToHalfs(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);
void WidenToFloats(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// Signed channels as colours of 8 or 16 bits, 0 in the middle of the range: -1 becomes 0, 1 the largest value, also of a
/// channel that is not stored, which is 0. Unsigned channels as above.
void WidenAroundMiddleToBytes(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out,
                              std::size_t width);
void WidenAroundMiddleToShorts(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out,
                               std::size_t width);

/// `kD3dCxV8U8`: two signed bytes of a vector of length 1, whose third part follows from them. Around the middle, too.
void WidenNormals(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// Three floats to four, alpha 1.
void WidenThreeFloats(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// `kDxgiR11G11B10Float`: floats of 5 bits of exponent and 6, 6, 5 of mantissa; to halfs, exactly, alpha 1.
void WidenPackedFloats(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// `kDxgiR9G9B9E5SharedExp`: three mantissas of 9 bits and one exponent; to halfs, exactly, alpha 1.
void WidenSharedExponent(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out,
                         std::size_t width);

/// `kDxgiR10G10B10XrBiasA2Unorm`, of extended range: (v - 384) / 510; to halfs.
void WidenExtendedRange(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// Pairs of pixels that share two of three channels, in four bytes: R G0 B G1, G0 R G1 B and, as BT.601 colour of
/// limited range, Y0 U Y1 V, U Y0 V Y1. To red, green, blue, 255 of 8 bits. The second of the last pair of an odd row
/// is left out.
void WidenRgbg(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);
void WidenGrgb(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);
void WidenYuy2(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);
void WidenUyvy(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

/// Masked Y, U, V and alpha, each brought to 8 bits, to red, green, blue, alpha.
void WidenYuv(const StoredLayout&, std::span<const unsigned char> row, unsigned char* out, std::size_t width);

}  // namespace Kavra::Devices::Dds
