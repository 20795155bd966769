#include "readers/spot/SpotHeader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

constexpr std::uint64_t kAnyLength = std::numeric_limits<std::uint64_t>::max();

/// 6 columns, 4 rows, and the lines given.
Kavra::Common::Result<SpotHeader> Parse(const std::string& lines, std::uint64_t dataBytes = kAnyLength) {
    return ParseSpotHeader("NCOLS 6\nNROWS 4\n" + lines, dataBytes);
}

TEST(SpotHeader, NothingButTheSizeIsRequired) {
    const auto header = Parse("");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->columns, 6);
    EXPECT_EQ(header->rows, 4);
    EXPECT_EQ(header->bits, 8);
    EXPECT_EQ(header->bands, 1);
    EXPECT_EQ(header->layout, SpotLayout::kByLine);
    EXPECT_EQ(header->sampleKind, SampleKind::k8Bit);
    EXPECT_EQ(header->skipBytes, 0);
    EXPECT_EQ(header->recordSkipBytes, 0);
    EXPECT_EQ(header->bandRowBytes, 6);
    EXPECT_EQ(header->totalRowBytes, 6);
    EXPECT_EQ(header->bandGapBytes, 0);
    EXPECT_FALSE(header->blueFirst);
    EXPECT_EQ(header->colourEntries, 0);
    EXPECT_EQ(header->greyEntries, 0);
    EXPECT_EQ(header->palette, GreyRamp());
    EXPECT_EQ(header->headerBytes, 16U);
    EXPECT_EQ(header->georeference.units, MapUnits::kNone);
}

