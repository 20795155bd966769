#include "readers/pict/PictMaker.h"
#include "readers/pict/PictStream.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

Kavra::Common::Result<PictPicture> Read(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return ReadPictPicture(source);
}

/// One grey pixel at (x, 0).
PictMap Dot(int x) {
    return {.bounds = {0, x, 1, x + 1}, .rowBytes = 0x8001, .colours = Greys({7}), .data = {0}};
}

TEST(PictStream, ReadsTheFrame) {
    const auto picture = Read(PictMaker({-5, -6, 7, 8}).End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->frame.top, -5);
    EXPECT_EQ(picture->frame.left, -6);
    EXPECT_EQ(picture->frame.bottom, 7);
    EXPECT_EQ(picture->frame.right, 8);
    EXPECT_TRUE(picture->records.empty());
    EXPECT_FALSE(picture->indexed);
}

TEST(PictStream, TheFrameIsSignedAndNotEmpty) {
    EXPECT_FALSE(Read(PictMaker({0, 0, 0, 8}).End()));
    EXPECT_FALSE(Read(PictMaker({0, 8, 8, 8}).End()));
    EXPECT_FALSE(Read(PictMaker({9, 0, 8, 8}).End()));
    EXPECT_FALSE(Read(PictMaker({0, 0, 40000, 8}).End())) << "40000 is negative";
    EXPECT_FALSE(Read(PictMaker({0, 0, 8, 40000}).End()));
    EXPECT_TRUE(Read(PictMaker({-32768, -32768, 32767, 32767}).End()));
}

TEST(PictStream, ThePictureIsNoLargerThanItsFile) {
    ByteBuilder file = PictMaker({0, 0, 1, 1}).End();
    const auto size = static_cast<unsigned>(file.Size());
    EXPECT_TRUE(Read(file.At(512).Big16(size)));
    EXPECT_FALSE(Read(file.At(512).Big16(size + 1)));
}

TEST(PictStream, ZerosMayStandBeforeTheVersion) {
    const auto with = [](const Bytes& version) {
        ByteBuilder file(512);
        file.At(512).Big16(0).Big16(0).Big16(0).Big16(1).Big16(1).Append(version);
        return Read(file).has_value();
    };
    EXPECT_TRUE(with({0x11, 0x01, 0xFF}));
    EXPECT_TRUE(with({0, 0, 0, 0x11, 0x01, 0xFF}));
    EXPECT_TRUE(with({0, 0x11, 0x02, 0xFF, 0x00, 0xFF}));
    EXPECT_FALSE(with({0x12, 0x01, 0xFF}));
    EXPECT_FALSE(with({0x11, 0x00, 0xFF}));
    EXPECT_FALSE(with({0x11, 0x03, 0xFF}));
    EXPECT_FALSE(with({0, 0x11, 0x02, 0xFE, 0x00, 0xFF}));
    EXPECT_FALSE(with({0, 0, 0}));
    EXPECT_FALSE(with({0, 0x11}));
    EXPECT_FALSE(with({0, 0x11, 0x02}));
}

TEST(PictStream, Version2OpcodesBeginAtEvenOffsetsOfTheFile) {
    // An odd number of zeros puts the end of the version at an odd offset.
    ByteBuilder file(512);
    file.At(512).Big16(0).Big16(0).Big16(0).Big16(1).Big16(1).Append(Bytes{0, 0, 0x11, 0x02, 0xFF, 0xEE, 0x00, 0xFF});
    EXPECT_TRUE(Read(file));
    // The operand of 0x04 is one byte: a pad byte follows, whatever it is.
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 1}).Op(0x04).Add({0xEE}).End()));
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 1}).Op(0x04).Add({0xEE, 0xEE}).Op(0x00).End()))
        << "the maker pads with nothing";
}

TEST(PictStream, AVersionOpcodeInTheStreamTakesOneByteAndThePadTakesTheOther) {
    const auto picture = Read(PictMaker({0, 0, 1, 1}).Op(0x11).Add({0x02, 0xFF}).Indexed(Dot(0)).End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->records.size(), 1U);
}

TEST(PictStream, Version1OpcodesFollowOneAnotherWithoutPads) {
    const auto picture = Read(
        PictMaker({0, 0, 1, 1}, 1).Op(0x04).Add({0xEE}).Indexed(Dot(0)).Op(0x04).Add({0xEE}).Indexed(Dot(0)).End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->records.size(), 2U);
}

