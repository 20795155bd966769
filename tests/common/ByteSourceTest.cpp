#include "common/ByteSource.h"
#include "readers/ByteBuilder.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

namespace {

using Kavra::Common::ByteSource;
using Kavra::Common::Failure;
using Kavra::Common::Result;
using Kavra::Tests::ByteBuilder;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

using Bytes = std::vector<unsigned char>;

/// 100,003 bytes, which is several buffers and a rest; no two neighbouring buffers are alike.
Bytes Pattern() {
    Bytes bytes(100'003);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>((i * 31 + i / 251) & 0xFF);
    return bytes;
}

Bytes Part(const Bytes& bytes, std::size_t from, std::size_t count) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
}

/// Every rule holds for a file and for memory alike.
class ByteSources : public testing::TestWithParam<bool> {
protected:
    ByteSource Open(const Bytes& bytes) {
        if (!GetParam()) return ByteSource((mMemory = bytes));
        Result<ByteSource> source = ByteSource::Open(Wide(mFolder.Write("bytes", bytes)));
        EXPECT_TRUE(source);
        return std::move(*source);
    }

private:
    TemporaryFolder mFolder;
    Bytes mMemory;
};

INSTANTIATE_TEST_SUITE_P(, ByteSources, testing::Bool(),
                         [](const auto& info) { return info.param ? "File" : "Memory"; });

TEST_P(ByteSources, AFreshSourceStandsAtItsStart) {
    const ByteSource source = Open({1, 2, 3});
    EXPECT_EQ(source.Size(), 3U);
    EXPECT_EQ(source.Position(), 0U);
    EXPECT_EQ(source.Remaining(), 3U);
}

TEST_P(ByteSources, ReadsIntegersOfEachWidthInBothByteOrders) {
    ByteSource source = Open({0x12, 0x34, 0x12, 0x34, 0x01, 0x02, 0x03, 0x84, 0x01, 0x02, 0x03, 0x84, 0xFE, 0xFF,  //
                              1,    2,    3,    4,    5,    6,    7,    8,    0x9A});
    EXPECT_EQ(source.Little<std::uint16_t>(), 0x3412);
    EXPECT_EQ(source.Big<std::uint16_t>(), 0x1234);
    EXPECT_EQ(source.Little<std::uint32_t>(), 0x84030201U);
    EXPECT_EQ(source.Big<std::uint32_t>(), 0x01020384U);
    EXPECT_EQ(source.Little<std::int16_t>(), -2);
    EXPECT_EQ(source.Big<std::uint64_t>(), 0x0102030405060708U);
    EXPECT_EQ(source.Big<std::uint8_t>(), 0x9A);
    EXPECT_EQ(source.Remaining(), 0U);
}

TEST_P(ByteSources, AnIntegerThatIsNotWholeIsTruncatedAndNothingMoves) {
    ByteSource source = Open({1, 2, 3});
    EXPECT_EQ(source.Little<std::uint32_t>().error(), Failure::kTruncated);
    EXPECT_EQ(source.Position(), 0U);
    EXPECT_EQ(source.Big<std::uint16_t>(), 0x0102);
    EXPECT_EQ(source.Big<std::uint16_t>().error(), Failure::kTruncated);
    EXPECT_EQ(source.Position(), 2U);
}

TEST_P(ByteSources, ReadsIntegersAcrossTheEdgeOfItsBuffer) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    ASSERT_TRUE(source.Skip(1));
    for (std::size_t at = 1; at + 4 <= bytes.size(); at += 4) {
        const unsigned expected =
            bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | static_cast<unsigned>(bytes[at + 3]) << 24;
        ASSERT_EQ(source.Little<std::uint32_t>(), expected) << at;
    }
}

TEST_P(ByteSources, AnExactReadPastTheEndLeavesBufferAndPositionAlone) {
    ByteSource source = Open({1, 2, 3});
    ASSERT_TRUE(source.Skip(1));
    std::array<unsigned char, 3> out = {9, 9, 9};
    EXPECT_EQ(source.Read(out).error(), Failure::kTruncated);
    EXPECT_EQ(out, (std::array<unsigned char, 3>{9, 9, 9}));
    EXPECT_EQ(source.Position(), 1U);
}

