#include "readers/pict/PictTransfer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;

constexpr PictColour kCanvas = {1000, 20000, 65000};
constexpr PictColour kFore = {11, 12, 13};
constexpr PictColour kBack = {21, 22, 23};
constexpr PictColours kColours = {.foreground = kFore, .background = kBack, .operation = {0, 32768, 65535}};
constexpr PictColour kGrey = {300, 300, 300};

PictColour Transferred(unsigned mode, const PictColour& source, const PictColour& canvas = kCanvas,
                       const PictColours& colours = kColours) {
    PictColour result = canvas;
    const PictConstRun from = {std::span(&source[0], 1), std::span(&source[1], 1), std::span(&source[2], 1)};
    const PictRun to = {std::span(&result[0], 1), std::span(&result[1], 1), std::span(&result[2], 1)};
    TransferPictRun(static_cast<std::uint16_t>(mode), colours, from, to);
    return result;
}

/// What black, white and any other source become.
void ExpectByColour(unsigned mode, const PictColour& black, const PictColour& white, const PictColour& other) {
    EXPECT_EQ(Transferred(mode, kPictBlack), black) << mode;
    EXPECT_EQ(Transferred(mode, kPictWhite), white) << mode;
    for (const PictColour& source : {kGrey, PictColour{0, 0, 1}, PictColour{1, 0, 0}, PictColour{65535, 65535, 65534},
                                     PictColour{65535, 0, 65535}, PictColour{0, 65535, 0}}) {
        EXPECT_EQ(Transferred(mode, source), other) << mode << ": " << source[0] << " " << source[1];
    }
}

TEST(PictTransfer, CopyGivesTwoColours) {
    ExpectByColour(0, kFore, kBack, kBack);
}

TEST(PictTransfer, PatternModesAndUnknownModesCopy) {
    for (unsigned mode = 8; mode < 32; ++mode)
        ExpectByColour(mode, kFore, kBack, kBack);
    for (const unsigned mode : {40U, 41U, 49U, 50U, 64U, 72U, 255U, 256U, 292U, 32768U, 65535U})
        ExpectByColour(mode, kFore, kBack, kBack);
}

TEST(PictTransfer, ModesThatDrawOneColourLeaveTheRest) {
    ExpectByColour(1, kFore, kCanvas, kCanvas);
    ExpectByColour(3, kBack, kCanvas, kCanvas);
    ExpectByColour(5, kCanvas, kFore, kCanvas);
    ExpectByColour(7, kCanvas, kBack, kCanvas);
}

TEST(PictTransfer, TheInvertedCopyLeavesWhatIsNeitherBlackNorWhite) {
    ExpectByColour(4, kBack, kFore, kCanvas);
}

TEST(PictTransfer, XorModes) {
    const PictColour source = {0x00FF, 0xF0F0, 0xFFFF};
    const PictColour canvas = {0x1234, 0x1234, 0x1234};
    EXPECT_EQ(Transferred(2, source, canvas), (PictColour{0x1234 ^ 0xFF00, 0x1234 ^ 0x0F0F, 0x1234}));
    EXPECT_EQ(Transferred(6, source, canvas), (PictColour{0x1234 ^ 0x00FF, 0x1234 ^ 0xF0F0, 0x1234 ^ 0xFFFF}));
}

TEST(PictTransfer, BlendDividesItsTwoProductsSeparately) {
    // Weights 0, half and 65535 of 65536.
    EXPECT_EQ(Transferred(32, {40000, 40001, 40000}, {50000, 50001, 50000}),
              (PictColour{50000, 25000 + 20000, 0 + 39999}));
    EXPECT_EQ(Transferred(32, {1, 1, 1}, {1, 1, 1}), (PictColour{1, 0, 0})) << "a half and a half are nothing";
    EXPECT_EQ(Transferred(32, kPictWhite, kPictWhite), (PictColour{65535, 65534, 65534}))
        << "65535 x 65536 is more than 31 bits hold";
}

TEST(PictTransfer, AddPinStopsAtTheOperationColour) {
    EXPECT_EQ(Transferred(33, {100, 10000, 600}), (PictColour{0, 30000, 65535})) << "65600 is above the limit";
    EXPECT_EQ(Transferred(33, {5, 40000, 65535}, kPictWhite), (PictColour{0, 32768, 65535}));
    EXPECT_EQ(Transferred(33, {5, 7, 9}, {5, 7, 9}), (PictColour{0, 14, 18}));
}

