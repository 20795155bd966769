/// Packing single colours, and what a pixel weighs.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

namespace Kavra::Utilities {

using Devices::EFormat;

/// Static operations only. Threads: any.
class KAVRA_DEVICES_API AFormatConvertor {
public:
    virtual ~AFormatConvertor() = 0;

    /// Bytes of one pixel; 0 for `kUnknown`, values that are no format, and block-compressed formats.
    static int BytesPerPixel(EFormat format);

    /// Bytes of one 4 x 4 block of a block-compressed format (8 or 16), 0 for all others.
    static int BytesPerBlock(EFormat format);

    /// Packs one colour into a pixel of `format` at `out`, where `size` bytes are left. Integer channels are clamped to
    /// 0..1, scaled to their maximum and rounded half up, NaN giving 0; halves round to nearest even; one-channel
    /// formats take red, two-channel formats red and green, three-channel formats drop alpha. False, and nothing
    /// written, when the room is too small or the format has no pixels.
    static bool FloatToFormat(vec4<float>& colour, EFormat format, char* out, unsigned size);

    /// Packs `count` colours (four floats each, any alignment) as so many calls of `FloatToFormat` would, in one go
    /// on the caller's thread. `size` is the room at `out` in bytes; pixels that do not fit are left out, and the
    /// result is how many were written.
    static std::size_t FloatsToFormat(const float* colours, std::size_t count, EFormat format, char* out,
                                      std::size_t size);
};

}  // namespace Kavra::Utilities
