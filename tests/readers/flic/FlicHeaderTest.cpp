#include "readers/FileSamples.h"
#include "readers/flic/FlicReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

Kavra::Common::Result<FlicHeader> Read(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return ReadFlicHeader(source);
}

TEST(FlicHeader, SixBytesTellTheKind) {
    EXPECT_TRUE(Read(FlicStart().CutTo(6)));
    EXPECT_FALSE(Read(FlicStart().CutTo(5)));
    EXPECT_FALSE(Read(ByteBuilder()));
}

TEST(FlicHeader, TheKindIsFliOrFlcInLittleEndian) {
    EXPECT_TRUE(Read(FlicStart().At(4).Little16(0xAF11)));
    EXPECT_TRUE(Read(FlicStart().At(4).Little16(0xAF12)));
    EXPECT_FALSE(Read(FlicStart().At(4).Little16(0xAF10)));
    EXPECT_FALSE(Read(FlicStart().At(4).Little16(0xAF13)));
    EXPECT_FALSE(Read(FlicStart().At(4).Big16(0xAF11)));
}

TEST(FlicHeader, FramesAndSizeAreUnsigned) {
    const auto header = Read(FlicStart().At(6).Little16(0xFFFE).Little16(0x8001).Little16(0x0203));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->frames, 0xFFFE);
    EXPECT_EQ(header->width, 0x8001);
    EXPECT_EQ(header->height, 0x0203);
}

TEST(FlicHeader, BytesThatAreMissingAreZero) {
    const auto header = Read(FlicStart().CutTo(9));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->frames, 3);
    EXPECT_EQ(header->width, 320 & 0xFF);
    EXPECT_EQ(header->height, 0);
}

TEST(FlicHeader, SeeksForItself) {
    const ByteBuilder file = FlicStart();
    ByteSource source = file.Source();
    ASSERT_TRUE(source.Seek(10));
    EXPECT_TRUE(ReadFlicHeader(source));
}

}  // namespace
