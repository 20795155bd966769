#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/spot/RasterFiles.h"
#include "readers/spot/SpotReader.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

/// 2 x 2 pixels of one band unless the lines say otherwise.
std::string Header(const std::string& lines) {
    return "NCOLS 2\nNROWS 2\n" + lines;
}

/// What `DecodeRaster` makes of the files, which must be accepted.
Bytes Pixels(const RasterFiles& files, int frame = 0) {
    const Decoded decoded = DecodeRaster(files, frame);
    EXPECT_TRUE(decoded.opened);
    EXPECT_TRUE(decoded.read);
    EXPECT_TRUE(decoded.messages.empty());
    return decoded.block;
}

TEST(SpotReader, OneBandOfBytesIsGreyAsItStands) {
    const Decoded decoded = DecodeRaster({Header(""), {1, 2, 3, 255}});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.width, 2);
    EXPECT_EQ(decoded.height, 2);
    EXPECT_EQ(decoded.rowPitch, 2);
    EXPECT_EQ(decoded.format, kL8);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.orientation, kTopLeft);
    EXPECT_EQ(decoded.block, (Bytes{1, 2, 3, 255}));
}

TEST(SpotReader, TheFactoryMakesIt) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(Spot));
    EXPECT_NE(dynamic_cast<SpotReader*>(reader.get()), nullptr);
}

TEST(SpotReader, SamplesBeginBehindTheSkipAndTheRecordSkip) {
    EXPECT_EQ(Pixels({Header("SKIPBYTES 1\nRECORDSKIPBYTES 2\n"), {90, 91, 92, 1, 2, 93, 94, 3, 4}}),
              (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Pixels({Header("SKIPBYTES 1\nTOTALROWBYTES 3\n"), {90, 1, 2, 91, 3, 4, 92}}), (Bytes{1, 2, 3, 4}))
        << "what a row has beyond the samples is left out";
}

TEST(SpotReader, TheLayoutOfOneBandOfBytesDoesNotMatter) {
    for (const char* layout : {"bil", "BIP", "Bsq", "tiled"}) {
        EXPECT_EQ(Pixels({Header(std::string("LAYOUT ") + layout + "\n"), {1, 2, 3, 4}}), (Bytes{1, 2, 3, 4}))
            << layout;
    }
}

TEST(SpotReader, SamplesThatARowDoesNotHoldAreZero) {
    EXPECT_EQ(Pixels({Header("TOTALROWBYTES 1\n"), {1, 2, 3, 4}}), (Bytes{1, 0, 2, 0}));
    EXPECT_EQ(Pixels({Header("TOTALROWBYTES 0\n"), {1, 2, 3, 4}}), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(Pixels({Header("RECORDSKIPBYTES 2\nTOTALROWBYTES 3\n"), {9, 9, 1, 9, 9, 2}}), (Bytes{1, 0, 2, 0}));
    EXPECT_EQ(Pixels({Header("RECORDSKIPBYTES 2000000000\nTOTALROWBYTES 2\n"), {1, 2, 3, 4}}), (Bytes{0, 0, 0, 0}));
}

TEST(SpotReader, APaletteWithColoursMakesPixelsOfThem) {
    const Decoded decoded =
        DecodeRaster({Header(""), {0, 1, 2, 255}, "", "0 50 60 70\n1 10 20 30\n2 5 5 5\n255 300 -1 9\n"});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.rowPitch, 8);
    EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{0, 0, 0, 255})) << "entry 0 is never taken";
    EXPECT_EQ(PixelAt(decoded, 1, 0), (Bytes{10, 20, 30, 255}));
    EXPECT_EQ(PixelAt(decoded, 0, 1), (Bytes{5, 5, 5, 255}));
    EXPECT_EQ(PixelAt(decoded, 1, 1), (Bytes{44, 255, 9, 255}));
}

TEST(SpotReader, EntriesThatThePaletteDoesNotGiveAreGrey) {
    const Decoded decoded = DecodeRaster({Header(""), {7, 9, 8, 7}, "", "9 1 2 3\n"});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{7, 7, 7, 255}));
    EXPECT_EQ(PixelAt(decoded, 1, 0), (Bytes{1, 2, 3, 255}));
}

