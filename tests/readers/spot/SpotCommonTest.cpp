// Band rasters in the common reading, beside the contract's. Expected pixels are written out by hand from the description
// of the format.

#include "readers/BothReadings.h"
#include "readers/FileTypeDetection.h"
#include "readers/spot/SpotCommonHeader.h"
#include "readers/spot/SpotReader.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;
using Words = std::vector<std::uint16_t>;
using Floats = std::vector<float>;

/// The files of one raster.
class SpotCommon : public testing::Test {
protected:
    /// 2 x 2 pixels unless the lines say otherwise.
    void Write(const std::string& lines, const Bytes& data, const std::string& name = "q.bil") {
        mPath = mFolder.Write(name, data);
        std::string header;
        for (const char* const side : {"NROWS", "NCOLS"}) {
            if (!lines.contains(side)) header += std::string(side) + " 2\n";
        }
        mFolder.Write("q.hdr", header + lines);
    }
    Read Common(int frame = 0) { return ReadIn<SpotReader>(kLegacyCommon, mPath, frame); }
    Read Contract(int frame = 0) { return ReadIn<SpotReader>(kLegacyContract, mPath, frame); }

    Bytes Pixels(const std::string& lines, const Bytes& data, const std::string& name = "q.bil") {
        Write(lines, data, name);
        const Read read = Common();
        EXPECT_TRUE(read.read) << lines;
        EXPECT_EQ(read.messages.size(), 0U);
        EXPECT_EQ(read.note, "") << "that is the other reading's";
        return read.block;
    }
    Floats Values(const std::string& lines, const Bytes& data) {
        Write(lines, data);
        const Read read = Common();
        EXPECT_EQ(read.format, kR32F) << lines;
        return ElementsOf<float>(read);
    }
    std::string NoteOf(const std::string& lines, const Bytes& data) {
        Write(lines, data);
        return Contract().note;
    }

    TemporaryFolder mFolder;
    std::filesystem::path mPath;
};

/// The colours of pixels and an alpha of 255.
Bytes Opaque(const Bytes& colours) {
    Bytes pixels;
    for (std::size_t i = 0; i < colours.size(); i += 3)
        pixels.insert(pixels.end(), {colours[i], colours[i + 1], colours[i + 2], 255});
    return pixels;
}

const Bytes kTwelve = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

// --- Where samples lie ---

TEST_F(SpotCommon, PlainRastersAreTheSameInBothReadings) {
    for (const auto& [lines, data] : {std::pair<std::string, Bytes>("", {1, 2, 3, 255}),
                                      {"NBANDS 3\n", kTwelve},
                                      {"NBANDS 3\nLAYOUT bip\n", kTwelve},
                                      {"NBANDS 3\nLAYOUT BSQ\nBANDGAPBYTES 0\n", kTwelve},
                                      {"NBITS 16\nBYTEORDER I\n", {1, 2, 3, 4, 5, 6, 7, 8}},
                                      {"NBITS 32\nPIXELTYPE FLOAT\nBYTEORDER I\n", Bytes(16, 63)},
                                      {"SKIPBYTES 2\nTOTALROWBYTES 3\n", {9, 9, 1, 2, 9, 3, 4, 9}}}) {
        Write(lines, data);
        const Read contract = Contract();
        const Read common = Common();
        EXPECT_TRUE(contract.read) << lines;
        EXPECT_EQ(contract.block, common.block) << lines;
        EXPECT_EQ(contract.format, common.format) << lines;
        EXPECT_EQ(contract.frameCount, common.frameCount) << lines;
        EXPECT_EQ(contract.note, "") << lines;
    }
}

TEST_F(SpotCommon, KeywordsComeInAnyCaseBehindTabsAndBlanks) {
    const Bytes colours = {1, 5, 9, 2, 6, 10, 3, 7, 11, 4, 8, 12};
    EXPECT_EQ(Pixels("nbands\t\t3\r\n  Layout   bsq\r\n# NBANDS 7\nNBANDSX 5\nnBits=8 (a comment)\n", kTwelve),
              Opaque(colours));
    EXPECT_EQ(Pixels("NBANDS 3\rLAYOUT bsq\rNBITS 8", kTwelve), Opaque(colours)) << "lines end as they do on the Mac";
}

