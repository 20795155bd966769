#include "readers/flic/FlicBytes.h"
#include "readers/flic/FlicChunks.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

/// What a body made of a frame of 4 x 3 indices, all 7 before.
struct Played {
    bool whole = false;
    Bytes indices;
    std::uint64_t left = 0;  ///< bytes not read
};

template <class Decode>
Played Play(const ByteBuilder& body, const Decode& decode, std::uint32_t width = 4, std::uint32_t height = 3) {
    FlicFrame frame(width, height);
    std::ranges::fill(frame.At(0, width * height), 7);
    ByteSource source = body.Source();
    Played played;
    played.whole = decode(source, frame).has_value();
    played.indices.assign(frame.Indices().begin(), frame.Indices().end());
    played.left = source.Remaining();
    return played;
}

Played Copy(const ByteBuilder& body) {
    return Play(body, DecodeFlicCopy);
}
Played ByteRun(const ByteBuilder& body) {
    return Play(body, DecodeFlicByteRun);
}
Played ByteDelta(const ByteBuilder& body) {
    return Play(body, DecodeFlicByteDelta);
}
Played WordDelta(const ByteBuilder& body) {
    return Play(body, DecodeFlicWordDelta);
}

// The palette.

struct Coloured {
    bool whole = false;
    FlicPalette palette;
    std::uint64_t left = 0;
};

/// All components 200 before.
Coloured Colour(const ByteBuilder& body, unsigned scale = 1) {
    Coloured coloured;
    coloured.palette.fill(200);
    ByteSource source = body.Source();
    coloured.whole = DecodeFlicPalette(source, coloured.palette, scale).has_value();
    coloured.left = source.Remaining();
    return coloured;
}

Bytes Entry(const Coloured& coloured, std::size_t index) {
    const auto start = coloured.palette.begin() + static_cast<std::ptrdiff_t>(3 * index);
    return {start, start + 3};
}

TEST(FlicPalette, PacketsSkipEntriesFromWhereTheLastOneEnded) {
    const Coloured coloured = Colour(BytesOf({2, 0, 1, 2, 1, 2, 3, 4, 5, 6, 3, 1, 7, 8, 9}));
    EXPECT_TRUE(coloured.whole);
    EXPECT_EQ(Entry(coloured, 0), (Bytes{200, 200, 200}));
    EXPECT_EQ(Entry(coloured, 1), (Bytes{1, 2, 3}));
    EXPECT_EQ(Entry(coloured, 2), (Bytes{4, 5, 6}));
    EXPECT_EQ(Entry(coloured, 5), (Bytes{200, 200, 200}));
    EXPECT_EQ(Entry(coloured, 6), (Bytes{7, 8, 9}));
    EXPECT_EQ(Entry(coloured, 7), (Bytes{200, 200, 200}));
}

TEST(FlicPalette, ACountOfZeroIsAllEntries) {
    const Coloured coloured = Colour(CountingPalette());
    EXPECT_TRUE(coloured.whole);
    EXPECT_EQ(coloured.left, 0U);
    EXPECT_EQ(Entry(coloured, 0), (Bytes{0, 1, 2}));
    EXPECT_EQ(Entry(coloured, 255), (Bytes{255, 0, 1}));
}

TEST(FlicPalette, SixBitComponentsAreMultipliedInEightBits) {
    const Coloured coloured = Colour(BytesOf({1, 0, 0, 1, 63, 64, 1}), 4);
    EXPECT_EQ(Entry(coloured, 0), (Bytes{252, 0, 4}));
    EXPECT_EQ(Entry(coloured, 1), (Bytes{200, 200, 200})) << "only what was read";
}

