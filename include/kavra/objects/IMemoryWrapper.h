/// \file
/// Handles of memory blocks.
#pragma once

#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryAllocator.h>

namespace Kavra::Objects {

/// A memory block whose data pointer both sides read directly. This is what loads and resizes return, as
/// `IMemoryWrapper<void>`:
///
///     IMemoryWrapper<void>* block = handler->LoadTexture(...);
///     if (block != nullptr) {
///         Upload(block->mData, desc.rowPitch, desc.dataSize);
///         block->Delete();   // frees the wrapper and the pixels
///     }
///
/// Whoever received the wrapper owns it and destroys it with `Delete`; what happens to the data then is the derived
/// class's rule. The wrapper does not know the size of its data: the description that came with it does.
///
/// Threads: a wrapper has no state but the pointer; it may be read and destroyed on any thread, one at a time.
template <class T>
class IMemoryWrapper : public IDelete {
public:
    T* mData = nullptr;  ///< the first byte of the block, or null for an empty wrapper

protected:
    /// Makes an empty wrapper.
    IMemoryWrapper() = default;
    /// Refers to `data` without taking it over; that is the derived class's decision.
    explicit IMemoryWrapper(T* data) : mData(data) {}
};

/// A memory block that owns its data: a block from a host allocator (`operator new(size, allocator)`, `NewZeroed`),
/// freed with `KavraDelete` when the wrapper goes. `Element` says what the bytes are to the one who made it.
///
/// To keep the data beyond the wrapper take the pointer and set `mData` to null before `Delete`; the data is then the
/// caller's to free with `KavraDelete`.
template <class T, class Element>
class MemoryArrayWrapper : public IMemoryWrapper<T> {
public:
    /// Makes an empty wrapper, whose `mData` may be set to a block later: it is then the wrapper's.
    MemoryArrayWrapper() = default;
    /// Takes over `data`, which may be null.
    explicit MemoryArrayWrapper(T* data) : IMemoryWrapper<T>(data) {}
    MemoryArrayWrapper(const MemoryArrayWrapper&) = delete;
    MemoryArrayWrapper& operator=(const MemoryArrayWrapper&) = delete;

    /// Frees the data with `KavraDelete` and clears the pointer.
    ~MemoryArrayWrapper() override {
        KavraDelete(this->mData);
        this->mData = nullptr;
    }

    /// The data as elements; null when the wrapper is empty.
    Element* Elements() const { return static_cast<Element*>(this->mData); }
};

// Compiled into the host library: a wrapper may outlive the module that made it.
extern template class KAVRA_OBJECTS_API IMemoryWrapper<void>;
extern template class KAVRA_OBJECTS_API MemoryArrayWrapper<void, unsigned char>;

}  // namespace Kavra::Objects
