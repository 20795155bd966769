#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"
#include "support/MessageRecorder.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

constexpr unsigned char kLeft = 0xEE;

/// Lines of a file whose bytes are 0, 1, 2 ... from its start, the header included.
class PcxLinesOf : public testing::Test {
protected:
    PcxLines Lines(int encoding, int lineBytes, std::size_t capacity, std::size_t fileBytes) {
        mFile.resize(fileBytes);
        std::iota(mFile.begin(), mFile.end(), static_cast<unsigned char>(0));
        mSource.emplace(mFile);
        PcxHeader header;
        header.encoding = static_cast<std::uint8_t>(encoding);
        header.bytesPerLine = static_cast<std::uint16_t>(lineBytes);
        return PcxLines(*mSource, header, capacity);
    }

    /// The bytes that a line read; all behind them must be as they were.
    static Bytes Read(PcxLines& lines) {
        Bytes out(lines.Capacity() + 3, kLeft);
        const std::size_t count = lines.Read(out);
        EXPECT_TRUE(std::all_of(out.begin() + static_cast<std::ptrdiff_t>(count), out.end(),
                                [](unsigned char byte) { return byte == kLeft; }));
        out.resize(count);
        return out;
    }

    static Bytes From(int first, int count) {
        Bytes bytes(static_cast<std::size_t>(count));
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(first));
        return bytes;
    }

    Bytes mFile;
    std::optional<ByteSource> mSource;
    MessageRecorder messages;
};

TEST_F(PcxLinesOf, RawLinesFollowTheHeaderOneAfterAnother) {
    PcxLines lines = Lines(0, 4, 4, 140);
    EXPECT_EQ(Read(lines), From(128, 4));
    EXPECT_EQ(Read(lines), From(132, 4));
    EXPECT_EQ(Read(lines), From(136, 4));
}

TEST_F(PcxLinesOf, WhatARawLineHasBeyondItsRoomIsSkipped) {
    PcxLines lines = Lines(0, 6, 4, 140);
    EXPECT_EQ(Read(lines), From(128, 4));
    EXPECT_EQ(Read(lines), From(134, 4));
    EXPECT_EQ(Read(lines), Bytes());
}

TEST_F(PcxLinesOf, ARawLineShorterThanItsRoomIsReadOverAndGoneBackTo) {
    PcxLines lines = Lines(0, 2, 4, 140);
    EXPECT_EQ(Read(lines), From(128, 4));
    EXPECT_EQ(Read(lines), From(130, 4));
    EXPECT_EQ(Read(lines), From(132, 4));
}

TEST_F(PcxLinesOf, TheWayBackStartsWhereTheFileEnded) {
    PcxLines lines = Lines(0, 100, 200, 178);
    EXPECT_EQ(Read(lines), From(128, 50));
    EXPECT_EQ(Read(lines), From(78, 100)) << "178 - 100, which is inside the header";
    EXPECT_EQ(Read(lines), From(78, 100));
}

TEST_F(PcxLinesOf, ThereIsNoWayBackBeyondTheFilesStart) {
    PcxLines lines = Lines(0, 100, 300, 178);
    EXPECT_EQ(Read(lines), From(128, 50));
    EXPECT_EQ(Read(lines), Bytes());
    PcxLines far = Lines(0, 100, 278, 178);
    EXPECT_EQ(Read(far), From(128, 50));
    EXPECT_EQ(Read(far), From(0, 178)) << "the start itself can be reached";
}

TEST_F(PcxLinesOf, RawLinesEndUnnoticed) {
    PcxLines lines = Lines(0, 8, 8, 131);
    EXPECT_EQ(Read(lines), From(128, 3));
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_EQ(lines.TakeLinesOutOfData(), 0);
}

TEST_F(PcxLinesOf, CodedLinesThatTheDataEndInAreCounted) {
    PcxLines lines = Lines(1, 4, 4, 134);
    EXPECT_EQ(Read(lines), From(128, 4));
    EXPECT_EQ(lines.TakeLinesOutOfData(), 0);
    EXPECT_EQ(Read(lines), From(132, 2));
    EXPECT_EQ(lines.TakeLinesOutOfData(), 1);
    EXPECT_EQ(lines.TakeLinesOutOfData(), 0) << "once each";
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_EQ(lines.TakeLinesOutOfData(), 2);
    EXPECT_TRUE(messages.Texts().empty()) << "telling of it is the reader's";
}

TEST_F(PcxLinesOf, DroppingARunTakesNothingFromRawLines) {
    PcxLines lines = Lines(0, 4, 4, 140);
    EXPECT_EQ(Read(lines), From(128, 4));
    lines.DropRun();
    EXPECT_EQ(Read(lines), From(132, 4));
}

}  // namespace