TEST_P(ByteSources, APartialReadTellsHowFarItCame) {
    ByteSource source = Open({1, 2, 3});
    std::array<unsigned char, 5> out = {9, 9, 9, 9, 9};
    EXPECT_EQ(source.ReadSome(out), 3U);
    EXPECT_EQ(out, (std::array<unsigned char, 5>{1, 2, 3, 9, 9}));
    EXPECT_EQ(source.Position(), 3U);
    EXPECT_EQ(source.ReadSome(out), 0U);
}

TEST_P(ByteSources, LargeAndSmallReadsInterleaveWithoutLosingAByte) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    Bytes gathered;
    for (const std::size_t count : {1, 20'000, 3, 16'384, 16'383, 5, 40'000, 7'220}) {
        Bytes part(count);
        ASSERT_TRUE(source.Read(part)) << count;
        gathered.insert(gathered.end(), part.begin(), part.end());
        ASSERT_EQ(source.Position(), gathered.size());
    }
    EXPECT_EQ(gathered, Part(bytes, 0, gathered.size()));
    Bytes rest(20'000, 9);
    EXPECT_EQ(source.ReadSome(rest), bytes.size() - gathered.size());
}

TEST_P(ByteSources, ReadingTheWholeInOneGoIsExact) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    Bytes whole(bytes.size());
    ASSERT_TRUE(source.Read(whole));
    EXPECT_EQ(whole, bytes);
}

TEST_P(ByteSources, SeeksForwardAndBackToAnyPositionUpToTheEnd) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    for (const std::size_t at : {99'000, 5, 16'384, 16'383, 0, 50'000, 49'990, 100'002}) {
        ASSERT_TRUE(source.Seek(at));
        ASSERT_EQ(source.Position(), at);
        ASSERT_EQ(source.Little<std::uint8_t>(), bytes[at]) << at;
    }
    ASSERT_TRUE(source.Seek(bytes.size()));
    EXPECT_EQ(source.Remaining(), 0U);
    EXPECT_TRUE(source.Peek().empty());
}

TEST_P(ByteSources, APositionBeyondTheEndIsRefusedAndNothingMoves) {
    ByteSource source = Open({1, 2, 3});
    ASSERT_TRUE(source.Seek(2));
    EXPECT_EQ(source.Seek(4).error(), Failure::kTruncated);
    EXPECT_EQ(source.Skip(2).error(), Failure::kTruncated);
    EXPECT_EQ(source.Skip(~std::uint64_t{0}).error(), Failure::kTruncated);
    EXPECT_EQ(source.Seek(~std::uint64_t{0}).error(), Failure::kTruncated);
    EXPECT_EQ(source.Position(), 2U);
    EXPECT_EQ(source.Little<std::uint8_t>(), 3);
}

TEST_P(ByteSources, BytesAtAPositionComeWhole) {
    ByteSource source = Open({1, 2, 3, 4, 5});
    EXPECT_EQ(source.BytesAt<2>(3), (std::array<unsigned char, 2>{4, 5}));
    EXPECT_EQ(source.BytesAt<2>(0), (std::array<unsigned char, 2>{1, 2}));
    EXPECT_EQ(source.BytesAt<2>(4).error(), Failure::kTruncated);
    EXPECT_EQ(source.BytesAt<2>(~std::uint64_t{0}).error(), Failure::kTruncated);
}

TEST_P(ByteSources, PeekingShowsAllBytesInOrderAndMovesNothing) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    Bytes gathered;
    while (!source.Peek().empty()) {
        const std::span<const unsigned char> window = source.Peek();
        ASSERT_EQ(source.Position(), gathered.size());
        const std::size_t half = (window.size() + 1) / 2;
        gathered.insert(gathered.end(), window.begin(), window.begin() + static_cast<std::ptrdiff_t>(half));
        ASSERT_TRUE(source.Skip(half));
    }
    EXPECT_EQ(gathered, bytes);
}

