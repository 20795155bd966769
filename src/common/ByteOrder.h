/// Numbers inside a block of bytes whose size is known when compiling.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>

namespace Kavra::Common {

/// The integer at `Offset`: `LittleAt<std::uint16_t, 66>(header)`. An offset outside the block does not compile.
template <std::integral T, std::size_t Offset, std::size_t Size>
constexpr T LittleAt(const std::array<unsigned char, Size>& block) {
    static_assert(Offset + sizeof(T) <= Size);
    std::array<unsigned char, sizeof(T)> bytes{};
    std::copy_n(block.begin() + Offset, sizeof(T), bytes.begin());
    const T number = std::bit_cast<T>(bytes);
    return std::endian::native == std::endian::little ? number : std::byteswap(number);
}

template <std::integral T, std::size_t Offset, std::size_t Size>
constexpr T BigAt(const std::array<unsigned char, Size>& block) {
    return std::byteswap(LittleAt<T, Offset>(block));
}

}  // namespace Kavra::Common
