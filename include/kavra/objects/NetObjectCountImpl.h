/// Counting the live objects of a class.
#pragma once

namespace Kavra::Objects {

/// A base that counts the live objects of `T` in `static int T::mNetObjectCount`: up in every constructor, down
/// in the destructor, unchanged by assignment. It has no data members and no virtual functions, so it adds
/// nothing to the layout of `T`.
///
/// Threads: the counter is a plain int that anyone may read; it changes by atomic operations only.
template <class T>
class NetObjectCountImpl {
public:
    static int NetObjectCount() noexcept { return __atomic_load_n(&T::mNetObjectCount, __ATOMIC_RELAXED); }
    static void IncreaseNetObjectCount() noexcept { __atomic_add_fetch(&T::mNetObjectCount, 1, __ATOMIC_RELAXED); }
    static void DecreaseNetObjectCount() noexcept { __atomic_sub_fetch(&T::mNetObjectCount, 1, __ATOMIC_RELAXED); }

private:
    friend T;  // nobody else can be counted as a T
    NetObjectCountImpl() noexcept { IncreaseNetObjectCount(); }
    NetObjectCountImpl(const NetObjectCountImpl&) noexcept { IncreaseNetObjectCount(); }
    NetObjectCountImpl& operator=(const NetObjectCountImpl&) noexcept { return *this; }
    ~NetObjectCountImpl() { DecreaseNetObjectCount(); }
};

}  // namespace Kavra::Objects
