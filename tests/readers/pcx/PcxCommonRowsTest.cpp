// How the bytes of rows become pixels in the common reading, beside what the contract's makes of them.

#include "readers/pcx/PcxCommonBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kOutOfStep = "padding and runs at the end of a line go into the next one by the host's rules";

/// A file of 8 bits with the colours of `PcxTail` behind the data.
ByteBuilder Coloured(const PcxHeader& header, const Bytes& data) {
    return PcxHead(header, data).Append(PcxTail());
}

TEST(PcxCommonRows, PlanesGiveABitEachTheFirstTheLowest) {
    // Pixels 0 to 3 in two planes, 0 to 7 in three, 0 to 15 in four: plane p has bit p of each.
    EXPECT_EQ(InCommon(PcxHead(PcxFields(1, 2, 4, 1, 1), {0x50, 0x30})).block, InHeaderColours({0, 1, 2, 3}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(1, 3, 8, 1, 1), {0x55, 0x33, 0x0F})).block,
              InHeaderColours({0, 1, 2, 3, 4, 5, 6, 7}));
    const ByteBuilder four = PcxHead(PcxFields(1, 4, 8, 1, 1), {0x55, 0x33, 0x0F, 0x80});
    EXPECT_EQ(InCommon(four).block, InHeaderColours({8, 1, 2, 3, 4, 5, 6, 7}));
    const PcxShown contract = InContract(four);
    EXPECT_EQ(contract.block, InCommon(four).block);
    EXPECT_EQ(contract.difference, "");
}

TEST(PcxCommonRows, PlanesOfSeveralBitsGiveAllOfThem) {
    // Two planes of two bits: 1 2 3 0 below 3 0 1 2.
    const ByteBuilder twice = PcxHead(PcxFields(2, 2, 4, 1, 1), {0x6C, 0xC1, 0xC6});
    EXPECT_EQ(InCommon(twice).block, InHeaderColours({13, 2, 7, 8}));
    EXPECT_EQ(InContract(twice).difference, "planes of several bits a pixel count one by the host's rules");
    // Two planes of four bits make a byte.
    EXPECT_EQ(InCommon(Coloured(PcxFields(4, 2, 2, 1, 1), {0x12, 0xAB})).block, InTailColours({0xA1, 0xB2}));
}

TEST(PcxCommonRows, PackedPixelsComeHighBitsFirst) {
    EXPECT_EQ(InCommon(PcxHead(PcxFields(4, 1, 3, 2, 2), {0x12, 0x3F, 0xC1, 0xC4, 0x50})).block,
              InHeaderColours({1, 2, 3, 12, 4, 5}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(2, 1, 5, 1, 2), {0x1B, 0x80})).block, InHeaderColours({0, 1, 2, 3, 2}));
}

TEST(PcxCommonRows, ThreePlanesOfBytesAreColours) {
    const ByteBuilder file = PcxHead(PcxFields(8, 3, 2, 1, 2), {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(InCommon(file).block, Colours({0x010305, 0x020406}));
    EXPECT_EQ(InContract(file).difference, "");
}

TEST(PcxCommonRows, AFourthPlaneIsTheAlphaUnlessItIsEmpty) {
    EXPECT_EQ(InCommon(PcxHead(PcxFields(8, 4, 2, 1, 2), {1, 2, 3, 4, 5, 6, 7, 0})).block,
              (Bytes{1, 3, 5, 7, 2, 4, 6, 0}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(8, 4, 2, 1, 2), {1, 2, 3, 4, 5, 6, 0, 0})).block,
              Colours({0x010305, 0x020406}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(8, 4, 1, 1, 2), {1, 2, 3, 4, 5, 6, 0, 9})).block, Colours({0x010305}))
        << "what fills up a line is no pixel";
}

TEST(PcxCommonRows, PlanesOfFourBitsAreColoursToo) {
    EXPECT_EQ(InCommon(PcxHead(PcxFields(4, 3, 2, 1, 1), {0x1F, 0x2E, 0x3D})).block, Colours({0x112233, 0xFFEEDD}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(4, 4, 2, 1, 1), {0x1F, 0x2E, 0x3D, 0x8F})).block,
              (Bytes{0x11, 0x22, 0x33, 0x88, 0xFF, 0xEE, 0xDD, 0xFF}));
}