TEST(FlicPalette, ColoursBeyondTheLastEntryStayInTheFile) {
    const Coloured coloured = Colour(BytesOf({1, 0, 255, 2, 1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(coloured.whole);
    EXPECT_EQ(Entry(coloured, 255), (Bytes{1, 2, 3}));
    EXPECT_EQ(coloured.left, 3U);
}

TEST(FlicPalette, TheIndexMovesOnByColoursThatDidNotFitToo) {
    // 255 + 2 = 257, so the second packet has no entry left and its colours are not read either.
    const Coloured coloured = Colour(BytesOf({3, 0, 255, 2, 1, 2, 3, 0, 1, 255, 0, 90, 91}));
    EXPECT_TRUE(coloured.whole);
    EXPECT_EQ(Entry(coloured, 255), (Bytes{1, 2, 3}));
    EXPECT_EQ(coloured.left, 2U);
}

TEST(FlicPalette, AFileThatEndsLeavesTheColoursThatItHad) {
    const Coloured coloured = Colour(BytesOf({1, 0, 0, 2, 1, 2, 3, 4}), 4);
    EXPECT_FALSE(coloured.whole);
    EXPECT_EQ(Entry(coloured, 0), (Bytes{4, 8, 12}));
    EXPECT_EQ(Entry(coloured, 1), (Bytes{16, 200, 200}));
    for (const auto& body : {BytesOf({}), BytesOf({1}), BytesOf({1, 0}), BytesOf({1, 0, 5})})
        EXPECT_FALSE(Colour(body).whole);
    EXPECT_TRUE(Colour(BytesOf({0, 0})).whole);
}

// All indices at once.

TEST(FlicCopy, IndicesComeAsTheyAre) {
    const Played played = Copy(BytesOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(played.left, 1U);
}

TEST(FlicCopy, AFileThatEndsLeavesTheIndicesThatItHad) {
    const Played played = Copy(BytesOf({0, 1, 2, 3, 4}));
    EXPECT_FALSE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{0, 1, 2, 3, 4, 7, 7, 7, 7, 7, 7, 7}));
}

TEST(FlicByteRun, PositiveCountsRepeatAndNegativeOnesCopy) {
    const Played played = ByteRun(BytesOf({9, 4, 1, 99, 0xFC, 2, 3, 4, 5, 0, 1, 6, 0xFF, 8, 2, 9}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 1, 1, 1, 2, 3, 4, 5, 6, 8, 9, 9}));
    EXPECT_EQ(played.left, 0U);
}

TEST(FlicByteRun, ARepeatEndsWithItsRow) {
    const Played played = ByteRun(BytesOf({0, 1, 1, 100, 2, 0, 4, 3, 0, 4, 4}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4}));
}

TEST(FlicByteRun, OnlyTheBytesOfACopyThatFitAreRead) {
    // A copy of 5 into a row of 4: the fifth byte is the unused one of the next row.
    const Played played = ByteRun(BytesOf({0, 0xFB, 1, 2, 3, 4, 0, 4, 3, 0, 4, 4}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 2, 3, 4, 3, 3, 3, 3, 4, 4, 4, 4}));
}

TEST(FlicByteRun, ACountOfZeroTakesAByteAndWritesNothing) {
    const Played played = ByteRun(BytesOf({0, 0, 50, 0, 51, 4, 1, 0, 4, 2, 0, 4, 3}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3}));
}

TEST(FlicByteRun, ACountOf128IsNegative) {
    ByteBuilder body = BytesOf({0, 0x80});
    for (unsigned i = 0; i < 128; ++i)
        body.Byte(i);
    const Played played = Play(body, DecodeFlicByteRun, 128, 1);
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices[0], 0);
    EXPECT_EQ(played.indices[127], 127);
}

TEST(FlicByteRun, AFileThatEndsLeavesWhatItHad) {
    const Played copy = ByteRun(BytesOf({0, 4, 1, 0, 0xFC, 2, 3}));
    EXPECT_FALSE(copy.whole);
    EXPECT_EQ(copy.indices, (Bytes{1, 1, 1, 1, 2, 3, 7, 7, 7, 7, 7, 7}));
    const Played repeat = ByteRun(BytesOf({0, 4, 1, 0, 4}));
    EXPECT_FALSE(repeat.whole);
    EXPECT_EQ(repeat.indices, (Bytes{1, 1, 1, 1, 7, 7, 7, 7, 7, 7, 7, 7})) << "a count without its byte writes nothing";
    EXPECT_FALSE(ByteRun(BytesOf({0, 0, 1, 0, 1, 0, 1})).whole) << "and counts of zero come to an end";
}

// Changes, byte by byte.

TEST(FlicByteDelta, PacketsSkipColumnsFromWhereTheLastOneEnded) {
    // From row 1, 2 rows: two packets, then one.
    const Played played = ByteDelta(BytesOf({1, 0, 2, 0, 2, 1, 1, 10, 1, 0xFF, 11, 1, 0, 2, 12, 13}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{7, 7, 7, 7, 7, 10, 7, 11, 12, 13, 7, 7}));
    EXPECT_EQ(played.left, 0U);
}

