/// \file
/// Counting the live objects of a class.
#pragma once

namespace Kavra::Objects {

/// A base that counts the live objects of `T` in `static int T::mNetObjectCount`: up in every constructor, down in the
/// destructor, unchanged by assignment. It has no data members and no virtual functions, so it adds nothing to the
/// layout of `T`. Hosts and tests look at the count to find objects that nobody destroyed.
///
///     class Picture : public NetObjectCountImpl<Picture> {
///     public:
///         static int mNetObjectCount;   // defined in one source file: int Picture::mNetObjectCount = 0;
///     };
///
/// Only `T` itself may derive from it, so nothing else is counted as a `T`.
///
/// Threads: the counter is a plain int that anyone may read; it changes by atomic operations only.
template <class T>
class NetObjectCountImpl {
public:
    /// How many objects of `T` are alive.
    static int NetObjectCount() noexcept { return __atomic_load_n(&T::mNetObjectCount, __ATOMIC_RELAXED); }
    /// Adds one. The constructors do this by themselves.
    static void IncreaseNetObjectCount() noexcept { __atomic_add_fetch(&T::mNetObjectCount, 1, __ATOMIC_RELAXED); }
    /// Takes one away. The destructor does this by itself.
    static void DecreaseNetObjectCount() noexcept { __atomic_sub_fetch(&T::mNetObjectCount, 1, __ATOMIC_RELAXED); }

private:
    friend T;  // nobody else can be counted as a T
    NetObjectCountImpl() noexcept { IncreaseNetObjectCount(); }
    NetObjectCountImpl(const NetObjectCountImpl&) noexcept { IncreaseNetObjectCount(); }
    NetObjectCountImpl& operator=(const NetObjectCountImpl&) noexcept { return *this; }
    ~NetObjectCountImpl() { DecreaseNetObjectCount(); }
};

}  // namespace Kavra::Objects
