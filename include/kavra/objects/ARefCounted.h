/// \file
/// Intrusive reference counting.
#pragma once

#include <kavra/objects/HeapOperators.h>
#include <kavra/objects/UString.h>

#include <atomic>

namespace Kavra::Objects {

/// An object that destroys itself when its last reference goes. It is made with `new` and starts with a count of 0:
/// whoever keeps it calls `AddRef` first, and `ReleaseRef` when done.
///
///     IImage* image = handler->CreateImage(256, 256, kR8G8B8A8);   // count 0: nobody's yet
///     image->AddRef();                                             // count 1: ours
///     image->Save(path);
///     image->ReleaseRef();                                         // count 0: destroyed
///
/// An object that is never referenced is never destroyed, so take and release a reference even where it is not needed.
///
/// Vtable slots: 0 destructor, 1 `GetInterface`, 2 `ClassName`, 3 `Delete`, 4 `AddRef`, 5 `ReleaseRef`,
/// 6 `RefCount(int)`, 7 `RefCount()`, 8 `CurObjectCount`.
///
/// Threads: the count is atomic, so references may be taken and released from any thread; the last one to release sees
/// what the others wrote to the object. Everything else is the derived class's rule.
class KAVRA_OBJECTS_API ARefCounted : public HeapOperators {
public:
    /// Makes an object without references.
    ARefCounted();
    /// A copy is an object of its own: it starts without references.
    ARefCounted(const ARefCounted&);
    /// Assignment leaves both counts alone.
    ARefCounted& operator=(const ARefCounted&);
    virtual ~ARefCounted();

    /// The view of this object that `id` names, or null when it has none of that name; the base knows none. Takes no
    /// reference.
    virtual void* GetInterface(UString* id);

    /// The class's interned name.
    virtual UString* ClassName() const = 0;

protected:
    /// Destroys the object; called when the count falls to 0.
    virtual void Delete();

public:
    /// Takes a reference.
    virtual void AddRef();
    /// Gives a reference back; the one that brings the count from 1 to 0 destroys the object.
    virtual void ReleaseRef();
    /// Sets the count outright, without destroying anything; for hosts that hand objects over.
    virtual void RefCount(int count);
    /// How many references there are. Other threads may have changed the number by the time it is looked at.
    virtual int RefCount() const;

    /// How many objects of this class are alive in the process.
    virtual int CurObjectCount() const = 0;

private:
    std::atomic<int> mRefCount{0};
};

}  // namespace Kavra::Objects
