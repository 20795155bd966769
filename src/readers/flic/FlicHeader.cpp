#include "readers/flic/FlicHeader.h"

#include "readers/ByteOrder.h"

#include <array>

namespace Kavra::Devices {

namespace {

constexpr std::uint16_t kFli = 0xAF11;
constexpr std::uint16_t kFlc = 0xAF12;
constexpr std::size_t kBytesThroughKind = 6;

}  // namespace

std::optional<FlicHeader> ReadFlicHeader(ByteSource& source) {
    std::array<unsigned char, 12> bytes{};
    if (!source.Seek(0) || source.ReadSome(bytes) < kBytesThroughKind) return std::nullopt;
    const auto kind = LittleAt<std::uint16_t, 4>(bytes);
    if (kind != kFli && kind != kFlc) return std::nullopt;
    return FlicHeader{.frames = LittleAt<std::uint16_t, 6>(bytes),
                      .width = LittleAt<std::uint16_t, 8>(bytes),
                      .height = LittleAt<std::uint16_t, 10>(bytes)};
}

}  // namespace Kavra::Devices
