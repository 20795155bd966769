#include "readers/FileSamples.h"
#include "readers/pict/PictReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Common::Result;
using namespace Kavra::Tests;

bool Accepts(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return IsPict(source);
}

/// A version-1 picture in a file of 2000 bytes that says its size is `size`.
ByteBuilder Version1(unsigned size) {
    ByteBuilder file(2000);
    return file.At(512).Big16(size).Big16(0).Big16(0).Big16(8).Big16(8).Byte(0x11).Byte(0x01);
}

/// A version-2 picture with this frame.
ByteBuilder WithFrame(unsigned top, unsigned left, unsigned bottom, unsigned right) {
    return PictVersion2().At(514).Big16(top).Big16(left).Big16(bottom).Big16(right);
}

/// A version-2 picture whose opcode begins at `offset` in the block, with zeros before it.
ByteBuilder WithOpcodeAt(std::size_t offset) {
    return PictVersion2().At(522).Fill(503, 0).At(512 + offset).Byte(0x11).Byte(0x02).Byte(0xFF);
}

TEST(PictProbe, NeedsMoreThan1024Bytes) {
    EXPECT_TRUE(Accepts(PictVersion2()));
    EXPECT_EQ(PictVersion2().Size(), 1025U);
    EXPECT_FALSE(Accepts(PictVersion2().CutTo(1024)));
}

TEST(PictProbe, ThePictureIsNoLargerThanItsFile) {
    EXPECT_TRUE(Accepts(PictVersion2().At(512).Big16(1025)));
    EXPECT_FALSE(Accepts(PictVersion2().At(512).Big16(1026)));
    EXPECT_TRUE(Accepts(PictVersion2().At(512).Big16(0)));
}

TEST(PictProbe, TheFrameIsNotEmpty) {
    EXPECT_TRUE(Accepts(WithFrame(1, 2, 2, 3)));
    EXPECT_FALSE(Accepts(WithFrame(2, 2, 2, 3)));
    EXPECT_FALSE(Accepts(WithFrame(1, 3, 2, 3)));
    EXPECT_FALSE(Accepts(WithFrame(3, 2, 2, 3)));
    EXPECT_FALSE(Accepts(WithFrame(1, 4, 2, 3)));
}

TEST(PictProbe, TheFrameIsComparedUnsigned) {
    EXPECT_FALSE(Accepts(WithFrame(0xFFFC, 0, 30, 40))) << "top -4";
    EXPECT_FALSE(Accepts(WithFrame(0, 0xFFFC, 30, 40))) << "left -4";
    EXPECT_TRUE(Accepts(WithFrame(0, 0, 40000, 40)));
    EXPECT_TRUE(Accepts(WithFrame(0, 0, 30, 40000)));
}

TEST(PictProbe, AVersion1PictureGivesTheLengthOfTheWholeFile) {
    EXPECT_TRUE(Accepts(Version1(2000)));
    EXPECT_FALSE(Accepts(Version1(1999)));
    EXPECT_FALSE(Accepts(Version1(2000 - 512)));
    EXPECT_FALSE(Accepts(Version1(2000).At(523).Byte(2)));
}

TEST(PictProbe, ZerosBeforeTheOpcodeMakeItVersion2) {
    EXPECT_TRUE(Accepts(WithOpcodeAt(11)));
    EXPECT_TRUE(Accepts(WithOpcodeAt(12)));
    EXPECT_TRUE(Accepts(WithOpcodeAt(100)));
    EXPECT_FALSE(Accepts(WithOpcodeAt(12).At(525).Byte(0x01))) << "version 1 behind zeros";
    EXPECT_FALSE(Accepts(WithOpcodeAt(12).At(526).Byte(0xFE)));
    EXPECT_FALSE(Accepts(WithOpcodeAt(12).At(524).Byte(0x12)));
}

TEST(PictProbe, TheOpcodeLiesInsideTheBlock) {
    EXPECT_TRUE(Accepts(WithOpcodeAt(509)));
    EXPECT_FALSE(Accepts(PictVersion2().At(522).Fill(503, 0).At(512 + 510).Byte(0x11).Byte(0x02).Byte(0xFF)));
    EXPECT_FALSE(Accepts(PictVersion2().At(522).Fill(503, 0))) << "nothing but zeros";
}

TEST(PictProbe, AnyOtherByteInThePlaceOfTheVersionFails) {
    for (unsigned value = 1; value < 256; ++value) {
        if (value == 0x11) continue;
        EXPECT_FALSE(Accepts(PictVersion2().At(522).Byte(value))) << value;
    }
}

TEST(PictProbe, FilesOf2GiBAndMoreAreNotTaken) {
    const TemporaryFolder folder;
    const auto path = folder.Write("large", PictVersion2().Bytes());
    const auto accepts = [&](std::uintmax_t size) {
        std::filesystem::resize_file(path, size);
        Result<ByteSource> source = ByteSource::Open(Wide(path));
        return source && IsPict(*source);
    };
    EXPECT_TRUE(accepts((std::uintmax_t{1} << 31) - 1));
    EXPECT_FALSE(accepts(std::uintmax_t{1} << 31));
    EXPECT_FALSE(accepts((std::uintmax_t{1} << 32) + 2000)) << "a length that looks small in 32 bits";
}

TEST(PictProbe, SeeksForItself) {
    const ByteBuilder file = PictVersion2();
    ByteSource source = file.Source();
    ASSERT_TRUE(source.Seek(1000));
    EXPECT_TRUE(IsPict(source));
}

}  // namespace
