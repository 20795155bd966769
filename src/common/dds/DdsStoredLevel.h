/// Levels of textures: from the bytes as they are stored to the pixels or blocks as they are delivered.
#pragma once

#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <cstdio>
#include <span>

namespace Kavra::Devices::Dds {

/// Reads all slices of one face of a level, whose bytes begin where the file stands. `out` takes them in the layout's
/// format. False where the file ends early or cannot be read. Throws `std::bad_alloc`.
bool ReadStoredLevel(std::FILE* file, const StoredLayout& layout, const Extent& levelSize, unsigned char* out);

/// The same from memory, which holds `StoredLevelBytes`.
void DeliverLevel(std::span<const unsigned char> stored, const StoredLayout& layout, const Extent& levelSize,
                  unsigned char* out);

}  // namespace Kavra::Devices::Dds
