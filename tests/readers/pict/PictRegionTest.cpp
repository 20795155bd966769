#include "readers/ByteBuilder.h"
#include "readers/pict/PictRegion.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

using Runs = std::vector<std::pair<int, int>>;

constexpr unsigned kEnd = 0x7FFF;

ByteBuilder Region(const PictRect& box, const std::vector<unsigned>& words) {
    ByteBuilder file;
    file.Big16(static_cast<unsigned>(10 + 2 * words.size()));
    for (const int side : {box.top, box.left, box.bottom, box.right})
        file.Big16(static_cast<unsigned>(side) & 0xFFFF);
    for (const unsigned word : words)
        file.Big16(word);
    return file;
}

PictRegion Read(const ByteBuilder& file) {
    auto source = file.Source();
    const auto region = ReadPictRegion(source);
    EXPECT_TRUE(region);
    EXPECT_EQ(source.Remaining(), 0U);
    return region.value_or(PictRegion{});
}

/// The runs of the rows from the top of the box to below it.
std::vector<Runs> RunsOf(const ByteBuilder& file, int left = -100, int right = 100) {
    const PictRegion region = Read(file);
    PictRegionScan scan(region, file.Bytes());
    std::vector<Runs> rows;
    for (int y = region.box.top; y < region.box.bottom; ++y) {
        scan.MoveTo(y);
        Runs runs;
        scan.ForEachRun(left, right, [&](int from, int to) { runs.emplace_back(from, to); });
        rows.push_back(runs);
    }
    return rows;
}

TEST(PictRegion, WithoutRowsItIsItsBox) {
    EXPECT_EQ(RunsOf(Region({-1, -2, 1, 3}, {})), (std::vector<Runs>{{{-2, 3}}, {{-2, 3}}}));
}

TEST(PictRegion, EachRowSaysWhereItIsNotLikeTheOneAbove) {
    const auto file = Region({0, 0, 5, 9}, {0, 1, 4, 6, 9, kEnd, 1, 4, 6, kEnd, 3, 1, 2, kEnd, kEnd});
    EXPECT_EQ(RunsOf(file), (std::vector<Runs>{{{1, 4}, {6, 9}}, {{1, 9}}, {{1, 9}}, {{2, 9}}, {{2, 9}}}));
}

TEST(PictRegion, RunsAreCutAtWhatIsAskedFor) {
    const auto file = Region({0, 0, 1, 9}, {0, 1, 4, 6, 9, kEnd, kEnd});
    EXPECT_EQ(RunsOf(file, 2, 7), (std::vector<Runs>{{{2, 4}, {6, 7}}}));
    EXPECT_EQ(RunsOf(file, 4, 6), (std::vector<Runs>{{}}));
    EXPECT_EQ(RunsOf(file, 6, 9), (std::vector<Runs>{{{6, 9}}}));
}

TEST(PictRegion, ColumnsAndRowsMayBeNegative) {
    const auto file = Region({-2, -5, 0, -1}, {0xFFFE, 0xFFFB, 0xFFFD, kEnd, 0xFFFF, 0xFFFD, 0xFFFF, kEnd, kEnd});
    EXPECT_EQ(RunsOf(file), (std::vector<Runs>{{{-5, -3}}, {{-5, -1}}}));
}

TEST(PictRegion, DamagedRowsStillEndInTheBox) {
    EXPECT_EQ(RunsOf(Region({0, 0, 2, 5}, {0, 3, 900, kEnd})), (std::vector<Runs>{{{3, 5}}, {{3, 5}}}));
    EXPECT_EQ(RunsOf(Region({0, 0, 2, 5}, {0, 4, 1, kEnd, 0, 2, 3, kEnd, kEnd})),
              (std::vector<Runs>{{{1, 4}}, {{1, 4}}}))
        << "a row that is not below the one before ends them";
    EXPECT_EQ(RunsOf(Region({0, 0, 1, 5}, {0, 1})), (std::vector<Runs>{{{1, 5}}}));
}

TEST(PictRegion, OneThatIsTooShortForABoxIsEverywhere) {
    EXPECT_EQ(Read(ByteBuilder().Big16(4).Big16(0)).box.right, 0x7FFF);
    const ByteBuilder tooShort = ByteBuilder().Big16(1).Big16(0);
    auto source = tooShort.Source();
    EXPECT_FALSE(ReadPictRegion(source));
}

TEST(PictRegion, StepsGrowWithRowsAndEdges) {
    const PictRegion box{.box = {0, 0, 10, 10}};
    EXPECT_EQ(PictRegionSteps(box, 1000), 0U);
    const PictRegion shape{.box = {0, 0, 10, 10}, .offset = 0, .words = 400};
    EXPECT_EQ(PictRegionSteps(shape, 1000), (100U + 1000U) * 11U) << "no row has more edges than its box has places";
}

}  // namespace