TEST(SpotHeader, ColumnsAndRowsMustBeThere) {
    EXPECT_FALSE(ParseSpotHeader("NCOLS 6\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("NROWS 4\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("NCOLS x\nNROWS 4\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("", kAnyLength));
}

TEST(SpotHeader, SizesBelowOneAreRefused) {
    EXPECT_FALSE(ParseSpotHeader("NCOLS 0\nNROWS 4\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("NCOLS -6\nNROWS 4\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("NCOLS 6\nNROWS 0\n", kAnyLength));
    EXPECT_FALSE(ParseSpotHeader("NCOLS 6\nNROWS -2147483648\n", kAnyLength));
    EXPECT_FALSE(Parse("NBITS 0\n"));
    EXPECT_FALSE(Parse("NBITS -8\n"));
}

TEST(SpotHeader, OnlyMotorolaIsRefusedAsByteOrder) {
    EXPECT_FALSE(Parse("BYTEORDER MOTOROLA\n"));
    EXPECT_FALSE(Parse("byteorder Motorola\r\n"));
    EXPECT_FALSE(Parse("BYTEORDER      motorola"));
    for (const char* value : {"M", "I", "INTEL", "MOTOROL", "MOTOROLAX", "BIG", ""}) {
        EXPECT_TRUE(Parse(std::string("BYTEORDER ") + value + "\n")) << value;
    }
}

TEST(SpotHeader, OneOrThreeBandsAreAccepted) {
    for (int bands = -1; bands <= 6; ++bands) {
        EXPECT_EQ(Parse("NBANDS " + std::to_string(bands) + "\n").has_value(), bands == 1 || bands == 3) << bands;
    }
}

TEST(SpotHeader, AValueThatCannotBeReadCountsAsAbsent) {
    const auto header = Parse("NBITS x\nNBANDS\nLAYOUT\n\nSKIPBYTES ?\nBANDROWBYTES -\n");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->bits, 8);
    EXPECT_EQ(header->bands, 1);
    EXPECT_EQ(header->skipBytes, 0);
    EXPECT_EQ(header->bandRowBytes, 6);
}

TEST(SpotHeader, LayoutsAreComparedWithoutCase) {
    EXPECT_EQ(Parse("LAYOUT BIL\n")->layout, SpotLayout::kByLine);
    EXPECT_EQ(Parse("LAYOUT bil\n")->layout, SpotLayout::kByLine);
    EXPECT_EQ(Parse("LAYOUT Bip\n")->layout, SpotLayout::kByPixel);
    EXPECT_EQ(Parse("LAYOUT BSQ\n")->layout, SpotLayout::kSequential);
    EXPECT_EQ(Parse("LAYOUT bilx\n")->layout, SpotLayout::kUnknown);
    EXPECT_EQ(Parse("LAYOUT tiled\n")->layout, SpotLayout::kUnknown);
}

TEST(SpotHeader, TheRowOfABandIsWholeBytesAndTheRecordSkip) {
    EXPECT_EQ(Parse("NBITS 16\n")->bandRowBytes, 12);
    EXPECT_EQ(Parse("NBITS 4\n")->bandRowBytes, 3);
    EXPECT_EQ(Parse("NBITS 1\n")->bandRowBytes, 0) << "6 bits are no whole byte";
    EXPECT_EQ(Parse("RECORDSKIPBYTES 5\n")->bandRowBytes, 11);
    EXPECT_EQ(Parse("RECORDSKIPBYTES 5\n")->totalRowBytes, 11);
    EXPECT_EQ(Parse("RECORDSKIPBYTES 5\nBANDROWBYTES 20\n")->bandRowBytes, 20) << "a value given is taken as it is";
}

TEST(SpotHeader, TheRowOfAllBandsFollowsFromTheRowOfOne) {
    EXPECT_EQ(Parse("NBANDS 3\nRECORDSKIPBYTES 5\n")->totalRowBytes, 33) << "the skip once for each band";
    EXPECT_EQ(Parse("NBANDS 3\nBANDROWBYTES 20\n")->totalRowBytes, 60);
    EXPECT_EQ(Parse("NBANDS 3\nLAYOUT BSQ\n")->totalRowBytes, 18);
    EXPECT_EQ(Parse("NBANDS 3\nTOTALROWBYTES 100\n")->totalRowBytes, 100);
    EXPECT_EQ(Parse("NBANDS 3\nTOTALROWBYTES 0\n")->totalRowBytes, 0);
}

TEST(SpotHeader, RowsInterleavedByPixelRoundUpAndLeaveTheSkipOut) {
    EXPECT_EQ(Parse("LAYOUT bip\nNBANDS 3\nRECORDSKIPBYTES 5\nBANDROWBYTES 50\n")->totalRowBytes, 18);
    EXPECT_EQ(Parse("LAYOUT BIP\nNBITS 1\n")->totalRowBytes, 1);
    EXPECT_EQ(Parse("LAYOUT BIP\nNBITS 12\nNBANDS 3\n")->totalRowBytes, 27);
}

TEST(SpotHeader, CountsOfBytesMustNotBeNegative) {
    for (const char* keyword : {"SKIPBYTES", "RECORDSKIPBYTES", "BANDROWBYTES", "TOTALROWBYTES", "BANDGAPBYTES"}) {
        EXPECT_FALSE(Parse(std::string(keyword) + " -1\n")) << keyword;
        EXPECT_FALSE(Parse(std::string(keyword) + " -99999999999\n")) << keyword;
        EXPECT_TRUE(Parse(std::string(keyword) + " 0\n")) << keyword;
    }
}

TEST(SpotHeader, SkipAndGapAreRead) {
    const auto header = Parse("SKIPBYTES 7\nBANDGAPBYTES 9\n");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->skipBytes, 7);
    EXPECT_EQ(header->bandGapBytes, 9);
}

TEST(SpotHeader, TheDataMustHoldAllRowsAndTheSkip) {
    EXPECT_TRUE(Parse("", 24));
    EXPECT_FALSE(Parse("", 23));
    EXPECT_TRUE(Parse("SKIPBYTES 10\n", 34));
    EXPECT_FALSE(Parse("SKIPBYTES 10\n", 33));
    EXPECT_TRUE(Parse("NBANDS 3\nLAYOUT BSQ\nBANDGAPBYTES 1000\n", 72)) << "gaps do not count";
    EXPECT_TRUE(Parse("TOTALROWBYTES 0\n", 0));
}

TEST(SpotHeader, ProductsDoNotWrapAround) {
    const std::string most = "2147483647";
    EXPECT_FALSE(
        ParseSpotHeader("NCOLS " + most + "\nNROWS " + most + "\nNBANDS 3\nNBITS " + most + "\n", kAnyLength / 4));
    EXPECT_FALSE(Parse("TOTALROWBYTES " + most + "\n", (std::uint64_t{1} << 33) - 5));
    EXPECT_TRUE(Parse("TOTALROWBYTES " + most + "\n", (std::uint64_t{1} << 33) - 4));
    const auto wide = ParseSpotHeader("NCOLS " + most + "\nNROWS 1\nNBITS 32\n", kAnyLength);
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->bandRowBytes, 2147483647LL * 4) << "more than 32 bits hold";
    const auto widest =
        ParseSpotHeader("NCOLS " + most + "\nNROWS 1\nLAYOUT BIP\nNBANDS 3\nNBITS " + most + "\n", kAnyLength);
    ASSERT_TRUE(widest);
    EXPECT_EQ(widest->totalRowBytes, std::numeric_limits<std::int64_t>::max() / 8);
}

TEST(SpotHeader, TheKindOfPixelFollowsFromBitsAndAFirstLetter) {
    const auto kind = [](const std::string& lines) { return Parse(lines)->sampleKind; };
    EXPECT_EQ(kind("NBITS 8\nPIXELTYPE SIGNEDINT\n"), SampleKind::k8Bit);
    EXPECT_EQ(kind("NBITS 16\n"), SampleKind::kUnsigned16);
    EXPECT_EQ(kind("NBITS 16\nPIXELTYPE UNSIGNEDINT\n"), SampleKind::kUnsigned16);
    EXPECT_EQ(kind("NBITS 16\nPIXELTYPE SIGNEDINT\n"), SampleKind::kSigned16);
    EXPECT_EQ(kind("NBITS 16\nPIXELTYPE signedint\n"), SampleKind::kSigned16);
    EXPECT_EQ(kind("NBITS 16\nPIXELTYPE FLOAT\n"), SampleKind::kUnsigned16);
    EXPECT_EQ(kind("NBITS 32\n"), SampleKind::kUnsigned32);
    EXPECT_EQ(kind("NBITS 32\nPIXELTYPE S\n"), SampleKind::kSigned32);
    EXPECT_EQ(kind("NBITS 32\nPIXELTYPE FLOAT\n"), SampleKind::kFloat);
    EXPECT_EQ(kind("NBITS 32\nPIXELTYPE f\n"), SampleKind::kFloat);
    for (const char* bits : {"1", "4", "9", "15", "24"}) {
        EXPECT_EQ(kind(std::string("NBITS ") + bits + "\nPIXELTYPE F\n"), SampleKind::kNone) << bits;
    }
}

TEST(SpotHeader, ASingleBandHasAtMost32Bits) {
    EXPECT_TRUE(Parse("NBITS 32\n"));
    EXPECT_FALSE(Parse("NBITS 33\n"));
    EXPECT_TRUE(Parse("NBITS 64\nNBANDS 3\n"));
}

TEST(SpotHeader, ThreeBandsSayWhichIsRed) {
    const auto blueFirst = [](const std::string& value) {
        return Parse("NBANDS 3\nBAND_RGB " + value + "\n")->blueFirst;
    };
    EXPECT_FALSE(Parse("NBANDS 3\n")->blueFirst);
    EXPECT_FALSE(blueFirst("1"));
    EXPECT_FALSE(blueFirst("123"));
    EXPECT_TRUE(blueFirst("3"));
    EXPECT_TRUE(blueFirst("321"));
    for (const char* value : {"0", "2", "132", "213", "-1"}) {
        EXPECT_FALSE(Parse(std::string("NBANDS 3\nBAND_RGB ") + value + "\n")) << value;
    }
    EXPECT_TRUE(Parse("BAND_RGB 2\n")) << "one band has no order";
    EXPECT_FALSE(Parse("BAND_RGB 321\n")->blueFirst);
}

TEST(SpotHeader, ASkipInALastLineWithoutLineFeedIsBothSkips) {
    const auto header = Parse("RECORDSKIPBYTES 1");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->recordSkipBytes, 1);
    EXPECT_EQ(header->skipBytes, 1);
    EXPECT_EQ(Parse("RECORDSKIPBYTES 1\n")->skipBytes, 0);
}

