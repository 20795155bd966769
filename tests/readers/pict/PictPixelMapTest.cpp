#include "readers/pict/PictBitmap.h"
#include "readers/pict/PictMaker.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

constexpr PictRect kFrame = {0, 0, 100, 100};
constexpr std::size_t kStart = 526;  // what follows the version of a picture of version 2

/// The record after the first opcode, if it can be read and the source ends right behind it.
Kavra::Common::Result<PictRecord> Read(const PictMaker& maker, PictBitmapKind kind, const PictRect& frame = kFrame) {
    ByteSource source = maker.File().Source();
    EXPECT_TRUE(source.Seek(kStart + 2));
    Kavra::Common::Result<PictRecord> record = ReadPictRecord(source, kind, frame);
    if (record && source.Remaining() != 0) ADD_FAILURE() << source.Remaining() << " bytes are left";
    return record;
}

Kavra::Common::Result<PictRecord> ReadIndexed(const PictMap& map) {
    return Read(PictMaker({0, 0, 1, 1}).Indexed(map), PictBitmapKind::kIndexed);
}
Kavra::Common::Result<PictRecord> ReadDirect(const PictMap& map) {
    return Read(PictMaker({0, 0, 1, 1}).Direct(map), PictBitmapKind::kDirect);
}
Kavra::Common::Result<PictRecord> ReadBitmap(const PictMap& map) {
    return Read(PictMaker({0, 0, 1, 1}).Bitmap(map), PictBitmapKind::kIndexed);
}

PictMap FourPixels() {
    return {.bounds = {0, 0, 1, 4}, .rowBytes = 0x8004, .colours = Greys({0, 255}), .data = {0, 1, 1, 0}};
}

PictMap DirectMap(unsigned bits, unsigned components) {
    return {.bounds = {0, 0, 1, 1}, .rowBytes = 4, .bits = bits, .components = components, .data = {0, 1, 2, 3}};
}

TEST(PictPixelMap, ReadsTheFieldsOfAPixelMap) {
    PictMap map = FourPixels();
    map.bounds = {-2, -3, -1, 1};
    map.source = {5, 6, 7, 8};
    map.destination = {9, 10, 11, 12};
    map.mode = 0x8123;
    map.components = 2;
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->bounds.top, -2);
    EXPECT_EQ(record->bounds.left, -3);
    EXPECT_EQ(record->bounds.bottom, -1);
    EXPECT_EQ(record->bounds.right, 1);
    EXPECT_EQ(record->source.left, 6);
    EXPECT_EQ(record->source.bottom, 7);
    EXPECT_EQ(record->destination.top, 9);
    EXPECT_EQ(record->destination.right, 12);
    EXPECT_EQ(record->mode, 0x8123);
    EXPECT_EQ(record->layout.width, 4);
    EXPECT_EQ(record->layout.pixelSize, 8);
    EXPECT_EQ(record->layout.components, 2);
    EXPECT_EQ(record->layout.rowBytes, 4U) << "without the high bit";
}

TEST(PictPixelMap, WithoutTheHighBitItIsABitmapOfWhiteAndBlack) {
    const auto record = ReadBitmap({.bounds = {0, 0, 2, 12}, .rowBytes = 2, .data = {1, 2, 3, 4}});
    ASSERT_TRUE(record);
    EXPECT_EQ(record->layout.pixelSize, 1);
    EXPECT_EQ(record->layout.components, 1);
    EXPECT_EQ(record->colours, (std::vector<PictColour>{kPictWhite, kPictBlack})) << "entry 0 is white";
}

TEST(PictPixelMap, ARegionIsSkipped) {
    const Bytes region = {0, 12, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 1}).Indexed(FourPixels(), 0x99, region), PictBitmapKind::kIndexedRegion));
    const PictMap bitmap = {.bounds = {0, 0, 1, 8}, .rowBytes = 2, .data = {1, 2}};
    EXPECT_TRUE(Read(PictMaker({0, 0, 1, 1}).Bitmap(bitmap, 0x91, region), PictBitmapKind::kIndexedRegion));
    EXPECT_FALSE(Read(PictMaker({0, 0, 1, 1}).Indexed(FourPixels(), 0x99, {0, 1}), PictBitmapKind::kIndexedRegion))
        << "smaller than its own size";
}

TEST(PictPixelMap, PixelsHave1248BitsWithIndicesAnd16Or32WithColours) {
    for (unsigned bits = 0; bits < 70; ++bits) {
        PictMap map = FourPixels();
        map.bits = bits;
        EXPECT_EQ(ReadIndexed(map).has_value(), bits == 1 || bits == 2 || bits == 4 || bits == 8) << bits;
        EXPECT_EQ(ReadDirect(DirectMap(bits, 3)).has_value(), bits == 16 || bits == 32) << bits;
    }
}

