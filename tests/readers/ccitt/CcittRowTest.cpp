#include "readers/ccitt/CcittRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using Kavra::Devices::Ccitt::Row;
using Bytes = std::vector<unsigned char>;

Bytes Filled(std::int32_t width, std::vector<std::int32_t> ends) {
    Row row(width);
    std::ranges::copy(ends, row.Ends());
    row.Close(ends.size());
    Bytes packed((static_cast<std::size_t>(width) + 7) / 8, 0xEE);
    row.Fill(packed);
    return packed;
}

TEST(CcittRow, IsWhiteWhenNew) {
    Bytes packed(3, 0xEE);
    Row(20).Fill(packed);
    EXPECT_EQ(packed, Bytes(3, 0));
}

TEST(CcittRow, SetsTheBitsOfItsBlackRuns) {
    EXPECT_EQ(Filled(16, {0, 16}), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(Filled(16, {3, 5, 16}), (Bytes{0b00011000, 0}));
    EXPECT_EQ(Filled(16, {6, 11, 16}), (Bytes{0b00000011, 0b11100000}));
    EXPECT_EQ(Filled(32, {7, 25, 32}), (Bytes{0x01, 0xFF, 0xFF, 0x80}));
    EXPECT_EQ(Filled(32, {8, 24, 32}), (Bytes{0x00, 0xFF, 0xFF, 0x00}));
    EXPECT_EQ(Filled(16, {0, 1, 2, 3, 15, 16}), (Bytes{0b10100000, 0b00000001}));
}

TEST(CcittRow, EmptyRunsSetNothing) {
    EXPECT_EQ(Filled(16, {5, 5, 9, 9, 16, 16}), (Bytes{0, 0}));
}

TEST(CcittRow, TheBitsBehindTheWidthAreClear) {
    EXPECT_EQ(Filled(13, {0, 13}), (Bytes{0xFF, 0xF8}));
    EXPECT_EQ(Filled(1, {0, 1}), (Bytes{0x80}));
}

TEST(CcittRow, TheLastRunEndsAtTheWidthWhateverWasSet) {
    EXPECT_EQ(Filled(8, {3, 11}), (Bytes{0b00011111}));
    EXPECT_EQ(Filled(8, {3, 4}), (Bytes{0b00011111}));
}

TEST(CcittRow, BehindItsEndsTheWidthFollowsTwiceAndBeforeThemAZeroStands) {
    Row row(9);
    row.Ends()[0] = 4;
    row.Ends()[1] = 6;
    row.Close(2);
    const std::int32_t* ends = std::as_const(row).Ends();
    EXPECT_EQ(std::vector<std::int32_t>(ends - 1, ends + 4), (std::vector<std::int32_t>{0, 4, 9, 9, 9}));
}

TEST(CcittRow, EveryRunInThreeBytes) {
    for (std::int32_t begin = 0; begin <= 24; ++begin) {
        for (std::int32_t end = begin; end <= 24; ++end) {
            const Bytes packed = Filled(24, {begin, end, 24});
            for (std::int32_t x = 0; x < 24; ++x) {
                const bool black = (packed[static_cast<std::size_t>(x) / 8] >> (7 - x % 8) & 1) != 0;
                ASSERT_EQ(black, x >= begin && x < end) << begin << ' ' << end << ' ' << x;
            }
        }
    }
}

}  // namespace
