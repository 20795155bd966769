// The layouts, each through the reader and with bytes made by hand.

#include "readers/Decode.h"
#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::IsEmpty;
using testing::SizeIs;

Decoded Read(const PcxHeader& header, const Bytes& data) {
    return Decode<PCXReader>(PcxHead(header, data));
}

PcxHeader Raw(PcxHeader header) {
    header.encoding = 0;
    return header;
}

/// 8 bits of version 3, whose 16 colours are in the header: nothing follows the data.
PcxHeader EightBits(int width, int height, int bytesPerLine) {
    PcxHeader header = PcxFields(8, 1, width, height, bytesPerLine);
    header.version = 3;
    return header;
}

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes joined;
    for (const Bytes& part : parts)
        joined.insert(joined.end(), part.begin(), part.end());
    return joined;
}

// --- 8 bits ----------------------------------------------------------------------------------------------------------

TEST(PcxEightBits, ARunGoesOnInTheNextRow) {
    EXPECT_EQ(Read(EightBits(3, 2, 3), {1, 0xC4, 2, 3}).block, InHeaderColours({1, 2, 2, 2, 2, 3}));
}

TEST(PcxEightBits, APadByteOfItsOwnSkewsTheRowsBelow) {
    EXPECT_EQ(Read(EightBits(3, 2, 4), {1, 2, 3, 0, 4, 5, 6}).block, InHeaderColours({1, 2, 3, 0, 4, 5}));
}

TEST(PcxEightBits, APadByteInsideARunDoesNot) {
    EXPECT_EQ(Read(EightBits(3, 2, 4), {1, 2, 0xC2, 3, 4, 5, 0xC2, 6}).block, InHeaderColours({1, 2, 3, 4, 5, 6}));
}

TEST(PcxEightBits, RawRowsSkipTheirPadding) {
    EXPECT_EQ(Read(Raw(EightBits(3, 2, 4)), {1, 2, 3, 9, 4, 5, 6, 9}).block, InHeaderColours({1, 2, 3, 4, 5, 6}));
}

TEST(PcxEightBits, LinesShorterThanTheRowLeaveItsEndFromTheRowBefore) {
    EXPECT_EQ(Read(EightBits(4, 2, 2), {1, 0xC3, 2, 3, 4}).block, InHeaderColours({1, 2, 2, 2, 3, 4, 2, 2}));
}

TEST(PcxEightBits, WithoutLinesEveryPixelIsTheFirstColour) {
    const Decoded decoded = Read(EightBits(2, 2, 0), {1, 2, 3, 4});
    EXPECT_EQ(decoded.block, InHeaderColours({0, 0, 0, 0}));
    EXPECT_THAT(decoded.messages, IsEmpty());
}

TEST(PcxEightBits, RowsThatAreNotThereRepeatTheOneAbove) {
    const Decoded decoded = Read(EightBits(3, 4, 3), {1, 2, 3, 4});
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.block, InHeaderColours({1, 2, 3, 4, 2, 3, 4, 2, 3, 4, 2, 3}));
    EXPECT_THAT(decoded.messages, SizeIs(3));
}

TEST(PcxEightBits, RawRowsThatAreNotThereRepeatTheOneAboveInSilence) {
    const Decoded decoded = Read(Raw(EightBits(3, 3, 3)), {1, 2, 3, 4});
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.block, InHeaderColours({1, 2, 3, 4, 2, 3, 4, 2, 3}));
    EXPECT_THAT(decoded.messages, IsEmpty());
}

// --- 24 bits ---------------------------------------------------------------------------------------------------------

TEST(PcxColours, ARowIsALineOfEachColour) {
    const Bytes data = {1, 2, 11, 12, 21, 22, 3, 4, 13, 14, 23, 24};
    EXPECT_EQ(Read(PcxFields(8, 3, 2, 2, 2), data).block,
              (Bytes{1, 11, 21, 255, 2, 12, 22, 255, 3, 13, 23, 255, 4, 14, 24, 255}));
}

TEST(PcxColours, PlanesAreThreeWhateverTheHeaderClaims) {
    for (const auto& [bits, planes] : {std::pair{1, 24}, {24, 1}, {2, 12}, {4, 6}, {12, 2}}) {
        EXPECT_EQ(Read(PcxFields(bits, planes, 2, 1, 2), {1, 2, 11, 12, 21, 22, 99, 99}).block,
                  (Bytes{1, 11, 21, 255, 2, 12, 22, 255}))
            << bits << " x " << planes;
    }
}

