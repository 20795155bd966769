/// A pixel block that frees itself unless it is handed on.
#pragma once

#include "common/HostExtras.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <cstddef>
#include <memory>

namespace Kavra::Common {

struct BlockDeleter {
    void operator()(void* block) const noexcept { Objects::KavraDelete(block); }
};

/// Owns a block of the default allocator; `release()` hands it on.
using PixelBlock = std::unique_ptr<unsigned char, BlockDeleter>;

/// `bytes` bytes with unspecified contents, or all zero. Throws `std::bad_alloc`.
inline PixelBlock NewBlock(std::size_t bytes) {
    return PixelBlock(static_cast<unsigned char*>(::operator new(bytes, Objects::ObjModel::mDefaultAllocator)));
}
inline PixelBlock NewZeroedBlock(std::size_t bytes) {
    return PixelBlock(static_cast<unsigned char*>(NewZeroed(bytes)));
}

}  // namespace Kavra::Common
