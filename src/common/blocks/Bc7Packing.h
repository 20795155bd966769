/// Blocks of BC7 as bits.
#pragma once

#include "common/blocks/Bc7Layout.h"

namespace Kavra::Common {

/// Writes the 16 bytes of a block. Indices are as the layout asks: their highest bit is 0 where it is left out.
void PackBc7(const Bc7Block& block, unsigned char* out);

/// Turns the ends of subsets whose left out bit is set, and their indices, so that it is 0. The colours stay.
void TurnEndsOfBc7(Bc7Block& block);

}  // namespace Kavra::Common