TEST(SpotReader, APaletteOfGreysMapsTheSamplesOfOneBand) {
    const Decoded decoded = DecodeRaster({Header(""), {0, 1, 2, 200}, "", "0 9 9 9\n1 250 250 250\n200 3 3 3\n"});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.format, kL8);
    EXPECT_EQ(decoded.block, (Bytes{0, 250, 2, 3}));
}

TEST(SpotReader, APalFileHidesAClrFileEvenWhenItHoldsNoPalette) {
    EXPECT_EQ(Pixels({Header(""), {1, 1, 1, 1}, "1 7 7 7\n", "1 8 8 8\n"}), (Bytes{7, 7, 7, 7}));
    EXPECT_EQ(Pixels({Header(""), {1, 1, 1, 1}, "nothing\n", "1 8 8 8\n"}), (Bytes{1, 1, 1, 1}));
}

// Three bands of 2 x 2 pixels: red 1 2 3 4, green 11 12 13 14, blue 21 22 23 24.

const Bytes kByLine = {1, 2, 11, 12, 21, 22, 3, 4, 13, 14, 23, 24};
const Bytes kByPixel = {1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24};
const Bytes kSequential = {1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24};
const Bytes kColours = {1, 11, 21, 255, 2, 12, 22, 255, 3, 13, 23, 255, 4, 14, 24, 255};
const Bytes kBlueFirst = {21, 11, 1, 255, 22, 12, 2, 255, 23, 13, 3, 255, 24, 14, 4, 255};

TEST(SpotReader, ThreeBandsOfBytesAreColours) {
    const Decoded decoded = DecodeRaster({Header("NBANDS 3\n"), kByLine});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.rowPitch, 8);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.block, kColours);
}

TEST(SpotReader, ColoursComeFromEachLayoutInAnyCase) {
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT BIL\n"), kByLine}), kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bip\n"), kByPixel}), kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT BIP\n"), kByPixel}), kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bsq\n"), kSequential}), kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT BSQ\n"), kSequential}), kColours);
}

TEST(SpotReader, TheFirstBandMayBeBlue) {
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBAND_RGB 321\n"), kByLine}), kBlueFirst);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBAND_RGB 3\nLAYOUT bip\n"), kByPixel}), kBlueFirst);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBAND_RGB 321\nLAYOUT bsq\n"), kSequential}), kBlueFirst);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBAND_RGB 1\n"), kByLine}), kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBAND_RGB 123\nLAYOUT bip\n"), kByPixel}), kColours);
}

TEST(SpotReader, AnyPaletteMapsEachColourOfThreeBands) {
    // Even one with colours; and the colours change places before they are mapped.
    const std::string palette = "1 101 0 0\n11 0 111 0\n21 0 0 121\n4 0 0 99\n24 88 0 0\n";
    for (const auto& [layout, data] : {std::pair{"bil", kByLine}, {"bip", kByPixel}, {"bsq", kSequential}}) {
        const std::string lines = std::string("NBANDS 3\nLAYOUT ") + layout + "\n";
        EXPECT_EQ(Pixels({Header(lines), data, "", palette}),
                  (Bytes{101, 111, 121, 255, 2, 12, 22, 255, 3, 13, 23, 255, 0, 14, 0, 255}))
            << layout;
        EXPECT_EQ(Pixels({Header(lines + "BAND_RGB 321\n"), data, "", palette}),
                  (Bytes{0, 111, 0, 255, 22, 12, 2, 255, 23, 13, 3, 255, 88, 14, 99, 255}))
            << layout;
    }
}

