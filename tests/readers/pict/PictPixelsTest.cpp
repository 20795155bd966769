#include "readers/pict/PictTransfer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

Bytes Indices(const Bytes& row, int bits, std::size_t first, std::size_t count) {
    Bytes out(count);
    PictIndices(row, {.width = 100, .pixelSize = bits, .components = 1, .rowBytes = 100}, first, out);
    return out;
}

std::vector<PictColour> Colours(const Bytes& row, const PictRowLayout& layout, std::size_t first, std::size_t count) {
    std::array<std::vector<std::uint16_t>, 3> planes;
    for (auto& plane : planes)
        plane.resize(count);
    PictDirectColours(row, layout, first, {planes[0], planes[1], planes[2]});
    std::vector<PictColour> colours;
    for (std::size_t i = 0; i < count; ++i)
        colours.push_back({planes[0][i], planes[1][i], planes[2][i]});
    return colours;
}

TEST(PictPixels, TheHighestBitsAreTheLeftmostPixel) {
    EXPECT_EQ(Indices({0b10110001, 0b01000000}, 1, 0, 10), (Bytes{1, 0, 1, 1, 0, 0, 0, 1, 0, 1}));
    EXPECT_EQ(Indices({0b11100100, 0b01101100}, 2, 0, 8), (Bytes{3, 2, 1, 0, 1, 2, 3, 0}));
    EXPECT_EQ(Indices({0xF1, 0x2E}, 4, 0, 4), (Bytes{15, 1, 2, 14}));
    EXPECT_EQ(Indices({0xF1, 0x2E}, 8, 0, 2), (Bytes{0xF1, 0x2E}));
}

TEST(PictPixels, ARowMayBeginInsideAByte) {
    EXPECT_EQ(Indices({0b10110001, 0b01000000}, 1, 3, 7), (Bytes{1, 0, 0, 0, 1, 0, 1}));
    EXPECT_EQ(Indices({0b11100100, 0b01101100}, 2, 3, 3), (Bytes{0, 1, 2}));
    EXPECT_EQ(Indices({0xF1, 0x2E}, 4, 1, 2), (Bytes{1, 2}));
    EXPECT_EQ(Indices({7, 8, 9}, 8, 1, 2), (Bytes{8, 9}));
}

TEST(PictPixels, AnyPartOfARowIsTheSamePixels) {
    Bytes row;
    for (unsigned i = 0; i < 16; ++i)
        row.push_back(static_cast<unsigned char>(i * 73 + 5));
    for (const int bits : {1, 2, 4, 8}) {
        const std::size_t perByte = 8 / static_cast<std::size_t>(bits);
        for (std::size_t first = 0; first < 20 && first < row.size() * perByte; ++first) {
            for (std::size_t count = 0; first + count <= row.size() * perByte; ++count) {
                Bytes expected;
                for (std::size_t pixel = first; pixel < first + count; ++pixel) {
                    const unsigned shifted = row[pixel / perByte] << (pixel % perByte) * static_cast<std::size_t>(bits);
                    expected.push_back(static_cast<unsigned char>((shifted & 0xFF) >> (8 - bits)));
                }
                ASSERT_EQ(Indices(row, bits, first, count), expected) << bits << " " << first << " " << count;
            }
        }
    }
}

TEST(PictPixels, IndicesOfAnyNumberOfColoursAreLookedUp) {
    std::vector<PictColour> table;
    Bytes indices;
    for (unsigned size = 1; size <= 256; ++size) {
        table.push_back({static_cast<std::uint16_t>(size * 250), static_cast<std::uint16_t>(size * 31), 7});
        indices.insert(indices.begin(), static_cast<unsigned char>(size - 1));
        std::array<std::vector<std::uint16_t>, 3> planes;
        for (auto& plane : planes)
            plane.resize(size);
        PictIndexedColours(table, indices, {planes[0], planes[1], planes[2]});
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ((PictColour{planes[0][i], planes[1][i], planes[2][i]}), table[indices[i]]) << size << " " << i;
        }
        ASSERT_EQ(LargestIndex(indices), size - 1);
    }
    EXPECT_EQ(LargestIndex({}), 0);
}

