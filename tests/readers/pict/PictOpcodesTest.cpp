#include "readers/ByteBuilder.h"
#include "readers/pict/PictStream.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

/// How many of the bytes the opcode takes.
std::optional<std::uint64_t> Taken(unsigned opcode, const ByteBuilder& operands) {
    ByteSource source = operands.Source();
    if (!SkipPictOperands(source, static_cast<std::uint16_t>(opcode))) return std::nullopt;
    return source.Position();
}

/// Of 600 bytes that all are 1, so that lengths are 1, 0x0101 and 0x01010101.
std::optional<std::uint64_t> TakenOfOnes(unsigned opcode) {
    return Taken(opcode, ByteBuilder().Fill(600, 1));
}

TEST(PictOpcodes, EveryOpcodeOfOneByteHasItsLength) {
    constexpr std::uint64_t kWord = 2 + 0x0101, kRegion = 0x0101, kLong = 0;
    const auto expected = [](unsigned opcode) -> std::uint64_t {
        switch (opcode) {
                // clang-format off
            case 0x01: return kRegion;
            case 0x02: case 0x09: case 0x0A: case 0x10: case 0x20: return 8;
            case 0x03: case 0x05: case 0x08: case 0x0D: case 0x15: case 0x16: case 0x23: return 2;
            case 0x04: case 0x11: return 1;
            case 0x06: case 0x07: case 0x0B: case 0x0C: case 0x0E: case 0x0F: case 0x21: return 4;
            case 0x1D: case 0x22: return 6;
            case 0x24: case 0x25: case 0x26: case 0x27: case 0x2C: case 0x2D: case 0x2E: case 0x2F: return kWord;
            case 0x28: return 4 + 1 + 1;
            case 0x29: case 0x2A: return 1 + 1 + 1;
            case 0x2B: return 2 + 1 + 1;
            case 0xA0: return 2;
            case 0xA1: return 2 + kWord;
            // clang-format on
            default:
                break;
        }
        if (opcode >= 0x30 && opcode <= 0x37) return 8;
        if (opcode >= 0x40 && opcode <= 0x47) return 8;
        if (opcode >= 0x50 && opcode <= 0x57) return 8;
        if (opcode >= 0x60 && opcode <= 0x67) return 12;
        if (opcode >= 0x68 && opcode <= 0x6F) return 4;
        if (opcode >= 0x70 && opcode <= 0x77) return kRegion;
        if (opcode >= 0x80 && opcode <= 0x87) return kRegion;
        if (opcode >= 0x92 && opcode <= 0x97) return kWord;
        if (opcode >= 0x9B && opcode <= 0x9F) return kWord;
        if (opcode >= 0xA2 && opcode <= 0xAF) return kWord;
        if (opcode >= 0xD0 && opcode <= 0xFE) return kLong;
        return 0;
    };
    for (unsigned opcode = 0; opcode < 0xD0; ++opcode)
        EXPECT_EQ(TakenOfOnes(opcode), expected(opcode)) << std::hex << opcode;
    for (unsigned opcode = 0xD0; opcode < 0xFF; ++opcode) {
        EXPECT_EQ(TakenOfOnes(opcode), std::nullopt) << std::hex << opcode << ": 0x01010101 bytes are not there";
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(0).Big16(7).Fill(20, 1)), 11U) << std::hex << opcode;
    }
}

TEST(PictOpcodes, ReservedOpcodesBelow0x8000SkipTwiceTheirHighByteAndOneMoreForBit7) {
    for (const auto& [opcode, bytes] : {std::pair{0x0100U, 2U},
                                        {0x017FU, 2U},
                                        {0x0180U, 3U},
                                        {0x01FFU, 3U},
                                        {0x0200U, 4U},
                                        {0x0C00U, 24U},
                                        {0x7F00U, 254U},
                                        {0x7FFFU, 255U}}) {
        EXPECT_EQ(TakenOfOnes(opcode), bytes) << std::hex << opcode;
    }
}

TEST(PictOpcodes, ReservedOpcodesFrom0x8000HaveNoDataAndFrom0x8100ALongLength) {
    EXPECT_EQ(TakenOfOnes(0x8000), 0U);
    EXPECT_EQ(TakenOfOnes(0x80FF), 0U);
    for (const unsigned opcode : {0x8100U, 0x8200U, 0xFFFFU}) {
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(0).Big16(300).Fill(400, 1)), 304U) << std::hex << opcode;
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(0xFFFF).Big16(0xFFFF).Fill(400, 1)), std::nullopt);
    }
}

TEST(PictOpcodes, TextHasALengthOfOneByteBehindItsPlace) {
    EXPECT_EQ(Taken(0x28, ByteBuilder().Fill(4, 0xFF).Byte(200).Fill(300, 1)), 205U);
    EXPECT_EQ(Taken(0x29, ByteBuilder().Fill(1, 0xFF).Byte(0).Fill(300, 1)), 2U);
    EXPECT_EQ(Taken(0x2A, ByteBuilder().Fill(1, 0xFF).Byte(255).Fill(300, 1)), 257U);
    EXPECT_EQ(Taken(0x2B, ByteBuilder().Fill(2, 0xFF).Byte(9).Fill(300, 1)), 12U);
}

TEST(PictOpcodes, TheDataOfACommentIsSkippedWholeWhateverItsKind) {
    for (const unsigned kind : {150U, 151U, 154U, 7U}) {
        for (const unsigned size : {0U, 1U, 5U, 6U, 7U, 8U, 9U, 60U})
            EXPECT_EQ(Taken(0xA1, ByteBuilder().Big16(kind).Big16(size).Fill(100, 1)), 4 + size) << kind << " " << size;
    }
    EXPECT_EQ(Taken(0xA0, ByteBuilder().Big16(150).Fill(100, 1)), 2U);
}

TEST(PictOpcodes, ARegionThatIsSmallerThanItsOwnSizeIsDamage) {
    for (const unsigned opcode : {0x01U, 0x70U, 0x77U, 0x80U, 0x87U}) {
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(0).Fill(9, 1)), std::nullopt);
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(1).Fill(9, 1)), std::nullopt);
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(2).Fill(9, 1)), 2U);
        EXPECT_EQ(Taken(opcode, ByteBuilder().Big16(10).Fill(9, 1)), 10U);
    }
}

TEST(PictOpcodes, OperandsThatEndWithTheSourceAreWholeAndOneByteLessIsDamage) {
    EXPECT_EQ(Taken(0x60, ByteBuilder().Fill(12, 1)), 12U);
    EXPECT_EQ(Taken(0x60, ByteBuilder().Fill(11, 1)), std::nullopt);
    EXPECT_EQ(Taken(0x24, ByteBuilder().Big16(5).Fill(5, 1)), 7U);
    EXPECT_EQ(Taken(0x24, ByteBuilder().Big16(5).Fill(4, 1)), std::nullopt);
    EXPECT_EQ(Taken(0x24, ByteBuilder().Byte(0)), std::nullopt);
    EXPECT_EQ(Taken(0xD0, ByteBuilder().Big16(0).Byte(0)), std::nullopt);
    EXPECT_EQ(Taken(0x28, ByteBuilder().Fill(4, 0)), std::nullopt);
}

}  // namespace
