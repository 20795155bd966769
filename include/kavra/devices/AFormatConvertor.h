/// \file
/// Packing single colours, and what a pixel weighs.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

/// Pixel helpers of the host: sizes of pixels, single colours, whole-buffer converters.
namespace Kavra::Utilities {

using Devices::EFormat;

/// Sizes of pixels and blocks, and the packing of float colours into any format. Static operations only; nothing is
/// allocated and nothing thrown. Threads: any.
class KAVRA_DEVICES_API AFormatConvertor {
public:
    virtual ~AFormatConvertor() = 0;

    /// Returns the bytes of one pixel, 1 to 16; 0 for `kUnknown`, values that are no format, and block-compressed
    /// formats. A packed row takes this times the width, which may pass 31 bits: multiply in 64.
    static int BytesPerPixel(EFormat format);

    /// Returns the bytes of one 4 x 4 block of a block-compressed format (8 or 16), 0 for all others.
    static int BytesPerBlock(EFormat format);

    /// Packs one colour (x red, y green, z blue, w alpha) into a pixel of `format` at `out`, where `size` bytes are
    /// left. `out` needs no alignment, and `colour` is not changed.
    ///
    /// - Integer channels are limited to 0 to 1, scaled to their maximum and rounded half up; NaN gives 0.
    /// - Halves round to nearest even; values beyond their range become infinite. Floats are copied.
    /// - One-channel formats take red, two-channel formats red and green; `kR32G32B32F` drops alpha; X formats get the
    ///   alpha in their fourth byte.
    ///
    /// False, and nothing written, when the pixel does not fit `size` or the format has no bytes per pixel.
    static bool FloatToFormat(vec4<float>& colour, EFormat format, char* out, unsigned size);

    /// Packs `count` colours (four floats each, any alignment) as so many calls of `FloatToFormat` would, in one go on
    /// the caller's thread. `size` is the capacity at `out` in bytes; pixels that do not fit are left out. Returns how
    /// many were written.
    static std::size_t FloatsToFormat(const float* colours, std::size_t count, EFormat format, char* out,
                                      std::size_t size);
};

}  // namespace Kavra::Utilities