TEST_F(SpotCommon, TheLastOfTwoLinesCounts) {
    EXPECT_EQ(Pixels("NROWS 7\nNROWS 1\nNCOLS 9\nNCOLS\nNCOLS 2\n", {1, 2}), (Bytes{1, 2}));
}

TEST_F(SpotCommon, TheLayoutOfTheHeaderWinsOverTheName) {
    const Bytes byPixel = Opaque(kTwelve);
    const Bytes byLine = Opaque({1, 3, 5, 2, 4, 6, 7, 9, 11, 8, 10, 12});
    EXPECT_EQ(Pixels("NBANDS 3\nLAYOUT bil\n", kTwelve, "q.bip"), byLine);
    EXPECT_EQ(Pixels("NBANDS 3\nLAYOUT bip\n", kTwelve, "q.bsq"), byPixel);
    EXPECT_EQ(Pixels("NBANDS 3\n", kTwelve, "q.bil"), byLine);
    EXPECT_EQ(Pixels("NBANDS 3\n", kTwelve, "q.BIP"), byPixel) << "without a layout the name tells";
    EXPECT_EQ(Pixels("NBANDS 3\n", kTwelve, "q.raw"), byLine) << "and where it does not, by line";
    EXPECT_EQ(Pixels("NBANDS 3\nLAYOUT other\n", kTwelve, "q.bip"), byLine);
}

TEST_F(SpotCommon, RowsOfBandsMayBeLongerThanTheirSamples) {
    const Bytes grey = {1, 2, 3, 4};
    EXPECT_EQ(Pixels("BANDROWBYTES 3\n", {1, 2, 0, 3, 4}), grey) << "the last row needs no filling";
    EXPECT_EQ(Pixels("TOTALROWBYTES 4\nSKIPBYTES 3\n", {7, 7, 7, 1, 2, 0, 0, 3, 4, 0, 0}), grey);
    EXPECT_EQ(Pixels("NBANDS 3\nBANDROWBYTES 3\nTOTALROWBYTES 10\n",
                     {1, 2, 0, 3, 4, 0, 5, 6, 0, 0, 7, 8, 0, 9, 10, 0, 11, 12, 0, 0}),
              Opaque({1, 3, 5, 2, 4, 6, 7, 9, 11, 8, 10, 12}));
    EXPECT_EQ(Pixels("NBANDS 3\nLAYOUT BIP\nTOTALROWBYTES 7\n", {1, 2, 3, 4, 5, 6, 0, 7, 8, 9, 10, 11, 12, 0}),
              Opaque(kTwelve));
    const Bytes sequential = Opaque({1, 5, 9, 2, 6, 10, 3, 7, 11, 4, 8, 12});
    const Bytes padded = {1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8, 0, 9, 10, 0, 11, 12, 0};
    for (const char* row :
         {"BANDROWBYTES 3\n", "TOTALROWBYTES 3\n", "TOTALROWBYTES 9\n", "BANDROWBYTES 3\nTOTALROWBYTES 9\n"})
        EXPECT_EQ(Pixels(std::string("NBANDS 3\nLAYOUT BSQ\n") + row, padded), sequential) << row;
    EXPECT_EQ(Pixels("NBANDS 3\nLAYOUT BSQ\nBANDGAPBYTES 2\n", {1, 2, 3, 4, 0, 0, 5, 6, 7, 8, 0, 0, 9, 10, 11, 12}),
              sequential);
}

TEST_F(SpotCommon, CountsThatAreTooSmallForTheSamplesDoNotCount) {
    for (const char* lines : {"BANDROWBYTES 1\n", "TOTALROWBYTES 0\n", "BANDROWBYTES -7\nTOTALROWBYTES -1\n",
                              "BANDGAPBYTES -5\nSKIPBYTES -2\n"}) {
        EXPECT_EQ(Pixels(lines, {1, 2, 3, 4}), (Bytes{1, 2, 3, 4})) << lines;
    }
}