TEST(FlicByteDelta, NegativeCountsRepeatAndPositiveOnesCopy) {
    const Played played = ByteDelta(BytesOf({0, 0, 1, 0, 2, 0, 0xFE, 5, 0, 2, 6, 8}));
    EXPECT_EQ(played.indices, (Bytes{5, 5, 6, 8, 7, 7, 7, 7, 7, 7, 7, 7}));
}

TEST(FlicByteDelta, WhatPassesTheEndOfARowGoesOnInTheNext) {
    const Played played = ByteDelta(BytesOf({0, 0, 1, 0, 1, 3, 3, 1, 2, 3}));
    EXPECT_EQ(played.indices, (Bytes{7, 7, 7, 1, 2, 3, 7, 7, 7, 7, 7, 7}));
}

TEST(FlicByteDelta, WhatPassesTheEndOfTheFrameIsReadAndDropped) {
    const Played copy = ByteDelta(BytesOf({2, 0, 2, 0, 1, 2, 4, 1, 2, 3, 4, 1, 0, 0xFF, 9, 99}));
    EXPECT_TRUE(copy.whole);
    EXPECT_EQ(copy.indices, (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 1, 2}));
    EXPECT_EQ(copy.left, 1U);
    const Played repeat = ByteDelta(BytesOf({0xFF, 0xFF, 1, 0, 1, 0, 0x80, 5}));
    EXPECT_TRUE(repeat.whole);
    EXPECT_EQ(repeat.indices, Bytes(12, 7));
}

TEST(FlicByteDelta, AFileThatEndsLeavesWhatItHad) {
    const Played played = ByteDelta(BytesOf({0, 0, 9, 0, 1, 0, 3, 1, 2}));
    EXPECT_FALSE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 2, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
    EXPECT_FALSE(ByteDelta(BytesOf({2, 0, 1, 0, 1, 3, 3, 1, 2})).whole)
        << "also where the missing byte would be dropped";
    for (const auto& body : {BytesOf({}), BytesOf({0, 0, 1}), BytesOf({0, 0, 1, 0}), BytesOf({0, 0, 1, 0, 1, 0}),
                             BytesOf({0, 0, 1, 0, 1, 0, 0xFF})}) {
        EXPECT_FALSE(ByteDelta(body).whole);
    }
}

// Changes, word by word.

