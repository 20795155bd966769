#include "readers/FileSamples.h"
#include "readers/rlc/RlcReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Common::Result;
using namespace Kavra::Tests;

bool Accepts(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return IsRlc(source);
}

/// `rows` rows of 100 columns with one run each; row `bad` (from 0) has a run outside.
ByteBuilder Rows(int rows, int bad) {
    ByteBuilder file;
    file.Big16(static_cast<unsigned>(rows)).Big16(100);
    for (int row = 0; row < rows; ++row)
        AddRlcRow(file, {{0, row == bad ? 101 : 100}});
    return file;
}

ByteBuilder RowsWithDirectory(int rows, int bad) {
    ByteBuilder file = Rows(rows, bad);
    AddRlcTrailer(file, 2, 0);
    return file;
}

TEST(RlcProbe, TakesRowsOfRuns) {
    EXPECT_TRUE(Accepts(RlcFile(20, {{{0, 5}, {5, 20}}, {}, {{3, 3}}})));
}

TEST(RlcProbe, SizesAreAtLeastOneAndSigned) {
    const ByteBuilder good = RlcFile(20, {{{0, 5}}, {}});
    ASSERT_TRUE(Accepts(good));
    EXPECT_FALSE(Accepts(ByteBuilder(good).At(0).Big16(0)));
    EXPECT_FALSE(Accepts(ByteBuilder(good).At(2).Big16(0)));
    EXPECT_FALSE(Accepts(ByteBuilder(good).At(0).Big16(0x8002)));
    EXPECT_FALSE(Accepts(ByteBuilder(good).At(2).Big16(0x8014)));
}

TEST(RlcProbe, FewerThanFiveBytesAreNothing) {
    for (std::size_t size = 0; size < 5; ++size)
        EXPECT_FALSE(Accepts(RlcFile(20, {{}, {}}).CutTo(size))) << size;
}

TEST(RlcProbe, TheLengthIsAtMostTwiceTheRowsTimesColumnsAndOne) {
    EXPECT_TRUE(Accepts(RlcFile(4, {{{0, 4}}}))) << "10 bytes, (4 + 1) x 1 x 2 = 10";
    EXPECT_FALSE(Accepts(RlcFile(3, {{{0, 3}}}))) << "10 bytes, (3 + 1) x 1 x 2 = 8";
    EXPECT_TRUE(Accepts(RlcFile(4, {{{0, 4}}, {{0, 4}}}).Fill(4, 0))) << "20 bytes of at most 20";
    EXPECT_FALSE(Accepts(RlcFile(4, {{{0, 4}}, {{0, 4}}}).Fill(5, 0))) << "21 bytes of at most 20";
}

TEST(RlcProbe, ATrailerCountsAsLength) {
    ByteBuilder small = RlcFile(40, {{{0, 1}}, {{0, 1}}, {{0, 1}}, {{0, 1}}});
    ASSERT_TRUE(Accepts(small));
    AddRlcTrailer(small, 0, 0);
    EXPECT_FALSE(Accepts(small)) << "372 bytes of at most (40 + 1) x 4 x 2 = 328";
}