TEST_P(ByteSources, ASliceSeesItsOwnBytesOnly) {
    ByteSource source = Open({0, 1, 2, 3, 4, 5, 6, 7});
    ASSERT_TRUE(source.Skip(2));
    Result<ByteSource> slice = source.Slice(3);
    ASSERT_TRUE(slice);
    EXPECT_EQ(source.Position(), 5U) << "the slice is behind its parent";
    EXPECT_EQ(slice->Size(), 3U);
    EXPECT_EQ(slice->Position(), 0U);
    EXPECT_EQ(slice->Big<std::uint16_t>(), 0x0203);
    EXPECT_EQ(slice->Big<std::uint16_t>().error(), Failure::kTruncated);
    EXPECT_EQ(slice->Seek(4).error(), Failure::kTruncated);
    ASSERT_TRUE(slice->Seek(0));
    EXPECT_EQ(slice->Peek().size(), 3U);
    EXPECT_EQ(source.Big<std::uint8_t>(), 5);
}

TEST_P(ByteSources, SlicesAndTheirParentReadInTurnWithoutDisturbingOneAnother) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    Result<ByteSource> first = source.Slice(40'000);
    Result<ByteSource> second = source.Slice(40'000);
    ASSERT_TRUE(first && second);
    ASSERT_TRUE(second->Skip(1));
    Result<ByteSource> inner = second->Slice(20);
    ASSERT_TRUE(inner);
    for (std::size_t i = 0; i < 20'000; ++i) {
        ASSERT_EQ(first->Little<std::uint8_t>(), bytes[i]);
        ASSERT_EQ(second->Little<std::uint8_t>(), bytes[40'021 + i]);
        ASSERT_EQ(source.Little<std::uint8_t>(), bytes[80'000 + i]);
        if (i < 20) {
            ASSERT_EQ(inner->Little<std::uint8_t>(), bytes[40'001 + i]);
        }
    }
}

TEST_P(ByteSources, AnotherViewBeginsAtTheStartAndGoesItsOwnWay) {
    ByteSource source = Open({0, 1, 2, 3, 4, 5, 6, 7});
    ASSERT_TRUE(source.Skip(2));
    Result<ByteSource> slice = source.Slice(4);
    ASSERT_TRUE(slice && slice->Skip(1));
    ByteSource again = slice->Again();
    EXPECT_EQ(again.Size(), 4U) << "of what it is a view of, no more";
    EXPECT_EQ(again.Position(), 0U);
    EXPECT_EQ(again.Big<std::uint32_t>(), 0x02030405U);
    EXPECT_EQ(slice->Big<std::uint8_t>(), 3) << "which stands where it stood";
    EXPECT_EQ(source.Again().Size(), 8U);
}

TEST(ByteSourceOfAFile, NoneIsNoSource) {
    EXPECT_EQ(ByteSource::Over(nullptr).error(), Failure::kCannotOpen);
}

TEST_P(ByteSources, ASliceLongerThanTheRestIsRefusedAndNothingMoves) {
    ByteSource source = Open({1, 2, 3});
    ASSERT_TRUE(source.Skip(1));
    EXPECT_EQ(source.Slice(3).error(), Failure::kTruncated);
    EXPECT_EQ(source.Slice(~std::uint64_t{0}).error(), Failure::kTruncated);
    EXPECT_EQ(source.Position(), 1U);
    Result<ByteSource> rest = source.Slice(2);
    ASSERT_TRUE(rest);
    Result<ByteSource> nothing = source.Slice(0);
    ASSERT_TRUE(nothing);
    EXPECT_TRUE(nothing->Peek().empty());
}

TEST_P(ByteSources, AnEmptySourceIsAtItsEnd) {
    ByteSource source = Open({});
    EXPECT_EQ(source.Size(), 0U);
    EXPECT_TRUE(source.Peek().empty());
    EXPECT_TRUE(source.Seek(0));
    EXPECT_TRUE(source.Read({}));
    EXPECT_EQ(source.Little<std::uint8_t>().error(), Failure::kTruncated);
}

TEST_P(ByteSources, MovingASourceKeepsItsPlaceAndBuffer) {
    const Bytes bytes = Pattern();
    ByteSource source = Open(bytes);
    ASSERT_TRUE(source.Little<std::uint8_t>());
    ByteSource moved = std::move(source);
    EXPECT_EQ(moved.Little<std::uint8_t>(), bytes[1]);
    ByteSource other = ByteSource(std::span<const unsigned char>());
    other = std::move(moved);
    EXPECT_EQ(other.Little<std::uint8_t>(), bytes[2]);
    EXPECT_EQ(other.Position(), 3U);
}

TEST(ByteSource, ASliceKeepsTheFileOpen) {
    const TemporaryFolder folder;
    std::optional<ByteSource> slice;
    {
        Result<ByteSource> source = ByteSource::Open(Wide(folder.Write("x", "abcdef")));
        ASSERT_TRUE(source);
        ASSERT_TRUE(source->Skip(3));
        slice = std::move(*source->Slice(2));
    }
    EXPECT_EQ(slice->Big<std::uint16_t>(), 'd' << 8 | 'e');
}

TEST(ByteSource, WhatIsNoRegularFileCannotBeOpened) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(ByteSource::Open(Wide(folder / "pipe")).error(), Failure::kCannotOpen);
    EXPECT_EQ(ByteSource::Open(Wide(folder.Path())).error(), Failure::kCannotOpen);
    EXPECT_EQ(ByteSource::Open(Wide(folder / "missing")).error(), Failure::kCannotOpen);
    EXPECT_EQ(ByteSource::Open(L"/dev/zero").error(), Failure::kCannotOpen);
    EXPECT_EQ(ByteSource::Open(L"").error(), Failure::kCannotOpen);
}

TEST(ByteSource, ANarrowPathIsTakenByItsBytes) {
    const TemporaryFolder folder;
    Result<ByteSource> source = ByteSource::OpenNarrow(folder.Write("caf\xE9", "ab").c_str());
    ASSERT_TRUE(source);
    EXPECT_EQ(source->Size(), 2U);
    EXPECT_EQ(source->Big<std::uint16_t>(), 'a' << 8 | 'b');
    EXPECT_EQ(ByteSource::OpenNarrow(folder.Path().c_str()).error(), Failure::kCannotOpen);
    EXPECT_EQ(ByteSource::OpenNarrow((folder / "missing").c_str()).error(), Failure::kCannotOpen);
}

TEST(ByteSource, AFileThatShrinksIsUnreadableNotEndless) {
    const TemporaryFolder folder;
    const auto path = folder.Write("x", Pattern());
    Result<ByteSource> source = ByteSource::Open(Wide(path));
    ASSERT_TRUE(source);
    std::filesystem::resize_file(path, 10);
    Bytes out(50);
    EXPECT_EQ(source->Read(out).error(), Failure::kUnreadable);
    EXPECT_EQ(source->Position(), 0U);
    EXPECT_EQ(source->ReadSome(out), 10U);
    EXPECT_TRUE(source->Peek().empty());
    EXPECT_EQ(source->Little<std::uint8_t>().error(), Failure::kUnreadable);
}

TEST(ByteSource, ReachesPositionsBeyondFourGigabytes) {
    const TemporaryFolder folder;
    const auto path = folder.Write("x", "start");
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30) + 7;
    std::filesystem::resize_file(path, kFar);
    {
        const int file = open(path.c_str(), O_WRONLY);
        ASSERT_GE(file, 0);
        EXPECT_EQ(pwrite(file, "end", 3, kFar - 3), 3);
        close(file);
    }
    Result<ByteSource> source = ByteSource::Open(Wide(path));
    ASSERT_TRUE(source);
    EXPECT_EQ(source->Size(), kFar);
    EXPECT_EQ(source->BytesAt<3>(kFar - 3), (std::array<unsigned char, 3>{'e', 'n', 'd'}));
    EXPECT_EQ(source->Remaining(), 0U);
    EXPECT_EQ(source->BytesAt<3>(0), (std::array<unsigned char, 3>{'s', 't', 'a'}));
}

}  // namespace
