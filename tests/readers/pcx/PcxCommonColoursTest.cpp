// Which colours a picture gets in the common reading, beside those of the contract's.

#include "readers/pcx/PcxCommonBytes.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

constexpr unsigned kBlack = 0, kWhite = 0xFFFFFF;

/// Two pixels of one bit: clear, set.
PcxHeader TwoBits(std::initializer_list<unsigned> palette) {
    PcxHeader header = PcxFields(1, 1, 2, 1, 1);
    header.palette = {};
    SetColours(header, 0, palette);
    return header;
}

Bytes ClearAndSet(const PcxHeader& header) {
    return InCommon(PcxHead(header, {0x40})).block;
}

TEST(PcxCommonColours, ASetBitIsTheSecondColour) {
    const PcxHeader header = TwoBits({0x102030, 0xF0E0D0});
    EXPECT_EQ(ClearAndSet(header), Colours({0x102030, 0xF0E0D0}));
    const PcxShown contract = InContract(PcxHead(header, {0x40}));
    EXPECT_EQ(contract.block, Colours({0xF0E0D0, 0x102030}));
    EXPECT_EQ(contract.difference, "set bits are drawn in the first of two colours by the host's rules");
    EXPECT_EQ(InCommon(PcxHead(header, {0x40})).difference, "");
}

TEST(PcxCommonColours, TwoColoursThatSayNothingAreBlackAndWhite) {
    EXPECT_EQ(ClearAndSet(TwoBits({})), Colours({kBlack, kWhite}));
    EXPECT_EQ(ClearAndSet(TwoBits({kWhite, kWhite})), Colours({kBlack, kWhite}));
    EXPECT_EQ(ClearAndSet(TwoBits({0x000000, 0x0000AA, 0x00AA00, 0x00AAAA})), Colours({kBlack, kWhite}))
        << "the first colours of every EGA";
    EXPECT_EQ(ClearAndSet(TwoBits({0xF00000, 0x000000})), Colours({kBlack, kWhite})) << "settings of a CGA";
    for (const int version : {0, 3}) {
        PcxHeader header = TwoBits({0x102030, 0xF0E0D0});
        header.version = static_cast<std::uint8_t>(version);
        EXPECT_EQ(ClearAndSet(header), Colours({kBlack, kWhite})) << "no palette in version " << version;
    }
}

TEST(PcxCommonColours, NothingIsSaidOfBitsThatBothReadingsShowAlike) {
    PcxHeader header = TwoBits({kWhite, kBlack});
    header.version = 3;
    const PcxShown contract = InContract(PcxHead(header, {0x40}));
    EXPECT_EQ(contract.block, Colours({kBlack, kWhite}));
    EXPECT_EQ(contract.block, ClearAndSet(header));
    EXPECT_EQ(contract.difference, "");
}

/// Four pixels of two packed bits: 0 1 2 3.
Bytes FourPacked(const PcxHeader& header) {
    return InCommon(PcxHead(header, {0x1B})).block;
}

TEST(PcxCommonColours, FourPackedColoursAreThoseOfTheHeader) {
    const PcxHeader header = PcxFields(2, 1, 4, 1, 1);
    EXPECT_EQ(FourPacked(header), InHeaderColours({0, 1, 2, 3}));
    for (const int version : {0, 2, 3, 4}) {
        PcxHeader older = header;
        older.version = static_cast<std::uint8_t>(version);
        EXPECT_EQ(FourPacked(older), InHeaderColours({0, 1, 2, 3})) << version;
    }
    EXPECT_FALSE(InContract(PcxHead(header, {0x1B})).opened);
}

/// The two bytes that tell the colours of a CGA: the background times 16, and bits 6 (palette) and 5 (bright).
PcxHeader CgaSettings(unsigned background, unsigned settings) {
    PcxHeader header = PcxFields(2, 1, 4, 1, 1);
    header.palette = {};
    header.palette[0] = static_cast<unsigned char>(background << 4);
    header.palette[3] = static_cast<unsigned char>(settings);
    return header;
}