TEST_F(SpotCommon, TheSamplesAreThoseOfTheFileThatIsNamed) {
    mFolder.Write("q.bil", Bytes{9, 9, 9, 9});
    EXPECT_EQ(Pixels("", {1, 2, 3, 4}, "q.bsq"), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Contract().block, (Bytes{9, 9, 9, 9}));
    EXPECT_EQ(Contract().note, "the samples are those of the file that ends in .bil by the host's rules");
}

TEST_F(SpotCommon, NamesMayBeInCapitals) {
    const auto path = mFolder.Write("Q.BIL", Bytes{1, 2, 3, 4});
    mFolder.Write("Q.HDR", "NROWS 2\nNCOLS 2\n");
    EXPECT_EQ(ReadIn<SpotReader>(kLegacyCommon, path).block, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(DetectFile(Wide(path), kLegacyCommon).type, Spot);
    EXPECT_EQ(DetectFile(Wide(path)).type, Other);
}

// --- What samples are ---

TEST_F(SpotCommon, SamplesOfAFewBitsFillTheRangeOfGreys) {
    const std::string three = "NCOLS 3\n";
    Write(three + "NBITS 1\n", {0xA0, 0x40});
    EXPECT_EQ(Common().format, kL8);
    EXPECT_EQ(Pixels(three + "NBITS 1\n", {0xA0, 0x40}), (Bytes{255, 0, 255, 0, 255, 0}));
    EXPECT_EQ(Pixels(three + "NBITS 2\n", {0x1B, 0xC0}), (Bytes{0, 85, 170, 255, 0, 0}));
    EXPECT_EQ(Pixels(three + "NBITS 4\n", {0x0F, 0x80, 0x17, 0x30}), (Bytes{0, 255, 136, 17, 119, 51}));
    EXPECT_EQ(Pixels("NCOLS 9\nNROWS 1\nNBITS 1\n", {0x80, 0x80}), (Bytes{255, 0, 0, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(Pixels("NCOLS 3\nNROWS 1\nNBITS 6\n", {0x07, 0xEF, 0xC0}), (Bytes{4, 251, 255})) << "across bytes";
}

TEST_F(SpotCommon, SamplesOfAFewBitsAreBytesWhereTheLengthIsThatOfBytes) {
    const std::string lines = "NCOLS 3\nBANDROWBYTES 1\nTOTALROWBYTES 1\n";
    EXPECT_EQ(Pixels(lines + "NBITS 1\n", {1, 0, 1, 0, 1, 0}), (Bytes{255, 0, 255, 0, 255, 0}));
    EXPECT_EQ(Pixels("NCOLS 4\nNBITS 4\nSKIPBYTES 1\n", {9, 0, 1, 2, 3, 4, 5, 6, 15}),
              (Bytes{0, 17, 34, 51, 68, 85, 102, 255}));
    EXPECT_EQ(Pixels("NCOLS 1\nNBITS 1\n", {0x80, 0x7F}), (Bytes{255, 0})) << "which rows of one byte are not";
    EXPECT_EQ(Pixels(lines + "NBITS 1\n", {0x80, 0x40, 0, 0, 0}), (Bytes{255, 0, 0, 0, 255, 0})) << "nor this one";
}

TEST_F(SpotCommon, SamplesOfAFewBitsHaveBandsToo) {
    const Bytes expected = Opaque({0, 85, 255, 255, 0, 85, 170, 255, 0, 0, 255, 170});
    EXPECT_EQ(Pixels("NBITS 2\nNBANDS 3\n", {0x30, 0x40, 0xD0, 0x80, 0xF0, 0x20}), expected);
    EXPECT_EQ(Pixels("NBITS 2\nNBANDS 3\nLAYOUT BIP\n", {0x1F, 0x10, 0xB0, 0xE0}), expected)
        << "rows of all bands are filled up, not pixels";
    EXPECT_EQ(Pixels("NBITS 2\nNBANDS 3\nLAYOUT BSQ\n", {0x30, 0x80, 0x40, 0xF0, 0xD0, 0x20}), expected);
}

TEST_F(SpotCommon, NumbersMayBeginWithTheirHighestByte) {
    const Bytes data = {0x01, 0x02, 0xFF, 0x00, 0x00, 0x03, 0x80, 0x00};
    const Words big = {0x0102, 0xFF00, 3, 0x8000}, little = {0x0201, 0x00FF, 0x0300, 0x0080};
    for (const char* order : {"M", "m", "MSBFIRST", "Motorola", "BIG"}) {
        Write(std::string("NBITS 16\nBYTEORDER ") + order + "\n", data);
        EXPECT_EQ(Common().format, kL16);
        EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), big) << order;
    }
    for (const char* order : {"I", "LSBFIRST", "Intel", "little"}) {
        Write(std::string("NBITS 16\nBYTEORDER ") + order + "\n", data);
        EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), little) << order;
        EXPECT_EQ(Contract().note, "") << order;
    }
    Write("NBITS 16\n", data);
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), little) << "without a word the order of this machine";
    EXPECT_EQ(NoteOf("NBITS 16\nBYTEORDER M\n", data), "numbers begin with their lowest byte by the host's rules");
    EXPECT_EQ(NoteOf("BYTEORDER M\n", {1, 2, 3, 4}), "") << "bytes have no order";
}

