/// The 128 bits of a block, the lowest first.
#pragma once

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
    /// The next bits, 0 to 16 of them.
    std::uint32_t Take(int bits) {
        const auto value = static_cast<std::uint32_t>(mWords[0] & ((std::uint64_t{1} << bits) - 1));
        if (bits > 0) {
            mWords[0] = mWords[0] >> bits | mWords[1] << (64 - bits);
            mWords[1] >>= bits;
        }
        return value;
    }

private:
    std::array<std::uint64_t, 2> mWords{};
};

}  // namespace Kavra::Common
