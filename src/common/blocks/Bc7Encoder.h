/// Encoding blocks of 4 x 4 pixels as BC7.
#pragma once

#include "common/blocks/BlockEncoders.h"

namespace Kavra::Common {

struct Bc7Fit {
    BlockEffort effort = BlockEffort::kGood;
    /// What an error in red, green, blue and alpha counts, each above 0.
    std::array<float, 4> weights = {1, 1, 1, 1};
};

/// Encodes `count` blocks of `kBlockFloats` floats each into 16 bytes each. Blocks that are opaque stay so exactly.
/// Throws `std::bad_alloc`.
void EncodeBc7(const float* blocks, std::size_t count, unsigned char* out, const Bc7Fit& fit);

}  // namespace Kavra::Common