TEST(PcxCommonColours, CgaSettingsChooseABackgroundAndThreeColours) {
    EXPECT_EQ(FourPacked(CgaSettings(0, 0x60)), Colours({kBlack, 0x55FFFF, 0xFF55FF, kWhite}));
    EXPECT_EQ(FourPacked(CgaSettings(1, 0x40)), Colours({0x0000AA, 0x00AAAA, 0xAA00AA, 0xAAAAAA}));
    EXPECT_EQ(FourPacked(CgaSettings(6, 0x20)), Colours({0xAA5500, 0x55FF55, 0xFF5555, 0xFFFF55}));
    EXPECT_EQ(FourPacked(CgaSettings(15, 0x00)), Colours({kWhite, 0x00AA00, 0xAA0000, 0xAA5500}));
    EXPECT_EQ(FourPacked(CgaSettings(0, 0xE0)), Colours({kBlack, 0x55FFFF, 0xFF55FF, kWhite}))
        << "the bit of the colour burst, over whose sense descriptions differ";
}

TEST(PcxCommonColours, TheSecondColourOfACgaTellsTheOthers) {
    PcxHeader header = CgaSettings(4, 0);
    SetColours(header, 1, {0x55FFFF});
    EXPECT_EQ(FourPacked(header), Colours({0xAA0000, 0x55FFFF, 0xFF55FF, kWhite}));
    SetColours(header, 1, {0x00AA00});
    EXPECT_EQ(FourPacked(header), Colours({0xAA0000, 0x00AA00, 0xAA0000, 0xAA5500}));
    SetColours(header, 1, {0xFFFFFF});
    EXPECT_EQ(FourPacked(header), Colours({0x400000, kWhite, kBlack, kBlack})) << "white is no second colour of a CGA";
}

/// Sixteen pixels of four packed bits: all values.
PcxShown SixteenPacked(const PcxHeader& header, ELegacyReading reading = kLegacyCommon) {
    return ShowPcx(PcxHead(header, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xC1, 0xCD, 0xC1, 0xEF}), reading);
}

const Bytes& EgaPixels() {
    static const Bytes pixels =
        Colours({0x000000, 0x0000AA, 0x00AA00, 0x00AAAA, 0xAA0000, 0xAA00AA, 0xAA5500, 0xAAAAAA, 0x555555, 0x5555FF,
                 0x55FF55, 0x55FFFF, 0xFF5555, 0xFF55FF, 0xFFFF55, 0xFFFFFF});
    return pixels;
}