TEST(PcxCommonRows, PaddingIsNoPixelHoweverItIsCoded) {
    // 3 x 2 pixels in lines of 4: the padding in a code of its own, in a run with the last pixel, in one with the next.
    const PcxHeader header = PcxFields(8, 1, 3, 2, 4);
    const Bytes expected = InTailColours({1, 2, 3, 4, 5, 6});
    const ByteBuilder own = Coloured(header, {1, 2, 3, 9, 4, 5, 6, 9});
    EXPECT_EQ(InCommon(own).block, expected);
    EXPECT_EQ(InContract(own).difference, kOutOfStep);
    const ByteBuilder covered = Coloured(header, {1, 2, 0xC2, 3, 4, 5, 0xC2, 6});
    EXPECT_EQ(InCommon(covered).block, expected);
    EXPECT_EQ(InContract(covered).block, expected);
    EXPECT_EQ(InContract(covered).difference, "");
    EXPECT_EQ(InCommon(Coloured(header, {1, 2, 3, 0xC2, 4, 5, 6, 9})).block, expected);
    EXPECT_EQ(InCommon(PcxHead(PcxFields(1, 1, 8, 2, 2), {0x80, 0, 0x01, 0})).block,
              InHeaderColours({1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(PcxCommonRows, PaddingBehindTheLastRowMakesNoDifference) {
    const ByteBuilder file = Coloured(PcxFields(8, 1, 3, 1, 4), {1, 2, 3, 9});
    EXPECT_EQ(InContract(file).block, InCommon(file).block);
    EXPECT_EQ(InContract(file).difference, "");
}

TEST(PcxCommonRows, RunsGoOnOverLinesPlanesAndRows) {
    // 12 bytes of 7 in two rows of three lines of two.
    const ByteBuilder colours = PcxHead(PcxFields(8, 3, 2, 2, 2), {0xC5, 7, 0xC7, 9});
    EXPECT_EQ(InCommon(colours).block, Colours({0x070707, 0x070709, 0x090909, 0x090909}));
    const PcxShown contract = InContract(colours);
    EXPECT_NE(contract.block, InCommon(colours).block);
    EXPECT_EQ(contract.difference, kOutOfStep);
    EXPECT_EQ(InCommon(PcxHead(PcxFields(1, 4, 8, 2, 1), {0xC6, 0xFF, 0xC2, 0})).block,
              InHeaderColours({15, 15, 15, 15, 15, 15, 15, 15, 3, 3, 3, 3, 3, 3, 3, 3}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(4, 1, 4, 3, 2), {0xC6, 0x12})).block,
              InHeaderColours({1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
    EXPECT_EQ(InContract(PcxHead(PcxFields(4, 1, 4, 3, 2), {0xC6, 0x12})).difference, kOutOfStep);
}

TEST(PcxCommonRows, RawRowsFollowOneAnother) {
    PcxHeader header = PcxFields(8, 1, 3, 2, 4);
    header.encoding = 0;
    EXPECT_EQ(InCommon(Coloured(header, {1, 0xC2, 3, 9, 4, 5, 0xFF, 9})).block,
              InTailColours({1, 0xC2, 3, 4, 5, 0xFF}));
}

TEST(PcxCommonRows, WindowsThatBeginElsewhereHaveTheirOwnSize) {
    PcxHeader header = PcxFields(8, 1, 1, 1, 2);
    header.xMin = 40'000;
    header.xMax = 40'001;
    header.yMin = header.yMax = 65'535;
    const PcxShown shown = InCommon(Coloured(header, {1, 2}));
    EXPECT_EQ(shown.width, 2);
    EXPECT_EQ(shown.height, 1);
    EXPECT_EQ(shown.block, InTailColours({1, 2}));
    header.xMin = 40'002;
    EXPECT_FALSE(InCommon(Coloured(header, {1, 2})).opened);
}

TEST(PcxCommonRows, SamplesThatALineDoesNotHoldAre0) {
    EXPECT_EQ(InCommon(Coloured(PcxFields(8, 1, 3, 2, 2), {1, 2, 3, 4})).block, InTailColours({1, 2, 0, 3, 4, 0}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(8, 3, 2, 1, 1), {1, 2, 3})).block, Colours({0x010203, 0}));
    EXPECT_EQ(InCommon(PcxHead(PcxFields(1, 2, 9, 1, 1), {0x80, 0x80})).block,
              InHeaderColours({3, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(PcxCommonRows, LinesWithoutALengthHaveTheirRows) {
    const ByteBuilder file = Coloured(PcxFields(8, 1, 3, 2, 0), {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(InCommon(file).block, InTailColours({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(InContract(file).difference, "lines that have no length hold nothing by the host's rules");
}

TEST(PcxCommonRows, RowsThatAreMissingAre0WithOneWarning) {
    const PcxShown shown = InCommon(PcxHead(PcxFields(4, 1, 2, 4, 1), {0x12, 0x34}));
    EXPECT_TRUE(shown.read);
    EXPECT_EQ(shown.block, InHeaderColours({1, 2, 3, 4, 0, 0, 0, 0}));
    EXPECT_THAT(shown.messages, ElementsAre(L"PCXReader::Invalid Frame -- out of data"));
    const PcxShown contract = InContract(PcxHead(PcxFields(4, 1, 2, 4, 1), {0x12, 0x34}));
    EXPECT_EQ(contract.difference, "pixels that are missing repeat the row above by the host's rules");
    EXPECT_EQ(InContract(PcxHead(PcxFields(8, 3, 1, 2, 1), {1, 2, 3})).difference, "") << "colours are 0 in both";
}

TEST(PcxCommonRows, ThePaletteIsNoData) {
    const ByteBuilder file = Coloured(PcxFields(8, 1, 4, 2, 4), {1, 2, 3, 4, 5});
    const PcxShown shown = InCommon(file);
    EXPECT_EQ(shown.block, InTailColours({1, 2, 3, 4, 5, 0, 0, 0}));
    EXPECT_THAT(shown.messages, ElementsAre(L"PCXReader::Invalid Frame -- out of data"));
    EXPECT_EQ(InContract(file).difference, "the palette is read as pixels by the host's rules");
}

TEST(PcxCommonRows, Version4IsShown) {
    PcxHeader header = PcxFields(8, 1, 2, 1, 2);
    header.version = 4;
    EXPECT_EQ(InCommon(Coloured(header, {1, 2})).block, InTailColours({1, 2}));
    EXPECT_FALSE(InContract(Coloured(header, {1, 2})).opened);
}

TEST(PcxCommonRows, WhatNobodyReadsIsRefused) {
    const auto opens = [](int bits, int planes, int version, int encoding) {
        PcxHeader header = PcxFields(bits, planes, 2, 1, 2);
        header.version = static_cast<std::uint8_t>(version);
        header.encoding = static_cast<std::uint8_t>(encoding);
        return InCommon(PcxHead(header, Bytes(20))).opened;
    };
    EXPECT_TRUE(opens(8, 1, 5, 1));
    EXPECT_FALSE(opens(8, 1, 1, 1));
    EXPECT_FALSE(opens(8, 1, 6, 1));
    EXPECT_FALSE(opens(8, 1, 5, 2));
    EXPECT_FALSE(opens(8, 2, 5, 1));
    EXPECT_FALSE(opens(8, 5, 5, 1));
    EXPECT_FALSE(opens(24, 1, 5, 1));
    EXPECT_FALSE(opens(3, 1, 5, 1));
    EXPECT_FALSE(opens(0, 1, 5, 1));
    EXPECT_FALSE(opens(1, 0, 5, 1));
    EXPECT_FALSE(InCommon(PcxHead(PcxFields(8, 1, 2, 1, 2)).CutTo(127)).opened);
}

TEST(PcxCommonRows, EveryLengthAndManyBytesAreSurvived) {
    for (const auto& [bits, planes] :
         {std::pair{1, 1}, {2, 1}, {4, 1}, {8, 1}, {1, 3}, {2, 3}, {4, 2}, {8, 3}, {8, 4}}) {
        ByteBuilder file = PcxHead(PcxFields(bits, planes, 5, 3, 2), {0xFF, 1, 2, 3, 0xC0, 4, 0xC3, 5, 0x80, 7});
        file.Append(PcxTail());
        for (std::size_t length = 120; length < file.Size(); length += length < 150 ? 1 : 97)
            (void)InCommon(ByteBuilder(file).CutTo(length));
        for (const std::size_t at : {1, 2, 3, 16, 19, 65, 66, 67, 68, 128, 129, 130, 132, 134, 137}) {
            for (const unsigned value : {0x00, 0x01, 0xFF})
                (void)InCommon(ByteBuilder(file).At(at).Byte(value));
        }
    }
}

}  // namespace
