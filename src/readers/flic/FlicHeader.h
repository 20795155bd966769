/// The header of an FLI or FLC animation.
#pragma once

#include "readers/ByteSource.h"

#include <cstdint>
#include <optional>

namespace Kavra::Devices {

/// The fields in use of the 128 bytes at the start, little-endian: size of the file (4 bytes, not trusted), kind (2),
/// frames (2), width (2), height (2).
struct FlicHeader {
    std::uint16_t frames = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

/// The header of a file that says it is FLI or FLC. Of a file that ends inside its header, but not before the kind, the
/// missing bytes are zero. The position of the source does not matter and is not kept.
std::optional<FlicHeader> ReadFlicHeader(ByteSource& source);

}  // namespace Kavra::Devices