TEST_F(SpotCommon, NumbersWithASignAndLongOnesAreFloatsOfTheirValues) {
    EXPECT_EQ(Values("PIXELTYPE SIGNEDINT\n", {0, 1, 0x80, 0xFF}), (Floats{0, 1, -128, -1}));
    EXPECT_EQ(Values("NBITS 16\nPIXELTYPE SIGNEDINT\nBYTEORDER M\n", {0, 7, 0xFF, 0xFE, 0x80, 0, 0x7F, 0xFF}),
              (Floats{7, -2, -32768, 32767}));
    EXPECT_EQ(
        Values("NBITS 32\nPIXELTYPE signedint\n", {1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0x80, 0, 0, 1, 0}),
        (Floats{1, -2, -2147483648.0F, 65536}));
    EXPECT_EQ(Values("NBITS 32\nBYTEORDER M\n", {0xFF, 0, 0, 0, 0, 0, 0, 9, 0, 0, 1, 0, 0, 0, 0, 0}),
              (Floats{4278190080.0F, 9, 256, 0}));
    EXPECT_EQ(Values("NBITS 32\nPIXELTYPE FLOAT\nBYTEORDER M\n",
                     {0x3F, 0xC0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0, 0x42, 0xC8, 0, 0}),
              (Floats{1.5F, -2, 0, 100}));
    EXPECT_EQ(Values("NROWS 1\nNBITS 64\nPIXELTYPE FLOAT\nBYTEORDER M\n",
                     {0x3F, 0xF8, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0}),
              (Floats{1.5F, -2}));
    EXPECT_EQ(NoteOf("NBITS 16\nPIXELTYPE S\n", Bytes(8, 255)), "numbers have no sign by the host's rules");
    EXPECT_EQ(NoteOf("NBITS 32\n", Bytes(16)), "samples of this depth are not shown by the host's rules");
}

TEST_F(SpotCommon, NumbersThatAreSmallAndNotBelowZeroKeepTheirGreys) {
    const Words words = {0, 1, 0x7FFF, 300};
    Write("NBITS 16\nPIXELTYPE SIGNEDINT\n", {0, 0, 1, 0, 0xFF, 0x7F, 0x2C, 1});
    EXPECT_EQ(Common().format, kL16);
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), words);
    EXPECT_EQ(Contract().block, Common().block);
    EXPECT_EQ(Contract().note, "") << "both show the same";
    for (const char* type : {"SIGNEDINT", "UNSIGNEDINT"}) {
        Write(std::string("NBITS 32\nBYTEORDER M\nPIXELTYPE ") + type + "\n",
              {0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0x7F, 0xFF, 0, 0, 1, 0x2C});
        EXPECT_EQ(Common().format, kL16) << type;
        EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), words) << type;
    }
    Write("PIXELTYPE SIGNEDINT\n", {0, 1, 127, 5});
    EXPECT_EQ(Common().format, kL8);
    EXPECT_EQ(Common().block, (Bytes{0, 1, 127, 5}));
    EXPECT_EQ(Contract().note, "");

    Write("NROWS 1\nNBITS 16\nPIXELTYPE S\nNBANDS 3\nLAYOUT BIP\n", {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0});
    EXPECT_EQ(Common().format, kR16G16B16A16);
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), (Words{1, 2, 3, 65535, 4, 5, 6, 65535}));
}

