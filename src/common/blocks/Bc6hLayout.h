/// What blocks of BC6H are made of.
///
/// Khronos Data Format Specification 1.3, chapter 20.2 (the same as Microsoft, "BC6H Format Mode Reference"). A block has
/// one region of colours or two, divided by one of 32 partitions. After the code of the mode follow the bits of the ends
/// in an order of each mode's own, the number of the partition, and the indices, those of each region's first pixel
/// without their highest bit: of 4 bits in one region, of 3 in two.
#pragma once

#include "common/blocks/Bc7Layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Kavra::Common {

struct Bc6hMode {
    int regions;
    int endBits;                   ///< of the first end, and of all where they are not differences
    std::array<int, 3> deltaBits;  ///< of red, green and blue of all other ends
    bool isDelta;                  ///< whether these are differences from the first end
    unsigned code;
    int codeBits;
    /// The bits in their order: "rw0-9" are bits 0 to 9 of red of end w, "rw15-10" the bits 15 down to 10. The ends are w
    /// and x of the first region, y and z of the second.
    std::string_view fields;

    constexpr std::size_t Ends() const { return 2 * static_cast<std::size_t>(regions); }
    constexpr int IndexBits() const { return regions == 2 ? 3 : 4; }
};

inline constexpr std::array<Bc6hMode, 14> kBc6hModes = {{
    {2,
     10,
     {5, 5, 5},
     true,
     0b00,
     2,
     "gy4 by4 bz4 rw0-9 gw0-9 bw0-9 rx0-4 gz4 gy0-3 gx0-4 bz0 gz0-3 bx0-4 bz1 by0-3 ry0-4 bz2 rz0-4 bz3"},
    {2,
     7,
     {6, 6, 6},
     true,
     0b01,
     2,
     "gy5 gz4 gz5 rw0-6 bz0 bz1 by4 gw0-6 by5 bz2 gy4 bw0-6 bz3 bz5 bz4 rx0-5 gy0-3 gx0-5 gz0-3 bx0-5 by0-3 ry0-5 "
     "rz0-5"},
    {2,
     11,
     {5, 4, 4},
     true,
     0b00010,
     5,
     "rw0-9 gw0-9 bw0-9 rx0-4 rw10 gy0-3 gx0-3 gw10 bz0 gz0-3 bx0-3 bw10 bz1 by0-3 ry0-4 bz2 rz0-4 bz3"},
    {2,
     11,
     {4, 5, 4},
     true,
     0b00110,
     5,
     "rw0-9 gw0-9 bw0-9 rx0-3 rw10 gz4 gy0-3 gx0-4 gw10 gz0-3 bx0-3 bw10 bz1 by0-3 ry0-3 bz0 bz2 rz0-3 gy4 bz3"},
    {2,
     11,
     {4, 4, 5},
     true,
     0b01010,
     5,
     "rw0-9 gw0-9 bw0-9 rx0-3 rw10 by4 gy0-3 gx0-3 gw10 bz0 gz0-3 bx0-4 bw10 by0-3 ry0-3 bz1 bz2 rz0-3 bz4 bz3"},
    {2,
     9,
     {5, 5, 5},
     true,
     0b01110,
     5,
     "rw0-8 by4 gw0-8 gy4 bw0-8 bz4 rx0-4 gz4 gy0-3 gx0-4 bz0 gz0-3 bx0-4 bz1 by0-3 ry0-4 bz2 rz0-4 bz3"},
    {2,
     8,
     {6, 5, 5},
     true,
     0b10010,
     5,
     "rw0-7 gz4 by4 gw0-7 bz2 gy4 bw0-7 bz3 bz4 rx0-5 gy0-3 gx0-4 bz0 gz0-3 bx0-4 bz1 by0-3 ry0-5 rz0-5"},
    {2,
     8,
     {5, 6, 5},
     true,
     0b10110,
     5,
     "rw0-7 bz0 by4 gw0-7 gy5 gy4 bw0-7 gz5 bz4 rx0-4 gz4 gy0-3 gx0-5 gz0-3 bx0-4 bz1 by0-3 ry0-4 bz2 rz0-4 bz3"},
    {2,
     8,
     {5, 5, 6},
     true,
     0b11010,
     5,
     "rw0-7 bz1 by4 gw0-7 by5 gy4 bw0-7 bz5 bz4 rx0-4 gz4 gy0-3 gx0-4 bz0 gz0-3 bx0-5 by0-3 ry0-4 bz2 rz0-4 bz3"},
    {2,
     6,
     {6, 6, 6},
     false,
     0b11110,
     5,
     "rw0-5 gz4 bz0 bz1 by4 gw0-5 gy5 by5 bz2 gy4 bw0-5 gz5 bz3 bz5 bz4 rx0-5 gy0-3 gx0-5 gz0-3 bx0-5 by0-3 ry0-5 "
     "rz0-5"},
    {1, 10, {10, 10, 10}, false, 0b00011, 5, "rw0-9 gw0-9 bw0-9 rx0-9 gx0-9 bx0-9"},
    {1, 11, {9, 9, 9}, true, 0b00111, 5, "rw0-9 gw0-9 bw0-9 rx0-8 rw10 gx0-8 gw10 bx0-8 bw10"},
    {1, 12, {8, 8, 8}, true, 0b01011, 5, "rw0-9 gw0-9 bw0-9 rx0-7 rw11-10 gx0-7 gw11-10 bx0-7 bw11-10"},
    {1, 16, {4, 4, 4}, true, 0b01111, 5, "rw0-9 gw0-9 bw0-9 rx0-3 rw15-10 gx0-3 gw15-10 bx0-3 bw15-10"},
}};