TEST(SpotHeader, KeepsWhereTheRasterLies) {
    const auto header = Parse(
        "ULXMAP 1000\nULYMAP 2000.5\nXDIM 30\nYDIM 10\nMAPUNITS Meters\nProjection UTM\nDatum Old Hawaii Datum\r\nZone "
        "12\n");
    ASSERT_TRUE(header);
    const Georeference& place = header->georeference;
    EXPECT_EQ(place.mapX, 1000);
    EXPECT_EQ(place.mapY, 2000.5);
    EXPECT_EQ(place.cellWidth, 30);
    EXPECT_EQ(place.cellHeight, 10);
    EXPECT_EQ(place.cornerX, 985);
    EXPECT_EQ(place.cornerY, 1965.5) << "2000.5 - 3.5 x 10";
    EXPECT_EQ(place.units, MapUnits::kMeters);
    EXPECT_EQ(place.projection, "UTM");
    EXPECT_EQ(place.datum, "Old Hawaii Datum");
    EXPECT_EQ(place.zone, "12");
}

TEST(SpotHeader, MapUnitsAreKnownByName) {
    const auto units = [](const std::string& name) { return Parse("MAPUNITS " + name + "\n")->georeference.units; };
    EXPECT_EQ(units("INCHES"), MapUnits::kInches);
    EXPECT_EQ(units("feet"), MapUnits::kFeet);
    EXPECT_EQ(units("meters"), MapUnits::kMeters);
    EXPECT_EQ(units("DD"), MapUnits::kDegrees);
    EXPECT_EQ(units("degrees"), MapUnits::kNone);
}