TEST(SpotReader, ColourLinesHaveTheirOwnRecordSkip) {
    EXPECT_EQ(Pixels({Header("NBANDS 3\nRECORDSKIPBYTES 1\nSKIPBYTES 2\n"),
                      {0, 0, 90, 1, 2, 91, 11, 12, 92, 21, 22, 93, 3, 4, 94, 13, 14, 95, 23, 24}}),
              kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nBANDROWBYTES 3\nTOTALROWBYTES 10\n"),
                      {1, 2, 90, 11, 12, 91, 21, 22, 92, 93, 3, 4, 90, 13, 14, 91, 23, 24, 92, 93}}),
              kColours);
}

TEST(SpotReader, ColourPixelsHaveNoRecordSkip) {
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bip\nRECORDSKIPBYTES 1\nSKIPBYTES 1\n"),
                      {90, 1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24}}),
              kColours);
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bip\nTOTALROWBYTES 5\n"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}),
              (Bytes{1, 2, 3, 255, 4, 5, 0, 255, 6, 7, 8, 255, 9, 10, 0, 255}));
}

TEST(SpotReader, BandsInSequenceAreAGapAndARecordSkipApart) {
    // Each row of a band: a record skip of 1, then 2 samples. Bands: 6 bytes and a gap of 2.
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bsq\nRECORDSKIPBYTES 1\nBANDGAPBYTES 2\nSKIPBYTES 1\n"),
                      {99, 90, 1, 2, 91, 3, 4, 98, 98, 92, 11, 12, 93, 13, 14, 97, 97, 94, 21, 22, 95, 23, 24}}),
              kColours);
}

TEST(SpotReader, AGapMayLeaveTheLastBandBeyondTheFileAndZero) {
    // The file must hold 12 bytes; with the gap of 5 the bands begin at 0, 9 and 18.
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bsq\nBANDGAPBYTES 5\n"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}),
              (Bytes{1, 10, 0, 255, 2, 11, 0, 255, 3, 12, 0, 255, 4, 11, 0, 255}))
        << "a sample that is not there is that of the row before, or zero";
}

TEST(SpotReader, TheLastRowsOfTheLastBandMayBeMissing) {
    // With the gap of 1 the bands begin at 0, 7 and 14: the third row of the last one would begin at the end.
    Bytes data;
    for (unsigned char i = 1; i <= 18; ++i)
        data.push_back(i);
    EXPECT_EQ(Pixels({"NCOLS 2\nNROWS 3\nNBANDS 3\nLAYOUT bsq\nBANDGAPBYTES 1\n", data}),
              (Bytes{1, 8, 15, 255, 2, 9, 16, 255, 3, 10, 17, 255, 4, 11, 18, 255, 5, 12, 17, 255, 6, 13, 18, 255}));
}

TEST(SpotReader, LinesLongerThanTheirSlotGoOnInTheNext) {
    // Rows of 1 byte for each band, one behind the other: 1 2 are the rows of the first band, 11 12 of the second ...
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bsq\nBANDROWBYTES 1\n"), {1, 2, 11, 12, 21, 22}}),
              (Bytes{1, 11, 21, 255, 11, 21, 0, 255, 2, 12, 22, 255, 12, 22, 0, 255}));
    EXPECT_EQ(Pixels({Header("NBANDS 3\nLAYOUT bsq\nBANDROWBYTES 0\nTOTALROWBYTES 6\n"), kSequential}),
              (Bytes{0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}));
}

TEST(SpotReader, AnUnknownLayoutOfThreeBandsIsNotRead) {
    const Decoded decoded = DecodeRaster({Header("NBANDS 3\nLAYOUT tiled\n"), kByLine});
    EXPECT_TRUE(decoded.opened);
    EXPECT_FALSE(decoded.read);
    EXPECT_EQ(decoded.block, Bytes(16, kUnwritten));
}

TEST(SpotReader, SixteenBitsAreKeptAsTheyAreWithSignOrWithout) {
    const Bytes samples = {0x34, 0x12, 0xFE, 0xFF, 0, 0x80, 5, 6};
    for (const char* type : {"", "PIXELTYPE SIGNEDINT\n", "PIXELTYPE UNSIGNEDINT\n", "PIXELTYPE FLOAT\n"}) {
        const Decoded decoded = DecodeRaster({Header(std::string("NBITS 16\n") + type), samples});
        ASSERT_TRUE(decoded.read) << type;
        EXPECT_EQ(decoded.format, kL16);
        EXPECT_EQ(decoded.rowPitch, 4);
        EXPECT_EQ(decoded.block, samples);
    }
}

