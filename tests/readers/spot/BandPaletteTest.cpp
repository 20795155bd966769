#include "readers/spot/BandPalette.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

using namespace std::string_view_literals;

/// The grey ramp with one entry changed.
BandPalette Ramp(std::size_t index, BandColour colour) {
    BandPalette palette;
    for (unsigned i = 0; i < 256; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        palette[i] = {grey, grey, grey};
    }
    palette[index] = colour;
    return palette;
}

TEST(BandPalette, ALineSetsItsEntryAndTheOthersStayGrey) {
    EXPECT_EQ(ParseBandPalette("7 10 20 30\n"), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseBandPalette("255 1 2 3"), Ramp(255, {1, 2, 3}));
    EXPECT_EQ(ParseBandPalette("1 1 2 3 4 5 and more\r\n"), Ramp(1, {1, 2, 3}));
    EXPECT_EQ(ParseBandPalette("\t7 \v10\f20 30\r\n"), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseBandPalette("7 1 1 1\n7 10 20 30\n"), Ramp(7, {10, 20, 30})) << "the last line wins";
}

TEST(BandPalette, IndicesOutside1To255AreIgnored) {
    EXPECT_EQ(ParseBandPalette("0 10 20 30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("256 10 20 30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("-1 10 20 30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("4294967297 10 20 30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("0 10 20 30\n5 1 2 3\n"), Ramp(5, {1, 2, 3}));
}

TEST(BandPalette, ExclamationMarksBeginComments) {
    EXPECT_EQ(ParseBandPalette("!7 10 20 30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("! palette\n7 10 20 30\n"), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseBandPalette(" !7 10 20 30\n"), std::nullopt) << "and it is no number either";
}

TEST(BandPalette, ALineCountsOnlyWithFourNumbersOfItsOwn) {
    EXPECT_EQ(ParseBandPalette("7 10 20\n30 1\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("7 10 20 x\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("7\n10\n20\n30\n"), std::nullopt);
    EXPECT_EQ(ParseBandPalette("7 10 20\n8 1 2 3\n"), Ramp(8, {1, 2, 3}));
    EXPECT_EQ(ParseBandPalette(""), std::nullopt);
    EXPECT_EQ(ParseBandPalette("\n\n"), std::nullopt);
}

TEST(BandPalette, ColoursAreTakenModulo256) {
    EXPECT_EQ(ParseBandPalette("7 256 -1 300\n"), Ramp(7, {0, 255, 44}));
    EXPECT_EQ(ParseBandPalette("7 9999999999 -9999999999 0\n"), Ramp(7, {255, 0, 0})) << "clamped to 32 bits before";
}

TEST(BandPalette, ANulEndsTheText) {
    EXPECT_EQ(ParseBandPalette("7 10 20 30\n\0008 1 2 3\n"sv), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseBandPalette("\0008 1 2 3\n"sv), std::nullopt);
}

TEST(BandPalette, IsGreyWhenEveryEntryIs) {
    EXPECT_TRUE(IsGrey(Ramp(7, {9, 9, 9})));
    EXPECT_FALSE(IsGrey(Ramp(255, {9, 9, 8})));
    EXPECT_FALSE(IsGrey(Ramp(1, {8, 9, 9})));
}

TEST(BandPalette, AFileOfMoreThanAMebibyteIsNotOne) {
    const TemporaryFolder folder;
    std::string text = "7 10 20 30\n";
    text.resize(0x100000, '\n');
    EXPECT_EQ(ReadBandPalette(Wide(folder.Write("x.clr", text))), Ramp(7, {10, 20, 30}));
    text.resize(0x100001, '\n');
    EXPECT_EQ(ReadBandPalette(Wide(folder.Write("x.clr", text))), std::nullopt);
    EXPECT_EQ(ReadBandPalette(Wide(folder / "missing.clr")), std::nullopt);
}

}  // namespace
