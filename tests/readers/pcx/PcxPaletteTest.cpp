#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

Kavra::Common::Result<PcxPalette> PaletteOf(const ByteBuilder& file, const PcxHeader& header) {
    ByteSource source = file.Source();
    return PcxPalette::Read(source, header);
}

Kavra::Common::Result<PcxPalette> PaletteOf(const PcxHeader& header) {
    return PaletteOf(PcxHead(header), header);
}

/// The pixel that an index becomes on a ground of 0xCD.
Bytes PixelOf(const PcxPalette& palette, int index) {
    Bytes pixel(4, 0xCD);
    palette.Colour(Bytes{static_cast<unsigned char>(index)}, pixel);
    return pixel;
}

/// A palette of one bit with these two colours.
PcxPalette TwoColours(const Bytes& colours) {
    PcxHeader header = PcxFields(1, 1, 8, 1, 2);
    std::ranges::copy(colours, header.palette.begin());
    return *PaletteOf(header);
}

const Bytes kUnwrittenPixel(4, 0xCD);

TEST(PcxPalette, EightBitsOfVersion5HaveTheLast256ColoursWhateverTheMarker) {
    for (const int marker : {12, 0, 10, 255}) {
        const PcxHeader header = PcxFields(8, 1, 1, 1, 1);
        const auto palette =
            PaletteOf(PcxHead(header, Bytes(50, 3)).Append(PcxTail(static_cast<unsigned char>(marker))), header);
        ASSERT_TRUE(palette);
        for (int i = 0; i < 256; ++i)
            EXPECT_EQ(PixelOf(*palette, i), InTailColours({i}));
    }
}

TEST(PcxPalette, The256ColoursMayOverlapTheHeader) {
    const PcxHeader header = PcxFields(8, 1, 1, 1, 1);
    ByteBuilder file = PcxHead(header);
    file.Fill(769 - 128, 0x33);
    const auto palette = PaletteOf(file, header);
    ASSERT_TRUE(palette);
    EXPECT_EQ(PixelOf(*palette, 0), (Bytes{5, 1, 8, 255})) << "version, encoding and bits: the bytes from 1 on";
    EXPECT_EQ(PixelOf(*palette, 255), (Bytes{0x33, 0x33, 0x33, 255}));
}

TEST(PcxPalette, WithoutRoomForMarkerAnd256ColoursThereIsNone) {
    const PcxHeader header = PcxFields(8, 1, 1, 1, 1);
    EXPECT_FALSE(PaletteOf(PcxHead(header).CutTo(768), header));
    EXPECT_TRUE(PaletteOf(PcxHead(header).CutTo(769), header));
}

TEST(PcxPalette, PlanesOfEightBitsInAllHaveThemToo) {
    const PcxHeader header = PcxFields(1, 8, 8, 1, 2);
    const auto palette = PaletteOf(PcxHead(header).Append(PcxTail()), header);
    ASSERT_TRUE(palette);
    EXPECT_EQ(PixelOf(*palette, 200), InTailColours({200}));
}

TEST(PcxPalette, EightBitsOfOlderVersionsHaveTheHeadersSixteenAndNoMore) {
    for (const int version : {0, 2, 3}) {
        PcxHeader header = PcxFields(8, 1, 1, 1, 1);
        header.version = static_cast<std::uint8_t>(version);
        const auto palette = PaletteOf(PcxHead(header).Append(PcxTail()), header);
        ASSERT_TRUE(palette);
        EXPECT_EQ(PixelOf(*palette, 0), InHeaderColours({0}));
        EXPECT_EQ(PixelOf(*palette, 15), InHeaderColours({15}));
        EXPECT_EQ(PixelOf(*palette, 16), kUnwrittenPixel);
        EXPECT_EQ(PixelOf(*palette, 255), kUnwrittenPixel);
    }
}

TEST(PcxPalette, FourBitsHaveTheHeadersSixteen) {
    const auto palette = PaletteOf(PcxFields(4, 1, 1, 1, 1));
    ASSERT_TRUE(palette);
    EXPECT_EQ(PixelOf(*palette, 15), InHeaderColours({15}));
    EXPECT_EQ(PixelOf(*palette, 17), kUnwrittenPixel);
}

TEST(PcxPalette, OneBitHasTheHeadersFirstTwo) {
    const auto palette = PaletteOf(PcxFields(1, 1, 1, 1, 1));
    ASSERT_TRUE(palette);
    EXPECT_EQ(PixelOf(*palette, 0), InHeaderColours({0}));
    EXPECT_EQ(PixelOf(*palette, 1), InHeaderColours({1}));
    EXPECT_EQ(PixelOf(*palette, 2), kUnwrittenPixel);
}

TEST(PcxPalette, TwoBlacksBecomeBlackAndWhite) {
    const PcxPalette palette = TwoColours(Bytes(6, 0));
    EXPECT_EQ(PixelOf(palette, 0), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(PixelOf(palette, 1), (Bytes{255, 255, 255, 255}));
}

TEST(PcxPalette, OfTwoEqualColoursTheSecondIsOneLessInEachComponent) {
    const PcxPalette palette = TwoColours({0, 9, 255, 0, 9, 255});
    EXPECT_EQ(PixelOf(palette, 0), (Bytes{0, 9, 255, 255}));
    EXPECT_EQ(PixelOf(palette, 1), (Bytes{255, 8, 254, 255}));
}

TEST(PcxPalette, ColoursThatDifferInOneComponentAreKept) {
    for (std::size_t component = 0; component < 3; ++component) {
        Bytes colours = {1, 2, 3, 1, 2, 3};
        colours[3 + component] = 77;
        Bytes second(colours.begin() + 3, colours.end());
        second.push_back(255);
        EXPECT_EQ(PixelOf(TwoColours(colours), 1), second);
    }
}

TEST(PcxPalette, OnlyOneBitFilesAreRepaired) {
    PcxHeader header = PcxFields(4, 1, 1, 1, 1);
    header.palette = {};
    EXPECT_EQ(PixelOf(*PaletteOf(header), 1), (Bytes{0, 0, 0, 255}));
}

TEST(PcxPalette, AGreyRampHasEveryIndexAsItsOwnGrey) {
    PcxHeader header = PcxFields(4, 1, 1, 1, 1);
    for (std::size_t i = 0; i < 48; ++i)
        header.palette[i] = static_cast<unsigned char>(i / 3);
    EXPECT_TRUE(PaletteOf(header)->IsGreyRamp());
    for (std::size_t i = 0; i < 48; ++i) {
        PcxHeader other = header;
        ++other.palette[i];
        EXPECT_FALSE(PaletteOf(other)->IsGreyRamp()) << i;
    }
}

TEST(PcxPalette, ColoursAWholeRowAndSkipsWhatHasNoColour) {
    const auto palette = PaletteOf(PcxFields(4, 1, 1, 1, 1));
    Bytes pixels(16, 0xCD);
    palette->Colour(Bytes{3, 16, 255, 0}, pixels);
    Bytes expected = InHeaderColours({3, 0, 0, 0});
    std::fill_n(expected.begin() + 4, 8, 0xCD);
    EXPECT_EQ(pixels, expected);
}

}  // namespace
