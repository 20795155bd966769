/// A texture that changes its size, band by band: rows are read, brought to the chosen format and resized, and none is
/// kept longer than that takes.
#pragma once

#include "load/TextureLoader.h"
#include "load/geometry/Raster.h"

#include <cstdint>

namespace Kavra::Devices {

/// From what was read to the chosen format, in a block of its own where that changes anything. Any number of whole rows.
Pixels ToChosenFormat(const TextureLoad& load, Pixels pixels);

/// Reads a texture that changes its size, as `nativeSpec` or `targetSpec` (`as`). Empty where the file cannot be read.
/// Throws what the allocator and the library throw.
Raster ReadInBands(TextureLoad& load, const OIIO::ImageSpec& as);

/// Bytes that `ReadInBands` holds at a time at most, with the result and without what the library holds by itself.
std::uint64_t BytesInBands(const TextureLoad& load);

}  // namespace Kavra::Devices
