/// What stored values are to light, and back.
#pragma once

#include <kavra/devices/IImageInspector.h>

namespace Kavra::App {

/// A curve between stored values and light.
struct Transfer {
    Devices::ETransferKind kind = Devices::kTransferSrgb;  ///< never `kTransferUnknown`
    double gamma = 2.2;                                    ///< of `kTransferGamma`: the decoding exponent

    bool IsLinear() const { return kind == Devices::kTransferLinear; }
    /// Whether files without a word on their colours show such values right: those of sRGB, and of a power so near to
    /// it (2.2) that every program takes one for the other.
    bool IsForDisplay() const;
};

/// Light as a value by the curve of sRGB (IEC 61966-2-1): 12.92 l up to 0.0031308, then 1.055 l^(1/2.4) - 0.055. Cut to
/// 0..1; NaN is 0. From a table, within 0.000001.
float EncodeSrgb(float light);

/// The inverse: v / 12.92 up to 0.04045, then ((v + 0.055) / 1.055)^2.4. Beyond 1 it goes on; negative values, which
/// the curve does not know, and NaN stay what they are in proportion (v / 12.92).
float DecodeSrgb(float value);

/// A value of any curve as light. A power leaves negative values and NaN as they are.
float Decode(const Transfer& transfer, float value);

}  // namespace Kavra::App
