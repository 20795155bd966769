#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxRuns.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Common::Result;
using namespace Kavra::Tests;

class PcxRunsOver {
public:
    PcxRunsOver(Bytes data, std::size_t capacity, std::size_t lineBytes)
        : mData(std::move(data)), mSource(mData), runs(mSource, capacity, lineBytes) {}

    Bytes Line() {
        const auto line = runs.NextLine();
        return {line.begin(), line.end()};
    }

private:
    Bytes mData;
    ByteSource mSource;

public:
    PcxRuns runs;
};

TEST(PcxRuns, BytesBelow192StandForThemselves) {
    PcxRunsOver data({0x00, 0x3F, 0x40, 0x7F, 0x80, 0xBF}, 6, 6);
    EXPECT_EQ(data.Line(), (Bytes{0x00, 0x3F, 0x40, 0x7F, 0x80, 0xBF}));
    EXPECT_FALSE(data.runs.IsOutOfData());
}

TEST(PcxRuns, FromThereOnTheyRepeatTheByteBehindThem) {
    PcxRunsOver data({0xC2, 0x05, 0xC1, 0xFF, 0xC3, 0xC0}, 6, 6);
    EXPECT_EQ(data.Line(), (Bytes{5, 5, 0xFF, 0xC0, 0xC0, 0xC0}));
}

TEST(PcxRuns, ACountIsSixBits) {
    PcxRunsOver data({0xFF, 0x07, 0x08}, 64, 64);
    Bytes line(64, 7);
    line.back() = 8;
    EXPECT_EQ(data.Line(), line);
}

TEST(PcxRuns, ACountOfZeroTakesItsByteAndGivesNothing) {
    PcxRunsOver data({0xC0, 0x05, 0x06, 0xC0, 0xC1, 0x07}, 2, 2);
    EXPECT_EQ(data.Line(), (Bytes{6, 7}));
}

TEST(PcxRuns, ARunOverTheLineEndGoesOnInTheNextLine) {
    PcxRunsOver data({0x01, 0xC5, 0x02, 0x03, 0x04, 0x05}, 3, 3);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 2}));
    EXPECT_EQ(data.Line(), (Bytes{2, 2, 2})) << "the run fills the line, and not a byte is taken for it";
    EXPECT_EQ(data.Line(), (Bytes{3, 4, 5}));
}

TEST(PcxRuns, ARunMayCoverManyLines) {
    PcxRunsOver data({0xC7, 0x09, 0x01}, 2, 2);
    for (int line = 0; line < 3; ++line)
        EXPECT_EQ(data.Line(), (Bytes{9, 9}));
    EXPECT_EQ(data.Line(), (Bytes{9, 1}));
    EXPECT_FALSE(data.runs.IsOutOfData());
}

TEST(PcxRuns, PaddingIsSkippedByARunThatCoversIt) {
    PcxRunsOver data({0x01, 0x02, 0xC3, 0x03, 0x04, 0x05, 0x06}, 3, 5);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 3})) << "3 + 2 bytes are the five of a line: nothing is left of the run";
    EXPECT_EQ(data.Line(), (Bytes{4, 5, 6}));
}

TEST(PcxRuns, PaddingInACodeOfItsOwnBecomesTheNextLinesStart) {
    PcxRunsOver data({0x01, 0x02, 0x03, 0x00, 0x04, 0x05, 0x06}, 3, 4);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 3}));
    EXPECT_EQ(data.Line(), (Bytes{0, 4, 5}));
}

TEST(PcxRuns, ARunThatEndsInsideThePaddingIsDoneWith) {
    PcxRunsOver data({0x01, 0x02, 0xC2, 0x03, 0x04, 0x05, 0x06}, 3, 6);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 3})) << "4 bytes of a line of 6: two fewer than nothing are left";
    EXPECT_EQ(data.Line(), (Bytes{4, 5, 6}));
}

TEST(PcxRuns, WhatIsLeftOfARunCountsFromTheFilesLineAndShrinksByTheRoom) {
    // 15 bytes, 5 of them a line: 10 are left, which makes three lines of 3 and a byte.
    PcxRunsOver data({0xCF, 0x09, 0x01, 0x02}, 3, 5);
    for (int line = 0; line < 4; ++line)
        EXPECT_EQ(data.Line(), (Bytes{9, 9, 9})) << line;
    EXPECT_EQ(data.Line(), (Bytes{9, 1, 2}));
}

TEST(PcxRuns, ALineShorterThanItsRoomEndsWithTheCodeThatCompletesIt) {
    PcxRunsOver data({0x01, 0x02, 0x03, 0x04, 0xC5, 0x05, 0x06, 0x07, 0x08}, 8, 3);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 3}));
    EXPECT_EQ(data.Line(), (Bytes{4, 5, 5, 5, 5, 5})) << "the whole run fits the capacity: nothing of it is carried";
    EXPECT_EQ(data.Line(), (Bytes{6, 7, 8}));
}

TEST(PcxRuns, ARunOverTheRoomOfAShortLineIsCarriedFromTheLinesEnd) {
    PcxRunsOver data({0x01, 0xC9, 0x05, 0x06, 0x07}, 8, 4);
    EXPECT_EQ(data.Line(), (Bytes{1, 5, 5, 5, 5, 5, 5, 5}));
    EXPECT_EQ(data.Line(), (Bytes{5, 5, 5, 5, 5, 5})) << "10 - 4, of which 3 were already there";
    EXPECT_EQ(data.Line(), (Bytes{6, 7}));
}