TEST(PcxColours, ARunCrossesThePlanesOfARow) {
    EXPECT_EQ(Read(PcxFields(8, 3, 2, 1, 2), {1, 0xC4, 5, 9}).block, (Bytes{1, 5, 5, 255, 5, 5, 9, 255}));
}

TEST(PcxColours, ARunNeverReachesTheNextRow) {
    EXPECT_EQ(Read(PcxFields(8, 3, 1, 2, 1), {0xFF, 5, 1, 2, 3}).block, (Bytes{5, 5, 5, 255, 1, 2, 3, 255}));
}

TEST(PcxColours, PaddingIsAPartOfTheLine) {
    EXPECT_EQ(Read(PcxFields(8, 3, 1, 2, 2), {1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9}).block,
              (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
    EXPECT_EQ(Read(Raw(PcxFields(8, 3, 1, 2, 2)), {1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9}).block,
              (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST(PcxColours, WhatALineIsTooShortForIsZero) {
    for (const int encoding : {0, 1}) {
        PcxHeader header = PcxFields(8, 3, 3, 2, 2);
        header.encoding = static_cast<std::uint8_t>(encoding);
        const Bytes data = {1, 2, 11, 12, 21, 22, 3, 4, 13, 14, 23, 24};
        EXPECT_EQ(Read(header, data).block, (Bytes{1, 11, 21, 255, 2, 12, 22, 255, 0, 0, 0, 255,  //
                                                   3, 13, 23, 255, 4, 14, 24, 255, 0, 0, 0, 255}));
    }
}

TEST(PcxColours, WhatIsNotThereIsZeroAndOpaqueAndWarnedOfLineByLine) {
    const Decoded decoded = Read(PcxFields(8, 3, 2, 2, 2), {1, 2, 11, 12, 21, 22, 3, 4, 13});
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.block, (Bytes{1, 11, 21, 255, 2, 12, 22, 255, 3, 13, 0, 255, 4, 0, 0, 255}));
    EXPECT_THAT(decoded.messages, SizeIs(2)) << "the green line and the blue one";
    EXPECT_THAT(Read(PcxFields(8, 3, 2, 5, 2), {}).messages, SizeIs(15));
    EXPECT_EQ(Read(PcxFields(8, 3, 2, 1, 2), {}).block, (Bytes{0, 0, 0, 255, 0, 0, 0, 255}));
}

TEST(PcxColours, HoweverManyLinesAreNotThereEachIsWarnedOf) {
    const Decoded decoded = Read(PcxFields(8, 3, 2, 65536, 65535), {1, 2, 3});
    EXPECT_THAT(decoded.messages, SizeIs(3 * 65536));
    EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{1, 0, 0, 255}));
    EXPECT_EQ(PixelAt(decoded, 1, 0), (Bytes{2, 0, 0, 255}));
    EXPECT_EQ(PixelAt(decoded, 0, 1), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(PixelAt(decoded, 1, 65535), (Bytes{0, 0, 0, 255}));
}

TEST(PcxColours, RawRowsEndInZerosAndSilence) {
    const Decoded decoded = Read(Raw(PcxFields(8, 3, 1, 2, 1)), {1, 2, 3, 4});
    EXPECT_EQ(decoded.block, (Bytes{1, 2, 3, 255, 4, 0, 0, 255}));
    EXPECT_THAT(decoded.messages, IsEmpty());
}

TEST(PcxColours, EveryWidthIsInterleavedAlike) {
    for (int width = 1; width < 70; ++width) {
        Bytes data;
        Bytes expected(static_cast<std::size_t>(4 * width), 255);
        for (int c = 0; c < 3; ++c) {
            for (int x = 0; x < width; ++x) {
                data.push_back(static_cast<unsigned char>(60 * c + x % 59));
                expected[static_cast<std::size_t>(4 * x + c)] = data.back();
            }
        }
        ASSERT_EQ(Read(PcxFields(8, 3, width, 1, width), data).block, expected) << width;
    }
}

// --- 1 bit -----------------------------------------------------------------------------------------------------------

TEST(PcxOneBit, ASetBitIsTheFirstColour) {
    EXPECT_EQ(Read(PcxFields(1, 1, 8, 1, 1), {0xA6}).block, InHeaderColours({0, 1, 0, 1, 1, 0, 0, 1}));
}

TEST(PcxOneBit, WholeBytesOfEitherKindStayInsideTheRow) {
    // 11 pixels: 2 bytes a line; what a byte has beyond the width belongs to no pixel.
    EXPECT_EQ(Read(PcxFields(1, 1, 11, 2, 2), {0x00, 0xC1, 0xFF, 0xC1, 0xFF, 0x00}).block,
              InHeaderColours({1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1}));
}

TEST(PcxOneBit, EveryByteGivesItsEightPixels) {
    for (int byte = 0; byte < 256; ++byte) {
        Bytes expected;
        for (int bit = 128; bit > 0; bit /= 2) {
            const Bytes pixel = InHeaderColours({(byte & bit) != 0 ? 0 : 1});
            expected.insert(expected.end(), pixel.begin(), pixel.end());
        }
        EXPECT_EQ(Read(Raw(PcxFields(1, 1, 8, 1, 1)), {static_cast<unsigned char>(byte)}).block, expected);
    }
}

TEST(PcxOneBit, APadByteOfItsOwnSkewsTheRowsBelow) {
    const Bytes data = {0x0F, 0xAA, 0x3C, 0xAA};
    EXPECT_EQ(Read(PcxFields(1, 1, 8, 2, 2), data).block,
              InHeaderColours({1, 1, 1, 1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1}));
    EXPECT_EQ(Read(Raw(PcxFields(1, 1, 8, 2, 2)), data).block,
              InHeaderColours({1, 1, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1}));
}

TEST(PcxOneBit, WhatIsNotThereIsTheSecondColour) {
    const Decoded decoded = Read(PcxFields(1, 1, 16, 2, 2), {0xC2, 0xFF, 0xC1, 0xFF});
    const Bytes white = InHeaderColours({1, 1, 1, 1, 1, 1, 1, 1});
    const Bytes black = InHeaderColours({0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(decoded.block, Join({black, black, black, white})) << "and not the bits of the row above";
    EXPECT_THAT(decoded.messages, SizeIs(1));
    EXPECT_EQ(Read(PcxFields(1, 1, 16, 1, 1), {0x00, 0x00}).block, Join({white, white}));
    EXPECT_EQ(Read(PcxFields(1, 1, 16, 1, 1), {0xC1, 0xFF, 0xC1, 0xFF}).block, Join({black, white}))
        << "a line of one byte is done after it";
}

TEST(PcxOneBit, TwoBlacksAreToldApart) {
    PcxHeader header = PcxFields(1, 1, 2, 1, 2);
    header.palette = {};
    EXPECT_EQ(Read(header, {0x40}).block, (Bytes{255, 255, 255, 255, 0, 0, 0, 255}));
}

// --- 4 bits in one plane ---------------------------------------------------------------------------------------------

TEST(PcxFourBits, AByteIsTwoPixelsTheHighOneFirst) {
    EXPECT_EQ(Read(PcxFields(4, 1, 4, 2, 2), {0x12, 0x3F, 0xC2, 0xE0}).block,
              InHeaderColours({1, 2, 3, 15, 14, 0, 14, 0}));
}

TEST(PcxFourBits, EveryPixelTakesItsOwnByteWhateverTheWidth) {
    for (int width = 1; width < 40; ++width) {
        Bytes data;
        Bytes expected;
        for (int x = 0; x < width; ++x) {
            const int value = (x * 7 + width) % 12;  // below 12, so that no byte is a count
            if (x % 2 == 0) data.push_back(static_cast<unsigned char>(value << 4));
            if (x % 2 == 1) data.back() |= static_cast<unsigned char>(value);
            const Bytes pixel = InHeaderColours({value});
            expected.insert(expected.end(), pixel.begin(), pixel.end());
        }
        ASSERT_EQ(Read(PcxFields(4, 1, width, 1, (width + 1) / 2), data).block, expected) << width;
    }
}

TEST(PcxFourBits, LongLinesAreReadUpToTheWidthAndOnlyHalfOfThatShown) {
    // The capacity of a line is the width, here 4: bytes 3 and 4 are read and not shown; the fifth is not read.
    const Bytes data = {0x12, 0x34, 0x55, 0x66, 0x78, 0x9A, 0x55, 0x66};
    EXPECT_EQ(Read(PcxFields(4, 1, 4, 2, 4), data).block, InHeaderColours({1, 2, 3, 4, 7, 8, 9, 10}));
    EXPECT_EQ(Read(PcxFields(4, 1, 4, 2, 5), data).block, InHeaderColours({1, 2, 3, 4, 7, 8, 9, 10}))
        << "the fifth byte of a line in a code of its own begins the next row";
}

TEST(PcxFourBits, ARunOverTheLineEndIsLostWhereTheRoomHoldsIt) {
    // A line has 2 bytes, the capacity 4. A run of 3 from byte 1 fits: the third of it is gone.
    EXPECT_EQ(Read(PcxFields(4, 1, 4, 2, 2), {0x12, 0xC3, 0x34, 0x56, 0x78}).block,
              InHeaderColours({1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(PcxFourBits, ARunOverTheRoomIsCarriedFromTheLinesEnd) {
    // 1 + 4 bytes overrun the capacity of 4: 5 - 2 are carried, and end the next line although it has but 2.
    EXPECT_EQ(Read(PcxFields(4, 1, 4, 3, 2), {0x12, 0xC4, 0x34, 0x56, 0x78}).block,
              InHeaderColours({1, 2, 3, 4, 3, 4, 3, 4, 5, 6, 7, 8}));
}

TEST(PcxFourBits, RawLinesAreReadOverAndGoneBackTo) {
    EXPECT_EQ(Read(Raw(PcxFields(4, 1, 4, 3, 2)), {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}).block,
              InHeaderColours({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(PcxFourBits, BytesThatAreNotThereAreTheIndicesOfTheRowAbove) {
    // The second row gets one byte; its second packed byte is index 2 of the row above: 0x02, pixels 0 and 2.
    const Decoded decoded = Read(PcxFields(4, 1, 4, 3, 2), {0x12, 0x34, 0x56});
    EXPECT_EQ(decoded.block, InHeaderColours({1, 2, 3, 4, 5, 6, 0, 2,  //
                                              0, 5, 0, 6}));
    EXPECT_THAT(decoded.messages, SizeIs(2));
}

TEST(PcxFourBits, AGreyRampShowsOnlyItsZeros) {
    PcxHeader header = PcxFields(4, 1, 16, 1, 8);
    header.paletteInfo = 2;
    const Bytes data = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xC1, 0xCD, 0xC1, 0xEF};
    Bytes expected(64, kUnwritten);
    std::ranges::copy(InHeaderColours({0}), expected.begin());
    EXPECT_EQ(Read(header, data).block, expected) << "by the kind of palette, whatever its colours";

    header.paletteInfo = 1;
    EXPECT_EQ(Read(header, data).block, InHeaderColours({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));

    for (std::size_t i = 0; i < 48; ++i)
        header.palette[i] = static_cast<unsigned char>(i / 3);
    std::ranges::copy(Bytes{0, 0, 0, 255}, expected.begin());
    EXPECT_EQ(Read(header, data).block, expected) << "by the colours, whatever the kind";
}

TEST(PcxFourBits, PixelsFollowTheFourBitFileThatWasOpenedLast) {
    const TemporaryFolder folder;
    PcxHeader header = PcxFields(4, 1, 2, 1, 1);
    const auto plain = Wide(folder.Write("plain", PcxHead(header, {0x01}).Bytes()));
    header.paletteInfo = 2;
    const auto ramp = Wide(folder.Write("ramp", PcxHead(header, {0x01}).Bytes()));
    const auto planar = Wide(folder.Write("planar", PcxHead(PcxFields(1, 4, 2, 1, 1), Bytes(4, 0)).Bytes()));
    const auto other = Wide(folder.Write("other", PcxHead(PcxFields(8, 3, 2, 1, 2), Bytes(6, 0)).Bytes()));

    PCXReader first;
    PCXReader second;
    ASSERT_TRUE(first.Open(plain));
    ASSERT_TRUE(second.Open(ramp));
    Bytes pixels(8, kUnwritten);
    ASSERT_TRUE(first.ReadImage(pixels.data(), 0));
    EXPECT_EQ(pixels, Join({InHeaderColours({0}), Bytes(4, kUnwritten)})) << "the other's ramp";

    ASSERT_TRUE(second.Open(other));
    pixels.assign(8, kUnwritten);
    ASSERT_TRUE(first.ReadImage(pixels.data(), 0));
    EXPECT_EQ(pixels, Join({InHeaderColours({0}), Bytes(4, kUnwritten)})) << "24 bits change nothing";

    ASSERT_TRUE(second.Open(planar));
    ASSERT_TRUE(first.ReadImage(pixels.data(), 0));
    EXPECT_EQ(pixels, InHeaderColours({0, 1})) << "planes of 4 bits in all are a 4-bit file";
}

// --- planes ----------------------------------------------------------------------------------------------------------

TEST(PcxPlanes, EachPlaneIsABitOfTheIndex) {
    const Bytes data = {0xAA, 0xC1, 0xCC, 0xC1, 0xF0, 0x00};
    EXPECT_EQ(Read(PcxFields(1, 4, 8, 1, 1), data).block, InHeaderColours({7, 6, 5, 4, 3, 2, 1, 0}));
}

TEST(PcxPlanes, EightPlanesReachThe256Colours) {
    ByteBuilder file = PcxHead(PcxFields(1, 8, 2, 1, 1));
    file.Fill(7, 0x00).Byte(0x80);
    EXPECT_EQ(Decode<PCXReader>(file.Append(PcxTail())).block, InTailColours({128, 0}));
}

TEST(PcxPlanes, EveryPlaneIsOneBitAPixelWhateverTheHeaderClaims) {
    for (const int bits : {2, 4}) {
        PcxHeader header = PcxFields(bits, 8 / bits, 4, 1, 1);
        header.version = 3;
        Bytes data = {0xA0, 0x60};
        data.resize(8, 0x00);
        EXPECT_EQ(Read(header, data).block, InHeaderColours({1, 2, 3, 0})) << bits;
    }
    EXPECT_EQ(Read(PcxFields(2, 2, 4, 1, 1), {0xA0, 0x60}).block, InHeaderColours({1, 2, 3, 0}));
}

TEST(PcxPlanes, NeverUseTheSpreadValues) {
    PcxHeader header = PcxFields(1, 4, 8, 1, 1);
    header.paletteInfo = 2;
    const Bytes data = {0xAA, 0xC1, 0xCC, 0xC1, 0xF0, 0x00};
    EXPECT_EQ(Read(header, data).block, InHeaderColours({7, 6, 5, 4, 3, 2, 1, 0}));
}

TEST(PcxPlanes, ARunCrossesPlanesAndRows) {
    // Two planes a row; the run of 3 fills the second plane and both of the second row.
    EXPECT_EQ(Read(PcxFields(2, 2, 2, 2, 1), {0x40, 0xC3, 0x80}).block, InHeaderColours({2, 1, 3, 0}));
}

TEST(PcxPlanes, PaddingIsAPartOfTheLine) {
    EXPECT_EQ(Read(PcxFields(2, 2, 2, 1, 2), {0x80, 0x99, 0x40, 0x99}).block, InHeaderColours({1, 2}));
    EXPECT_EQ(Read(Raw(PcxFields(2, 2, 2, 1, 2)), {0x80, 0x99, 0x40, 0x99}).block, InHeaderColours({1, 2}));
}

TEST(PcxPlanes, PixelsBeyondALineAreTheFirstColour) {
    EXPECT_EQ(Read(Raw(PcxFields(2, 2, 10, 1, 1)), {0xFF, 0xFF}).block,
              InHeaderColours({3, 3, 3, 3, 3, 3, 3, 3, 0, 0}));
}

TEST(PcxPlanes, APlaneThatIsNotThereKeepsTheRowAbove) {
    const Decoded decoded = Read(PcxFields(2, 2, 2, 3, 1), {0x80, 0x40, 0x40});
    EXPECT_EQ(decoded.block, InHeaderColours({1, 2, 0, 3, 0, 3}));
    EXPECT_THAT(decoded.messages, SizeIs(3)) << "one plane of the second row, two of the third";
}

}  // namespace