TEST(SpotReader, FloatsOf32BitsAreKeptAsTheyAre) {
    const Bytes samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const Decoded decoded = DecodeRaster({Header("NBITS 32\nPIXELTYPE float\n"), samples});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.format, kR32F);
    EXPECT_EQ(decoded.rowPitch, 8);
    EXPECT_EQ(decoded.block, samples);
}

TEST(SpotReader, BigEndianOfOtherNamesIsReadAsItStands) {
    EXPECT_EQ(Pixels({Header("NBITS 16\nBYTEORDER M\n"), {1, 2, 3, 4, 5, 6, 7, 8}}), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_FALSE(DecodeRaster({Header("BYTEORDER motorola\n"), {1, 2, 3, 4}}).opened);
}

// Three bands of one column and two rows of 16 bits: 1 2 / 3 4, 11 12 / 13 14, 21 22 / 23 24.

const Bytes kWordsByLine = {1, 2, 11, 12, 21, 22, 3, 4, 13, 14, 23, 24};
const Bytes kWordsInSequence = {1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24};

std::string DeepHeader(const std::string& lines) {
    return "NCOLS 1\nNROWS 2\nNBANDS 3\nNBITS 16\n" + lines;
}

TEST(SpotReader, EachBandOfADeepRasterIsAFrame) {
    const Decoded decoded = DecodeRaster({DeepHeader(""), kWordsByLine});
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.format, kL16);
    EXPECT_EQ(decoded.frameCount, 3);
    EXPECT_EQ(decoded.block, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Pixels({DeepHeader(""), kWordsByLine}, 1), (Bytes{11, 12, 13, 14}));
    EXPECT_EQ(Pixels({DeepHeader(""), kWordsByLine}, 2), (Bytes{21, 22, 23, 24}));
}

TEST(SpotReader, FramesOutsideTheRasterAreTheFirstAndTheLast) {
    EXPECT_EQ(Pixels({DeepHeader(""), kWordsByLine}, 5), (Bytes{21, 22, 23, 24}));
    EXPECT_EQ(Pixels({DeepHeader(""), kWordsByLine}, -1), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Pixels({Header("NBANDS 3\n"), kByLine}, 2), kColours) << "colours are one frame";
}

