/// A run of pixels to convert, and how large runs are treated.
#pragma once

#include <cstddef>
#include <span>

namespace Kavra::Common {

/// Any alignment on both sides; `out` and `in` do not overlap.
struct PixelRun {
    std::span<unsigned char> out;       ///< exactly what the pixels of `in` become
    std::span<const unsigned char> in;  ///< whole source elements or pixels
    bool bypassCache = false;           ///< writes around the caches: right for blocks that no cache can hold
};

/// Source and destination bytes up to which one core is done before a second one has woken up.
constexpr std::size_t kSerialBytes = std::size_t{256} << 10;

/// Whether a result of `bytes` bytes would push everything else out of the caches before anyone reads it.
constexpr bool OutgrowsCaches(std::size_t bytes) {
    return bytes >= std::size_t{4} << 20;
}

}  // namespace Kavra::Common