TEST(PcxRuns, LinesOfNoBytesTakeNone) {
    PcxRunsOver data({0x01}, 4, 0);
    EXPECT_EQ(data.Line(), Bytes());
    EXPECT_FALSE(data.runs.IsOutOfData());
    PcxRunsOver nothing({}, 4, 0);
    EXPECT_EQ(nothing.Line(), Bytes());
    EXPECT_FALSE(nothing.runs.IsOutOfData());
}

TEST(PcxRuns, ALineKeepsWhatCameBeforeTheDataEnded) {
    PcxRunsOver data({0x01, 0x02, 0x03, 0x04}, 3, 3);
    EXPECT_EQ(data.Line(), (Bytes{1, 2, 3}));
    EXPECT_FALSE(data.runs.IsOutOfData());
    EXPECT_EQ(data.Line(), (Bytes{4}));
    EXPECT_TRUE(data.runs.IsOutOfData());
    EXPECT_EQ(data.Line(), Bytes());
    EXPECT_TRUE(data.runs.IsOutOfData());
}

TEST(PcxRuns, ACountWithoutItsByteIsTheEndOfTheData) {
    PcxRunsOver data({0x01, 0xC2}, 3, 3);
    EXPECT_EQ(data.Line(), (Bytes{1}));
    EXPECT_TRUE(data.runs.IsOutOfData());
    EXPECT_EQ(data.Line(), Bytes()) << "the count is not tried again";
}

TEST(PcxRuns, ALineThatEndsWithTheDataIsWhole) {
    PcxRunsOver data({0xC5, 0x01}, 3, 3);
    EXPECT_EQ(data.Line(), (Bytes{1, 1, 1}));
    EXPECT_FALSE(data.runs.IsOutOfData());
    EXPECT_EQ(data.Line(), (Bytes{1, 1})) << "the carried run comes first";
    EXPECT_TRUE(data.runs.IsOutOfData());
}

TEST(PcxRuns, ADroppedRunDoesNotGoOn) {
    PcxRunsOver data({0xC5, 0x01, 0x02, 0x03, 0x04}, 3, 3);
    EXPECT_EQ(data.Line(), (Bytes{1, 1, 1}));
    data.runs.DropRun();
    EXPECT_EQ(data.Line(), (Bytes{2, 3, 4}));
}

/// The coding told once more, a byte at a time.
class PlainRuns {
public:
    PlainRuns(const Bytes& data, long capacity, long lineBytes)
        : mData(data), mCapacity(capacity), mLineBytes(lineBytes) {}

    Bytes Line() {
        Bytes line;
        isOutOfData = false;
        for (; mLeft > 0 && Size(line) < mCapacity; --mLeft)
            line.push_back(mValue);
        while (Size(line) < mCapacity && Size(line) < mLineBytes) {
            const int first = Take();
            if (first < 0) break;
            if (first < 192) {
                line.push_back(static_cast<unsigned char>(first));
                continue;
            }
            const int value = Take();
            if (value < 0) break;
            const long total = Size(line) + (first - 192);
            if (total > mCapacity) mLeft = total - mLineBytes, mValue = static_cast<unsigned char>(value);
            line.resize(static_cast<std::size_t>(std::min(total, mCapacity)), static_cast<unsigned char>(value));
        }
        return line;
    }

    bool isOutOfData = false;

private:
    static long Size(const Bytes& line) { return static_cast<long>(line.size()); }
    int Take() {
        isOutOfData = mNext == mData.size();
        return isOutOfData ? -1 : mData[mNext++];
    }

    const Bytes& mData;
    long mCapacity;
    long mLineBytes;
    std::size_t mNext = 0;
    long mLeft = 0;
    unsigned char mValue = 0;
};

/// Codes of every kind in stretches of every length.
Bytes RandomCodes(std::mt19937& random, std::size_t count) {
    Bytes data;
    while (data.size() < count) {
        const unsigned kind = random() % 4;
        const unsigned length = random() % 40;
        for (unsigned i = 0; i < length; ++i) {
            const bool isCount = kind == 3 || (kind == 2 && random() % 3 == 0);
            data.push_back(
                static_cast<unsigned char>(isCount ? 192 + random() % 64 : random() % (kind == 1 ? 256 : 192)));
        }
    }
    data.resize(count);
    return data;
}

TEST(PcxRuns, LongStretchesDecodeLikeSingleCodes) {
    std::mt19937 random(1);
    const TemporaryFolder folder;
    for (const auto& [capacity, lineBytes] : {std::pair{1L, 1L},
                                              {79L, 79L},
                                              {80L, 80L},
                                              {81L, 100L},
                                              {500L, 500L},
                                              {500L, 501L},
                                              {640L, 320L},
                                              {320L, 640L},
                                              {3000L, 3000L},
                                              {5000L, 0L}}) {
        // More than the source has at hand at any time.
        const Bytes data = RandomCodes(random, 40'000);
        Result<ByteSource> source = ByteSource::Open(Wide(folder.Write("data", data)));
        ASSERT_TRUE(source);
        PcxRuns runs(*source, static_cast<std::size_t>(capacity), static_cast<std::size_t>(lineBytes));
        PlainRuns plain(data, capacity, lineBytes);
        for (int line = 0; line < 1000; ++line) {
            const auto decoded = runs.NextLine();
            ASSERT_EQ(Bytes(decoded.begin(), decoded.end()), plain.Line())
                << capacity << "/" << lineBytes << ": " << line;
            ASSERT_EQ(runs.IsOutOfData(), plain.isOutOfData) << capacity << "/" << lineBytes << ": " << line;
        }
    }
}

}  // namespace
