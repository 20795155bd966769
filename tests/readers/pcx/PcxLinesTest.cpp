#include "readers/pcx/PcxLines.h"

#include "readers/pcx/PcxBytes.h"
#include "support/MessageRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned char kLeft = 0xEE;
constexpr const wchar_t* kOutOfData = L"PCXReader::Invalid Frame -- out of data";

/// Lines of a file whose bytes are 0, 1, 2 ... from its start, the header included.
class PcxLinesOf : public testing::Test {
protected:
    PcxLines Lines(int encoding, int lineBytes, std::size_t room, std::size_t fileBytes) {
        mFile.resize(fileBytes);
        std::iota(mFile.begin(), mFile.end(), static_cast<unsigned char>(0));
        mSource.emplace(mFile);
        PcxHeader header;
        header.encoding = static_cast<std::uint8_t>(encoding);
        header.bytesPerLine = static_cast<std::uint16_t>(lineBytes);
        return PcxLines(*mSource, header, room);
    }

    /// The bytes that a line read; all behind them must be as they were.
    static Bytes Read(PcxLines& lines) {
        Bytes out(lines.Room() + 3, kLeft);
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

TEST_F(PcxLinesOf, RawLinesEndInSilence) {
    PcxLines lines = Lines(0, 8, 8, 131);
    EXPECT_EQ(Read(lines), From(128, 3));
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(PcxLinesOf, CodedLinesWarnOnceEachWhereTheDataEnd) {
    PcxLines lines = Lines(1, 4, 4, 134);
    EXPECT_EQ(Read(lines), From(128, 4));
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_EQ(Read(lines), From(132, 2));
    EXPECT_THAT(messages.Texts(), ElementsAre(kOutOfData));
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_EQ(Read(lines), Bytes());
    EXPECT_THAT(messages.Entries(),
                testing::Each(MessageRecorder::Entry{Kavra::Objects::EMessageKind::kWarning, kOutOfData, false}));
    EXPECT_EQ(messages.Texts().size(), 3U);
}

TEST_F(PcxLinesOf, DroppingARunTakesNothingFromRawLines) {
    PcxLines lines = Lines(0, 4, 4, 140);
    EXPECT_EQ(Read(lines), From(128, 4));
    lines.DropRun();
    EXPECT_EQ(Read(lines), From(132, 4));
}

}  // namespace
