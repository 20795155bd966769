/// Memory that a child has written, as its host maps it.
#pragma once

#include "common/isolation/Descriptor.h"

#include <cstdint>
#include <span>

namespace Kavra::Common {

/// An empty unnamed file that can grow and be sealed; none where the system makes none.
Descriptor NewSharedMemory();

/// Seals the file against shrinking and growing, and maps `bytes` bytes of it, for reading and writing, from `offset` on.
/// Null where they are not all there. The caller unmaps them.
void* MapSealed(int file, std::uint64_t offset, std::uint64_t bytes);

/// Copies the bytes from `offset` on, whoever may write to the file or make it shorter meanwhile. False where they are not
/// all there.
bool CopyShared(int file, std::uint64_t offset, std::span<unsigned char> out);

}  // namespace Kavra::Common
