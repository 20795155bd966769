#include "common/blocks/Bc1Packing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Kavra::Common {

namespace {

/// For each value of 8 bits the ends of `kBits` bits of which a third of the way is nearest to it.
template <int kBits>
constexpr auto kEndsOfOne = [] {
    std::array<std::array<unsigned char, 2>, 256> table{};
    constexpr int kCount = 1 << kBits;
    const auto widened = [](int bits) { return (bits * 510 + kCount - 1) / (2 * (kCount - 1)); };
    for (int value = 0; value < 256; ++value) {
        int least = 1 << 20;
        for (int a = 0; a < kCount; ++a) {
            const int wanted = (3 * value - 2 * widened(a)) * (kCount - 1) / 255;
            for (int b = std::max(wanted - 1, 0); b <= std::min(wanted + 1, kCount - 1); ++b) {
                const int off = 2 * widened(a) + widened(b) - 3 * value;
                // Of equal ones the ends that are near each other, as decoders differ in how they round between them.
                const int cost = 64 * (off < 0 ? -off : off) + (a < b ? b - a : a - b);
                if (cost >= least) continue;
                least = cost;
                table[static_cast<std::size_t>(value)] = {static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b)};
            }
        }
    }
    return table;
}();

}  // namespace

void PackBc1(std::uint32_t first, std::uint32_t second, std::uint32_t indices, unsigned char* out) {
    const std::uint32_t ends = first | second << 16;
    for (unsigned i = 0; i < 4; ++i) {
        out[i] = static_cast<unsigned char>(ends >> 8 * i);
        out[4 + i] = static_cast<unsigned char>(indices >> 8 * i);
    }
}

void PackOneColour(const float* colour, bool inOrder, unsigned char* out) {
    const auto value = [&](std::size_t c) {
        return static_cast<std::size_t>(std::lround(std::clamp(colour[c], 0.0F, 255.0F)));
    };
    const auto &red = kEndsOfOne<5>[value(0)], &green = kEndsOfOne<6>[value(1)], &blue = kEndsOfOne<5>[value(2)];
    const auto packed = [&](std::size_t end) {
        return static_cast<std::uint32_t>(red[end] << 11 | green[end] << 5 | blue[end]);
    };
    std::uint32_t first = packed(0), second = packed(1);
    std::uint32_t index = first == second ? 0 : 2;
    if (inOrder && first < second) {
        std::swap(first, second);
        index = 3;
    }
    PackBc1(first, second, index * 0x55555555U, out);
}

}  // namespace Kavra::Common
