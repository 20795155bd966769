#include "frame/host/objects/BuiltInAllocator.h"

#include <kavra/objects/HeapOperators.h>
#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace Kavra::Objects {
namespace {

/// Stands in front of every block and says how to free it. Its size keeps the data behind it aligned; the check value
/// is next to the data, where the first byte written too far in front of it falls.
struct alignas(64) Header {
    IMemoryAllocator* owner;
    std::size_t bytes;
    std::uint64_t unused[5];
    std::uint64_t check;
};
static_assert(sizeof(Header) == 64);

constexpr std::uint64_t kLive = 0x4B61767261426C6B;   // "KavraBlk"
constexpr std::uint64_t kFreed = 0x6B6C424172766147;  // nothing like it

/// A value that a header has only where it was made, and only while nobody has written over it.
std::uint64_t CheckOf(const Header& header) {
    return kLive ^ reinterpret_cast<std::uintptr_t>(&header) ^ reinterpret_cast<std::uintptr_t>(header.owner) ^
           (header.bytes * 0x9E3779B97F4A7C15);
}

/// Freeing what is no block, or twice, means that the heap cannot be trusted any more.
[[noreturn]] void StopOnBadBlock() {
    constexpr std::string_view text = "kavra: fatal: a memory block was freed twice, overwritten, or never allocated\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, text.data(), text.size());
    std::abort();
}

/// Built-in allocators are told what is the header's, so that ceiling and counters speak of the caller's bytes.
void* RawBlock(IMemoryAllocator* owner, std::size_t bytes, Contents contents) {
    if (BuiltInAllocator* const builtIn = AsBuiltIn(owner)) return builtIn->Give(bytes, sizeof(Header), contents);
    if (bytes > SIZE_MAX - sizeof(Header)) throw std::bad_alloc();
    const std::size_t all = bytes + sizeof(Header);
    void* const block = contents == Contents::kZero ? owner->AllocateZeroed(all) : owner->Allocate(all);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* NewBlock(IMemoryAllocator* owner, std::size_t bytes, Contents contents) {
    if (owner == nullptr) owner = __atomic_load_n(&ObjModel::mDefaultAllocator, __ATOMIC_ACQUIRE);
    auto* const header = ::new (RawBlock(owner, bytes, contents)) Header{owner, bytes, {}, 0};
    header->check = CheckOf(*header);
    return header + 1;
}

void* NewObject(std::size_t bytes) noexcept {
    try {
        return NewBlock(__atomic_load_n(&ObjModel::mHeapAllocator, __ATOMIC_ACQUIRE), bytes, Contents::kAny);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

void* NewZeroed(std::size_t bytes, IMemoryAllocator* allocator) {
    return NewBlock(allocator, bytes, Contents::kZero);
}

void KavraDelete(void* block) noexcept {
    if (block == nullptr) return;
    Header* const header = static_cast<Header*>(block) - 1;
    if (header->check != CheckOf(*header)) StopOnBadBlock();
    const_cast<volatile std::uint64_t&>(header->check) = kFreed;  // volatile: nobody is to read it, unless by mistake
    if (BuiltInAllocator* const builtIn = AsBuiltIn(header->owner)) {
        builtIn->TakeBack(header, header->bytes, sizeof(Header));
    } else {
        header->owner->Free(header, header->bytes + sizeof(Header));
    }
}

void* HeapOperators::operator new(std::size_t bytes) noexcept {
    return NewObject(bytes);
}

void* HeapOperators::operator new[](std::size_t bytes) noexcept {
    return NewObject(bytes);
}

void HeapOperators::operator delete(void* block) noexcept {
    KavraDelete(block);
}

void HeapOperators::operator delete[](void* block) noexcept {
    KavraDelete(block);
}

IMemoryAllocator::~IMemoryAllocator() = default;

void* IMemoryAllocator::AllocateZeroed(std::size_t bytes) {
    void* const block = Allocate(bytes);
    std::memset(block, 0, bytes);
    return block;
}

}  // namespace Kavra::Objects

void* operator new(std::size_t bytes, Kavra::Objects::IMemoryAllocator* allocator) {
    using namespace Kavra::Objects;
    return NewBlock(allocator, bytes, Contents::kAny);
}

void operator delete(void* block, Kavra::Objects::IMemoryAllocator*) noexcept {
    Kavra::Objects::KavraDelete(block);
}
