#include <kavra/objects/ARefCounted.h>

namespace Kavra::Objects {

ARefCounted::ARefCounted() = default;

ARefCounted::ARefCounted(const ARefCounted&) : HeapOperators() {}

ARefCounted& ARefCounted::operator=(const ARefCounted&) {
    return *this;
}

ARefCounted::~ARefCounted() = default;

void* ARefCounted::GetInterface(UString*) {
    return nullptr;
}

void ARefCounted::Delete() {
    delete this;
}

void ARefCounted::AddRef() {
    mRefCount.fetch_add(1, std::memory_order_relaxed);
}

void ARefCounted::ReleaseRef() {
    // Whoever destroys the object must see what the other holders wrote to it.
    if (mRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) Delete();
}

void ARefCounted::RefCount(int count) {
    mRefCount.store(count, std::memory_order_release);
}

int ARefCounted::RefCount() const {
    return mRefCount.load(std::memory_order_acquire);
}

}  // namespace Kavra::Objects