TEST(PictPixelMap, ComponentsAre3Or4At32BitsAndAnyNumberElsewhere) {
    for (unsigned components = 0; components < 10; ++components) {
        EXPECT_EQ(ReadDirect(DirectMap(32, components)).has_value(), components == 3 || components == 4);
        EXPECT_TRUE(ReadDirect(DirectMap(16, components)));
        PictMap map = FourPixels();
        map.components = components;
        EXPECT_TRUE(ReadIndexed(map));
    }
    EXPECT_FALSE(ReadDirect(DirectMap(32, 0x8003)));
}

TEST(PictPixelMap, BoundsAreNotEmpty) {
    for (const Box& bounds : {Box{0, 0, 1, 0}, Box{0, 0, 0, 4}, Box{0, 4, 1, 0}, Box{1, 0, 0, 4}}) {
        PictMap map = FourPixels();
        map.bounds = bounds;
        EXPECT_FALSE(ReadIndexed(map));
        map = DirectMap(32, 3);
        map.bounds = bounds;
        EXPECT_FALSE(ReadDirect(map));
        EXPECT_FALSE(ReadBitmap({.bounds = bounds, .rowBytes = 2, .data = {0, 0}}));
    }
}

TEST(PictPixelMap, RowBytesHoldTheWidthOfTheBounds) {
    PictMap map = FourPixels();
    map.bounds.right = 5;
    EXPECT_FALSE(ReadIndexed(map));
    map.bits = 4;
    EXPECT_TRUE(ReadIndexed(map));
    EXPECT_FALSE(ReadBitmap({.bounds = {0, 0, 1, 17}, .rowBytes = 2, .data = {0, 0}}));
    EXPECT_FALSE(ReadBitmap({.bounds = {0, 0, 30000, 1}, .rowBytes = 0})) << "rows of no bytes are no rows";
}

TEST(PictPixelMap, DirectRowBytesKeepTheirHighBit) {
    PictMap map = DirectMap(32, 3);
    map.rowBytes = 0x8004;
    map.data = {0, 2, 0xFE, 7};
    const auto record = ReadDirect(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->layout.rowBytes, 0x8004U);
    EXPECT_TRUE(record->layout.IsPacked());
}

TEST(PictPixelMap, TheNumberOfAnEntryIsItsPlace) {
    PictMap map = FourPixels();
    map.colours = {{2, 22, 0, 0}, {0, 20, 1, 2}, {1, 21, 0, 0}};
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->colours, (std::vector<PictColour>{{20, 1, 2}, {21, 0, 0}, {22, 0, 0}}));
}

TEST(PictPixelMap, EntriesOfADeviceTableAreInOrderWhateverTheirNumbers) {
    PictMap map = FourPixels();
    map.tableFlags = 0x8000;
    map.colours = {{1, 20, 0, 0}, {0, 21, 0, 0}};
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->colours, (std::vector<PictColour>{{20, 0, 0}, {21, 0, 0}}));
    map.tableFlags = 0x7FFF;
    EXPECT_EQ(ReadIndexed(map)->colours, (std::vector<PictColour>{{21, 0, 0}, {20, 0, 0}}))
        << "only the high bit says so";
}

TEST(PictPixelMap, AnEntryWhoseNumberIsOutOfRangeIsTakenInOrder) {
    PictMap map = FourPixels();
    map.colours = {{2, 20, 0, 0}, {0xFFFF, 21, 0, 0}};
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->colours, (std::vector<PictColour>{{20, 0, 0}, {21, 0, 0}}));
}

TEST(PictPixelMap, EntriesBeyond256AreReadAndDropped) {
    PictMap map = FourPixels();
    map.tableFlags = 0x8000;
    for (unsigned i = 0; i < 300; ++i)
        map.colours.push_back({0, i, 0, 0});
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record) << "rows begin behind all entries";
    ASSERT_EQ(record->colours.size(), 256U);
    EXPECT_EQ(record->colours[0][0], 0);
    EXPECT_EQ(record->colours[255][0], 253) << "two entries stand before the hundreds";
}

TEST(PictPixelMap, ATableMayHave32768Entries) {
    PictMap map = FourPixels();
    map.colours.assign(32768, {7, 1, 2, 3});
    const auto record = ReadIndexed(map);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->colours[7], (PictColour{1, 2, 3}));
}

