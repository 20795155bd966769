/// Formats of blocks that come in two: plain, and with colours on the sRGB curve.
#pragma once

#include <kavra/devices/EFormat.h>

namespace Kavra::Common {

struct SrgbPair {
    Devices::EFormat plain, srgb;
};

inline constexpr SrgbPair kSrgbPairs[] = {{Devices::kBC1, Devices::kBC1Srgb},
                                          {Devices::kBC2, Devices::kBC2Srgb},
                                          {Devices::kBC3, Devices::kBC3Srgb},
                                          {Devices::kBC7, Devices::kBC7Srgb}};

/// The format itself where it is no such sRGB format.
constexpr Devices::EFormat WithoutSrgb(Devices::EFormat format) {
    for (const SrgbPair& pair : kSrgbPairs) {
        if (pair.srgb == format) return pair.plain;
    }
    return format;
}

/// The format itself where there is no such sRGB format of it.
constexpr Devices::EFormat WithSrgb(Devices::EFormat format) {
    for (const SrgbPair& pair : kSrgbPairs) {
        if (pair.plain == format) return pair.srgb;
    }
    return format;
}

constexpr bool IsSrgbFormat(Devices::EFormat format) {
    return WithoutSrgb(format) != format;
}

}  // namespace Kavra::Common