TEST(PictStream, APictureWithoutAnEndIsDamaged) {
    EXPECT_FALSE(Read(PictMaker({0, 0, 1, 1}).File()));
    EXPECT_FALSE(Read(PictMaker({0, 0, 1, 1}).Indexed(Dot(0)).File()));
    EXPECT_FALSE(Read(PictMaker({0, 0, 1, 1}, 1).Indexed(Dot(0)).File()));
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 1}).End().Text("whatever follows the end")));
}

TEST(PictStream, InVersion2TheEndIsAWord) {
    const auto picture = Read(PictMaker({0, 0, 1, 1}).Op(0xFF00).Add({0, 0, 0, 0}).Indexed(Dot(0)).End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->records.size(), 1U);
}

TEST(PictStream, WhatDrawsNoPixelsIsSkipped) {
    PictMaker maker({0, 0, 1, 1});
    maker.Op(0x0C00).Add(Bytes(24, 0xFF));
    maker.Op(0x01).Add({0, 10, 0, 0, 0, 0, 0, 9, 0, 9});
    maker.Op(0x01).Add({0, 12, 0, 0, 0, 0, 0, 9, 0, 9, 0xFF, 0xFF});
    maker.Op(0x30).Add(Bytes(8, 0xFF));
    maker.Op(0xA1).Add({0, 150, 0, 6, 1, 2, 3, 4, 5, 6});
    maker.Op(0x12).Add({0, 2}).Add(Bytes(14, 0xFF));
    maker.Op(0x9B).Add({0, 4, 0xFF, 0xFF, 0xFF, 0xFF});
    maker.Op(0x0180).Add({0xFF, 0xFF, 0xFF});
    maker.Op(0x8200).Add({0, 0, 0, 2, 0xFF, 0xFF});
    const auto picture = Read(maker.Indexed(Dot(0)).End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->records.size(), 1U);
}

TEST(PictStream, AllBitmapOpcodesGiveRecords) {
    const Bytes region = {0, 2};
    const PictMap bits = {.bounds = {0, 0, 1, 1}, .rowBytes = 1, .data = {0}};
    PictMaker maker({0, 0, 1, 1});
    maker.Indexed(Dot(0), 0x90).Indexed(Dot(0), 0x91, region).Indexed(Dot(0), 0x98).Indexed(Dot(0), 0x99, region);
    maker.Bitmap(bits, 0x90).Bitmap(bits, 0x91, region).Bitmap(bits, 0x98).Bitmap(bits, 0x99, region);
    maker.Direct(Column(0, 0, {{1, 2, 3}}));
    const auto picture = Read(maker.End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->records.size(), 9U);
    EXPECT_FALSE(picture->indexed);
}

TEST(PictStream, ColoursAreThoseAtTheEnd) {
    const auto initial = Read(PictMaker({0, 0, 1, 1}).End());
    ASSERT_TRUE(initial);
    EXPECT_EQ(initial->colours.foreground, kPictBlack);
    EXPECT_EQ(initial->colours.background, kPictWhite);
    EXPECT_EQ(initial->colours.operation, kPictBlack);
    PictMaker maker({0, 0, 1, 1});
    maker.Colour(0x1A, 1, 2, 3).Indexed(Dot(0)).Colour(0x1A, 4, 5, 6).Colour(0x1B, 7, 8, 9).Colour(0x1F, 10, 11, 65535);
    const auto picture = Read(maker.End());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->colours.foreground, (PictColour{4, 5, 6}));
    EXPECT_EQ(picture->colours.background, (PictColour{7, 8, 9}));
    EXPECT_EQ(picture->colours.operation, (PictColour{10, 11, 65535}));
}