TEST_F(SpotCommon, ANumberBelowZeroThatStandsForNoDataIsTransparentBlack) {
    Write("NBITS 16\nNODATA -9999\n", {0xF1, 0xD8, 0, 0, 7, 0, 0x10, 0x27});
    EXPECT_EQ(Common().format, kR16G16B16A16);
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()),
              (Words{0, 0, 0, 0, 0, 0, 0, 65535, 7, 7, 7, 65535, 10000, 10000, 10000, 65535}));
    EXPECT_EQ(Contract().note, "pixels without data are shown as their numbers by the host's rules");
    Write("PIXELTYPE S\nNODATA -128\n", {0x80, 0, 7, 127});
    EXPECT_EQ(Common().block, (Bytes{0, 0, 0, 0, 0, 0, 0, 255, 7, 7, 7, 255, 127, 127, 127, 255}));
    Write("NBITS 32\nPIXELTYPE S\nNROWS 1\nNODATA -1e39\n", {1, 0, 0, 0, 2, 0, 0, 0});
    EXPECT_EQ(Common().format, kL16) << "a value that no sample can have is none";
}

TEST_F(SpotCommon, WhereNothingTellsTheLengthDoes) {
    Write("", Bytes{1, 0, 2, 0, 3, 0, 4, 0});
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), (Words{1, 2, 3, 4}));
    EXPECT_EQ(Values("", {0, 0, 0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0, 0}), (Floats{1, 0, 2, 0}));
    EXPECT_EQ(Pixels("TOTALROWBYTES 4\n", {1, 2, 0, 0, 3, 4, 0, 0}), (Bytes{1, 2, 3, 4})) << "a count tells otherwise";
    EXPECT_EQ(Pixels("", {1, 2, 3, 4, 0, 0}), (Bytes{1, 2, 3, 4})) << "a rest too small for it";
    EXPECT_EQ(Values("NBITS 16\nNODATA -9999\n", {0xF1, 0xD8, 1, 0, 2, 0, 0xFF, 0xFF}), (Floats{-9999, 1, 2, -1}))
        << "a value below zero stands for no data, so numbers have a sign";
    EXPECT_EQ(Pixels("NODATA -9999\n", {1, 2, 3, 4}), (Bytes{1, 2, 3, 4})) << "which no byte can have";
}

TEST_F(SpotCommon, AFileOfFloatsIsKnownByItsName) {
    mPath = mFolder.Write("q.flt", Bytes{0, 0, 0x80, 0x3F, 0, 0x3C, 0x1C, 0xC6});
    mFolder.Write("q.hdr",
                  "ncols 2\nnrows 1\nxllcorner 7\nyllcorner 8\ncellsize 1\nNODATA_value -9999\nbyteorder LSBFIRST\n");
    const Read read = Common();
    EXPECT_EQ(read.format, kR32F);
    EXPECT_EQ(ElementsOf<float>(read), (Floats{1, -9999})) << "values are kept, whatever they stand for";
    EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type, Spot);
}

// --- What pixels are ---

