#include "readers/spot/SpotRows.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;

using Bytes = std::vector<unsigned char>;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

/// Bytes without a period that a row length could hide.
Bytes File(std::size_t size) {
    Bytes file;
    for (std::size_t i = 0; i < size; ++i)
        file.push_back(static_cast<unsigned char>(i + i / 253));
    return file;
}

Bytes Part(const Bytes& bytes, std::size_t first, std::size_t count) {
    const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(first);
    return {start, start + static_cast<std::ptrdiff_t>(count)};
}

Bytes Copy(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// Reads as many lines as fill `out`.
void ReadAll(auto&& rows, std::int64_t first, std::size_t bytes, Bytes& out) {
    Kavra::Common::BlockRows lines(out, bytes);
    rows.ReadAll(first, bytes, static_cast<std::int64_t>(out.size() / bytes), lines);
}

TEST(SpotRows, ALineIsAPartOfItsRow) {
    const Bytes file = File(100);
    ByteSource source(file);
    SpotRows rows(source, {10}, 20);
    Bytes line(5);
    rows.Read(0, 0, line);
    EXPECT_EQ(line, Part(file, 10, 5));
    rows.Read(2, 15, line);
    EXPECT_EQ(line, Part(file, 65, 5));
}

TEST(SpotRows, WhatTheFileDoesNotHoldStays) {
    const Bytes file = {1, 2, 3, 4, 5};
    ByteSource source(file);
    SpotRows rows(source, {0}, 4);
    Bytes line = {91, 92, 93};
    rows.Read(1, 0, line);
    EXPECT_EQ(line, (Bytes{5, 92, 93}));
    rows.Read(2, 0, line);
    EXPECT_EQ(line, (Bytes{5, 92, 93}));
    rows.Read(0, 3, line);
    EXPECT_EQ(line, (Bytes{4, 92, 93})) << "nor what a row does not hold";
}

TEST(SpotRows, SlotsStandSideBySide) {
    const Bytes file = File(60);
    ByteSource source(file);
    SpotRows rows(source, {40, 0, 20}, 5);
    Bytes line(9);
    rows.Read(1, 3, line);
    EXPECT_EQ(line, (Bytes{48, 49, 5, 6, 7, 8, 9, 25, 26}));
}

TEST(SpotRows, PlacesBeyondAnyFileHoldNothing) {
    const Bytes file = File(60);
    ByteSource source(file);
    for (const std::int64_t slotBytes : {std::int64_t{0}, std::int64_t{3}, kMax}) {
        for (const std::int64_t start : {std::int64_t{60}, kMax}) {
            SpotRows rows(source, {start, kMax, start}, slotBytes);
            for (const std::int64_t first : {std::int64_t{0}, std::int64_t{7}, kMax - 1, kMax}) {
                Bytes line = {1, 2, 3};
                rows.Read(2'000'000'000, first, line);
                EXPECT_EQ(line, (Bytes{1, 2, 3}));
                EXPECT_EQ(rows.Gather(2'000'000'000), 0);
                ReadAll(rows, first, 3, line);
                EXPECT_EQ(line, (Bytes{0, 0, 0}));
            }
        }
    }
}

TEST(SpotRows, AllLinesAreReadOneAfterAnother) {
    const Bytes file = File(1000);
    ByteSource source(file);
    Bytes out(30);
    ReadAll(SpotRows(source, {5}, 10), 0, 10, out);
    EXPECT_EQ(out, Part(file, 5, 30)) << "rows that touch";
    ReadAll(SpotRows(source, {5}, 100), 7, 10, out);
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(Part(out, row * 10, 10), Part(file, 12 + row * 100, 10));
}

TEST(SpotRows, LinesThatTheFileCutsOffGoOnAsTheOneBefore) {
    const Bytes file = {1, 2, 3, 4, 5, 6, 7, 8};
    ByteSource source(file);
    Bytes out(12, 99);
    ReadAll(SpotRows(source, {0}, 3), 0, 3, out);
    EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 6, 7, 8, 6}));
    out.assign(12, 99);
    ReadAll(SpotRows(source, {7}, 3), 0, 3, out);
    EXPECT_EQ(out, (Bytes{8, 0, 0, 8, 0, 0, 8, 0, 0, 8, 0, 0}));
    out.assign(12, 99);
    ReadAll(SpotRows(source, {0}, 2), 0, 3, out);
    EXPECT_EQ(out, (Bytes{1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8, 0}));
}

TEST(SpotRows, ALineInOneSlotNeitherCrossesNorPassesThem) {
    const Bytes file = File(10);
    ByteSource source(file);
    const SpotRows rows(source, {0, 0}, 5);
    EXPECT_TRUE(rows.IsInOneSlot(0, 5));
    EXPECT_TRUE(rows.IsInOneSlot(7, 3));
    EXPECT_FALSE(rows.IsInOneSlot(0, 6));
    EXPECT_FALSE(rows.IsInOneSlot(4, 2));
    EXPECT_FALSE(rows.IsInOneSlot(10, 1));
    EXPECT_FALSE(rows.IsInOneSlot(kMax, 1));
    EXPECT_FALSE(SpotRows(source, {0}, 0).IsInOneSlot(0, 1));
}

TEST(SpotRows, RowsAreGatheredAsFarAsAllSlotsAreWhole) {
    const Bytes file = File(100);
    ByteSource source(file);
    SpotRows rows(source, {0, 40, 75}, 10);
    ASSERT_EQ(rows.Gather(0), 2) << "the last slot ends in its third row";
    EXPECT_EQ(Copy(rows.Gathered(1, 3, 5)), Part(file, 13, 5));
    EXPECT_EQ(Copy(rows.Gathered(0, 10, 10)), Part(file, 40, 10));
    EXPECT_EQ(Copy(rows.Gathered(1, 27, 3)), Part(file, 92, 3));
    ASSERT_EQ(rows.Gather(1), 1);
    EXPECT_EQ(Copy(rows.Gathered(1, 3, 5)), Part(file, 13, 5));
    EXPECT_EQ(rows.Gather(2), 0);
    EXPECT_EQ(rows.Gather(3), 0);
}

/// Rows of a few bytes, of some at a time, and of more than are gathered.
class SpotRowLengths : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(RowBytes, SpotRowLengths, testing::Values(1, 3, 1000, 60'001, 2'097'152, 2'097'153));

TEST_P(SpotRowLengths, GatheredLinesAreThoseOfEachRow) {
    const std::size_t rowBytes = GetParam();
    const std::size_t count = 4'200'000 / rowBytes + 1;
    const std::size_t first = rowBytes / 3, bytes = rowBytes - first;
    const Bytes file = File(11 + count * rowBytes);
    ByteSource source(file);
    SpotRows rows(source, {11}, static_cast<std::int64_t>(rowBytes));
    std::size_t done = 0;
    for (std::int64_t gathered = 1; gathered > 0;) {
        gathered = rows.Gather(static_cast<std::int64_t>(done));
        for (std::int64_t i = 0; i < gathered; ++i, ++done) {
            ASSERT_EQ(Copy(rows.Gathered(static_cast<std::int64_t>(done), static_cast<std::int64_t>(first), bytes)),
                      Part(file, 11 + done * rowBytes + first, bytes));
        }
    }
    EXPECT_EQ(done, rowBytes > 2'097'152 ? 0 : count);
}

TEST(SpotLine, GoesOnAsTheLastOneThatTheFileHolds) {
    const Bytes file = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    ByteSource source(file);
    SpotRows rows(source, {0}, 4);
    SpotLine asked(rows, 1, 3), late(rows, 1, 3);
    EXPECT_EQ(Copy(asked.Read(0)), (Bytes{2, 3, 4}));
    EXPECT_EQ(Copy(asked.Read(1)), (Bytes{6, 7, 8}));
    EXPECT_EQ(Copy(asked.Read(2)), (Bytes{10, 11, 8}));
    EXPECT_EQ(Copy(asked.Read(3)), (Bytes{10, 11, 8}));
    EXPECT_EQ(Copy(late.Read(2)), (Bytes{10, 11, 8})) << "the rows before were read by other means";
}

}  // namespace
