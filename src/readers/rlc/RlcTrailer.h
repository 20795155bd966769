/// The trailer that may end an RLC file.
#pragma once

#include "readers/ByteSource.h"

#include <array>
#include <cstddef>
#include <optional>

namespace Kavra::Devices {

/// The trailer's bytes. Its own numbers are little-endian; those of the file before it are big-endian.
using RlcTrailer = std::array<unsigned char, 344>;

/// The last 344 bytes of a longer file, when they begin with the trailer's signature. The position of the source does
/// not matter and is not kept.
std::optional<RlcTrailer> ReadRlcTrailer(ByteSource& source);

/// Whether the trailer's directory is valid.
bool HasDirectory(const RlcTrailer& trailer);

}  // namespace Kavra::Devices
