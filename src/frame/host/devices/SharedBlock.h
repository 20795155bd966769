/// Pixel blocks that another process made.
#pragma once

#include <kavra/objects/IMemoryWrapper.h>

#include <cstdint>

namespace Kavra::Devices {

/// A wrapper of `bytes` bytes of an unnamed file, behind a block's header that begins at `offset`, which is a page's. The
/// file is sealed: it neither shrinks nor grows any more. Null where it is shorter than that or cannot be mapped. The
/// block is one as all others; its pages go when it is deleted.
Objects::IMemoryWrapper<void>* NewSharedBlock(int file, std::uint64_t offset, std::uint64_t bytes);

/// A block of the host's own memory with the same bytes, whoever may still write to the file. Null where it is shorter than
/// that. Throws `std::bad_alloc`.
Objects::IMemoryWrapper<void>* NewCopiedBlock(int file, std::uint64_t offset, std::uint64_t bytes);

}  // namespace Kavra::Devices