TEST(PictTransfer, AddOverAndSubtractOverWrapAt16Bits) {
    EXPECT_EQ(Transferred(34, {1, 45536, 65535}), (PictColour{1001, 0, 64999}));
    EXPECT_EQ(Transferred(38, {1001, 20000, 1}), (PictColour{65535, 0, 64999}));
}

TEST(PictTransfer, SubtractPinStopsAtTheOperationColour) {
    EXPECT_EQ(Transferred(35, {999, 1, 1}), (PictColour{1, 32768, 65535}));
    EXPECT_EQ(Transferred(35, {1001, 0, 0}, {1000, 40000, 65535}), (PictColour{0, 40000, 65535}))
        << "below zero is below the limit";
}

TEST(PictTransfer, TransparentLeavesTheCanvasUnderTheBackgroundColour) {
    EXPECT_EQ(Transferred(36, kBack), kCanvas);
    EXPECT_EQ(Transferred(36, {21, 22, 24}), (PictColour{21, 22, 24}));
    EXPECT_EQ(Transferred(36, {20, 22, 23}), (PictColour{20, 22, 23}));
    EXPECT_EQ(Transferred(36, {21, 0, 23}), (PictColour{21, 0, 23}));
    EXPECT_EQ(Transferred(36, kPictWhite), kPictWhite);
}

TEST(PictTransfer, MaximumAndMinimumTakeEachChannelForItself) {
    EXPECT_EQ(Transferred(37, {2000, 2000, 2000}), (PictColour{2000, 20000, 65000}));
    EXPECT_EQ(Transferred(39, {2000, 2000, 2000}), (PictColour{1000, 2000, 2000}));
}

TEST(PictTransfer, OnAWhiteCanvasThreeModesGiveTheSourceAndOneTurnsItByOne) {
    const PictColours initial;
    for (const PictColour& source : {kPictBlack, kPictWhite, kGrey, PictColour{1, 2, 3}}) {
        for (const unsigned mode : {2U, 36U, 39U})
            EXPECT_EQ(Transferred(mode, source, kPictWhite, initial), source) << mode;
    }
    EXPECT_EQ(Transferred(34, {0, 1, 65535}, kPictWhite, initial), (PictColour{65535, 0, 65534}));
}

TEST(PictTransfer, TheInitialColoursAreBlackOnWhite) {
    const PictColours initial;
    EXPECT_EQ(Transferred(0, kPictBlack, kCanvas, initial), kPictBlack);
    EXPECT_EQ(Transferred(0, kGrey, kCanvas, initial), kPictWhite);
    EXPECT_EQ(Transferred(32, kPictBlack, kCanvas, initial), kCanvas) << "a weight of nothing";
}

TEST(PictTransfer, EveryPixelOfARunIsDrawnByItself) {
    // Long enough for vectors of any width and a rest.
    constexpr std::size_t kCount = 77;
    for (unsigned mode = 0; mode < 41; ++mode) {
        std::array<std::vector<std::uint16_t>, 3> source, canvas;
        for (std::size_t i = 0; i < kCount; ++i) {
            for (std::size_t c = 0; c < 3; ++c) {
                const std::uint16_t value = i % 5 == 0   ? 0
                                            : i % 5 == 1 ? 65535
                                            : i % 5 == 2 ? kBack[c]
                                                         : 997 * i * (c + 1);
                source[c].push_back(value);
                canvas[c].push_back(static_cast<std::uint16_t>(31337 * i + c));
            }
        }
        const auto before = canvas;
        TransferPictRun(static_cast<std::uint16_t>(mode), kColours, {source[0], source[1], source[2]},
                        {canvas[0], canvas[1], canvas[2]});
        for (std::size_t i = 0; i < kCount; ++i) {
            const auto at = [i](const auto& planes) { return PictColour{planes[0][i], planes[1][i], planes[2][i]}; };
            EXPECT_EQ(at(canvas), Transferred(mode, at(source), at(before))) << mode << " " << i;
        }
    }
}

}  // namespace