TEST(PcxCommonColours, VersionsWithoutAPaletteHaveTheColoursOfTheEga) {
    PcxHeader header = PcxFields(4, 1, 16, 1, 8);
    EXPECT_EQ(SixteenPacked(header).block, InHeaderColours({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(SixteenPacked(header, kLegacyContract).difference, "");
    for (const int version : {0, 3}) {
        header.version = static_cast<std::uint8_t>(version);
        EXPECT_EQ(SixteenPacked(header).block, EgaPixels()) << version;
        EXPECT_EQ(SixteenPacked(header, kLegacyContract).difference,
                  "colours are taken from another palette by the host's rules");
    }
}

TEST(PcxCommonColours, ColoursThatNoPixelHasMakeNoDifference) {
    PcxHeader header = PcxFields(4, 1, 2, 1, 1);
    header.version = 3;
    SetColours(header, 0, {0x000000, 0x123456, 0x00AA00});
    EXPECT_EQ(InContract(PcxHead(header, {0x02})).difference, "");
    EXPECT_NE(InContract(PcxHead(header, {0x12})).difference, "");
}

TEST(PcxCommonColours, PlanesOfTwoBitsWithoutAPaletteHaveTheColoursOfTheEga) {
    PcxHeader header = PcxFields(2, 2, 4, 1, 1);
    header.version = 3;
    const Bytes pixels = InCommon(PcxHead(header, {0x6C, 0xC1, 0xC6})).block;
    EXPECT_EQ(pixels, Colours({0xFF55FF, 0x00AA00, 0xAAAAAA, 0x555555})) << "13 2 7 8";
}

TEST(PcxCommonColours, SixteenColoursThatAreAllAlikeAreThoseOfTheEga) {
    PcxHeader header = PcxFields(4, 1, 16, 1, 8);
    header.palette.fill(0);
    EXPECT_EQ(SixteenPacked(header).block, EgaPixels());
    header.palette.fill(7);
    EXPECT_EQ(SixteenPacked(header).block, EgaPixels());
    header.palette[47] = 8;
    EXPECT_EQ(SixteenPacked(header).block[0], 7) << "one that differs makes a palette";
}

TEST(PcxCommonColours, GreyWithoutAPaletteIsARamp) {
    PcxHeader header = PcxFields(4, 1, 16, 1, 8);
    header.palette.fill(0);
    header.paletteInfo = 2;
    const Bytes ramp = SixteenPacked(header).block;
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(ramp[4 * i], 17 * i);
}

TEST(PcxCommonColours, AGreyPaletteOfTheHeaderIsTakenAsItIs) {
    PcxHeader header = PcxFields(4, 1, 16, 1, 8);
    for (std::size_t i = 0; i < 48; ++i)
        header.palette[i] = static_cast<unsigned char>(i / 3);
    const Bytes dark = SixteenPacked(header).block;
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(dark[4 * i + 1], i);
    EXPECT_EQ(SixteenPacked(header, kLegacyContract).difference,
              "pixels whose value has no colour of its own stay empty by the host's rules");
    header.paletteInfo = 2;
    EXPECT_EQ(SixteenPacked(header).block, dark) << "whatever the header says of greys";
}

TEST(PcxCommonColours, NoNibbleTableIsTouched) {
    SetPcxNibbles(true);
    (void)SixteenPacked(PcxFields(4, 1, 16, 1, 8));
    EXPECT_EQ(CurrentPcxNibbles()[1], 17);
    EXPECT_EQ(SixteenPacked(PcxFields(4, 1, 16, 1, 8)).block[4 * 15], 15) << "nor asked";
}

TEST(PcxCommonColours, A256ColourPaletteIsFoundByItsMarkerInEveryVersion) {
    for (const int version : {0, 2, 3, 4, 5}) {
        PcxHeader header = PcxFields(8, 1, 3, 1, 3);
        header.version = static_cast<std::uint8_t>(version);
        header.paletteInfo = 2;  // which does not make it grey
        const ByteBuilder file = PcxHead(header, {1, 100, 15}).Append(PcxTail());
        EXPECT_EQ(InCommon(file).block, InTailColours({1, 100, 15})) << version;
        if (version != 4) {
            EXPECT_EQ(InContract(file).difference.empty(), version == 5) << version;
        }
    }
}

TEST(PcxCommonColours, APaletteWithAnotherMarkerIsTakenWhenItIsBehindTheRows) {
    const ByteBuilder file = PcxHead(PcxFields(8, 1, 3, 1, 3), {1, 100, 15}).Append(PcxTail(77));
    EXPECT_EQ(InCommon(file).block, InTailColours({1, 100, 15}));
    EXPECT_EQ(InContract(file).difference, "") << "which never looks at the marker";
    const Bytes tail = PcxTail();
    const Bytes withoutMarker(tail.begin() + 1, tail.end());
    EXPECT_EQ(InCommon(PcxHead(PcxFields(8, 1, 3, 1, 3), {1, 100, 15}).Append(withoutMarker)).block,
              InTailColours({1, 100, 15}));
}

TEST(PcxCommonColours, APaletteIsFoundBeforeWhatFillsUpAFile) {
    ByteBuilder file = PcxHead(PcxFields(8, 1, 3, 1, 3), {1, 100, 15}).Append(PcxTail());
    EXPECT_EQ(InCommon(file.Fill(100, 0x1A)).block, InTailColours({1, 100, 15}));
    EXPECT_EQ(InContract(file).difference, "colours are taken from another palette by the host's rules");
}

TEST(PcxCommonColours, WithoutAPalettePixelsAreGreys) {
    const ByteBuilder file = PcxHead(PcxFields(8, 1, 3, 1, 3), {1, 100, 15});
    EXPECT_EQ(InCommon(file).block, Colours({0x010101, 0x646464, 0x0F0F0F}));
    const PcxShown contract = InContract(file);
    EXPECT_FALSE(contract.opened);
    EXPECT_EQ(contract.difference, "a picture without its 256 colours is refused by the host's rules");
}

TEST(PcxCommonColours, WithoutAPaletteValuesBelow16AreTheHeadersColours) {
    PcxHeader header = PcxFields(8, 1, 3, 1, 3);
    header.version = 2;
    const ByteBuilder dark = PcxHead(header, {1, 10, 15});
    EXPECT_EQ(InCommon(dark).block, InHeaderColours({1, 10, 15}));
    header.palette.fill(0);
    EXPECT_EQ(InCommon(PcxHead(header, {1, 10, 15})).block, Colours({0x010101, 0x0A0A0A, 0x0F0F0F}));
}

}  // namespace
