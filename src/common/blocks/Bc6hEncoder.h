/// Encoding blocks of 4 x 4 pixels as BC6H.
#pragma once

#include "common/blocks/BlockEncoders.h"

namespace Kavra::Common {

/// Encodes `count` blocks of `kBlockFloats` floats each into 16 bytes each. Red, green and blue are the bits of halves as
/// whole numbers, which grow like the logarithms of the values: 0 to 0x7BFF for 0 to 65,504, with a minus for negative
/// ones where the format is signed. Alpha is not looked at. Errors are those of these numbers. Throws `std::bad_alloc`.
void EncodeBc6h(const float* blocks, std::size_t count, unsigned char* out, bool isSigned, const BlockFit& fit);

}  // namespace Kavra::Common