TEST(PictStream, OnlyASingleRecordOfIndicesIsIndexed) {
    const auto indexed = [](PictMaker maker) { return Read(maker.End())->indexed; };
    const PictMaker start({0, 0, 1, 4});
    PictMap two = Dot(0);
    two.components = 2;
    PictMap none = Dot(0);
    none.components = 0;
    EXPECT_TRUE(indexed(PictMaker(start).Indexed(Dot(0))));
    EXPECT_TRUE(indexed(PictMaker(start).Indexed(none)));
    EXPECT_TRUE(indexed(PictMaker(start).Bitmap({.bounds = {0, 0, 1, 1}, .rowBytes = 1, .data = {0}})));
    EXPECT_FALSE(indexed(PictMaker(start).Indexed(two)));
    EXPECT_FALSE(indexed(PictMaker(start).Indexed(Dot(0)).Indexed(Dot(1))));
    EXPECT_FALSE(indexed(PictMaker(start).Direct(Column(0, 0, {{1, 2, 3}}))));
}

TEST(PictStream, OneRecordThatIsStretchedInItsWidthTakesAllAlong) {
    const auto count = [](const Box& source, const Box& destination) {
        PictMap map = Dot(0);
        map.source = source;
        map.destination = destination;
        const auto picture = Read(PictMaker({0, 0, 1, 4}).Indexed(Dot(0)).Indexed(map).Indexed(Dot(2)).End());
        EXPECT_TRUE(picture);
        return picture->records.size();
    };
    EXPECT_EQ(count({0, 0, 1, 1}, {0, 0, 1, 1}), 3U);
    EXPECT_EQ(count({0, 0, 1, 1}, {0, 0, 1, 2}), 0U) << "right";
    EXPECT_EQ(count({0, 0, 1, 2}, {0, 1, 1, 2}), 0U) << "left";
    EXPECT_EQ(count({0, 0, 1, 1}, {0, 1, 1, 2}), 0U) << "moved aside";
    EXPECT_EQ(count({0, 0, 1, 1}, {0, 0, 9, 1}), 3U) << "top and bottom do not count";
}

TEST(PictStream, WhatDrawsNothingIsCountedAndNotKept) {
    PictMap below = Dot(0);
    below.bounds = {5, 0, 6, 1};
    const auto alone = Read(PictMaker({0, 0, 1, 4}).Indexed(below).End());
    ASSERT_TRUE(alone);
    EXPECT_TRUE(alone->records.empty());
    const auto beside = Read(PictMaker({0, 0, 1, 4}).Indexed(Dot(0)).Indexed(below).End());
    ASSERT_TRUE(beside);
    EXPECT_EQ(beside->records.size(), 1U);
    EXPECT_FALSE(beside->indexed) << "of two bitmaps";
    below.destination = {5, 0, 6, 2};
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 4}).Indexed(Dot(0)).Indexed(below).End())->records.empty())
        << "and stretching it takes all along";
}

TEST(PictStream, AStretchedPictureIsNotIndexed) {
    PictMap map = Dot(0);
    map.destination = {0, 0, 1, 2};
    const auto picture = Read(PictMaker({0, 0, 1, 4}).Indexed(map).End());
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->indexed);
}

TEST(PictStream, NoMoreThan2147483648PixelsAreDrawn) {
    // Rows of 32767 one-bit pixels in two bytes each: 32767 x 32767 pixels a record, two of which stay below 2^31.
    PictMap map = {.bounds = {0, 0, 32767, 32767}, .rowBytes = 4096};
    for (int y = 0; y < 32767; ++y)
        map.data.insert(map.data.end(), {0, 0});
    PictMaker maker({0, 0, 32767, 32767});
    for (int i = 0; i < 2; ++i)
        maker.Bitmap(map);
    // 2 x 32767^2 is 2^31 - 131070, and that is 4 rows and 2 pixels.
    const PictMap rows = {.bounds = {0, 0, 4, 32767}, .rowBytes = 4096, .data = Bytes(8, 0)};
    const PictMap rest = {.bounds = {0, 0, 1, 2}, .rowBytes = 4096, .data = Bytes(2, 0)};
    maker.Bitmap(rows).Bitmap(rest);
    EXPECT_TRUE(Read(PictMaker(maker).End()));
    const PictMap outside = {.bounds = {-1, 0, 0, 8}, .rowBytes = 4096, .data = Bytes(2, 0)};
    EXPECT_TRUE(Read(PictMaker(maker).Bitmap(outside).End())) << "what is not in the frame does not count";
    const PictMap one = {.bounds = {0, 0, 1, 1}, .rowBytes = 1, .data = {0}};
    EXPECT_FALSE(Read(PictMaker(maker).Bitmap(one).End()));
}

}  // namespace
