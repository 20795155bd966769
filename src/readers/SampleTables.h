/// Bytes through tables: what each 8-bit sample or index becomes.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace Kavra::Devices {

/// An entry for each 8-bit sample: a byte, or the four bytes of a pixel.
template <class Entry>
using Table256 = std::array<Entry, 256>;

/// Four bytes in the order in which they stand in memory.
constexpr std::uint32_t PackedPixel(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha) {
    return std::bit_cast<std::uint32_t>(std::array{red, green, blue, alpha});
}

/// Writes the entry of each sample of `in`, one after another. `out` has room for exactly these and does not overlap
/// `in`.
template <class Entry>
void LookUp(std::span<unsigned char> out, std::span<const unsigned char> in, const Table256<Entry>& table) {
    // Some at a time: for all that the compiler knows, each store may change the table and the samples.
    constexpr std::size_t kStep = 16;
    std::size_t x = 0;
    for (; x + kStep <= in.size(); x += kStep) {
        std::array<Entry, kStep> entries;
        for (std::size_t i = 0; i < kStep; ++i)
            entries[i] = table[in[x + i]];
        std::memcpy(out.subspan(x * sizeof(Entry), sizeof entries).data(), entries.data(), sizeof entries);
    }
    for (; x < in.size(); ++x)
        std::memcpy(out.subspan(x * sizeof(Entry), sizeof(Entry)).data(), &table[in[x]], sizeof(Entry));
}

}  // namespace Kavra::Devices
