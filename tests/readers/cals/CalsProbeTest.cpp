#include "readers/FileSamples.h"
#include "readers/cals/CalsReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

bool Accepts(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return IsCals(source);
}

/// The file with this text, padded with spaces, as its raster type record.
ByteBuilder WithType(std::string_view text) {
    return CalsStart().At(768).Fill(128, ' ').At(768).Text(text);
}

TEST(CalsProbe, NeedsTheRasterTypeRecordWholeAndNoMore) {
    EXPECT_TRUE(Accepts(CalsStart()));
    EXPECT_EQ(CalsStart().Size(), 896U);
    EXPECT_FALSE(Accepts(CalsStart().CutTo(895)));
}

TEST(CalsProbe, EitherDocumentIdentifierWillDo) {
    EXPECT_TRUE(Accepts(CalsStart().At(128).Text("xxxxxxxx:")));
    EXPECT_TRUE(Accepts(CalsStart().At(0).Text("xxxxxxxx:")));
    EXPECT_FALSE(Accepts(CalsStart().At(0).Text("xxxxxxxx:").At(128).Text("xxxxxxxx:")));
    EXPECT_FALSE(Accepts(CalsStart().At(0).Text("dstdocid:").At(128).Text("srcdocid:"))) << "each in its own record";
}

TEST(CalsProbe, KeysHaveToMatchInCaseAndPlace) {
    EXPECT_FALSE(Accepts(CalsStart().At(0).Text("SRCDOCID:").At(128).Text("DSTDOCID:")));
    EXPECT_FALSE(Accepts(CalsStart().At(0).Text(" srcdocid:").At(128).Text(" dstdocid:")));
    EXPECT_FALSE(Accepts(WithType("RTYPE: 1")));
    EXPECT_FALSE(Accepts(WithType(" rtype: 1")));
    EXPECT_FALSE(Accepts(WithType("rtype 1")));
}

TEST(CalsProbe, TheRasterTypeIsTheNumberOneHoweverItIsWritten) {
    EXPECT_TRUE(Accepts(WithType("rtype:1")));
    EXPECT_TRUE(Accepts(WithType("rtype: +01x")));
    EXPECT_TRUE(Accepts(WithType("rtype:\t\r\n 0001.9")));
    for (const char* text :
         {"rtype: 2", "rtype: 11", "rtype: -1", "rtype: x1", "rtype:", "rtype: 0", "rtype: 4294967297"}) {
        EXPECT_FALSE(Accepts(WithType(text))) << text;
    }
}

TEST(CalsProbe, TheNumberEndsWithItsRecord) {
    ByteBuilder digitBehind = WithType("rtype:");
    digitBehind.At(896).Text("1");
    EXPECT_FALSE(Accepts(digitBehind));

    ByteBuilder digitsAcross = WithType("rtype:").At(895).Text("1").Text("1");
    EXPECT_TRUE(Accepts(digitsAcross));
}

TEST(CalsProbe, ANulEndsTheNumber) {
    EXPECT_TRUE(Accepts(WithType("rtype: 1").At(776).Byte(0).Text("1")));
    EXPECT_FALSE(Accepts(WithType("rtype: 1").At(774).Byte(0)));
}

TEST(CalsProbe, SeeksForItself) {
    const ByteBuilder file = CalsStart();
    ByteSource source = file.Source();
    ASSERT_TRUE(source.Seek(500));
    EXPECT_TRUE(IsCals(source));
}

}  // namespace
