#include "readers/ByteBuilder.h"
#include "readers/pict/PictBitmap.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

PictRowLayout Indexed(int width, int bits, unsigned rowBytes) {
    return {.width = width, .pixelSize = bits, .components = 1, .rowBytes = rowBytes};
}
PictRowLayout Direct(int width, int bits, int components = 3, unsigned rowBytes = 0x8010) {
    return {.width = width, .pixelSize = bits, .components = components, .rowBytes = rowBytes};
}

Bytes Copy(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

Bytes Unpacked(const Bytes& stored, const PictRowLayout& layout) {
    PictRowBuffer buffer;
    return Copy(buffer.Unpack(stored, layout));
}

/// The first row of these bytes.
Kavra::Common::Result<Bytes> FirstRow(const ByteBuilder& file, const PictRowLayout& layout) {
    ByteSource source = file.Source();
    return NextPictRow(source, layout).transform(Copy);
}

TEST(PictRowLayout, RowsOf8BytesAndMoreArePacked) {
    EXPECT_FALSE(Indexed(7, 8, 7).IsPacked());
    EXPECT_TRUE(Indexed(8, 8, 8).IsPacked());
    EXPECT_FALSE(Direct(1, 32, 3, 4).IsPacked());
    EXPECT_TRUE(Direct(1, 32, 3, 0x8004).IsPacked()) << "the high bit counts";
}

TEST(PictRowLayout, AnIndexedRowHoldsItsPixels) {
    EXPECT_TRUE(Indexed(64, 1, 8).HoldsItsPixels());
    EXPECT_FALSE(Indexed(65, 1, 8).HoldsItsPixels());
    EXPECT_TRUE(Indexed(8, 8, 8).HoldsItsPixels());
    EXPECT_FALSE(Indexed(9, 8, 8).HoldsItsPixels());
    EXPECT_TRUE(Indexed(3, 2, 1).HoldsItsPixels());
    EXPECT_FALSE(Indexed(5, 2, 1).HoldsItsPixels());
    EXPECT_FALSE(Indexed(1, 1, 0).HoldsItsPixels());
    EXPECT_FALSE(Indexed(65535, 8, 0x7FFF).HoldsItsPixels());
}

TEST(PictRowLayout, ADirectRowHoldsItsPixelsWhenItIsPackedOrLongEnough) {
    EXPECT_TRUE(Direct(30000, 32, 3, 0x8000).HoldsItsPixels());
    EXPECT_TRUE(Direct(30000, 32, 3, 8).HoldsItsPixels());
    EXPECT_TRUE(Direct(1, 32, 3, 4).HoldsItsPixels());
    EXPECT_FALSE(Direct(2, 32, 3, 7).HoldsItsPixels());
    EXPECT_TRUE(Direct(3, 16, 3, 6).HoldsItsPixels());
    EXPECT_FALSE(Direct(1, 16, 3, 0).HoldsItsPixels());
}

TEST(PictRowLayout, KnowsTheBytesOfAnUnpackedRow) {
    EXPECT_EQ(Indexed(9, 8, 10).UnpackedBytes(), 10U);
    EXPECT_EQ(Indexed(262136, 1, 32767).UnpackedBytes(), 32767U);
    EXPECT_EQ(Direct(100, 16, 3, 0x80C8).UnpackedBytes(), 200U);
    EXPECT_EQ(Direct(100, 16, 3, 0x80D0).UnpackedBytes(), 208U) << "padded to 208 bytes";
    EXPECT_EQ(Direct(100, 16, 3, 0x8000).UnpackedBytes(), 200U);
    EXPECT_EQ(Direct(100, 32, 3, 0x8190).UnpackedBytes(), 300U);
    EXPECT_EQ(Direct(100, 32, 4, 0x8190).UnpackedBytes(), 400U);
    EXPECT_EQ(Direct(1, 32, 3, 4).UnpackedBytes(), 4U);
}

TEST(PictRows, RowsThatAreNotPackedHaveNoCount) {
    const ByteBuilder file = ByteBuilder().Text("abcdefg");
    ByteSource source = file.Source();
    EXPECT_EQ(NextPictRow(source, Indexed(3, 8, 3)).transform(Copy), (Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(NextPictRow(source, Indexed(3, 8, 3)).transform(Copy), (Bytes{'d', 'e', 'f'}));
    EXPECT_FALSE(NextPictRow(source, Indexed(3, 8, 3)));
}

TEST(PictRows, CountsHaveOneByteUpTo250RowBytesAndTwoAbove) {
    const ByteBuilder file = ByteBuilder().Byte(0).Byte(2).Byte(7).Byte(8).Byte(9);
    EXPECT_EQ(FirstRow(file, Indexed(8, 8, 8)), Bytes{});
    EXPECT_EQ(FirstRow(file, Indexed(250, 8, 250)), Bytes{});
    EXPECT_EQ(FirstRow(file, Indexed(250, 8, 251)), (Bytes{7, 8}));
}

TEST(PictRows, CountsOfDirectRowsHaveTwoBytesAtAnyWidth) {
    const ByteBuilder file = ByteBuilder().Byte(0).Byte(2).Byte(7).Byte(8).Byte(9);
    EXPECT_EQ(FirstRow(file, Direct(4, 16, 3, 0x8008)), (Bytes{7, 8}));
    EXPECT_EQ(FirstRow(file, Direct(2, 32, 3, 0x8008)), (Bytes{7, 8}));
    EXPECT_EQ(FirstRow(file, Direct(1, 32, 3, 0x8004)), (Bytes{7, 8})) << "narrower than 8 bytes, and packed";
    EXPECT_EQ(FirstRow(file, Direct(4, 16, 3, 8)), (Bytes{7, 8})) << "without the high bit";
}

TEST(PictRows, ACountIsAtMost100MoreThanTheRowBytes) {
    EXPECT_EQ(FirstRow(ByteBuilder().Byte(108).Fill(200, 1), Indexed(8, 8, 8)), Bytes(108, 1));
    EXPECT_FALSE(FirstRow(ByteBuilder().Byte(109).Fill(200, 1), Indexed(8, 8, 8)));
    EXPECT_EQ(FirstRow(ByteBuilder().Big16(400).Fill(500, 1), Indexed(8, 8, 300)), Bytes(400, 1));
    EXPECT_FALSE(FirstRow(ByteBuilder().Big16(401).Fill(500, 1), Indexed(8, 8, 300)));
    EXPECT_EQ(FirstRow(ByteBuilder().Big16(0x8064).Fill(0x8064, 1), Direct(1, 32, 3, 0x8000)), Bytes(0x8064, 1));
    EXPECT_FALSE(FirstRow(ByteBuilder().Big16(0x8065).Fill(0x8065, 1), Direct(1, 32, 3, 0x8000)));
}

TEST(PictRows, ACountStaysInsideTheFile) {
    EXPECT_EQ(FirstRow(ByteBuilder().Byte(3).Fill(3, 1), Indexed(8, 8, 8)), Bytes(3, 1));
    EXPECT_FALSE(FirstRow(ByteBuilder().Byte(4).Fill(3, 1), Indexed(8, 8, 8)));
    EXPECT_FALSE(FirstRow(ByteBuilder(), Indexed(8, 8, 8)));
    EXPECT_FALSE(FirstRow(ByteBuilder().Byte(0), Indexed(8, 8, 300)));
}

TEST(PictRows, AFlagBelow0RepeatsAUnitAndAnyOtherCopiesSeveral) {
    EXPECT_EQ(Unpacked({0xFF, 5, 0x02, 1, 2, 3, 0xFD, 9}, Indexed(9, 8, 9)), (Bytes{5, 5, 1, 2, 3, 9, 9, 9, 9}));
    EXPECT_EQ(Unpacked({0x00, 7, 0x00, 8, 0xFB, 1}, Indexed(8, 8, 8)), (Bytes{7, 8, 1, 1, 1, 1, 1, 1}));
}

TEST(PictRows, TheFlag0x80Repeats129Times) {
    EXPECT_EQ(Unpacked({0x80, 5, 0x00, 6}, Indexed(130, 8, 130)).back(), 6);
    EXPECT_EQ(Unpacked({0x80, 5}, Indexed(129, 8, 129)), Bytes(129, 5));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0x80, 5}, Indexed(128, 8, 128)));
}

