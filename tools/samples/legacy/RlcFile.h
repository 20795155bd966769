/// RLC run-length rasters.
#pragma once

#include "legacy/Bitmap.h"
#include "legacy/ByteBuilder.h"

#include <cstdint>
#include <span>

namespace Kavra::Legacy {

/// The image's rows as runs of bits that are 1, each from the right end of the row to its left, positions counted
/// from the right. Sides are at most 32767.
ByteBuilder RlcFile(const Bitmap& image);

/// An entry of the directory that may end a file.
struct RlcEntry {
    unsigned type = 2;            ///< 2: an image in this file, 4: a reference to another one
    std::uint32_t reference = 0;  ///< of a reference: where its record of 200 bytes lies
};

/// Adds the trailer of 344 bytes with a directory of at most 20 entries.
void AddRlcDirectory(ByteBuilder& file, std::span<const RlcEntry> entries);

/// Adds the record of a reference to another file, by a path of at most 143 bytes.
void AddRlcReference(ByteBuilder& file, std::string_view path);

}  // namespace Kavra::Legacy
