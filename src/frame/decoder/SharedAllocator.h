/// Pixel blocks in memory that a host shares.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Decoder {

/// Hands out blocks of an unnamed file, so that the one that a load returns is the host's without a copy. Small blocks,
/// which cost less to copy than to map, come from the allocator before.
class SharedAllocator final : public Objects::IMemoryAllocator {
public:
    /// `file` is open for writing, empty, and stays its owner's.
    SharedAllocator(int file, Objects::IMemoryAllocator& small) : mFile(file), mSmall(small) {}

    void* Allocate(std::size_t bytes) override;
    void* AllocateZeroed(std::size_t bytes) override;
    void Free(void* block, std::size_t bytes) noexcept override;

    /// Where in the file the block stands that the data belong to, its header first; brings it there if it is elsewhere.
    /// Throws `std::bad_alloc`.
    std::uint64_t OffsetOf(const void* data, std::size_t bytes);

    /// The offset of bytes that are copied into the file. Throws `std::bad_alloc`.
    std::uint64_t Put(std::span<const unsigned char> bytes);

private:
    struct Mapping {
        unsigned char* base;
        std::size_t length;
        std::uint64_t offset;
    };

    Mapping Map(std::size_t bytes);

    int mFile;
    Objects::IMemoryAllocator& mSmall;
    std::mutex mMutex;
    std::uint64_t mEnd = 0;  ///< of what is in use, in the file
    std::vector<Mapping> mMappings;
};

}  // namespace Kavra::Decoder
