/// The bits of a block.
#pragma once

#include <array>
#include <cstdint>

namespace Kavra::Common {

/// Writes 128 bits, the lowest first.
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
        for (unsigned i = 0; i < 16; ++i)
            out[i] = static_cast<unsigned char>(mWords[i / 8] >> 8 * (i % 8));
    }

private:
    std::array<std::uint64_t, 2> mWords{};
    unsigned mAt = 0;
};

}  // namespace Kavra::Common
