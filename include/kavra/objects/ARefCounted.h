/// Intrusive reference counting.
#pragma once

#include <kavra/objects/HeapOperators.h>
#include <kavra/objects/UString.h>

#include <atomic>

namespace Kavra::Objects {

/// An object that destroys itself when its last reference goes. It starts with a count of 0: whoever keeps it
/// calls `AddRef` first.
///
/// Slots: 0 destructor, 1 `GetInterface`, 2 `ClassName`, 3 `Delete`, 4 `AddRef`, 5 `ReleaseRef`,
/// 6 `RefCount(int)`, 7 `RefCount()`, 8 `CurObjectCount`.
///
/// Threads: the count is atomic, so references may be taken and released from any thread.
class KAVRA_OBJECTS_API ARefCounted : public HeapOperators {
public:
    ARefCounted();
    /// A copy is an object of its own: it starts without references, and assignment leaves both counts alone.
    ARefCounted(const ARefCounted&);
    ARefCounted& operator=(const ARefCounted&);
    virtual ~ARefCounted();

    /// The view of this object that `id` names, or null. The base knows none.
    virtual void* GetInterface(UString* id);

    /// The class's interned name.
    virtual UString* ClassName() const = 0;

protected:
    /// Destroys the object; called when the count falls to 0.
    virtual void Delete();

public:
    virtual void AddRef();
    virtual void ReleaseRef();
    /// Sets the count outright, without destroying anything; for hosts that hand objects over.
    virtual void RefCount(int count);
    virtual int RefCount() const;

    /// How many objects of this class are alive.
    virtual int CurObjectCount() const = 0;

private:
    std::atomic<int> mRefCount{0};
};

}  // namespace Kavra::Objects
