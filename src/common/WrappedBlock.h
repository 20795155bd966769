/// Pixel blocks on their way to the host.
#pragma once

#include "common/PixelBlock.h"

#include <kavra/objects/IMemoryWrapper.h>

namespace Kavra::Common {

/// Hands a block on to the caller, in a wrapper that frees it. Null when there is no memory for the wrapper; the block
/// is freed then.
inline Objects::IMemoryWrapper<void>* WrapBlock(PixelBlock block) {
    auto* const wrapper = new Objects::MemoryArrayWrapper<void, unsigned char>(block.get());
    if (wrapper != nullptr) (void)block.release();
    return wrapper;
}

}  // namespace Kavra::Common
