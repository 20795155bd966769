#include "readers/Decode.h"
#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::IsEmpty;

/// A file of 8 bits with the colours of `PcxTail` behind the data.
Decoded DecodeBytes(const PcxHeader& header, const Bytes& data) {
    return Decode<PCXReader>(PcxHead(header, data).Append(PcxTail()));
}

bool Opens(const ByteBuilder& file) {
    return Decode<PCXReader>(file).opened;
}

TEST(PcxReader, ASmallPictureComesOutWhole) {
    const Decoded decoded = DecodeBytes(PcxFields(8, 1, 3, 2, 3), {1, 2, 3, 0xC2, 4, 0xC1, 0xF0});
    EXPECT_TRUE(decoded.opened);
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.width, 3);
    EXPECT_EQ(decoded.height, 2);
    EXPECT_EQ(decoded.rowPitch, 12);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.orientation, kTopLeft);
    EXPECT_EQ(decoded.block, InTailColours({1, 2, 3, 4, 4, 0xF0}));
    EXPECT_THAT(decoded.messages, IsEmpty());
}

TEST(PcxReader, TheFrameIsIgnored) {
    const ByteBuilder file = PcxHead(PcxFields(8, 1, 1, 1, 1), {9}).Append(PcxTail());
    for (const int frame : {-1, 0, 1, 1000})
        EXPECT_EQ(Decode<PCXReader>(file, frame).block, InTailColours({9})) << frame;
}

TEST(PcxReader, SidesCountFromTheFirstColumnAndRow) {
    PcxHeader header = PcxFields(8, 1, 1, 1, 2);
    header.xMin = 40'000;
    header.xMax = 40'001;
    header.yMin = 65'535;
    header.yMax = 65'535;
    const Decoded decoded = DecodeBytes(header, {1, 2});
    EXPECT_EQ(decoded.width, 2);
    EXPECT_EQ(decoded.height, 1);
    EXPECT_EQ(decoded.block, InTailColours({1, 2}));
}

TEST(PcxReader, SidesReach65536) {
    PcxHeader header = PcxFields(1, 1, 1, 1, 2);
    header.xMax = header.yMax = 65'535;
    const Decoded decoded = Decode<PCXReader>(PcxHead(header));
    EXPECT_TRUE(decoded.opened);
    EXPECT_EQ(decoded.width, 65'536);
    EXPECT_EQ(decoded.height, 65'536);
    EXPECT_EQ(decoded.rowPitch, 262'144);
}

TEST(PcxReader, ColumnsOrRowsThatRunBackwardsAreRefused) {
    PcxHeader header = PcxFields(4, 1, 3, 3, 2);
    EXPECT_TRUE(Opens(PcxHead(header)));
    header.xMin = 3;
    EXPECT_FALSE(Opens(PcxHead(header))) << "one less than the first: no column";
    header.xMin = 2;
    EXPECT_TRUE(Opens(PcxHead(header)));
    header.yMin = 3;
    EXPECT_FALSE(Opens(PcxHead(header)));
    header.yMin = 65'535;
    EXPECT_FALSE(Opens(PcxHead(header)));
}

TEST(PcxReader, WhatIsNoPcxFileIsRefused) {
    const ByteBuilder file = PcxHead(PcxFields(4, 1, 1, 1, 2));
    EXPECT_TRUE(Opens(file));
    EXPECT_FALSE(Opens(ByteBuilder(file).CutTo(127)));
    EXPECT_FALSE(Opens(ByteBuilder(file).At(0).Byte(11)));
    EXPECT_FALSE(Opens(ByteBuilder(file).At(3).Byte(2)));
    const TemporaryFolder folder;
    PCXReader reader;
    EXPECT_FALSE(reader.Open(Wide(folder / "missing.pcx")));
    EXPECT_FALSE(reader.Open(Wide(folder.Path())));
}

TEST(PcxReader, EightBitsOfVersion5NeedTheirPalette) {
    const ByteBuilder file = PcxHead(PcxFields(8, 1, 1, 1, 1), Bytes(641, 0));
    EXPECT_TRUE(Opens(file));
    EXPECT_FALSE(Opens(ByteBuilder(file).CutTo(768)));
    EXPECT_TRUE(Opens(PcxHead(PcxFields(8, 3, 1, 1, 1)))) << "24 bits need none";
}

TEST(PcxReader, AReaderThatIsNotOpenReadsNothingAndHasNoSize) {
    PCXReader reader;
    EXPECT_EQ(reader.GetWidth(), 0);
    EXPECT_EQ(reader.GetHeight(), 0);
    EXPECT_EQ(reader.GetRowPitch(), 0);
    unsigned char byte = 0xCD;
    EXPECT_FALSE(reader.ReadImage(&byte, 0));
    EXPECT_EQ(byte, 0xCD);
}

TEST(PcxReader, OpeningAnotherFileLetsGoOfTheFirst) {
    const TemporaryFolder folder;
    const auto colour = folder.Write("a", PcxHead(PcxFields(8, 3, 1, 1, 1), {1, 2, 3}).Bytes());
    const auto bytes = folder.Write("b", PcxHead(PcxFields(8, 1, 1, 1, 1), {5}).Append(PcxTail()).Bytes());
    PCXReader reader;
    Bytes pixel(4);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(reader.Open(Wide(bytes)));
        EXPECT_TRUE(reader.ReadImage(pixel.data(), 0));
        EXPECT_EQ(pixel, InTailColours({5}));
        ASSERT_TRUE(reader.Open(Wide(colour)));
        EXPECT_TRUE(reader.ReadImage(pixel.data(), 0));
        EXPECT_EQ(pixel, (Bytes{1, 2, 3, 255}));
    }
    EXPECT_FALSE(reader.Open(Wide(folder / "missing")));
    EXPECT_FALSE(reader.ReadImage(pixel.data(), 0));
}

TEST(PcxReader, APictureCanBeReadAgain) {
    const TemporaryFolder folder;
    const Bytes data = {0xC9, 1, 2, 3, 4};  // ends inside the third row, and with a run to carry
    PCXReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder.Write("a", PcxHead(PcxFields(4, 1, 5, 4, 5), data).Bytes()))));
    const MessageRecorder messages;
    Bytes first(80, kUnwritten);
    Bytes second(80, kUnwritten);
    EXPECT_TRUE(reader.ReadImage(first.data(), 0));
    EXPECT_TRUE(reader.ReadImage(second.data(), 0));
    EXPECT_EQ(first, second);
}

TEST(PcxReader, IndicesWithoutAColourLeaveTheirPixelsAlone) {
    PcxHeader header = PcxFields(8, 1, 4, 1, 4);
    header.version = 3;
    const Decoded decoded = DecodeBytes(header, {15, 16, 0, 0xBF});
    Bytes expected = InHeaderColours({15, 0, 0, 0});
    std::fill_n(expected.begin() + 4, 4, kUnwritten);
    std::fill_n(expected.begin() + 12, 4, kUnwritten);
    EXPECT_EQ(decoded.block, expected);
}

TEST(PcxReader, TheDataMayRunOnIntoThePalette) {
    const Decoded decoded = DecodeBytes(PcxFields(8, 1, 4, 2, 4), {1, 2, 3, 4, 5});
    EXPECT_EQ(decoded.block, InTailColours({1, 2, 3, 4, 5, 12, 0, 7}))
        << "12 is the marker; its first colour 0 255 7 is a zero and a run of 63 sevens";
    EXPECT_THAT(decoded.messages, IsEmpty());
}

}  // namespace