TEST(SpotReader, DeepBandsComeFromEachLayout) {
    EXPECT_EQ(Pixels({DeepHeader("LAYOUT bip\n"), kWordsByLine}, 1), (Bytes{11, 12, 13, 14}))
        << "with one column the two are alike";
    EXPECT_EQ(Pixels({DeepHeader("LAYOUT BSQ\n"), kWordsInSequence}, 1), (Bytes{11, 12, 13, 14}));
    EXPECT_EQ(Pixels({Header("LAYOUT bip\nNBANDS 3\nNBITS 16\n"),
                      {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24}},
                     2),
              (Bytes{5, 6, 11, 12, 17, 18, 23, 24}));
    EXPECT_EQ(Pixels({Header("LAYOUT bip\nNBITS 16\n"), {1, 2, 3, 4, 5, 6, 7, 8}}), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(SpotReader, DeepBandsOf32BitsToo) {
    Bytes data;
    for (unsigned char i = 1; i <= 24; ++i)
        data.push_back(i);
    const std::string header = "NCOLS 1\nNROWS 2\nNBANDS 3\nNBITS 32\nPIXELTYPE F\n";
    EXPECT_EQ(Pixels({header + "LAYOUT bip\n", data}, 1), (Bytes{5, 6, 7, 8, 17, 18, 19, 20}));
    EXPECT_EQ(Pixels({header + "LAYOUT bil\n", data}, 2), (Bytes{9, 10, 11, 12, 21, 22, 23, 24}));
    EXPECT_EQ(Pixels({header + "LAYOUT bsq\n", data}, 2), (Bytes{17, 18, 19, 20, 21, 22, 23, 24}));
    EXPECT_EQ(DecodeRaster({header, data}).frameCount, 3);
}

TEST(SpotReader, OnlyInterleavingByLineHasARecordSkipForDeepBands) {
    EXPECT_EQ(Pixels({DeepHeader("RECORDSKIPBYTES 1\n"),
                      {90, 1, 2, 91, 11, 12, 92, 21, 22, 93, 3, 4, 94, 13, 14, 95, 23, 24}},
                     1),
              (Bytes{11, 12, 13, 14}));
    EXPECT_EQ(Pixels({DeepHeader("RECORDSKIPBYTES 1\nLAYOUT bip\n"), kWordsByLine}, 1), (Bytes{11, 12, 13, 14}));
    // The skip still counts in the length of a row: bands of 2 x 3 bytes.
    EXPECT_EQ(Pixels({DeepHeader("RECORDSKIPBYTES 1\nLAYOUT bsq\n"),
                      {1, 2, 90, 3, 4, 91, 11, 12, 92, 13, 14, 93, 21, 22, 94, 23, 24, 95}},
                     1),
              (Bytes{11, 12, 13, 14}));
}

TEST(SpotReader, ADeepSampleThatIsOnlyInPartThereHasZeroForTheRest) {
    EXPECT_EQ(Pixels({Header("NBITS 16\nTOTALROWBYTES 3\n"), {1, 2, 3, 4, 5, 6}}), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
    EXPECT_EQ(Pixels({Header("NBITS 16\nLAYOUT bip\nTOTALROWBYTES 3\n"), {1, 2, 3, 4, 5, 6}}),
              (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(SpotReader, ADeepBandBeyondTheFileKeepsTheRowBefore) {
    // 12 bytes are needed; with the gap the second band begins at 9 and has its last byte missing.
    EXPECT_EQ(Pixels({DeepHeader("LAYOUT bsq\nBANDGAPBYTES 5\n"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}, 1),
              (Bytes{10, 11, 12, 11}));
    EXPECT_EQ(Pixels({DeepHeader("LAYOUT bsq\nBANDGAPBYTES 5\n"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}, 2),
              (Bytes{0, 0, 0, 0}));
}

TEST(SpotReader, DepthsWithoutAFormatAreNotOpened) {
    const Bytes data(64, 1);
    for (const char* lines :
         {"NBITS 1\n", "NBITS 4\n", "NBITS 7\n", "NBITS 17\n", "NBITS 24\n", "NBITS 31\n", "NBITS 32\n",
          "NBITS 32\nPIXELTYPE SIGNED\n", "NBITS 24\nNBANDS 3\n", "NBITS 64\nNBANDS 3\nTOTALROWBYTES 1\n"}) {
        EXPECT_FALSE(DecodeRaster({Header(lines), data}).opened) << lines;
    }
}

TEST(SpotReader, NineToFifteenBitsAreDescribedButNotRead) {
    for (const int bits : {9, 12, 15}) {
        const Decoded decoded = DecodeRaster({Header("NBANDS 3\nNBITS " + std::to_string(bits) + "\n"), Bytes(64, 1)});
        EXPECT_TRUE(decoded.opened);
        EXPECT_EQ(decoded.format, kL16);
        EXPECT_EQ(decoded.frameCount, 3);
        EXPECT_FALSE(decoded.read);
        EXPECT_EQ(decoded.block, Bytes(8, kUnwritten));
    }
}

TEST(SpotReader, AnUnknownLayoutOfDeepSamplesIsNotRead) {
    const Decoded decoded = DecodeRaster({Header("NBITS 16\nLAYOUT tiled\n"), Bytes(8, 1)});
    EXPECT_TRUE(decoded.opened);
    EXPECT_FALSE(decoded.read);
}

TEST(SpotReader, AnyFileBesideTheRasterLeadsToIt) {
    const TemporaryFolder folder;
    WriteRaster(folder, {Header(""), {1, 2, 3, 4}});
    for (const char* name : {"q.bil", "q.xyz", "q.hdr", "q."})
        EXPECT_EQ(DecodeFile<SpotReader>(folder / name).block, (Bytes{1, 2, 3, 4})) << name;
    EXPECT_FALSE(DecodeFile<SpotReader>(folder / "q").opened);
    EXPECT_FALSE(DecodeFile<SpotReader>(folder / "p.bil").opened);
}

TEST(SpotReader, WithoutItsDataOrItsHeaderThereIsNoRaster) {
    const TemporaryFolder folder;
    WriteRaster(folder, {Header(""), {1, 2, 3, 4}});
    std::filesystem::rename(folder / "q.hdr", folder / "r.hdr");
    EXPECT_FALSE(DecodeFile<SpotReader>(folder / "q.bil").opened);
    EXPECT_FALSE(DecodeFile<SpotReader>(folder / "r.hdr").opened);
}

// Large enough for several cores, each of which converts rows of its own.
TEST(SpotReader, ALargeRasterConvertedInParallelIsRightInEveryPixel) {
    constexpr std::size_t kWidth = 1500, kHeight = 1200;
    const auto sample = [](std::size_t x, std::size_t y, std::size_t band) {
        return static_cast<unsigned char>(x * 7 + y * 13 + band * 101);
    };
    RasterFiles files{"NCOLS 1500\nNROWS 1200\nNBANDS 3\nLAYOUT bil\n", {}};
    for (std::size_t y = 0; y < kHeight; ++y) {
        for (std::size_t band = 0; band < 3; ++band) {
            for (std::size_t x = 0; x < kWidth; ++x)
                files.data.push_back(sample(x, y, band));
        }
    }
    const Bytes pixels = Pixels(files);
    ASSERT_EQ(pixels.size(), kWidth * kHeight * 4);
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < kWidth * kHeight; ++i) {
        for (std::size_t band = 0; band < 3; ++band)
            wrong += pixels[4 * i + band] != sample(i % kWidth, i / kWidth, band);
        wrong += pixels[4 * i + 3] != 255;
    }
    EXPECT_EQ(wrong, 0U);
}

TEST(SpotReader, AReaderThatDoesNotOpenIsClosed) {
    const TemporaryFolder folder;
    WriteRaster(folder, {Header(""), {1, 2, 3, 4}});
    SpotReader reader;
    unsigned char pixels[4] = {};
    EXPECT_FALSE(reader.ReadImage(pixels, 0));
    ASSERT_TRUE(reader.Open(Wide(folder / "q.bil")));
    EXPECT_TRUE(reader.ReadImage(pixels, 0));
    EXPECT_FALSE(reader.Open(Wide(folder / "p.bil")));
    EXPECT_EQ(reader.GetWidth(), 0);
    EXPECT_FALSE(reader.ReadImage(pixels, 0));
}

TEST(SpotReader, AFrameMayBeReadMoreThanOnce) {
    const TemporaryFolder folder;
    WriteRaster(folder, {DeepHeader(""), kWordsByLine});
    SpotReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder / "q.bil")));
    for (const unsigned char frame : {2, 0, 1, 1}) {
        Bytes pixels(4);
        EXPECT_TRUE(reader.ReadImage(pixels.data(), frame));
        const auto first = static_cast<unsigned char>(10 * frame + 1);
        EXPECT_EQ(pixels[0], first);
        EXPECT_EQ(pixels[3], first + 3);
    }
}

TEST(SpotReader, RowsWiderThanAnIntCanCountAreDescribedButNotRead) {
    const TemporaryFolder folder;
    WriteRaster(folder, {"NCOLS 2147483647\nNROWS 1\nNBANDS 3\nTOTALROWBYTES 0\n", {1}});
    SpotReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder / "q.bil")));
    EXPECT_EQ(reader.GetWidth(), 2147483647);
    EXPECT_EQ(reader.GetRowPitch(), 2147483647);
    unsigned char pixel[4] = {};
    EXPECT_FALSE(reader.ReadImage(pixel, 0));
}

}  // namespace