TEST(PictRows, UnitsHaveTwoBytesAt16BitsOnly) {
    EXPECT_EQ(Unpacked({0xFE, 1, 2, 0x01, 3, 4, 5, 6}, Direct(5, 16, 3, 0x800A)),
              (Bytes{1, 2, 1, 2, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Unpacked({0xFE, 1, 0x02, 3, 4, 5}, Direct(2, 32, 3, 0x8008)), (Bytes{1, 1, 1, 3, 4, 5}));
}

/// So many bytes that begin with these and go on with zeros.
Bytes Padded(Bytes start, std::size_t bytes) {
    start.resize(bytes);
    return start;
}

TEST(PictRows, TheRestOfAShortRowIsZeroWhateverWasUnpackedBefore) {
    PictRowBuffer buffer;
    const auto unpacked = [&](const Bytes& stored, unsigned rowBytes) {
        return Copy(buffer.Unpack(stored, Indexed(8, 8, rowBytes)));
    };
    EXPECT_EQ(unpacked({0x9D, 5}, 100), Bytes(100, 5));
    EXPECT_EQ(unpacked({0x01, 1, 2}, 100), Padded({1, 2}, 100));
    EXPECT_EQ(unpacked({0x9D, 5}, 100), Bytes(100, 5));
    EXPECT_EQ(unpacked({}, 100), Bytes(100, 0));
    EXPECT_EQ(unpacked({0xD9, 6}, 40), Bytes(40, 6)) << "a shorter row of another record";
    EXPECT_EQ(unpacked({0xFF, 7}, 120), Padded({7, 7}, 120));
    EXPECT_TRUE(IsSoundPictRow(Bytes{}, Indexed(8, 8, 100))) << "no damage";
}

TEST(PictRows, NoPacketTouchesWhatIsBehindIt) {
    for (unsigned count = 4; count <= 128; ++count) {
        Bytes stored = {static_cast<unsigned char>(count - 1)};
        for (unsigned i = 0; i < count; ++i)
            stored.push_back(static_cast<unsigned char>(100 + i));
        stored.insert(stored.end(), {static_cast<unsigned char>(256 - count), 9});
        Bytes expected(stored.begin() + 1, stored.end() - 2);
        expected.insert(expected.end(), count + 1, 9);
        EXPECT_EQ(Unpacked(stored, Indexed(8, 8, 300)), Padded(expected, 300)) << count;
        EXPECT_EQ(Unpacked(stored, Indexed(8, 8, 2 * count + 1)), expected) << count << ": nothing is left";
    }
}

TEST(PictRows, ARowThatGrowsBeyondItsLengthIsDamaged) {
    EXPECT_TRUE(IsSoundPictRow(Bytes{0xF9, 5}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xF8, 5}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xF9, 5, 0x00, 1}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0x08, 1, 2, 3, 4, 5, 6, 7, 8, 9}, Indexed(8, 8, 8)));
    EXPECT_TRUE(IsSoundPictRow(Bytes{0xFD, 1, 2}, Direct(4, 16, 3, 0x8008)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xFC, 1, 2}, Direct(4, 16, 3, 0x8008)));
    EXPECT_TRUE(IsSoundPictRow(Bytes{0xFB, 1}, Direct(2, 32, 3, 0x8008)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xFA, 1}, Direct(2, 32, 3, 0x8008)));
    EXPECT_TRUE(IsSoundPictRow(Bytes{0xF9, 1}, Direct(2, 32, 4, 0x8008)));
}

TEST(PictRows, APacketThatNeedsBytesBeyondItsRowIsDamaged) {
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xFF}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0x02, 1, 2}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xFF, 1, 0x00}, Indexed(8, 8, 8)));
    EXPECT_FALSE(IsSoundPictRow(Bytes{0xFF, 1}, Direct(4, 16, 3, 0x8008))) << "half a unit";
    EXPECT_FALSE(IsSoundPictRow(Bytes{0x01, 1, 2, 3}, Direct(4, 16, 3, 0x8008)));
}

TEST(PictRows, AnyBytesWillDoForARowThatIsNotPacked) {
    EXPECT_TRUE(IsSoundPictRow(Bytes{0xFF, 0x7F, 0x80}, Indexed(3, 8, 3)));
    EXPECT_EQ(Unpacked({0xFF, 0x7F, 0x80}, Indexed(3, 8, 3)), (Bytes{0xFF, 0x7F, 0x80}));
}

}  // namespace
