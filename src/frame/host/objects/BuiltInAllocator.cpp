#include "frame/host/objects/BuiltInAllocator.h"

#include "frame/host/objects/Immortal.h"

#include <kavra/objects/ObjModel.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

// AddressSanitizer watches the ends of what it allocates itself, and cannot see those of a mapping: under it the large
// blocks come from the C library too.
#if defined(__SANITIZE_ADDRESS__)
#define KAVRA_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KAVRA_ASAN 1
#endif
#endif

namespace Kavra::Objects {
namespace {

#ifdef KAVRA_ASAN
constexpr bool kMapsLargeBlocks = false;
#else
constexpr bool kMapsLargeBlocks = true;
#endif

constexpr std::size_t kAlignment = 64;

constinit Immortal<BuiltInAllocator> gBlocks;
constinit Immortal<BuiltInAllocator> gObjects;

std::size_t MachineMemory() {
    static const std::size_t bytes =
        static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

/// Zeroes memory that the C library got from the system, its whole pages by handing them back untouched.
void ZeroPages(unsigned char* block, std::size_t bytes) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::size_t head = std::min<std::size_t>(bytes, (page - start % page) % page);
    const std::size_t middle = (bytes - head) / page * page;
    const bool dropped = middle != 0 && madvise(block + head, middle, MADV_DONTNEED) == 0;
    std::memset(block, 0, dropped ? head : bytes);
    if (dropped) std::memset(block + head + middle, 0, bytes - head - middle);
}

/// Not rounded up to the alignment, so that memory checkers know where the block ends.
void* NewSmallBlock(std::size_t bytes, Contents contents) {
    void* block = nullptr;
    if (posix_memalign(&block, kAlignment, std::max<std::size_t>(bytes, 1)) != 0) return nullptr;
    if (contents == Contents::kAny) return block;
    if (bytes < kLargeBlockBytes) {
        std::memset(block, 0, bytes);
    } else {
        ZeroPages(static_cast<unsigned char*>(block), bytes);
    }
    return block;
}

bool IsMapped(std::size_t bytes) {
    return kMapsLargeBlocks && bytes >= kLargeBlockBytes;
}

}  // namespace

BuiltInAllocator& BlockAllocator() noexcept {
    return gBlocks.value;
}

BuiltInAllocator& ObjectAllocator() noexcept {
    return gObjects.value;
}

BuiltInAllocator* AsBuiltIn(IMemoryAllocator* allocator) noexcept {
    if (allocator == &gBlocks.value) return &gBlocks.value;
    if (allocator == &gObjects.value) return &gObjects.value;
    return nullptr;
}

IMemoryAllocator* ObjModel::mDefaultAllocator = &gBlocks.value;
IMemoryAllocator* ObjModel::mHeapAllocator = &gObjects.value;

void* BuiltInAllocator::Give(std::size_t bytes, std::size_t extra, Contents contents) {
    NoteRequest(bytes);
    if (bytes > Ceiling() || bytes > PTRDIFF_MAX - extra) throw std::bad_alloc();
    const std::size_t all = bytes + extra;
    void* const block = IsMapped(all) ? NewLargeBlock(all, contents) : NewSmallBlock(all, contents);
    if (block == nullptr) throw std::bad_alloc();
    mLiveBlocks.fetch_add(1, std::memory_order_relaxed);
    mLiveBytes.fetch_add(bytes, std::memory_order_relaxed);
    mTotalBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void BuiltInAllocator::TakeBack(void* block, std::size_t bytes, std::size_t extra) noexcept {
    if (block == nullptr) return;
    if (IsMapped(bytes + extra)) {
        FreeLargeBlock(block);
    } else {
        std::free(block);
    }
    mLiveBlocks.fetch_sub(1, std::memory_order_relaxed);
    mLiveBytes.fetch_sub(bytes, std::memory_order_relaxed);
}

std::size_t BuiltInAllocator::Ceiling() const {
    const std::size_t set = mCeiling;
    return set != 0 ? set : MachineMemory();
}

AllocationCounters BuiltInAllocator::Counters() const {
    return {mLiveBlocks, mLiveBytes, mTotalBlocks, mLargestBytes};
}

void BuiltInAllocator::NoteRequest(std::size_t bytes) {
    std::size_t largest = mLargestBytes.load(std::memory_order_relaxed);
    while (largest < bytes && !mLargestBytes.compare_exchange_weak(largest, bytes, std::memory_order_relaxed)) {
    }
}

}  // namespace Kavra::Objects