inline constexpr std::size_t kBc6hPartitions = 32;

/// Some bits of a component of an end, as they stand in a block.
struct Bc6hField {
    std::uint8_t end = 0;
    std::uint8_t channel = 0;
    std::uint8_t first = 0;  ///< bit
    std::uint8_t bits = 0;
    bool isReversed = false;  ///< from `first` down
};

/// The fields of a mode in their order; the last ones have no bits.
using Bc6hFields = std::array<Bc6hField, 24>;

constexpr Bc6hFields ParseFields(std::string_view text) {
    Bc6hFields fields{};
    std::size_t at = 0, count = 0;
    const auto number = [&] {
        int value = 0;
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
            value = 10 * value + (text[at] - '0');
        return value;
    };
    while (at < text.size()) {
        Bc6hField& field = fields[count++];
        field.channel = static_cast<std::uint8_t>(text[at] == 'r' ? 0 : text[at] == 'g' ? 1 : 2);
        field.end = static_cast<std::uint8_t>(text[at + 1] - 'w');
        at += 2;
        const int first = number();
        int last = first;
        if (at < text.size() && text[at] == '-') {
            ++at;
            last = number();
        }
        field.first = static_cast<std::uint8_t>(first);
        field.isReversed = last < first;
        field.bits = static_cast<std::uint8_t>((last < first ? first - last : last - first) + 1);
        ++at;  // the space
    }
    return fields;
}

inline constexpr auto kBc6hFields = [] {
    std::array<Bc6hFields, kBc6hModes.size()> fields{};
    for (std::size_t mode = 0; mode < fields.size(); ++mode)
        fields[mode] = ParseFields(kBc6hModes[mode].fields);
    return fields;
}();

/// A component of an end of `bits` bits as 16 bits: 0 to 0xFFFF, or of a signed format -0x7FFF to 0x7FFF.
constexpr int WidenedHdr(int value, int bits, bool isSigned) {
    if (!isSigned) {
        if (bits >= 15 || value == 0) return value;
        return value == (1 << bits) - 1 ? 0xFFFF : ((value << 16) + 0x8000) >> bits;
    }
    if (bits >= 16 || value == 0) return value;
    const int size = value < 0 ? -value : value;
    const int widened = size >= (1 << (bits - 1)) - 1 ? 0x7FFF : ((size << 15) + 0x4000) >> (bits - 1);
    return value < 0 ? -widened : widened;
}

/// A block, before it is packed or after it was unpacked.
struct Bc6hBlock {
    int mode = 0;  ///< in `kBc6hModes`
    int partition = 0;
    /// Red, green and blue of both ends of each region: all of them values, none a difference.
    std::array<std::array<std::int32_t, 3>, 4> ends{};
    std::array<unsigned char, 16> indices{};
};

/// Writes the 16 bytes of a block. The ends fit the mode, and indices are as the layout asks: their highest bit is 0
/// where it is left out.
void PackBc6h(const Bc6hBlock& block, unsigned char* out);

/// What a block holds; nothing of the four reserved codes.
std::optional<Bc6hBlock> UnpackBc6h(const unsigned char* block, bool isSigned);

}  // namespace Kavra::Common
