#include "readers/pict/PictProbe.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace Kavra::Devices {

using Common::BigAt;
using Common::ByteSource;

namespace {

constexpr std::uint64_t kPreambleBytes = 512;
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kVersionOffset = 10;

using Start = std::array<unsigned char, 512>;  // of the picture, after the preamble

/// Compared as unsigned numbers: a frame that reaches above or left of the origin is empty.
bool HasFrame(const Start& start) {
    const auto top = BigAt<std::uint16_t, 2>(start), left = BigAt<std::uint16_t, 4>(start);
    const auto bottom = BigAt<std::uint16_t, 6>(start), right = BigAt<std::uint16_t, 8>(start);
    return top < bottom && left < right;
}

/// The opcode 0x0011 with its operand 0x02FF; any number of zero bytes may stand before it.
bool HasVersion2(const Start& start) {
    constexpr std::array<unsigned char, 3> kVersion2 = {0x11, 0x02, 0xFF};
    const auto rest = std::span(start).subspan(kVersionOffset + 1);
    const auto opcode = std::ranges::find_if(rest, [](unsigned char byte) { return byte != 0; });
    return std::ranges::starts_with(std::ranges::subrange(opcode, rest.end()), kVersion2);
}

}  // namespace

bool IsPict(ByteSource& source) {
    if (source.Size() <= 1024 || source.Size() > kMostBytes) return false;
    const auto start = source.BytesAt<std::tuple_size_v<Start>>(kPreambleBytes);
    if (!start) return false;
    const std::uint64_t pictureSize = BigAt<std::uint16_t, 0>(*start);
    if (pictureSize > source.Size() || !HasFrame(*start)) return false;
    switch ((*start)[kVersionOffset]) {
        case 0x11:  // here the size must be that of the whole file, preamble included
            return (*start)[kVersionOffset + 1] == 0x01 && pictureSize == source.Size();
        case 0x00:
            return HasVersion2(*start);
        default:
            return false;
    }
}

}  // namespace Kavra::Devices