TEST(RlcProbe, RunsAreInOrderAndInsideTheRow) {
    EXPECT_TRUE(Accepts(RlcFile(20, {{{2, 5}, {5, 9}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{{2, 5}, {4, 9}}, {}}))) << "overlaps the run before";
    EXPECT_FALSE(Accepts(RlcFile(20, {{{5, 4}}, {}}))) << "ends before it begins";
    EXPECT_TRUE(Accepts(RlcFile(20, {{{20, 20}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{{20, 21}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{{21, 21}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{}, {{0, 21}}}))) << "every row is checked";
    EXPECT_TRUE(Accepts(RlcFile(20, {{{9, 9}}, {{0, 1}}}))) << "each row begins anew";
}

TEST(RlcProbe, PositionsAreUnsignedAmongThemselvesAndSignedAgainstTheColumns) {
    EXPECT_TRUE(Accepts(RlcFile(20, {{{0x8000, 0xFFFF}}, {}})));
    EXPECT_TRUE(Accepts(RlcFile(20, {{{3, 0x8000}, {0x8000, 0x8001}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{{0x8000, 5}}, {}}))) << "5 is before 0x8000";
    EXPECT_FALSE(Accepts(RlcFile(20, {{{3, 0x8000}, {5, 6}}, {}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{{0x7FFF, 0x8000}}, {}})));
}

TEST(RlcProbe, ASingleRowMustHaveARun) {
    EXPECT_FALSE(Accepts(RlcFile(20, {{}})));
    EXPECT_FALSE(Accepts(RlcFile(20, {{}}).At(4).Big16(0xFFFF)));
    EXPECT_TRUE(Accepts(RlcFile(20, {{{0, 0}}})));
    EXPECT_TRUE(Accepts(RlcFile(20, {{}, {}})));
    EXPECT_TRUE(Accepts(RlcFile(20, {{}, {}}).At(4).Big16(0xFFFF))) << "a negative count is a row without runs";
}

TEST(RlcProbe, ARowThatIsNotWholeFails) {
    const ByteBuilder good = RlcFile(20, {{{0, 5}}, {{0, 5}, {6, 7}}});
    ASSERT_TRUE(Accepts(good));
    for (std::size_t size = 0; size < good.Size(); ++size) {
        EXPECT_FALSE(Accepts(ByteBuilder(good).CutTo(size))) << size;
    }
}

TEST(RlcProbe, WithADirectoryOnlyTheFirstRowsAreChecked) {
    ASSERT_TRUE(Accepts(Rows(400, -1)));
    EXPECT_FALSE(Accepts(Rows(400, 399)));
    EXPECT_TRUE(Accepts(RowsWithDirectory(400, 100)));
    EXPECT_FALSE(Accepts(RowsWithDirectory(400, 99))) << "at least 100 rows";
    EXPECT_TRUE(Accepts(RowsWithDirectory(803, 200))) << "a quarter, rounded down";
    EXPECT_FALSE(Accepts(RowsWithDirectory(803, 199)));
    EXPECT_TRUE(Accepts(RowsWithDirectory(399, 100)));
    EXPECT_FALSE(Accepts(RowsWithDirectory(50, 49))) << "never more rows than there are";
    EXPECT_TRUE(Accepts(RowsWithDirectory(50, -1)));
}

TEST(RlcProbe, TheDirectoryFlagIsLittleEndian) {
    ByteBuilder bigEndian = Rows(400, 399);
    AddRlcTrailer(bigEndian, 0, 2);
    EXPECT_FALSE(Accepts(bigEndian));
    ByteBuilder other = Rows(400, 399);
    AddRlcTrailer(other, 1, 0);
    EXPECT_FALSE(Accepts(other));
}

TEST(RlcProbe, ATrailerNeedsItsWholeSignature) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
        ByteBuilder file = RowsWithDirectory(400, 399);
        ASSERT_TRUE(Accepts(file));
        file.At(file.Size() - 344 + offset).Byte(0x77);
        EXPECT_FALSE(Accepts(file)) << offset;
    }
}

TEST(RlcProbe, EvenUncheckedRowsNeedTwoBytesEach) {
    const auto withRows = [](int present) {
        ByteBuilder file;
        file.Big16(1000).Big16(100);
        for (int row = 0; row < present; ++row)
            AddRlcRow(file, {});
        AddRlcTrailer(file, 2, 0);
        return file;
    };
    EXPECT_TRUE(Accepts(withRows(826))) << "2000 bytes";
    EXPECT_FALSE(Accepts(withRows(825))) << "1998 bytes";
}

TEST(RlcProbe, ReadsLargeFilesThroughToTheEnd) {
    const TemporaryFolder folder;
    const auto accepts = [&](int bad) {
        Result<ByteSource> source = ByteSource::Open(Wide(folder.Write("x", Rows(30'000, bad).Bytes())));
        return source && IsRlc(*source);
    };
    EXPECT_TRUE(accepts(-1));
    EXPECT_FALSE(accepts(29'999));
}

TEST(RlcProbe, FilesThatLookSmallIn32BitsAreNotTaken) {
    const TemporaryFolder folder;
    const auto path = folder.Write("x", RlcFile(20, {{{0, 5}}, {}}).Bytes());
    std::filesystem::resize_file(path, (std::uintmax_t{1} << 32) + 12);
    Result<ByteSource> source = ByteSource::Open(Wide(path));
    ASSERT_TRUE(source);
    EXPECT_FALSE(IsRlc(*source));
}

TEST(RlcProbe, SeeksForItself) {
    const ByteBuilder file = RlcFile(20, {{{0, 5}}, {}});
    ByteSource source = file.Source();
    ASSERT_TRUE(source.Seek(7));
    EXPECT_TRUE(IsRlc(source));
}

}  // namespace
