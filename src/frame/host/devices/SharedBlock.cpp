#include "frame/host/devices/SharedBlock.h"

#include "common/Limits.h"
#include "common/isolation/DecoderRequest.h"
#include "common/isolation/SharedMemory.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <sys/mman.h>

#include <new>

namespace Kavra::Devices {

namespace {

/// Takes pages for memory of its own as blocks are made of them, and gives them back as these are freed.
class MappedAllocator final : public Objects::IMemoryAllocator {
public:
    /// Makes a block of the pages, which from then on are the block's.
    void* Adopt(void* pages, std::size_t bytes) {
        tPages = pages;
        return ::operator new(bytes, this);
    }
    void* Allocate(std::size_t /*bytes*/) override { return tPages; }
    void Free(void* block, std::size_t bytes) noexcept override { (void)munmap(block, bytes); }

private:
    static inline thread_local void* tPages = nullptr;
};

/// Blocks may outlive everything else of this library.
MappedAllocator& Allocator() {
    static auto* const allocator = new MappedAllocator;
    return *allocator;
}

}  // namespace

Objects::IMemoryWrapper<void>* NewCopiedBlock(int file, std::uint64_t offset, std::uint64_t bytes) {
    void* const data = ::operator new(bytes, Objects::ObjModel::mDefaultAllocator);
    auto* const wrapper = new Objects::MemoryArrayWrapper<void, unsigned char>(data);
    if (wrapper == nullptr) {
        Objects::KavraDelete(data);
        throw std::bad_alloc();
    }
    const std::uint64_t begin = Common::Sum<std::uint64_t>(offset, Common::kBlockHeaderBytes);
    if (Common::CopyShared(file, begin, {static_cast<unsigned char*>(data), bytes})) return wrapper;
    wrapper->Delete();
    return nullptr;
}

Objects::IMemoryWrapper<void>* NewSharedBlock(int file, std::uint64_t offset, std::uint64_t bytes) {
    const std::uint64_t length = Common::Sum<std::uint64_t>(bytes, Common::kBlockHeaderBytes);
    void* const pages = Common::MapSealed(file, offset, length);
    if (pages == nullptr) return nullptr;
    void* const data = Allocator().Adopt(pages, bytes);
    auto* const wrapper = new Objects::MemoryArrayWrapper<void, unsigned char>(data);
    if (wrapper == nullptr) Objects::KavraDelete(data);
    return wrapper;
}

}  // namespace Kavra::Devices
