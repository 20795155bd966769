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

/// Fills `out` with the entries `entryOf(0)`, `entryOf(1)` and so on, which may depend on anything but `out`.
template <class EntryOf>
void StoreAll(std::span<unsigned char> out, const EntryOf& entryOf) {
    using Entry = decltype(entryOf(std::size_t{0}));
    // Some at a time: for all that the compiler knows, each store may change what the next entry is made of.
    constexpr std::size_t kStep = 16;
    const std::size_t count = out.size() / sizeof(Entry);
    std::size_t x = 0;
    for (; x + kStep <= count; x += kStep) {
        std::array<Entry, kStep> entries;
        for (std::size_t i = 0; i < kStep; ++i)
            entries[i] = entryOf(x + i);
        std::memcpy(out.subspan(x * sizeof(Entry), sizeof entries).data(), entries.data(), sizeof entries);
    }
    for (; x < count; ++x) {
        const Entry entry = entryOf(x);
        std::memcpy(out.subspan(x * sizeof entry, sizeof entry).data(), &entry, sizeof entry);
    }
}

/// Writes the entry of each sample of `in`, one after another. `out` holds exactly these and does not overlap
/// `in`.
template <class Entry>
void LookUp(std::span<unsigned char> out, std::span<const unsigned char> in, const Table256<Entry>& table) {
    StoreAll(out, [&](std::size_t x) { return table[in[x]]; });
}

}  // namespace Kavra::Devices
