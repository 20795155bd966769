#include "readers/ccitt/CcittBits.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Devices::Ccitt;
using Bytes = std::vector<unsigned char>;

/// Takes the lowest byte out of a window that has to hold it.
unsigned TakeByte(Input& input, BitWindow& window) {
    if (window.count < 8) window = input.Refill(window);
    EXPECT_GE(window.count, 8);
    const auto byte = static_cast<unsigned>(window.bits & 0xFF);
    window.Drop(8);
    return byte;
}

Bytes Pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
    return bytes;
}

TEST(CcittInput, DeliversBytesInOrderAcrossItsBuffers) {
    const Bytes bytes = Pattern(40'000);
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kLeastSignificantFirst);
    BitWindow window = input.Window();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(input.Position(window), i * 8);
        ASSERT_EQ(TakeByte(input, window), bytes[i]) << i;
    }
    EXPECT_LE(input.Refill(window).count, 0);
}

TEST(CcittInput, TurnsTheBitsOfBytesThatBeginAtTheHighest) {
    const Bytes bytes = {0x80, 0x01, 0b11010000, 0xFF, 0x00};
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kMostSignificantFirst);
    BitWindow window = input.Window();
    for (const unsigned expected : {0x01U, 0x80U, 0b00001011u, 0xFFU, 0x00U})
        EXPECT_EQ(TakeByte(input, window), expected);
}

TEST(CcittInput, BitsBehindTheLastOneAreZeros) {
    const Bytes bytes = {0xFF, 0xFF};
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kLeastSignificantFirst);
    BitWindow window = input.Refill(input.Window());
    EXPECT_EQ(window.count, 16);
    EXPECT_EQ(window.bits, 0xFFFFU);
    EXPECT_FALSE(input.IsBeyondEnd(16));
    EXPECT_TRUE(input.IsBeyondEnd(17));
    window.Drop(20);
    EXPECT_EQ(input.Refill(window).count, 0);
    EXPECT_EQ(input.Refill(window).bits, 0U);
}

TEST(CcittInput, ARowThatIsGivenUpLeavesItsBitsAndTakesItsBytes) {
    const Bytes bytes = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66};
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kLeastSignificantFirst);
    // A row of 4 bits whose look-up took 7: one byte is drawn, half of it stands ready.
    BitWindow window = input.Refill(input.Window());
    window.Drop(4);
    input.Keep(window, 7);
    // The next one took look-ups up to bit 17: two more bytes are drawn.
    input.GiveUp(17);
    window = input.Refill(input.Window());
    EXPECT_EQ(window.bits & 0xF, 0x1U) << "the upper half of the first byte";
    window.Drop(4);
    EXPECT_EQ(TakeByte(input, window), 0x44U) << "behind the second and third";
    EXPECT_EQ(input.Position(window), 32U);
}

TEST(CcittInput, GivingUpTwiceDrawsFurtherBytesAndKeepsTheSameBits) {
    const Bytes bytes = {0xA1, 0xB2, 0xC3, 0xD4};
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kLeastSignificantFirst);
    BitWindow window = input.Refill(input.Window());
    window.Drop(4);
    input.Keep(window, 8);
    window = input.Refill(input.Window());
    input.GiveUp(9);
    // 4 bits stand ready again; the byte behind them is the third.
    window = input.Refill(input.Window());
    EXPECT_EQ(window.bits & 0xFFF, 0xC3AU);
    input.GiveUp(input.Position(window) + 5);
    window = input.Refill(input.Window());
    EXPECT_EQ(window.bits, 0xD4AU);
    EXPECT_EQ(window.count, 12);
}

TEST(CcittInput, ARowMayBeGivenUpAtTheEdgeOfABuffer) {
    const Bytes bytes = Pattern(20'000);
    for (std::size_t at = 8180; at < 8200; ++at) {
        ByteSource source{std::span<const unsigned char>(bytes)};
        Input input(source, BitOrder::kLeastSignificantFirst);
        BitWindow window = input.Window();
        for (std::size_t i = 0; i < at; ++i)
            (void)TakeByte(input, window);
        input.Keep(window, at * 8);
        window = input.Refill(input.Window());
        input.GiveUp(at * 8 + 1);
        window = input.Window();
        EXPECT_EQ(window.count, 0);
        EXPECT_EQ(TakeByte(input, window), bytes[at + 1]) << at;
    }
}

TEST(CcittInput, NothingIsLeftOnceFinished) {
    const Bytes bytes = Pattern(100);
    ByteSource source{std::span<const unsigned char>(bytes)};
    Input input(source, BitOrder::kLeastSignificantFirst);
    BitWindow window = input.Window();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        (void)TakeByte(input, window);
    input.Finish();
    EXPECT_EQ(input.Refill(input.Window()).count, 0);
}

}  // namespace