TEST_F(SpotCommon, ThreeBandsAreColoursAtAnyDepth) {
    Write("NROWS 1\nNBITS 16\nNBANDS 3\nLAYOUT BIP\nBYTEORDER M\n", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 1, 6});
    const Read words = Common();
    EXPECT_EQ(words.format, kR16G16B16A16);
    EXPECT_EQ(words.frameCount, 1);
    EXPECT_EQ(ElementsOf<std::uint16_t>(words), (Words{1, 2, 3, 65535, 4, 5, 262, 65535}));
    EXPECT_EQ(Contract().frameCount, 3);
    EXPECT_EQ(NoteOf("NROWS 1\nNBITS 16\nNBANDS 3\n", Bytes(12)), "each band is a picture in grey by the host's rules");

    Write("NROWS 1\nNBITS 16\nNBANDS 3\nPIXELTYPE SIGNEDINT\n", {1, 0, 2, 0, 0xFF, 0xFF, 4, 0, 5, 0, 6, 0});
    EXPECT_EQ(Common().format, kR32G32B32A32F);
    EXPECT_EQ(ElementsOf<float>(Common()), (Floats{1, -1, 5, 1, 2, 4, 6, 1}));
}

TEST_F(SpotCommon, OfMoreThanThreeBandsTheFirstAreTheColours) {
    const Bytes expected = Opaque({1, 3, 5, 2, 4, 6});
    EXPECT_EQ(Pixels("NROWS 1\nNBANDS 4\n", {1, 2, 3, 4, 5, 6, 7, 8}), expected);
    EXPECT_EQ(Pixels("NROWS 1\nNBANDS 4\nLAYOUT BIP\n", {1, 3, 5, 7, 2, 4, 6, 8}), expected);
    EXPECT_EQ(Pixels("NROWS 1\nNBANDS 5\nLAYOUT BSQ\n", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), expected);
    Write("NROWS 1\nNBANDS 4\n", Bytes(8));
    EXPECT_EQ(DetectFile(Wide(mPath)).type, Other);
    EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type, Spot);
}

TEST_F(SpotCommon, TwoBandsAreTwoPicturesInGrey) {
    for (const auto& [layout, data] : {std::pair<const char*, Bytes>("bil", {1, 2, 5, 6, 3, 4, 7, 8}),
                                       {"bip", {1, 5, 2, 6, 3, 7, 4, 8}},
                                       {"bsq", {1, 2, 3, 4, 5, 6, 7, 8}}}) {
        Write(std::string("NBANDS 2\nLAYOUT ") + layout + "\n", data);
        EXPECT_EQ(Common().frameCount, 2);
        EXPECT_EQ(Common().format, kL8);
        EXPECT_EQ(Common(0).block, (Bytes{1, 2, 3, 4})) << layout;
        EXPECT_EQ(Common(1).block, (Bytes{5, 6, 7, 8})) << layout;
        EXPECT_EQ(Common(9).block, (Bytes{5, 6, 7, 8})) << layout;
    }
}

TEST_F(SpotCommon, BandRgbTellsWhichBandIsRed) {
    EXPECT_EQ(Pixels("NROWS 1\nNCOLS 1\nNBANDS 3\nBAND_RGB 321\n", {1, 2, 3}), Opaque({3, 2, 1}));
    EXPECT_EQ(Pixels("NROWS 1\nNCOLS 1\nNBANDS 3\nNODATA 9\nBAND_RGB 3\n", {1, 2, 3}), Opaque({3, 2, 1}));
}

// --- Palettes and values without data ---

TEST_F(SpotCommon, EveryEntryOfAPaletteCounts) {
    mFolder.Write("q.clr", "# comment\n! comment\n0 50 60 70 Water\n1 10 300 -5\n3 1 2 3\n");
    EXPECT_EQ(Pixels("", {0, 1, 2, 3}), (Bytes{50, 60, 70, 255, 10, 255, 0, 255, 0, 0, 0, 0, 1, 2, 3, 255}))
        << "a value without a colour is transparent";
    EXPECT_EQ(Contract().note, "the palette is read otherwise by the host's rules");
    EXPECT_EQ(NoteOf("", {3, 3, 3, 3}), "") << "where no value has another colour, both show the same";
    EXPECT_EQ(Pixels("NODATA 3\n", {0, 0, 3, 3}), (Bytes{50, 60, 70, 255, 50, 60, 70, 255, 1, 2, 3, 0, 1, 2, 3, 0}));
}

