#include "support/FailingAllocator.h"

#include <algorithm>
#include <new>

namespace Kavra::Tests {

FailingAllocator::FailingAllocator(Objects::IMemoryAllocator*& place, int allowed)
    : mPlace(place), mReal(place), mAllowed(allowed) {
    place = this;
}

FailingAllocator::~FailingAllocator() {
    mPlace = mReal;
}

void FailingAllocator::Take(std::size_t bytes) {
    if (mAllowed == 0) {
        mRefused = true;
        throw std::bad_alloc();
    }
    --mAllowed;
    ++mLive;
    mLargest = std::max(mLargest, bytes);
}

void* FailingAllocator::Allocate(std::size_t bytes) {
    Take(bytes);
    return mReal->Allocate(bytes);
}

void* FailingAllocator::AllocateZeroed(std::size_t bytes) {
    Take(bytes);
    return mReal->AllocateZeroed(bytes);
}

void FailingAllocator::Free(void* block, std::size_t bytes) noexcept {
    --mLive;
    mReal->Free(block, bytes);
}

}  // namespace Kavra::Tests