TEST(SpotHeader, LongTextsAreCut) {
    EXPECT_EQ(Parse("Datum " + std::string(100, 'x') + "\n")->georeference.datum, std::string(63, 'x'));
}

/// Header files and the palettes beside them.
class SpotHeaderFile : public testing::Test {
protected:
    Kavra::Common::Result<SpotHeader> Read(const std::string& lines) {
        const KString path = Wide(mFolder.Write("x.hdr", "NCOLS 6\nNROWS 4\n" + lines));
        ByteSource file = ByteSource::Open(path).value();
        auto header = ReadSpotHeader(file, kAnyLength);
        if (header) AddSpotPalette(path, *header);
        return header;
    }
    void WritePalette(const char* name, const std::string& text) { mFolder.Write(name, text); }

    TemporaryFolder mFolder;
};

TEST_F(SpotHeaderFile, HasAtMost20480Bytes) {
    std::string lines;
    lines.resize(20480 - 16, '\n');
    EXPECT_TRUE(Read(lines));
    EXPECT_FALSE(Read(lines + "\n"));
}

TEST_F(SpotHeaderFile, IsReadAsItIsWhateverItsLineEnds) {
    const auto header = Read("NBITS 16\r\nPIXELTYPE SIGNEDINT\r\n");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->sampleKind, SampleKind::kSigned16);
    EXPECT_EQ(header->headerBytes, 16U + 31U);
}

TEST_F(SpotHeaderFile, AGreyPaletteMapsValues) {
    WritePalette("x.clr", "5 9 9 9\n");
    const auto header = Read("");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->greyEntries, 256);
    EXPECT_EQ(header->colourEntries, 0);
    EXPECT_EQ(header->palette[5], (SpotColour{9, 9, 9}));
    EXPECT_EQ(header->palette[6], (SpotColour{6, 6, 6}));
}

TEST_F(SpotHeaderFile, OneColourMakesASingleBandAColourRaster) {
    WritePalette("x.clr", "5 9 9 9\n6 1 2 3\n");
    const auto header = Read("");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->colourEntries, 256);
    EXPECT_EQ(header->greyEntries, 0);
    EXPECT_EQ(header->palette[6], (SpotColour{1, 2, 3}));
}

TEST_F(SpotHeaderFile, OnThreeBandsAnyPaletteMapsValues) {
    WritePalette("x.clr", "6 1 2 3\n");
    const auto header = Read("NBANDS 3\n");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->colourEntries, 0);
    EXPECT_EQ(header->greyEntries, 256);
    EXPECT_EQ(header->palette[6], (SpotColour{1, 2, 3}));
}

TEST_F(SpotHeaderFile, PalettesBelongTo8BitSamples) {
    WritePalette("x.clr", "6 1 2 3\n");
    const auto header = Read("NBITS 16\n");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->colourEntries, 0);
    EXPECT_EQ(header->greyEntries, 0);
}

TEST_F(SpotHeaderFile, ThePalFileWinsByBeingThere) {
    WritePalette("x.clr", "6 1 2 3\n");
    WritePalette("x.pal", "6 4 5 6\n");
    EXPECT_EQ(Read("")->palette[6], (SpotColour{4, 5, 6}));
    WritePalette("x.pal", "no palette\n");
    const auto header = Read("");
    ASSERT_TRUE(header);
    EXPECT_EQ(header->colourEntries, 0);
    EXPECT_EQ(header->greyEntries, 0);
    EXPECT_EQ(header->palette, GreyRamp());
}

TEST_F(SpotHeaderFile, AFolderNamedLikeAPaletteIsNone) {
    std::filesystem::create_directory(mFolder / "x.pal");
    WritePalette("x.clr", "6 1 2 3\n");
    EXPECT_EQ(Read("")->colourEntries, 256);
}

}  // namespace
