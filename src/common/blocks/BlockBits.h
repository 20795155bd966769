/// The 128 bits of a block, the lowest first.
#pragma once

#include "common/blocks/Bc7Layout.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Kavra::Common {

class BitWriter {
public:
    /// `bits` is at most 32; the bits of `value` above them are 0.
    void Put(std::uint32_t value, int bits) {
        const std::uint64_t wide = value;
        const unsigned shift = mAt % 64;
        mWords[mAt / 64] |= wide << shift;
        if (shift + static_cast<unsigned>(bits) > 64) mWords[1] |= wide >> (64 - shift);
        mAt += static_cast<unsigned>(bits);
    }
    void Store(unsigned char* out) const {
        for (std::size_t i = 0; i < 16; ++i)
            out[i] = static_cast<unsigned char>(mWords[i / 8] >> 8 * (i % 8));
    }

private:
    std::array<std::uint64_t, 2> mWords{};
    unsigned mAt = 0;
};

class BitReader {
public:
    explicit BitReader(const unsigned char* block) {
        for (std::size_t i = 0; i < 16; ++i)
            mWords[i / 8] |= std::uint64_t{block[i]} << 8 * (i % 8);
    }
    /// The next bits, 0 to 32 of them.
    std::uint32_t Take(int bits) { return static_cast<std::uint32_t>(TakeLong(bits)); }
    /// The next bits, 0 to 63 of them.
    std::uint64_t TakeLong(int bits) {
        const std::uint64_t value = mWords[0] & ((std::uint64_t{1} << bits) - 1);
        if (bits > 0) {
            mWords[0] = mWords[0] >> bits | mWords[1] << (64 - bits);
            mWords[1] >>= bits;
        }
        return value;
    }

private:
    std::array<std::uint64_t, 2> mWords{};
};

/// `bits` with a 0 more at `place`, 0 to 63, which moves those from there on up.
constexpr std::uint64_t WithZeroAt(std::uint64_t bits, unsigned place) {
    const std::uint64_t below = bits & ((std::uint64_t{1} << place) - 1);
    return below | (bits >> place << 1) << place;
}

/// The indices of a block's 16 pixels, each of as many bits, of which the anchor of each subset lacks the highest.
inline std::array<unsigned char, 16> TakeIndices(BitReader& reader, int bits, int subsets, std::size_t partition) {
    std::uint64_t word = reader.TakeLong(16 * bits - subsets);
    const auto zeroFor = [&](std::size_t pixel) {
        word = WithZeroAt(word, static_cast<unsigned>(static_cast<int>(pixel + 1) * bits - 1));
    };
    zeroFor(0);
    if (subsets == 2) zeroFor(kAnchorOfTwo[partition]);
    if (subsets == 3) {
        const auto [first, second] = std::minmax(kSecondAnchorOfThree[partition], kThirdAnchorOfThree[partition]);
        zeroFor(first);
        zeroFor(second);
    }
    std::array<unsigned char, 16> indices{};
    for (std::uint8_t& index : indices) {
        index = static_cast<std::uint8_t>(word & ((1U << bits) - 1));
        word >>= bits;
    }
    return indices;
}

}  // namespace Kavra::Common
