/// Objects with static storage that outlive every other.
#pragma once

namespace Kavra::Objects {

/// Holds a `T` that is never destroyed, so it serves code that runs before `main` and after the end of it alike.
/// With a constexpr constructor of `T` it exists before any code runs.
template <class T>
union Immortal {
    T value;

    constexpr Immortal() : value() {}
    constexpr ~Immortal() {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
};

}  // namespace Kavra::Objects
