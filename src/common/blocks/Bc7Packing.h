/// Blocks of BC7 as bits, and the pixels in them.
#pragma once

#include "common/blocks/Bc7Layout.h"

#include <optional>

namespace Kavra::Common {

/// Writes the 16 bytes of a block. Indices are as the layout asks: their highest bit is 0 where it is left out.
void PackBc7(const Bc7Block& block, unsigned char* out);

/// What a block holds; nothing of the reserved kind, whose first byte is 0.
std::optional<Bc7Block> UnpackBc7(const unsigned char* block);

/// Turns the ends of subsets whose left out bit is set, and their indices, so that it is 0. The colours stay.
void TurnEndsOfBc7(Bc7Block& block);

}  // namespace Kavra::Common
