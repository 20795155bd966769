/// The opcodes of a picture by name, and the lengths of those that draw no pixels.
#pragma once

#include "common/ByteSource.h"

#include <cstdint>

namespace Kavra::Devices {

/// The opcodes that mean something here. The same numbers in version 1, where they have one byte.
namespace PictOpcode {
inline constexpr std::uint16_t kBackgroundPattern = 0x12;
inline constexpr std::uint16_t kPenPattern = 0x13;
inline constexpr std::uint16_t kFillPattern = 0x14;
inline constexpr std::uint16_t kForeground = 0x1A;
inline constexpr std::uint16_t kBackground = 0x1B;
inline constexpr std::uint16_t kOperationColour = 0x1F;
inline constexpr std::uint16_t kBitsRect = 0x90;
inline constexpr std::uint16_t kBitsRegion = 0x91;
inline constexpr std::uint16_t kPackBitsRect = 0x98;
inline constexpr std::uint16_t kPackBitsRegion = 0x99;
inline constexpr std::uint16_t kDirectBitsRect = 0x9A;
inline constexpr std::uint16_t kEnd = 0xFF;
}  // namespace PictOpcode

/// Skips what follows any other opcode. False when the source ends in it, or a length is less than its own two bytes.
bool SkipPictOperands(Common::ByteSource& source, std::uint16_t opcode);

}  // namespace Kavra::Devices
