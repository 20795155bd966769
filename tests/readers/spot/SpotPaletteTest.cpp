#include "readers/spot/SpotHeader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

using namespace std::string_view_literals;

/// The grey ramp with one entry changed.
SpotPalette Ramp(std::size_t index, SpotColour colour) {
    SpotPalette palette;
    for (unsigned i = 0; i < 256; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        palette[i] = {grey, grey, grey};
    }
    palette[index] = colour;
    return palette;
}

TEST(SpotPalette, ALineSetsItsEntryAndTheOthersStayGrey) {
    EXPECT_EQ(ParseSpotPalette("7 10 20 30\n"), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseSpotPalette("255 1 2 3"), Ramp(255, {1, 2, 3}));
    EXPECT_EQ(ParseSpotPalette("1 1 2 3 4 5 and more\r\n"), Ramp(1, {1, 2, 3}));
    EXPECT_EQ(ParseSpotPalette("\t7 \v10\f20 30\r\n"), Ramp(7, {10, 20, 30}));
    EXPECT_EQ(ParseSpotPalette("7 1 1 1\n7 10 20 30\n"), Ramp(7, {10, 20, 30})) << "the last line wins";
}

TEST(SpotPalette, IndicesOutside1To255AreIgnored) {
    EXPECT_FALSE(ParseSpotPalette("0 10 20 30\n"));
    EXPECT_FALSE(ParseSpotPalette("256 10 20 30\n"));
    EXPECT_FALSE(ParseSpotPalette("-1 10 20 30\n"));
    EXPECT_FALSE(ParseSpotPalette("4294967297 10 20 30\n"));
    EXPECT_EQ(ParseSpotPalette("0 10 20 30\n5 1 2 3\n"), Ramp(5, {1, 2, 3}));
}

TEST(SpotPalette, ExclamationMarksBeginComments) {
    EXPECT_FALSE(ParseSpotPalette("!7 10 20 30\n"));
    EXPECT_EQ(ParseSpotPalette("! palette\n7 10 20 30\n"), Ramp(7, {10, 20, 30}));
    EXPECT_FALSE(ParseSpotPalette(" !7 10 20 30\n")) << "and it is no number either";
}

TEST(SpotPalette, ALineCountsOnlyWithFourNumbersOfItsOwn) {
    EXPECT_FALSE(ParseSpotPalette("7 10 20\n30 1\n"));
    EXPECT_FALSE(ParseSpotPalette("7 10 20 x\n"));
    EXPECT_FALSE(ParseSpotPalette("7\n10\n20\n30\n"));
    EXPECT_EQ(ParseSpotPalette("7 10 20\n8 1 2 3\n"), Ramp(8, {1, 2, 3}));
    EXPECT_FALSE(ParseSpotPalette(""));
    EXPECT_FALSE(ParseSpotPalette("\n\n"));
}

TEST(SpotPalette, ColoursAreTakenModulo256) {
    EXPECT_EQ(ParseSpotPalette("7 256 -1 300\n"), Ramp(7, {0, 255, 44}));
    EXPECT_EQ(ParseSpotPalette("7 9999999999 -9999999999 0\n"), Ramp(7, {255, 0, 0})) << "clamped to 32 bits before";
}

TEST(SpotPalette, ANulEndsTheText) {
    EXPECT_EQ(ParseSpotPalette("7 10 20 30\n\0008 1 2 3\n"sv), Ramp(7, {10, 20, 30}));
    EXPECT_FALSE(ParseSpotPalette("\0008 1 2 3\n"sv));
}

TEST(SpotPalette, IsGreyWhenEveryEntryIs) {
    EXPECT_TRUE(IsGrey(Ramp(7, {9, 9, 9})));
    EXPECT_FALSE(IsGrey(Ramp(255, {9, 9, 8})));
    EXPECT_FALSE(IsGrey(Ramp(1, {8, 9, 9})));
}

TEST(SpotPalette, AFileOfMoreThanAMebibyteIsNotOne) {
    const TemporaryFolder folder;
    std::string text = "7 10 20 30\n";
    text.resize(0x100000, '\n');
    EXPECT_EQ(ReadSpotPalette(Wide(folder.Write("x.clr", text))), Ramp(7, {10, 20, 30}));
    text.resize(0x100001, '\n');
    EXPECT_FALSE(ReadSpotPalette(Wide(folder.Write("x.clr", text))));
    EXPECT_FALSE(ReadSpotPalette(Wide(folder / "missing.clr")));
}

}  // namespace
