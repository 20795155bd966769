/// Samples of a few bits each, packed into bytes.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace Kavra::Devices {

/// The samples of one byte as one number, so that they are worked on together.
template <unsigned kBits>
using PcxSamples =
    std::conditional_t<kBits == 1, std::uint64_t, std::conditional_t<kBits == 2, std::uint32_t, std::uint16_t>>;

/// For each byte its samples of 1, 2 or 4 bits, the highest first in memory, as a byte each.
template <unsigned kBits>
inline constexpr auto kPcxSamples = [] {
    std::array<PcxSamples<kBits>, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::array<unsigned char, 8 / kBits> samples{};
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<unsigned char>(byte >> (8 - kBits * (i + 1)) & ((1U << kBits) - 1));
        table[byte] = std::bit_cast<PcxSamples<kBits>>(samples);
    }
    return table;
}();

/// Sets the bits from `shift` on of each index to a packed sample, after `flip`, where they are clear. There is room for
/// all samples of the bytes, and for their bits behind `shift`.
template <unsigned kBits>
void AddPcxSamples(std::span<const unsigned char> packed, unsigned flip, unsigned shift,
                   std::span<unsigned char> indices) {
    unsigned char* next = indices.first(packed.size() * 8 / kBits).data();
    for (const unsigned char byte : packed) {
        PcxSamples<kBits> samples = 0;
        std::memcpy(&samples, next, sizeof samples);
        samples |= static_cast<PcxSamples<kBits>>(kPcxSamples<kBits>[byte ^ flip] << shift);  // inside each byte
        std::memcpy(next, &samples, sizeof samples);
        next += sizeof samples;
    }
}

}  // namespace Kavra::Devices
