/// Handles of memory blocks.
#pragma once

#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryAllocator.h>

namespace Kavra::Objects {

/// A memory block whose data pointer both sides read directly. Destroyed through `Delete`; what happens to the data
/// then is the derived class's rule.
template <class T>
class IMemoryWrapper : public IDelete {
public:
    T* mData = nullptr;

protected:
    IMemoryWrapper() = default;
    explicit IMemoryWrapper(T* data) : mData(data) {}
};

/// A memory block that owns its data: a block from a host allocator, freed with `KavraDelete`.
/// `Element` says what the bytes are to the one who made it.
template <class T, class Element>
class MemoryArrayWrapper : public IMemoryWrapper<T> {
public:
    MemoryArrayWrapper() = default;
    /// Takes over `data`.
    explicit MemoryArrayWrapper(T* data) : IMemoryWrapper<T>(data) {}
    MemoryArrayWrapper(const MemoryArrayWrapper&) = delete;
    MemoryArrayWrapper& operator=(const MemoryArrayWrapper&) = delete;

    ~MemoryArrayWrapper() override {
        KavraDelete(this->mData);
        this->mData = nullptr;
    }

    Element* Elements() const { return static_cast<Element*>(this->mData); }
};

// Compiled into the host library: a wrapper may outlive the module that made it.
extern template class KAVRA_OBJECTS_API IMemoryWrapper<void>;
extern template class KAVRA_OBJECTS_API MemoryArrayWrapper<void, unsigned char>;

}  // namespace Kavra::Objects
