#include "readers/FileSamples.h"
#include "readers/pcx/PcxReader.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

bool IsPcx(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return ReadPcxHeader(source).has_value();
}

ByteBuilder With(std::size_t offset, unsigned value) {
    return PcxStart().At(offset).Byte(value);
}

TEST(PcxHeader, TheFirst128BytesAreEnough) {
    EXPECT_TRUE(IsPcx(PcxStart()));
    EXPECT_FALSE(IsPcx(PcxStart().CutTo(127)));
}

TEST(PcxHeader, TheManufacturerIsTen) {
    for (unsigned value = 0; value < 256; ++value)
        EXPECT_EQ(IsPcx(With(0, value)), value == 10) << value;
}

TEST(PcxHeader, VersionsAre0And2And3And5) {
    for (unsigned value = 0; value < 256; ++value) {
        EXPECT_EQ(IsPcx(With(1, value)), value == 0 || value == 2 || value == 3 || value == 5) << value;
    }
}

TEST(PcxHeader, EncodingsAreRawAndRunLength) {
    for (unsigned value = 0; value < 256; ++value)
        EXPECT_EQ(IsPcx(With(2, value)), value <= 1) << value;
}

TEST(PcxHeader, BitsTimesPlanesAre1Or4Or8Or24InFullPrecision) {
    const std::set<std::pair<unsigned, unsigned>> accepted = {
        {1, 1},  {1, 4},  {2, 2}, {4, 1}, {1, 8}, {2, 4}, {4, 2},  {8, 1},  // 1, 4 and 8
        {1, 24}, {2, 12}, {3, 8}, {4, 6}, {6, 4}, {8, 3}, {12, 2}, {24, 1}};
    for (unsigned bits = 0; bits < 256; ++bits) {
        for (unsigned planes = 0; planes < 256; ++planes) {
            ByteBuilder file = With(3, bits).At(65).Byte(planes);
            ASSERT_EQ(IsPcx(file), accepted.contains({bits, planes})) << bits << " x " << planes;
        }
    }
}

TEST(PcxHeader, EveryFieldComesFromItsPlace) {
    ByteBuilder file = With(1, 3);
    file.At(2).Byte(0).Byte(4).Little16(0x0102).Little16(0x0304).Little16(0x0506).Little16(0x0708);
    file.At(16).Byte(11).At(63).Byte(12);
    file.At(65).Byte(2).Little16(0x090A).Little16(0x0B0C);
    ByteSource source = file.Source();
    const auto header = ReadPcxHeader(source);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->version, 3);
    EXPECT_EQ(header->encoding, 0);
    EXPECT_EQ(header->bitsPerPlane, 4);
    EXPECT_EQ(header->planes, 2);
    EXPECT_EQ(header->Bits(), 8);
    EXPECT_EQ(header->xMin, 0x0102);
    EXPECT_EQ(header->yMin, 0x0304);
    EXPECT_EQ(header->xMax, 0x0506);
    EXPECT_EQ(header->yMax, 0x0708);
    EXPECT_EQ(header->palette.front(), 11);
    EXPECT_EQ(header->palette.back(), 12);
    EXPECT_EQ(header->bytesPerLine, 0x090A);
    EXPECT_EQ(header->paletteInfo, 0x0B0C);
}

TEST(PcxHeader, SidesReachFromZeroOrLessTo65536) {
    PcxHeader header;
    EXPECT_EQ(header.Width(), 0) << "of a header that was not read";
    EXPECT_EQ(header.Height(), 0);
    header.xMin = header.yMin = 0;
    EXPECT_EQ(header.Width(), 1);
    EXPECT_EQ(header.Height(), 1);
    header.xMax = header.yMax = 0xFFFF;
    EXPECT_EQ(header.Width(), 65'536);
    EXPECT_EQ(header.Height(), 65'536);
    header.xMin = header.yMin = 0xFFFF;
    header.xMax = header.yMax = 0;
    EXPECT_EQ(header.Width(), -65'534);
    EXPECT_EQ(header.Height(), -65'534);
}

TEST(PcxHeader, PlanesAreAPalettesBitsUnlessTheyAreColours) {
    const std::set<std::pair<int, int>> planar = {{1, 4}, {2, 2}, {1, 8}, {2, 4}, {4, 2}};
    for (const auto& [bits, planes] :
         {std::pair{1, 1}, {1, 4}, {2, 2}, {4, 1}, {1, 8}, {2, 4}, {4, 2}, {8, 1}, {1, 24}, {12, 2}, {8, 3}, {24, 1}}) {
        PcxHeader header;
        header.bitsPerPlane = static_cast<std::uint8_t>(bits);
        header.planes = static_cast<std::uint8_t>(planes);
        EXPECT_EQ(header.IsPlanar(), planar.contains({bits, planes})) << bits << " x " << planes;
    }
}

TEST(PcxHeader, SeeksForItself) {
    const ByteBuilder file = PcxStart();
    ByteSource source = file.Source();
    ASSERT_TRUE(source.Seek(100));
    EXPECT_TRUE(ReadPcxHeader(source));
}

}  // namespace