TEST_F(SpotCommon, PalettesColourValuesOfAnyBitsUpTo16) {
    mFolder.Write("q.clr", "0 1 2 3\n1 4 5 6\n300 7 8 9\n");
    EXPECT_EQ(Pixels("NBITS 1\n", {0x40, 0x80}), (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 4, 5, 6, 255, 1, 2, 3, 255}));
    const Bytes expected = {7, 8, 9, 255, 4, 5, 6, 255, 0, 0, 0, 0, 1, 2, 3, 255};
    EXPECT_EQ(Pixels("NBITS 16\nBYTEORDER M\n", {1, 0x2C, 0, 1, 0xFF, 0xFF, 0, 0}), expected);
    EXPECT_EQ(Pixels("NBITS 16\nPIXELTYPE SIGNEDINT\n", {0x2C, 1, 1, 0, 0xFF, 0xFF, 0, 0}), expected);
    EXPECT_EQ(Pixels("NBANDS 3\nNROWS 1\nNCOLS 1\n", {0, 1, 2}), (Bytes{0, 1, 2, 255})) << "of one band only";
    EXPECT_EQ(NoteOf("NBANDS 3\nNROWS 1\nNCOLS 1\n", {0, 1, 2}),
              "the palette beside them changes three bands by the host's rules");
}

TEST_F(SpotCommon, APaletteOfGreysMapsTheSamples) {
    std::string greys;
    for (int i = 0; i < 256; ++i)
        greys += std::to_string(i) + std::string(3, ' ') + std::to_string(255 - i) + "\t" + std::to_string(255 - i) +
                 " " + std::to_string(255 - i) + "\n";
    mFolder.Write("q.clr", greys);
    Write("", {0, 1, 2, 255});
    EXPECT_EQ(Common().format, kL8);
    EXPECT_EQ(Common().block, (Bytes{255, 254, 253, 0}));
    EXPECT_NE(Contract().note, "") << "whose entry 0 is always black";
    EXPECT_EQ(NoteOf("", {1, 1, 1, 1}), "");
}

TEST_F(SpotCommon, PixelsWithoutDataAreTransparent) {
    EXPECT_EQ(Pixels("NODATA 3\n", {1, 3, 3, 4}), (Bytes{1, 1, 1, 255, 3, 3, 3, 0, 3, 3, 3, 0, 4, 4, 4, 255}));
    EXPECT_NE(Contract().note, "");
    EXPECT_EQ(NoteOf("NODATA 3\n", {1, 2, 2, 4}), "") << "where there are none, both show the same";
    EXPECT_EQ(Pixels("NROWS 1\nNBITS 4\nNODATA_VALUE 15\n", {0xF1}), (Bytes{255, 255, 255, 0, 17, 17, 17, 255}));
    EXPECT_EQ(Pixels("NROWS 1\nNBANDS 3\nNODATA 0\nLAYOUT BIP\n", {0, 0, 0, 0, 0, 1}),
              (Bytes{0, 0, 0, 0, 0, 0, 1, 255}))
        << "all bands of a pixel have to say so";
    EXPECT_EQ(Contract().note, "pixels without data are shown as their numbers by the host's rules");
    EXPECT_EQ(Pixels("NODATA 3.5\n", {1, 3, 3, 4}), (Bytes{1, 3, 3, 4})) << "which no byte can have";
    EXPECT_EQ(Pixels("NODATA 256\n", {1, 3, 3, 4}), (Bytes{1, 3, 3, 4}));

    Write("NROWS 1\nNBITS 16\nNODATA 500\n", {0xF4, 1, 7, 0});
    EXPECT_EQ(ElementsOf<std::uint16_t>(Common()), (Words{500, 500, 500, 0, 7, 7, 7, 65535}));
    EXPECT_EQ(Contract().note, "pixels without data are shown as their numbers by the host's rules");
}

// --- Bad files ---