TEST(FlicWordDelta, PositiveCountsCopyWords) {
    const Played played = WordDelta(BytesOf({2, 0, 1, 0, 0, 2, 1, 2, 3, 4, 1, 0, 2, 1, 5, 6}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, (Bytes{1, 2, 3, 4, 7, 7, 5, 6, 7, 7, 7, 7}));
    EXPECT_EQ(played.left, 0U);
}

TEST(FlicWordDelta, ColumnsCountFromTheStartOfTheRowForEachPacket) {
    const Played played = WordDelta(BytesOf({1, 0, 2, 0, 2, 1, 1, 2, 1, 1, 3, 4}));
    EXPECT_EQ(played.indices, (Bytes{7, 3, 4, 2, 7, 7, 7, 7, 7, 7, 7, 7}));
}

TEST(FlicWordDelta, AWordIsRepeatedByTheColumnAsANegativeNumberNotByTheCount) {
    // Column 0xFE = 254 is far outside the row: 2 words at offset 254 of a frame of 300.
    const Played wide = Play(BytesOf({1, 0, 1, 0, 0xFE, 0x80, 8, 9}), DecodeFlicWordDelta, 300, 1);
    EXPECT_TRUE(wide.whole);
    EXPECT_EQ(wide.indices[253], 7);
    EXPECT_EQ(wide.indices[254], 8);
    EXPECT_EQ(wide.indices[255], 9);
    EXPECT_EQ(wide.indices[256], 8);
    EXPECT_EQ(wide.indices[257], 9);
    EXPECT_EQ(wide.indices[258], 7);
}

TEST(FlicWordDelta, ARepeatAtAColumnBelow128WritesNothingButTakesItsWord) {
    const Played played = WordDelta(BytesOf({1, 0, 2, 0, 1, 0xFE, 50, 51, 0, 0xFF, 52, 53, 99}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, Bytes(12, 7));
    EXPECT_EQ(played.left, 1U);
}

TEST(FlicWordDelta, ACountOfZeroIsARepeat) {
    const Played played = WordDelta(BytesOf({1, 0, 1, 0, 0, 0, 50, 51, 99}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, Bytes(12, 7));
    EXPECT_EQ(played.left, 1U);
    const Played wide = Play(BytesOf({1, 0, 1, 0, 0xFF, 0, 8, 9}), DecodeFlicWordDelta, 300, 1);
    EXPECT_EQ(wide.indices[255], 8);
    EXPECT_EQ(wide.indices[256], 9);
    EXPECT_EQ(wide.indices[257], 7);
}

TEST(FlicWordDelta, AWordWithBit14MovesDownByItsLow14Bits) {
    EXPECT_EQ(WordDelta(BytesOf({1, 0, 2, 0x40, 1, 0, 0, 1, 1, 2})).indices,
              (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 1, 2, 7, 7}));
    EXPECT_EQ(WordDelta(BytesOf({1, 0, 1, 0xC0, 1, 0, 0, 1, 1, 2})).indices,
              (Bytes{7, 7, 7, 7, 1, 2, 7, 7, 7, 7, 7, 7}))
        << "with bit 15 as well";
    EXPECT_EQ(WordDelta(BytesOf({1, 0, 1, 0x40, 1, 0x40, 1, 0, 0, 1, 1, 2})).indices,
              (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 1, 2, 7, 7}))
        << "more than once";
}

TEST(FlicWordDelta, AMoveWrittenAsANegativeNumberLeavesTheFrame) {
    // -2, as other programs write it, is a move by 16382 rows.
    const Played played = WordDelta(BytesOf({2, 0, 0xFE, 0xFF, 1, 0, 0, 1, 1, 2, 1, 0, 0, 1, 3, 4, 99}));
    EXPECT_TRUE(played.whole);
    EXPECT_EQ(played.indices, Bytes(12, 7));
    EXPECT_EQ(played.left, 1U);
}

TEST(FlicWordDelta, AWordWithBit15AloneIsTheLastIndexOfTheRow) {
    EXPECT_EQ(WordDelta(BytesOf({2, 0, 5, 0x80, 0, 0, 6, 0xBF, 0, 0})).indices,
              (Bytes{7, 7, 7, 5, 7, 7, 7, 6, 7, 7, 7, 7}));
    EXPECT_EQ(WordDelta(BytesOf({1, 0, 3, 0x40, 5, 0x80, 0, 0})).indices, Bytes(12, 7))
        << "below the frame it is dropped";
    EXPECT_TRUE(Play(BytesOf({1, 0, 5, 0x80, 0, 0}), DecodeFlicWordDelta, 0, 3).whole);
}

TEST(FlicWordDelta, WhatPassesTheEndOfTheFrameIsDroppedByteByByte) {
    const Played copy = Play(BytesOf({1, 0, 1, 0, 3, 2, 1, 2, 3, 4, 99}), DecodeFlicWordDelta, 4, 1);
    EXPECT_EQ(copy.indices, (Bytes{7, 7, 7, 1}));
    EXPECT_EQ(copy.left, 1U);
    const Played repeat = Play(BytesOf({1, 0, 1, 0, 0xFE, 0, 8, 9}), DecodeFlicWordDelta, 257, 1);
    EXPECT_EQ(repeat.indices[254], 8);
    EXPECT_EQ(repeat.indices[255], 9);
    EXPECT_EQ(repeat.indices[256], 8);
}

TEST(FlicWordDelta, AFileThatEndsLeavesWhatItHad) {
    const Played copy = WordDelta(BytesOf({9, 0, 1, 0, 0, 2, 1, 2, 3}));
    EXPECT_FALSE(copy.whole);
    EXPECT_EQ(copy.indices, (Bytes{1, 2, 3, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
    const Played repeat = Play(BytesOf({1, 0, 1, 0, 0xFE, 0, 8}), DecodeFlicWordDelta, 300, 1);
    EXPECT_FALSE(repeat.whole);
    EXPECT_EQ(repeat.indices, Bytes(300, 7));
    for (const auto& body : {BytesOf({}), BytesOf({1}), BytesOf({1, 0}), BytesOf({1, 0, 1}), BytesOf({1, 0, 1, 0xC0}),
                             BytesOf({1, 0, 1, 0, 0}), BytesOf({2, 0, 0, 0})}) {
        EXPECT_FALSE(WordDelta(body).whole);
    }
}

}  // namespace
