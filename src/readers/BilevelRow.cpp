#include "readers/BilevelRow.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kOctetBytes = 8 * kPixelBytes;

using Octet = std::array<unsigned char, kOctetBytes>;

/// The eight pixels of each byte.
alignas(64) constexpr auto kOctets = [] {
    std::array<Octet, 256> octets{};
    for (std::size_t byte = 0; byte < octets.size(); ++byte) {
        for (std::size_t at = 0; at < kOctetBytes; ++at) {
            const bool set = (byte >> (7 - at / kPixelBytes) & 1) != 0;
            const bool alpha = at % kPixelBytes == 3;
            octets[byte][at] = set || alpha ? 255 : 0;
        }
    }
    return octets;
}();

}  // namespace

void ExpandBilevelRow(std::span<const unsigned char> packed, std::span<unsigned char> pixels) {
    const std::size_t whole = pixels.size() / kOctetBytes;
    for (std::size_t i = 0; i < whole; ++i)
        std::ranges::copy(kOctets[packed[i]], pixels.subspan(i * kOctetBytes).begin());
    const std::size_t rest = pixels.size() % kOctetBytes;
    if (rest == 0) return;
    std::copy_n(kOctets[packed[whole]].begin(), rest, pixels.subspan(whole * kOctetBytes).begin());
}

}  // namespace Kavra::Devices