TEST(PictPixels, FiveBitsAreWidenedSoThatTheLargestIsWhite) {
    const PictRowLayout layout = {.width = 4, .pixelSize = 16, .components = 3, .rowBytes = 0x8008};
    const Bytes row = {0x7F, 0xFF, 0x80, 0x00, 0x40, 0x01, 0x00, 0x20};
    EXPECT_EQ(Colours(row, layout, 0, 4), (std::vector<PictColour>{kPictWhite,
                                                                   kPictBlack,  // the highest bit means nothing
                                                                   {0x8421, 0, 0x0842},
                                                                   {0, 0x0842, 0}}));
    EXPECT_EQ(Colours(row, layout, 2, 1), (std::vector<PictColour>{{0x8421, 0, 0x0842}}));
}

TEST(PictPixels, EveryFiveBitValueRepeatsItsBits) {
    for (unsigned value = 0; value < 32; ++value) {
        const PictRowLayout layout = {.width = 1, .pixelSize = 16, .components = 3, .rowBytes = 2};
        const unsigned widened = (value << 11) + (value << 6) + (value << 1) + value / 16;
        const auto shifted = static_cast<unsigned>(value << 5);
        EXPECT_EQ(
            Colours({static_cast<unsigned char>(shifted >> 8), static_cast<unsigned char>(shifted)}, layout, 0, 1),
            (std::vector<PictColour>{{0, static_cast<std::uint16_t>(widened), 0}}));
    }
}

TEST(PictPixels, PackedRowsOf32BitsHoldOneComponentAfterAnother) {
    const PictRowLayout three = {.width = 2, .pixelSize = 32, .components = 3, .rowBytes = 0x8008};
    EXPECT_EQ(Colours({1, 2, 3, 4, 255, 6}, three, 0, 2),
              (std::vector<PictColour>{{257, 771, 65535}, {514, 1028, 1542}}));
    EXPECT_EQ(Colours({1, 2, 3, 4, 5, 6}, three, 1, 1), (std::vector<PictColour>{{514, 1028, 1542}}));
    const PictRowLayout four = {.width = 2, .pixelSize = 32, .components = 4, .rowBytes = 0x8008};
    EXPECT_EQ(Colours({9, 9, 1, 2, 3, 4, 5, 6}, four, 0, 2),
              (std::vector<PictColour>{{257, 771, 1285}, {514, 1028, 1542}}));
}

TEST(PictPixels, RowsOf32BitsThatAreNotPackedHoldOnePixelAfterAnother) {
    for (const int components : {3, 4}) {
        const PictRowLayout layout = {.width = 1, .pixelSize = 32, .components = components, .rowBytes = 4};
        EXPECT_EQ(Colours({9, 1, 2, 255}, layout, 0, 1), (std::vector<PictColour>{{257, 514, 65535}}));
    }
}

TEST(PictPixels, TheHighByteOfAChannelComesOutNotTheNearest) {
    const std::vector<std::uint16_t> red = {0x00FF, 0x1280}, green = {0xFEFF, 0x0100}, blue = {0xFFFF, 0xABFF};
    Bytes out(8);
    PictToRgba({red, green, blue}, out);
    EXPECT_EQ(out, (Bytes{0x00, 0xFE, 0xFF, 255, 0x12, 0x01, 0xAB, 255}));
}

TEST(PictPixels, ALongRunComesOutLikeItsPixelsOneByOne) {
    constexpr std::size_t kCount = 83;
    Bytes row;
    for (std::size_t i = 0; i < 4 * kCount; ++i)
        row.push_back(static_cast<unsigned char>(i * 89 + i / 7));
    for (const int bits : {16, 32}) {
        const PictRowLayout layout = {.width = kCount, .pixelSize = bits, .components = 3, .rowBytes = 0x8000};
        const std::vector<PictColour> all = Colours(row, layout, 0, kCount);
        for (std::size_t i = 0; i < kCount; ++i)
            EXPECT_EQ(Colours(row, layout, i, 1)[0], all[i]) << bits << " " << i;
    }
    for (const int bits : {1, 2, 4, 8}) {
        const Bytes all = Indices(row, bits, 0, kCount);
        for (std::size_t i = 0; i < kCount; ++i)
            EXPECT_EQ(Indices(row, bits, i, 1)[0], all[i]) << bits << " " << i;
    }
}

}  // namespace
