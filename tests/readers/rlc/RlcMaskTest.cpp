#include "readers/rlc/RlcReader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Kavra::Devices::RlcMask;

std::string Bits(const RlcMask& mask, int columns) {
    std::string bits;
    for (int x = 0; x < columns; ++x)
        bits += (mask.Bytes()[static_cast<std::size_t>(x) / 8] >> (7 - x % 8) & 1) != 0 ? '#' : '.';
    return bits;
}

/// A row with one run; "refused" when it is.
std::string Row(std::int16_t columns, std::uint16_t start, std::uint16_t end) {
    RlcMask mask(columns);
    if (mask.SetRun(start, end)) return Bits(mask, columns);
    EXPECT_EQ(Bits(mask, columns), std::string(static_cast<std::size_t>(columns), '.'));
    return "refused";
}

TEST(RlcMask, PositionsCountFromTheRight) {
    EXPECT_EQ(Row(8, 2, 5), "...###..");
    EXPECT_EQ(Row(8, 0, 1), ".......#");
    EXPECT_EQ(Row(8, 7, 8), "#.......");
    EXPECT_EQ(Row(13, 0, 5), "........#####") << "the last byte has five pixels";
    EXPECT_EQ(Row(13, 12, 13), "#............");
}

TEST(RlcMask, ARunAcrossBytesSetsTheWholeOnesBetween) {
    EXPECT_EQ(Row(40, 20, 36), "....################....................");
    EXPECT_EQ(Row(40, 16, 35), ".....###################................");
    EXPECT_EQ(Row(40, 24, 40), "################........................");
    EXPECT_EQ(Row(40, 31, 37), "...######...............................");
}

TEST(RlcMask, AnEmptyRunSetsNothing) {
    EXPECT_EQ(Row(13, 5, 5), ".............");
}

TEST(RlcMask, TheWholeRowIsTaken) {
    for (const std::int16_t columns : {1, 7, 8, 9, 16, 17, 64, 100, 32767})
        EXPECT_EQ(Row(columns, 0, static_cast<std::uint16_t>(columns)),
                  std::string(static_cast<std::size_t>(columns), '#'))
            << columns;
}

TEST(RlcMask, ARunThatCrossesBytesHasToLeaveRoomBehindIt) {
    // length / 8 + 1 + first byte has to be less than the bytes of the row.
    EXPECT_EQ(Row(64, 8, 64), "refused") << "56 / 8 + 1 + 0 = 8: it would have ended one byte before the last";
    EXPECT_EQ(Row(64, 9, 64), std::string(55, '#') + std::string(9, '.')) << "55 / 8 + 1 + 0 = 7";
    EXPECT_EQ(Row(16, 7, 16), "refused") << "9 / 8 + 1 + 0 = 2 of 2 bytes, though it ends in the last";
    EXPECT_EQ(Row(24, 15, 24), "#########...............") << "9 / 8 + 1 + 0 = 2 of 3 bytes";
    EXPECT_EQ(Row(24, 7, 16), "refused") << "9 / 8 + 1 + 1 = 3 of 3 bytes";
    EXPECT_EQ(Row(16, 5, 12), "....#######.....") << "7 / 8 + 1 + 0 = 1 of 2 bytes";
    EXPECT_EQ(Row(16, 0, 8), "........########") << "a run inside its first byte is always taken";
    EXPECT_EQ(Row(24, 0, 12), "refused") << "12 / 8 + 1 + 1 = 3 of 3 bytes";
    EXPECT_EQ(Row(24, 0, 23), "refused") << "all but the whole row";
    EXPECT_EQ(Row(24, 1, 24), "refused");
}

TEST(RlcMask, AnEmptyRunAtTheRightEndIsRefusedWhereTheRowEndsWithAByte) {
    EXPECT_EQ(Row(8, 0, 0), "refused");
    EXPECT_EQ(Row(16, 0, 0), "refused");
    EXPECT_EQ(Row(9, 0, 0), ".........");
    EXPECT_EQ(Row(15, 0, 0), "...............");
}

TEST(RlcMask, PositionsWrapLikeSixteenBits) {
    EXPECT_EQ(Row(20, 0, 21), "refused") << "begins at column 65535";
    EXPECT_EQ(Row(20, 25, 20), "refused") << "65531 pixels from column 0 on";
    EXPECT_EQ(Row(20, 0xFFFF, 4), "................####") << "5 pixels, the last behind the row";
    EXPECT_EQ(Row(20, 5, 4), "refused") << "65535 pixels";
    EXPECT_EQ(Row(20, 0x8000, 0x8001), "refused");
}

TEST(RlcMask, BitsBehindTheLastColumnStayInTheLastByte) {
    RlcMask mask(20);
    EXPECT_TRUE(mask.SetRun(0xFFFC, 4)) << "8 pixels from column 16 on";
    EXPECT_EQ(mask.Bytes().size(), 3U);
    EXPECT_EQ(mask.Bytes()[2], 0xF0 | 0x0F);
}

TEST(RlcMask, RunsAddUpUntilItIsCleared) {
    RlcMask mask(10);
    EXPECT_TRUE(mask.SetRun(0, 1));
    EXPECT_TRUE(mask.SetRun(8, 9));
    EXPECT_EQ(Bits(mask, 10), ".#.......#");
    mask.Clear();
    EXPECT_EQ(Bits(mask, 10), "..........");
}

TEST(RlcMask, EveryRunThatIsTakenIsSetExactly) {
    for (std::int16_t columns = 1; columns <= 40; ++columns) {
        const int bytes = (columns + 7) / 8;
        for (int left = 0; left <= columns; ++left) {
            for (int right = left; right <= columns; ++right) {
                const bool inFirst = left / 8 == (right - 1) / 8 || left == right;
                const bool fits = (right - left) / 8 + 1 + left / 8 < bytes;
                const bool whole = left == 0 && right == columns;
                const bool taken = left / 8 < bytes && (inFirst || fits || whole);
                std::string expected(static_cast<std::size_t>(columns), '.');
                std::fill(expected.begin() + left, expected.begin() + right, '#');
                ASSERT_EQ(Row(columns, static_cast<std::uint16_t>(columns - right),
                              static_cast<std::uint16_t>(columns - left)),
                          taken ? expected : "refused")
                    << columns << ' ' << left << ' ' << right;
            }
        }
    }
}

}  // namespace
