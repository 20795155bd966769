// Block decoding, one block at a time. Expected values by hand.

#include "common/blocks/BlockDecoders.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace Kavra::Common {
namespace {

using Bytes = std::vector<unsigned char>;
using Pixel = std::array<unsigned char, 4>;

/// Pixel (x, y) of a block.
Pixel At(DecodeBlock decode, const Bytes& block, std::size_t x, std::size_t y) {
    std::array<unsigned char, 64> out{};
    decode(block.data(), out.data(), 16);
    const unsigned char* const pixel = out.data() + y * 16 + x * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

/// The values of the eight indices of a channel with these ends.
Bytes Channel(DecodeBlock decode, unsigned char a, unsigned char b) {
    const Bytes block = {a, b, 0x88, 0xC6, 0xFA, 0, 0, 0};  // 0 1 2 3, 4 5 6 7
    std::array<unsigned char, 16> out{};
    decode(block.data(), out.data(), 4);
    return {out.begin(), out.begin() + 8};
}

// Ends 3 of 31 (25) and 31 of 31, green 11 of 63 (45) and 63, in this order: three colours and nothing.
TEST(BlockDecoders, Bc1HasThreeColoursAndNothingWhereTheFirstIsNotGreater) {
    const Bytes block = {0x63, 0x19, 0xFF, 0xFF, 0xE4, 0, 0, 0};  // 0 1 2 3
    EXPECT_EQ(At(DecodeBc1, block, 0, 0), (Pixel{25, 45, 25, 255}));
    EXPECT_EQ(At(DecodeBc1, block, 1, 0), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(At(DecodeBc1, block, 2, 0), (Pixel{140, 150, 140, 255}));
    EXPECT_EQ(At(DecodeBc1, block, 3, 0), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(At(DecodeBc1, block, 0, 1), (Pixel{25, 45, 25, 255}));
}

TEST(BlockDecoders, Bc1HasFourColoursWhereTheFirstIsGreater) {
    const Bytes block = {0xFF, 0xFF, 0x63, 0x19, 0xE4, 0, 0, 0};
    EXPECT_EQ(At(DecodeBc1, block, 2, 0), (Pixel{178, 185, 178, 255}));  // (510 + 25 + 1) / 3 ...
    EXPECT_EQ(At(DecodeBc1, block, 3, 0), (Pixel{102, 115, 102, 255}));
}

TEST(BlockDecoders, Bc2AndBc3AlwaysHaveFourColours) {
    Bytes block = {0x21, 0x43, 0, 0, 0, 0, 0, 0, 0x63, 0x19, 0xFF, 0xFF, 0xE4, 0, 0, 0};
    EXPECT_EQ(At(DecodeBc2, block, 0, 0), (Pixel{25, 45, 25, 17}));
    EXPECT_EQ(At(DecodeBc2, block, 2, 0), (Pixel{102, 115, 102, 51}));
    EXPECT_EQ(At(DecodeBc2, block, 3, 0), (Pixel{178, 185, 178, 68}));
    block[0] = 200, block[1] = 100, block[2] = 0x08, block[3] = 0;
    EXPECT_EQ(At(DecodeBc3, block, 1, 0), (Pixel{255, 255, 255, 100}));
    EXPECT_EQ(At(DecodeRxgb, block, 1, 0), (Pixel{100, 255, 255, 255}));
}

TEST(BlockDecoders, ChannelsHaveSixSteps) {
    EXPECT_EQ(Channel(DecodeBc4, 70, 0), (Bytes{70, 0, 60, 50, 40, 30, 20, 10}));
    EXPECT_EQ(Channel(DecodeBc4, 0, 50), (Bytes{0, 50, 10, 20, 30, 40, 0, 255})) << "or four, and the two ends of all";
}

// (v + 127) / 254 of 255
TEST(BlockDecoders, SignedChannelsLieAroundTheMiddle) {
    // 127, -127, then 127 * 5 / 7 and so on: 218.57, 182.14, 145.7, 109.3, 72.9, 36.4
    EXPECT_EQ(Channel(DecodeBc4Signed, 0x7F, 0x81), (Bytes{255, 0, 219, 182, 146, 109, 73, 36}));
    // -100 and 100, then -60, -20, 20, 60, and the two ends of all
    EXPECT_EQ(Channel(DecodeBc4Signed, 0x9C, 0x64), (Bytes{27, 228, 67, 107, 148, 188, 0, 255}));
    // -128 is as -127, but not greater than it
    EXPECT_EQ(Channel(DecodeBc4Signed, 0x80, 0x81), (Bytes{0, 0, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(Channel(DecodeBc4Signed, 0x81, 0x80), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(BlockDecoders, PairsAreRedAndGreen) {
    const Bytes block = {200, 100, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(At(DecodeBc5, block, 0, 0), (Pixel{200, 64, 0, 255}));
    EXPECT_EQ(At(DecodeAti2, block, 0, 0), (Pixel{64, 200, 0, 255}));
    EXPECT_EQ(At(DecodeBc5Signed, block, 0, 0), (Pixel{71, 192, 128, 255}));  // -56: 71.3
}

TEST(BlockDecoders, RowsOfBlocksAreCutAtTheEdge) {
    Bytes blocks;
    for (const unsigned char value : {10, 20})
        blocks.insert(blocks.end(), {value, value, 0, 0, 0, 0, 0, 0});
    Bytes out(2 * 8, 99);
    DecodeBlockRow(DecodeBc4, blocks, 8, 5, 2, 1, out.data(), 8);
    EXPECT_EQ(out, (Bytes{10, 10, 10, 10, 20, 99, 99, 99, 10, 10, 10, 10, 20, 99, 99, 99}));
}

}  // namespace
}  // namespace Kavra::Common
