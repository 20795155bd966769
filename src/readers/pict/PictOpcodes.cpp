#include "readers/pict/PictOpcodes.h"

#include "readers/pict/PictPixelMap.h"

#include <array>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

/// What stands behind the bytes that are always there.
enum class Data : std::uint8_t {
    kNone,
    kText,    ///< a length of 1 byte, and so many bytes
    kWord,    ///< a length of 2 bytes, and so many bytes
    kLong,    ///< a length of 4 bytes, and so many bytes
    kRegion,  ///< a length of 2 bytes that counts itself
};

struct Operands {
    std::uint8_t bytes = 0;
    Data data = Data::kNone;
};

struct OpcodeRange {
    std::uint8_t first, last;
    Operands operands;
};

constexpr std::array kRanges = std::to_array<OpcodeRange>({
    {0x01, 0x01, {0, Data::kRegion}},  // clipping, which is undone before anything is drawn
    {0x02, 0x02, {8}},
    {0x03, 0x03, {2}},
    {0x04, 0x04, {1}},
    {0x05, 0x05, {2}},
    {0x06, 0x07, {4}},
    {0x08, 0x08, {2}},
    {0x09, 0x0A, {8}},
    {0x0B, 0x0C, {4}},
    {0x0D, 0x0D, {2}},
    {0x0E, 0x0F, {4}},
    {0x10, 0x10, {8}},
    {0x11, 0x11, {1}},
    {0x15, 0x16, {2}},
    {0x1D, 0x1D, {6}},
    {0x20, 0x20, {8}},
    {0x21, 0x21, {4}},
    {0x22, 0x22, {6}},
    {0x23, 0x23, {2}},
    {0x24, 0x27, {0, Data::kWord}},
    {0x28, 0x28, {4, Data::kText}},
    {0x29, 0x2A, {1, Data::kText}},
    {0x2B, 0x2B, {2, Data::kText}},
    {0x2C, 0x2F, {0, Data::kWord}},
    {0x30, 0x37, {8}},
    {0x40, 0x47, {8}},
    {0x50, 0x57, {8}},
    {0x60, 0x67, {12}},
    {0x68, 0x6F, {4}},
    {0x70, 0x77, {0, Data::kRegion}},
    {0x80, 0x87, {0, Data::kRegion}},
    {0x92, 0x97, {0, Data::kWord}},
    {0x9B, 0x9F, {0, Data::kWord}},
    {0xA0, 0xA0, {2}},
    {0xA1, 0xA1, {2, Data::kWord}},  // a comment: its kind, and data of which none has an effect
    {0xA2, 0xAF, {0, Data::kWord}},
    {0xD0, 0xFE, {0, Data::kLong}},
});

constexpr auto kOperands = [] {
    std::array<Operands, 256> table{};
    for (const OpcodeRange& range : kRanges) {
        for (unsigned opcode = range.first; opcode <= range.last; ++opcode)
            table[opcode] = range.operands;
    }
    return table;
}();

/// The opcodes above 0xFF are reserved; those below 0x8000 carry their length in themselves.
Operands OperandsOf(std::uint16_t opcode) {
    if (opcode < kOperands.size()) return kOperands[opcode];
    if (opcode < 0x8000) return {static_cast<std::uint8_t>(opcode >> 7)};
    if (opcode < 0x8100) return {};
    return {0, Data::kLong};
}

template <std::unsigned_integral Length>
bool SkipCounted(ByteSource& source) {
    const Result<Length> length = source.Big<Length>();
    return length && source.Skip(*length);
}

}  // namespace

bool SkipPictOperands(ByteSource& source, std::uint16_t opcode) {
    const Operands operands = OperandsOf(opcode);
    if (!source.Skip(operands.bytes)) return false;
    switch (operands.data) {
        case Data::kNone:
            return true;
        case Data::kText:
            return SkipCounted<std::uint8_t>(source);
        case Data::kWord:
            return SkipCounted<std::uint16_t>(source);
        case Data::kLong:
            return SkipCounted<std::uint32_t>(source);
        case Data::kRegion:
            return SkipPictRegion(source);
    }
    return false;
}

}  // namespace Kavra::Devices
