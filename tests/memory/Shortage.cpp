#include "memory/Shortage.h"

#include <kavra/objects/ObjModel.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace Kavra::Tests {

namespace {

struct Plan {
    bool isOn = false;
    std::size_t granted = 0;
    Refusal refusal = Refusal::kOne;
    bool hasRefused = false;
};
thread_local constinit Plan tPlan;
constinit std::atomic<std::size_t> gHostBlocks{0}, gHeapBlocks{0};

bool Refuses() {
    if (!tPlan.isOn) return false;
    if (tPlan.granted > 0) {
        --tPlan.granted;
        return false;
    }
    if (tPlan.hasRefused && tPlan.refusal == Refusal::kOne) return false;
    tPlan.hasRefused = true;
    return true;
}

void* Take(std::size_t bytes, std::size_t alignment) {
    const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
    return std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
}

void* TakeOrThrow(std::size_t bytes, std::size_t alignment) {
    void* const block = Refuses() ? nullptr : Take(bytes, alignment);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* TakeFromHeap(std::size_t bytes, std::size_t alignment) {
    void* const block = TakeOrThrow(bytes, alignment);
    ++gHeapBlocks;
    return block;
}

void* TakeFromHeapOrNull(std::size_t bytes, std::size_t alignment) noexcept {
    void* const block = Refuses() ? nullptr : Take(bytes, alignment);
    if (block != nullptr) ++gHeapBlocks;
    return block;
}

void GiveToHeap(void* block) noexcept {
    if (block != nullptr) --gHeapBlocks;
    std::free(block);
}

class Allocator final : public Objects::IMemoryAllocator {
public:
    void* Allocate(std::size_t bytes) override {
        void* const block = TakeOrThrow(bytes, 64);
        ++gHostBlocks;
        return block;
    }
    void Free(void* block, std::size_t) noexcept override {
        --gHostBlocks;
        std::free(block);
    }
};
Allocator gAllocator;

}  // namespace

Shortage::Shortage(std::size_t request, Refusal refusal) {
    tPlan = {.isOn = true, .granted = request, .refusal = refusal};
}

Shortage::~Shortage() {
    tPlan.isOn = false;
}

bool Shortage::HasRefused() {
    return tPlan.hasRefused;
}

WatchedAllocators::WatchedAllocators()
    : mBlocks(Objects::ObjModel::mDefaultAllocator), mObjects(Objects::ObjModel::mHeapAllocator) {
    Objects::ObjModel::mDefaultAllocator = Objects::ObjModel::mHeapAllocator = &gAllocator;
}

WatchedAllocators::~WatchedAllocators() {
    Objects::ObjModel::mDefaultAllocator = mBlocks;
    Objects::ObjModel::mHeapAllocator = mObjects;
}

LiveMemory CountLiveMemory() {
    return {gHostBlocks, gHeapBlocks};
}

}  // namespace Kavra::Tests

// The C++ heap of this program and of every library in it.

using Kavra::Tests::GiveToHeap;
using Kavra::Tests::TakeFromHeap;
using Kavra::Tests::TakeFromHeapOrNull;

constexpr std::size_t kPlainAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

void* operator new(std::size_t bytes) {
    return TakeFromHeap(bytes, kPlainAlignment);
}
void* operator new[](std::size_t bytes) {
    return TakeFromHeap(bytes, kPlainAlignment);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return TakeFromHeap(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return TakeFromHeap(bytes, static_cast<std::size_t>(alignment));
}
// All forms that are freed by the operators below: sanitizers bring the others with them, and tell them apart.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return TakeFromHeapOrNull(bytes, kPlainAlignment);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return TakeFromHeapOrNull(bytes, kPlainAlignment);
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return TakeFromHeapOrNull(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return TakeFromHeapOrNull(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    GiveToHeap(block);
}
void operator delete[](void* block) noexcept {
    GiveToHeap(block);
}
void operator delete(void* block, std::size_t) noexcept {
    GiveToHeap(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    GiveToHeap(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    GiveToHeap(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    GiveToHeap(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    GiveToHeap(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    GiveToHeap(block);
}
