#include "readers/BilevelRow.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Kavra::Devices::ExpandBilevelRow;

using Bytes = std::vector<unsigned char>;

/// One letter a pixel: '#' opaque white, '.' opaque black, '?' anything else.
std::string Expanded(const Bytes& packed, std::size_t width) {
    Bytes pixels(4 * width + 4, 0xCD);
    ExpandBilevelRow(packed, std::span(pixels).first(4 * width));
    EXPECT_EQ(Bytes(pixels.end() - 4, pixels.end()), Bytes(4, 0xCD)) << "written behind the row";
    std::string letters;
    for (std::size_t x = 0; x < width; ++x) {
        const Bytes pixel(pixels.begin() + static_cast<std::ptrdiff_t>(4 * x),
                          pixels.begin() + static_cast<std::ptrdiff_t>(4 * x + 4));
        letters += pixel == Bytes{0, 0, 0, 255} ? '.' : pixel == Bytes{255, 255, 255, 255} ? '#' : '?';
    }
    return letters;
}

TEST(BilevelRow, ClearBitsAreOpaqueBlackAndSetOnesOpaqueWhiteHighestBitFirst) {
    EXPECT_EQ(Expanded({0b10110000}, 8), "#.##....");
    EXPECT_EQ(Expanded({0x00, 0xFF, 0x00}, 24), "........########........");
    EXPECT_EQ(Expanded({0x01, 0x80}, 16), ".......##.......");
}

TEST(BilevelRow, TheLastByteIsTakenAsFarAsTheRowGoes) {
    EXPECT_EQ(Expanded({0xFF, 0b10100111}, 13), "#########.#..");
    EXPECT_EQ(Expanded({0xFF}, 1), "#");
    EXPECT_EQ(Expanded({0x7F}, 1), ".");
    EXPECT_EQ(Expanded({0b10101010}, 7), "#.#.#.#");
}

TEST(BilevelRow, EveryByteHasItsEightPixels) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        std::string expected;
        for (unsigned bit = 128; bit > 0; bit /= 2)
            expected += (byte & bit) != 0 ? '#' : '.';
        EXPECT_EQ(Expanded({static_cast<unsigned char>(byte)}, 8), expected);
    }
}

TEST(BilevelRow, FurtherBytesAreIgnored) {
    EXPECT_EQ(Expanded({0xF0, 0xFF, 0xFF}, 8), "####....");
    EXPECT_EQ(Expanded({0xFF}, 0), "");
    EXPECT_EQ(Expanded({}, 0), "");
}

}  // namespace
