#include "frame/host/objects/LargeBlocks.h"

#include "frame/host/objects/Immortal.h"

#include <kavra/objects/ObjModel.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <mutex>
#include <utility>

namespace Kavra::Objects {
namespace {

constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;

struct Mapping {
    void* base = nullptr;
    std::size_t length = 0;

    explicit operator bool() const { return base != nullptr; }
};

/// Stands at the start of a mapping, because a block taken from the kept one may be smaller than its mapping. Its
/// size keeps the block behind it aligned.
struct alignas(64) Label {
    std::size_t length;
};

std::size_t PageBytes() {
    static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

std::size_t RoundUp(std::size_t value, std::size_t unit) {
    return (value + unit - 1) / unit * unit;
}

void Unmap(const Mapping& mapping) {
    if (mapping.length != 0) munmap(mapping.base, mapping.length);
}

/// Fresh zero pages, their start on the border of a huge page: only then can the system back them with huge pages,
/// which costs a third of the time for first touch.
Mapping MapFresh(std::size_t length) {
    const std::size_t reserved = length + kHugePageBytes;
    void* const found = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (found == MAP_FAILED) return {};
    const auto start = reinterpret_cast<std::uintptr_t>(found);
    const std::size_t before = RoundUp(start, kHugePageBytes) - start;
    const Mapping mapping{static_cast<char*>(found) + before, length};
    Unmap({found, before});
    Unmap({static_cast<char*>(mapping.base) + length, reserved - before - length});
    madvise(mapping.base, length, MADV_HUGEPAGE);
    return mapping;
}

/// The one freed mapping that waits for its next use.
class KeptMapping {
public:
    /// The kept mapping when it has `length` bytes and not more than twice as many, else nothing.
    Mapping Take(std::size_t length) {
        const std::lock_guard lock(mMutex);
        if (mKept.length < length) return {};
        if (mKept.length / 2 > length) {
            mPassedOver = true;
            return {};
        }
        return std::exchange(mKept, {});
    }

    /// Keeps `freed` or not; answers with the mapping that is not kept. A smaller mapping takes the place of a larger
    /// one only when that has been too large for somebody: work that needs a large and a small block in turn finds the
    /// large one again, and a single huge block is not held for ever.
    Mapping Put(const Mapping& freed) {
        if (freed.length > Limit()) return freed;
        const std::lock_guard lock(mMutex);
        if (freed.length < mKept.length && !mPassedOver) return freed;
        mPassedOver = false;
        return std::exchange(mKept, freed);
    }

    Mapping TakeAny() {
        const std::lock_guard lock(mMutex);
        return std::exchange(mKept, {});
    }

private:
    /// The bound is on the bytes of a block; its labels take a part of one more page.
    static std::size_t Limit() { return ObjModel::kKeptBlockBytes + PageBytes(); }

    std::mutex mMutex;
    Mapping mKept;
    bool mPassedOver = false;
};

constinit Immortal<KeptMapping> gKept;

Mapping MapAnew(std::size_t length) {
    if (const Mapping fresh = MapFresh(length)) return fresh;
    DropKeptBlock();
    return MapFresh(length);
}

}  // namespace

void* NewLargeBlock(std::size_t bytes, Contents contents) noexcept {
    const std::size_t length = RoundUp(bytes + sizeof(Label), PageBytes());
    Mapping mapping;
    if (contents == Contents::kAny) mapping = gKept.value.Take(length);
    if (!mapping) mapping = MapAnew(length);
    if (!mapping) return nullptr;
    auto* const label = static_cast<Label*>(mapping.base);
    label->length = mapping.length;
    return label + 1;
}

void FreeLargeBlock(void* block) noexcept {
    Label* const label = static_cast<Label*>(block) - 1;
    Unmap(gKept.value.Put({label, label->length}));
}

void DropKeptBlock() noexcept {
    Unmap(gKept.value.TakeAny());
}

}  // namespace Kavra::Objects