TEST(PictPixelMap, WhereTheLastEntryIsBelowTheFirstThereIsNoTable) {
    PictMap map = FourPixels();
    map.mode = 36;
    for (const unsigned last : {0xFFFFU, 0xFFFEU, 0x8000U}) {  // -1, -2, -32768
        PictMaker maker({0, 0, 1, 1});
        maker.Op(0x98).Header(map).Add({1, 2, 3, 4}).Word(0).Word(last).Placement(map).Add(map.data);
        const auto record = Read(maker, PictBitmapKind::kIndexed);
        ASSERT_TRUE(record) << last;
        EXPECT_TRUE(record->colours.empty());
        EXPECT_EQ(record->mode, 36) << "the rectangles and the mode follow at once";
    }
}

TEST(PictPixelMap, WhatIsDrawnIsTheDestinationInsideTheBoundsAndTheFrame) {
    PictMap map = {.bounds = {10, 10, 14, 14}, .rowBytes = 0x8004, .colours = Greys({0}), .data = Bytes(16, 0)};
    map.destination = {11, 9, 30, 13};
    const auto record = Read(PictMaker({0, 0, 1, 1}).Indexed(map), PictBitmapKind::kIndexed, {0, 12, 13, 99});
    ASSERT_TRUE(record);
    EXPECT_EQ(record->covered.top, 11);
    EXPECT_EQ(record->covered.left, 12);
    EXPECT_EQ(record->covered.bottom, 13);
    EXPECT_EQ(record->covered.right, 13);
}

TEST(PictPixelMap, RowsAboveWhatIsDrawnArePassed) {
    PictMap map = {.bounds = {0, 0, 3, 8}, .rowBytes = 0x8008, .colours = Greys({0})};
    map.data = {2, 0xF9, 1, 4, 0xFC, 2, 0xFE, 3, 2, 0xF9, 4};
    map.destination = {2, 0, 3, 8};
    const PictMaker maker = PictMaker({0, 0, 1, 1}).Indexed(map);
    const auto record = Read(maker, PictBitmapKind::kIndexed);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->rows, maker.Size() - 3);
}

TEST(PictPixelMap, EveryRowOfTheBoundsIsLookedThroughDrawnOrNot) {
    PictMap map = {.bounds = {0, 0, 2, 8}, .rowBytes = 0x8008, .colours = Greys({0})};
    map.destination = {0, 0, 1, 8};
    map.data = {2, 0xF9, 1, 2, 0xF9, 1};
    EXPECT_TRUE(ReadIndexed(map));
    map.data = {2, 0xF9, 1, 2, 0xF8, 1};
    EXPECT_FALSE(ReadIndexed(map)) << "too long";
    map.data = {2, 0xF9, 1, 2, 0xF9};
    EXPECT_FALSE(ReadIndexed(map)) << "cut";
    map.data = {2, 0xF9, 1, 200, 0xF9, 1};
    EXPECT_FALSE(ReadIndexed(map)) << "no such count";
}

/// Where the source stands behind a pattern.
std::optional<std::uint64_t> AfterPattern(const Bytes& bytes) {
    ByteSource source{std::span<const unsigned char>(bytes)};
    if (!SkipPictPattern(source)) return std::nullopt;
    return source.Position();
}

TEST(PictPattern, HasAKindAndEightBytesAndWhatTheKindSays) {
    Bytes plain(30, 0x11);
    plain[0] = 0;
    plain[1] = 0;
    EXPECT_EQ(AfterPattern(plain), 10U);
    plain[1] = 2;
    EXPECT_EQ(AfterPattern(plain), 16U) << "a colour";
    plain[1] = 3;
    EXPECT_EQ(AfterPattern(plain), std::nullopt) << "of no known length";
    plain.resize(15);
    plain[1] = 2;
    EXPECT_EQ(AfterPattern(plain), std::nullopt);
    plain.resize(9);
    plain[1] = 0;
    EXPECT_EQ(AfterPattern(plain), std::nullopt);
}

Bytes PixelPattern(const PictMap& map) {
    PictMaker maker({0, 0, 1, 1});
    maker.Word(1).Add(Bytes(8, 0x11)).Header(map).Table(map).Add(map.data).Add({0xEE, 0xEE});
    const auto bytes = maker.File().Bytes().subspan(kStart);
    return {bytes.begin(), bytes.end()};
}

TEST(PictPattern, APixelPatternIsAPixelMapWithoutAPlace) {
    const Bytes pattern = PixelPattern(FourPixels());
    EXPECT_EQ(AfterPattern(pattern), pattern.size() - 2);
    PictMap packed = {.bounds = {0, 0, 2, 8}, .rowBytes = 0x8008, .colours = Greys({0}), .data = {2, 0xF9, 1, 0}};
    EXPECT_EQ(AfterPattern(PixelPattern(packed)), PixelPattern(packed).size() - 2);
    packed.data = {2, 0xF8, 1, 0};
    EXPECT_EQ(AfterPattern(PixelPattern(packed)), std::nullopt) << "its rows are looked through";
}

}  // namespace
