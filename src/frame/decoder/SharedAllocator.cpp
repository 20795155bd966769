#include "frame/decoder/SharedAllocator.h"

#include "common/isolation/DecoderRequest.h"

#include <kavra/objects/ObjModel.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace Kavra::Decoder {

namespace {

constexpr std::size_t kSmallBytes = std::size_t{128} << 10;
constexpr std::size_t kPageBytes = 4096;

std::size_t Pages(std::size_t bytes) {
    return (bytes + kPageBytes - 1) / kPageBytes * kPageBytes;
}

}  // namespace

SharedAllocator::Mapping SharedAllocator::Map(std::size_t bytes) {
    const bool isTooLarge =
        bytes > PTRDIFF_MAX - kPageBytes || bytes > Objects::ObjModel::BlockCeiling() + Common::kBlockHeaderBytes;
    if (isTooLarge) throw std::bad_alloc();
    const std::size_t length = Pages(std::max<std::size_t>(bytes, 1));
    const std::lock_guard lock(mMutex);
    mMappings.reserve(mMappings.size() + 1);
    if (ftruncate(mFile, static_cast<off_t>(mEnd + length)) != 0) throw std::bad_alloc();
    void* const base = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, mFile, static_cast<off_t>(mEnd));
    if (base == MAP_FAILED) throw std::bad_alloc();
    const Mapping mapping{static_cast<unsigned char*>(base), length, mEnd};
    mMappings.push_back(mapping);
    mEnd += length;
    return mapping;
}

void* SharedAllocator::Allocate(std::size_t bytes) {
    return bytes < kSmallBytes ? mSmall.Allocate(bytes) : Map(bytes).base;
}

void* SharedAllocator::AllocateZeroed(std::size_t bytes) {
    return bytes < kSmallBytes ? mSmall.AllocateZeroed(bytes) : Map(bytes).base;  // what a file grows by is zero
}

void SharedAllocator::Free(void* block, std::size_t bytes) noexcept {
    if (bytes < kSmallBytes) {
        mSmall.Free(block, bytes);
        return;
    }
    const std::lock_guard lock(mMutex);
    const auto found =
        std::ranges::find(mMappings, block, [](const Mapping& mapping) -> void* { return mapping.base; });
    if (found == mMappings.end()) return;
    (void)munmap(found->base, found->length);
    if (found->offset + found->length == mEnd) {
        mEnd = found->offset;
        (void)ftruncate(mFile, static_cast<off_t>(mEnd));
    } else {
        (void)fallocate(mFile, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(found->offset),
                        static_cast<off_t>(found->length));
    }
    mMappings.erase(found);
}

std::uint64_t SharedAllocator::OffsetOf(const void* data, std::size_t bytes) {
    const auto* const block = static_cast<const unsigned char*>(data) - Common::kBlockHeaderBytes;
    {
        const std::lock_guard lock(mMutex);
        const auto found = std::ranges::find(mMappings, block, &Mapping::base);
        if (found != mMappings.end()) return found->offset;
    }
    const Mapping mapping = Map(bytes + Common::kBlockHeaderBytes);
    std::memcpy(mapping.base + Common::kBlockHeaderBytes, data, bytes);
    return mapping.offset;
}

std::uint64_t SharedAllocator::Put(std::span<const unsigned char> bytes) {
    const Mapping mapping = Map(bytes.size());
    std::ranges::copy(bytes, mapping.base);
    return mapping.offset;
}

}  // namespace Kavra::Decoder
