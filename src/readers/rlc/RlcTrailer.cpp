#include "readers/rlc/RlcTrailer.h"

#include "readers/ByteOrder.h"

#include <algorithm>
#include <cstdint>

namespace Kavra::Devices {

std::optional<RlcTrailer> ReadRlcTrailer(ByteSource& source) {
    constexpr std::array<unsigned char, 16> kSignature = {0,    0,    0,    0,    0,    0,    0,    0,
                                                          0x1A, 0x1A, 0x55, 0x64, 0x73, 0x82, 0x43, 0x4A};
    constexpr std::uint64_t kBytes = std::tuple_size_v<RlcTrailer>;
    if (source.Size() <= kBytes) return std::nullopt;
    const auto trailer = source.BytesAt<kBytes>(source.Size() - kBytes);
    if (!trailer || !std::ranges::starts_with(*trailer, kSignature)) return std::nullopt;
    return *trailer;
}

bool HasDirectory(const RlcTrailer& trailer) {
    return LittleAt<std::int16_t, 26>(trailer) == 2;
}

}  // namespace Kavra::Devices