TEST_F(SpotCommon, ACutFileTellsItsRowsAndIsNotShown) {
    const std::pair<std::string, std::size_t> cases[] = {{"NBANDS 3\nNROWS 120\n", 37 * 6 + 5},
                                                         {"NBANDS 3\nNROWS 120\nLAYOUT BIP\n", 37 * 6 + 5},
                                                         {"NBANDS 3\nNROWS 120\nLAYOUT BSQ\n", 2 * 240 + 37 * 2 + 1},
                                                         {"NROWS 120\nTOTALROWBYTES 9\nSKIPBYTES 5\n", 5 + 36 * 9 + 2}};
    for (const auto& [lines, bytes] : cases) {
        Write(lines, Bytes(bytes, 1));
        const Read read = Common();
        EXPECT_TRUE(read.opened) << "and described";
        EXPECT_EQ(read.height, 120);
        EXPECT_FALSE(read.read);
        EXPECT_EQ(read.messages, (std::vector<std::wstring>{L"the data end after 37 of 120 rows"})) << lines;
        EXPECT_EQ(read.block, Bytes(read.block.size(), kUnwritten));
        EXPECT_EQ(DetectFile(Wide(mPath)).type, Other) << "in the contract's reading no raster";
        EXPECT_TRUE(Contract().messages.empty());
        const DetectedFile found = DetectFile(Wide(mPath), kLegacyCommon);
        EXPECT_EQ(found.type, Spot);
        EXPECT_FALSE(found.isShown);
    }
    Write("", {});
    EXPECT_EQ(Common().messages, (std::vector<std::wstring>{L"the data end after 0 of 2 rows"}));
}

TEST_F(SpotCommon, AFileOfAnotherNameIsARasterWhereItHoldsAllRows) {
    Write("", {1, 2, 3, 4}, "q.img");
    EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type, Spot);
    Write("", {1, 2, 3}, "q.img");
    EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type, Other) << "it may be anything";
    EXPECT_EQ(DetectFile(Wide(mFolder / "q.hdr"), kLegacyCommon).type, Other);
}

TEST_F(SpotCommon, ANameAndAHeaderAreKnownBetterThanWhatSamplesLookLike) {
    Bytes data(10 * 100, 0);
    data[0] = 10, data[1] = 5, data[2] = 1, data[3] = 8, data[65] = 1;
    Write("NROWS 10\nNCOLS 100\n", data);
    EXPECT_EQ(DetectFile(Wide(mPath)).type, PCX);
    EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type, Spot);
}

TEST_F(SpotCommon, WhatIsNoHeaderIsRefused) {
    for (const char* lines : {"NROWS 0\n", "NCOLS -1\n", "NBANDS 0\n", "NBANDS 65536\n", "NBITS 12\n", "NBITS 24\n",
                              "NBITS 64\n", "NBITS 0\n", "NBITS -8\n", "NROWS x\nNCOLS y\nNBITS z\nNROWS 0\n"}) {
        Write(lines, Bytes(64));
        EXPECT_FALSE(Common().opened) << lines;
        EXPECT_EQ(DetectFile(Wide(mPath), kLegacyCommon).type == Spot, false) << lines;
    }
    mFolder.Write("q.hdr", "ENVI\nsamples = 2\nlines = 2\nbands = 1\ndata type = 1\n");
    EXPECT_FALSE(Common().opened) << "headers of another kind are not read";
    mFolder.Write("q.hdr", std::string((1 << 20) + 1, '\n'));
    EXPECT_FALSE(Common().opened);
}

TEST_F(SpotCommon, HugeCountsMakeNothingHuge) {
    for (const char* lines :
         {"NCOLS 2147483647\nNROWS 2147483647\nNBANDS 65535\nNBITS 32\n", "SKIPBYTES 99999999999\n",
          "BANDROWBYTES 2147483647\nTOTALROWBYTES 2147483647\nBANDGAPBYTES 2147483647\nNBANDS 3\nLAYOUT BSQ\n"}) {
        Write(lines, Bytes(64));
        EXPECT_FALSE(Common().read) << lines;
    }
}

}  // namespace
