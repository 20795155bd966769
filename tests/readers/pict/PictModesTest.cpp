#include "readers/pict/PictModes.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;

constexpr PictPixel kPage = {0x33, 0xCC, 0x80, 255};
constexpr PictPixel kWhite = {255, 255, 255, 255};
constexpr PictPixel kBlack = {0, 0, 0, 255};
constexpr PictInks kInks = {.foreground = {0x10, 0x20, 0x30, 255},
                            .background = {0xF0, 0xE0, 0xD0, 255},
                            .highlight = {1, 2, 3, 255},
                            .operation = {0x8000, 0x4000, 0xFFFF}};

PictPixel Drawn(std::uint16_t mode, const PictPixel& source, PictPixel page = kPage) {
    DrawPictPixels(mode, kInks, source, page);
    return page;
}

TEST(PictModes, CopyTakesColourAndAlpha) {
    EXPECT_EQ(Drawn(0, {1, 2, 3, 4}), (PictPixel{1, 2, 3, 4}));
}

TEST(PictModes, BlackAndWhiteBecomeTheForegroundTheBackgroundOrThePage) {
    const auto& [foreground, background, highlight, operation] = kInks;
    EXPECT_EQ(Drawn(1, kBlack), foreground);
    EXPECT_EQ(Drawn(1, kWhite), kPage);
    EXPECT_EQ(Drawn(3, kBlack), background);
    EXPECT_EQ(Drawn(3, kWhite), kPage);
    EXPECT_EQ(Drawn(4, kBlack), background);
    EXPECT_EQ(Drawn(4, kWhite), foreground);
    EXPECT_EQ(Drawn(5, kBlack), kPage);
    EXPECT_EQ(Drawn(5, kWhite), foreground);
    EXPECT_EQ(Drawn(7, kBlack), kPage);
    EXPECT_EQ(Drawn(7, kWhite), background);
}

TEST(PictModes, XorInvertsThePageUnderBlackOrUnderWhite) {
    EXPECT_EQ(Drawn(2, kBlack), (PictPixel{0xCC, 0x33, 0x7F, 255}));
    EXPECT_EQ(Drawn(2, kWhite), kPage);
    EXPECT_EQ(Drawn(6, kBlack), kPage);
    EXPECT_EQ(Drawn(6, kWhite), (PictPixel{0xCC, 0x33, 0x7F, 255}));
}

TEST(PictModes, ColoursBetweenAreWeighedBitByBit) {
    // Source 0xF0: its high half is white's, its low half black's.
    const PictPixel half = {0xF0, 0xF0, 0xF0, 255};
    EXPECT_EQ(Drawn(1, half), (PictPixel{0x30, 0xC0, 0x80, 255}));
    EXPECT_EQ(Drawn(4, half), (PictPixel{0x10, 0x20, 0x30, 255}));
    EXPECT_EQ(Drawn(2, half), (PictPixel{0x3C, 0xC3, 0x8F, 255}));
}

TEST(PictModes, ArithmeticIsOfSixteenBits) {
    const PictPixel source = {0x40, 0xA0, 0xFF, 255};
    EXPECT_EQ(Drawn(33, source), (PictPixel{0x73, 0x40, 0xFF, 255})) << "no more than the operation colour";
    EXPECT_EQ(Drawn(34, source), (PictPixel{0x73, 0x6D, 0x80, 255})) << "0xCCCC + 0xA0A0 and 0x8080 + 0xFFFF";
    EXPECT_EQ(Drawn(35, source), (PictPixel{0x80, 0x40, 0xFF, 255})) << "no less than the operation colour";
    EXPECT_EQ(Drawn(37, source), (PictPixel{0x40, 0xCC, 0xFF, 255}));
    EXPECT_EQ(Drawn(38, source), (PictPixel{0xF2, 0x2C, 0x80, 255})) << "0x3333 - 0x4040 and 0x8080 - 0xFFFF";
    EXPECT_EQ(Drawn(39, source), (PictPixel{0x33, 0xA0, 0x80, 255}));
}

TEST(PictModes, ABlendWeighsByTheOperationColour) {
    // Half of 255 with half of 0; a quarter of 0 with three of 255; all of 9.
    EXPECT_EQ(Drawn(32, {255, 0, 9, 255}, {0, 255, 77, 255}), (PictPixel{128, 191, 9, 255}));
}

TEST(PictModes, TheBackgroundColourIsTransparent) {
    EXPECT_EQ(Drawn(36, kInks.background), kPage);
    EXPECT_EQ(Drawn(36, {0xF0, 0xE0, 0xD1, 255}), (PictPixel{0xF0, 0xE0, 0xD1, 255}));
}

TEST(PictModes, HighlightingSwapsTheBackgroundAndTheHighlight) {
    EXPECT_EQ(Drawn(50, kBlack, kInks.background), kInks.highlight);
    EXPECT_EQ(Drawn(50, kBlack, kInks.highlight), kInks.background);
    EXPECT_EQ(Drawn(50, kBlack), kPage);
    EXPECT_EQ(Drawn(50, kInks.background, kInks.highlight), kInks.highlight);
}

TEST(PictModes, DitheringAndPatternsAreReadAsTheModeBehindThem) {
    EXPECT_EQ(ToPictMode(64), 0);
    EXPECT_EQ(ToPictMode(65), 1);
    EXPECT_EQ(ToPictMode(100), 36);
    EXPECT_EQ(ToPictMode(10), 2);
    EXPECT_EQ(ToPictMode(49), 0);
    EXPECT_EQ(ToPictMode(0xFFFF), 0);
    EXPECT_EQ(ToPictMode(39), 39);
}

}  // namespace
