/// Memory that is large enough to be a mapping of its own.
#pragma once

#include <cstddef>

namespace Kavra::Objects {

enum class Contents {
    kAny,   ///< whatever the memory holds
    kZero,  ///< every byte zero
};

/// From this size on a block is a mapping of its own: the size of a huge page, so that it holds a whole one.
inline constexpr std::size_t kLargeBlockBytes = std::size_t{2} << 20;

/// A block of at least `bytes` bytes, at most PTRDIFF_MAX, aligned to 64; null when the system has no memory. Fresh
/// memory is zero and is not touched beyond its first page. Memory with `Contents::kAny` may be the block that was kept
/// last.
void* NewLargeBlock(std::size_t bytes, Contents contents) noexcept;

/// Takes back what `NewLargeBlock` gave, for the system or to keep it.
void FreeLargeBlock(void* block) noexcept;

/// Gives the block that is kept, if there is one, back to the system.
void DropKeptBlock() noexcept;

}  // namespace Kavra::Objects
