/// Structures that begin with their size, so that later versions can add fields at the end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Kavra::Common {

/// Copies the fields behind `size` that both sides know, by their sizes and by what the structure is here. Sizes, and
/// fields that one side does not know, stay as they are.
template <class T>
void CopyKnownFields(const T& from, T& to) {
    static_assert(std::is_trivially_copyable_v<T> && std::is_same_v<decltype(T::size), std::uint32_t>);
    constexpr std::size_t kFirst = sizeof(T::size);
    const std::size_t known = std::min({std::size_t{from.size}, std::size_t{to.size}, sizeof(T)});
    if (known <= kFirst) return;
    std::memcpy(reinterpret_cast<unsigned char*>(&to) + kFirst, reinterpret_cast<const unsigned char*>(&from) + kFirst,
                known - kFirst);
}

}  // namespace Kavra::Common
