/// What an FLI or FLC file says of itself, and the kinds of its chunks.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"

#include <cstdint>

namespace Kavra::Devices {

struct FlicHeader {
    std::uint16_t frames = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

/// The header of a file that says it is FLI or FLC. Of a file that ends inside its header, but not before the kind, the
/// missing bytes are zero. The position of the source does not matter and is not kept.
[[nodiscard]] Common::Result<FlicHeader> ReadFlicHeader(Common::ByteSource& source);

/// Whether the file is one that the reader opens.
bool IsFlic(Common::ByteSource& source);

enum FlicChunkKind : std::uint16_t {
    kFlicColour256 = 4,
    kFlicDeltaFlc = 7,
    kFlicColour64 = 11,
    kFlicDeltaFli = 12,
    kFlicBlack = 13,
    kFlicByteRun = 15,
    kFlicCopy = 16,
    kFlicFrame = 0xF1FA,
};

}  // namespace Kavra::Devices
