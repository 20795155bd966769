#include "readers/ccitt/CcittRows.h"
#include "readers/ccitt/CcittStreams.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Devices::Ccitt;
using namespace Kavra::Tests;

using Rows = std::vector<std::string>;
using Outcomes = std::vector<Outcome>;
using Texts = std::vector<std::wstring>;

constexpr std::string_view kWhite0 = "00110101";
constexpr std::string_view kBlack0 = "0000110111";

std::string Join(std::initializer_list<std::string_view> parts) {
    std::string all;
    for (const std::string_view part : parts)
        all += part;
    return all;
}

std::string Repeat(std::string_view part, int times) {
    std::string all;
    for (; times > 0; --times)
        all += part;
    return all;
}

TEST(CcittGroup4, AVerticalCodeOverAWhiteRowIsAWhiteRow) {
    const DecodedRows decoded = DecodeByRow(Codes("1 1 1 1 1 1 1 1"), 8, 8);
    EXPECT_EQ(decoded.rows, Rows(8, "........"));
    EXPECT_EQ(decoded.results, Outcomes(8, Outcome::kDecoded));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittGroup4, VerticalCodesPlaceChangesUpToThreePixelsAside) {
    // Horizontal: 5 white, 4 black, then to the end.
    const std::string first = "001 1100 011 1";
    EXPECT_EQ(DecodeByRow(Codes(first + "1 1 1"), 16, 2).rows[1], ".....####.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "011 1 1"), 16, 2).rows[1], "......###.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "000011 1 1"), 16, 2).rows[1], ".......##.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "0000011 1 1"), 16, 2).rows[1], "........#.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "010 1 1"), 16, 2).rows[1], "....#####.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "000010 1 1"), 16, 2).rows[1], "...######.......");
    EXPECT_EQ(DecodeByRow(Codes(first + "0000010 0000011 1"), 16, 2).rows[1], "..##########....");
}

TEST(CcittGroup4, AChangeToTheLeftMayMakeTheOneBeforeItTheNextOneAgain) {
    // Above: 2 white, 1 black, 1 white, 4 black. The first change is 2 right of 2, at 4; the second 3 left of 8, at 5:
    // the next change to black beyond 5 is the end of the row. The third is 3 left of that.
    const std::string first = "001 0111 010 001 000111 011";
    ASSERT_EQ(DecodeByRow(Codes(first), 8, 1).rows[0], "..#.####");
    EXPECT_EQ(DecodeByRow(Codes(first + "000011 0000010 1"), 8, 2).rows[1], "....#...");
    // Black from 1 (one left of 2) to 2 (one left of 3); the next change to black is the one at 2's right, 4.
    EXPECT_EQ(DecodeByRow(Codes(first + "010 010 1 1"), 8, 2).rows[1], ".#..####");
    // Black from 5 (one right of 4 after a pass over 2 to 3) to 8 less 2; then the end.
    EXPECT_EQ(DecodeByRow(Codes(first + "0001 011 000010 1"), 8, 2).rows[1], ".....#..");
}

TEST(CcittGroup4, PassModeSkipsToBelowTheEndOfTheRunAbove) {
    const std::string first = "001 0111 11 1";  // 2 white, 2 black
    EXPECT_EQ(DecodeByRow(Codes(first + "0001 1"), 12, 2).rows[1], "............");
    EXPECT_EQ(DecodeByRow(Codes(first + "0001 0000010 1"), 12, 2).rows[1], ".........###");
    // Black from the start by horizontal mode with no white; pass over the white gap above keeps it black.
    const std::string gap = Join({"001", kWhite0, "11 001 0111 11 1"});  // 2 black, 2 white, 2 black
    ASSERT_EQ(DecodeByRow(Codes(gap), 12, 1).rows[0], "##..##......");
    EXPECT_EQ(DecodeByRow(Codes(gap + "1 0001 1 1"), 12, 2).rows[1], "######......");
}

TEST(CcittGroup4, AChangeInTheFirstColumnCountsAtTheStartOfARow) {
    const std::string first = Join({"001", kWhite0, "010 1"});  // 1 black
    EXPECT_EQ(DecodeByRow(Codes(first + "1 1 1"), 4, 2).rows, (Rows{"#...", "#..."}));
    EXPECT_EQ(DecodeByRow(Codes(first + "011 1"), 4, 2).rows[1], ".###") << "the change at 1 is not right of 1";
}

TEST(CcittGroup4, HorizontalModeGivesTwoRunsInTheOrderOfTheColours) {
    EXPECT_EQ(DecodeByRow(Codes("001 1000 10 1"), 12, 1).rows[0], "...###......");
    // A vertical code first: the runs are then black and white.
    EXPECT_EQ(DecodeByRow(Codes("001 1011 10 1 010 001 011 0111 1"), 12, 2).rows,
              (Rows{"....###.....", "...####..###"}))
        << "one left of 4, then 4 black and 2 white, then black to the end";
}

TEST(CcittGroup4, MakeUpCodesAddUpToATerminatingOne) {
    const DecodedRows decoded = DecodeByRow(Codes(Join({"001 11011 11011 0111", "0000001111 11"})), 200, 1);
    EXPECT_EQ(decoded.rows[0], std::string(130, '.') + std::string(66, '#') + std::string(4, '.'));
    EXPECT_EQ(decoded.results[0], Outcome::kEndOfData) << "the row is not complete";
}

TEST(CcittGroup4, AWhiteFaxLineFillsItsBytesWithZeros) {
    Bytes packed(216, 0xEE);
    const Bytes data = Codes(Join({"001 010011011", kWhite0, kBlack0}));
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, 1728, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed, Bytes(216, 0));
    EXPECT_EQ(decoder.RowsDecoded(), 1U);
}

TEST(CcittGroup4, ARowOfSinglePixelsHasOneRunMoreThanColumns) {
    // Black first, so the first run is empty: 65 of them on 64 columns. Each next row moves every change or none.
    std::string row = Join({"001", kWhite0, "010"});
    for (int pair = 0; pair < 31; ++pair)
        row += "001 000111 010";
    const DecodedRows decoded = DecodeByRow(Codes(row + "1" + Repeat("1", 65)), 64, 2);
    std::string expected;
    for (int pair = 0; pair < 32; ++pair)
        expected += "#.";
    EXPECT_EQ(decoded.rows, Rows(2, expected));
    EXPECT_EQ(decoded.results, Outcomes(2, Outcome::kDecoded));
}

TEST(CcittGroup4, MakeUpCodesWithoutEndDoNotWrap) {
    // Five white rows; then 1,677,722 times 2560 white, which is 1024 more than 32 bits hold, and 5 black.
    Bytes data = {0b11111001};
    for (int pair = 0; pair < 838'861; ++pair)
        data.insert(data.end(), {0x01, 0xF0, 0x1F});
    const Bytes rest = Codes(Join({kWhite0, "0011"}));
    data.insert(data.end(), rest.begin(), rest.end());
    const DecodedRows decoded = DecodeByRow(data, 2000, 6);
    EXPECT_EQ(decoded.rows[5], std::string(2000, '.'));
    EXPECT_EQ(decoded.results[5], Outcome::kDecoded);
}

TEST(CcittGroup4, BitsBehindTheWidthAreCleared) {
    Bytes packed(2, 0xEE);
    const Bytes data = Codes(Join({"001", kWhite0, "00000100"}));  // 13 black
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, 13, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed, (Bytes{0xFF, 0xF8}));
}

TEST(CcittGroup4, ARunOverTheWidthIsCutThereAndTheNextRowGoesOnFromTheCutOne) {
    // 4 white and 20 black on 8 columns, then the same again by vertical codes.
    const DecodedRows decoded = DecodeByRow(Codes("001 1011 00001101000  1 1  010 1"), 8, 3);
    EXPECT_EQ(decoded.rows, (Rows{"....####", "....####", "...#####"}));
    EXPECT_EQ(decoded.results, Outcomes(3, Outcome::kDecoded));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittGroup4, AWhiteRunOverTheWidthIsFollowedByItsBlackOneAllTheSame) {
    const DecodedRows decoded = DecodeByRow(Codes("001 01000 011  001 0111 011 1"), 8, 2);  // 11 white, 4 black
    EXPECT_EQ(decoded.rows, (Rows{"........", "..####.."}));
}

TEST(CcittGroup4, AChangeBeyondTheWidthIsCut) {
    EXPECT_EQ(DecodeByRow(Codes("0000011 1"), 8, 2).rows, (Rows{"........", "........"}));
    EXPECT_EQ(DecodeByRow(Codes("010 0000011  1 1"), 8, 2).rows, (Rows{".......#", ".......#"}));
}

TEST(CcittGroup4, APassToTheWidthEndsTheRow) {
    const std::string first = "001 1011 011";  // 4 white, 4 black: the run above ends at the width
    EXPECT_EQ(DecodeByRow(Codes(first + "0001 1"), 8, 3).rows, (Rows{"....####", "........", "........"}));
    // One left of 4, then black: above, the change to white is the width, so a pass leads to it too.
    EXPECT_EQ(DecodeByRow(Codes(first + "010 0001 1 1"), 8, 3).rows, (Rows{"....####", "...#####", "...#####"}));
}

TEST(CcittGroup4, AnExtensionGivesTheRestTheCurrentColour) {
    EXPECT_EQ(DecodeByRow(Codes("0000001 1"), 8, 2).rows, (Rows{"........", "........"}));
    const DecodedRows black = DecodeByRow(Codes("0000010 0000001 1 1"), 8, 2);
    EXPECT_EQ(black.rows, (Rows{".....###", ".....###"})) << "3 left of the end, then black to the end";
    EXPECT_EQ(black.results[0], Outcome::kDecoded);
    EXPECT_TRUE(black.messages.empty());
}

TEST(CcittGroup4, ARunThatAPassBeganGoesOnThroughAnExtension) {
    const std::string first = Join({"001", kWhite0, "010 001 0111 010 1"});  // #..#....
    ASSERT_EQ(DecodeByRow(Codes(first), 8, 1).rows[0], "#..#....");
    EXPECT_EQ(DecodeByRow(Codes(first + "1 0001 0000001"), 8, 2).rows[1], "########");
}

TEST(CcittGroup4, AnEndOfLineGivesTheRestTheCurrentColourAndTakesElevenZeros) {
    const DecodedRows decoded = DecodeByRow(Codes("0000010 0000000 0000  1 1"), 8, 2);
    EXPECT_EQ(decoded.rows, (Rows{".....###", ".....###"}));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittGroup4, AnEndOfLineWithAOneTooEarlyIsABadCode) {
    for (const char* zeros : {"1000", "0100", "0010", "0001"}) {
        const DecodedRows decoded = DecodeByRow(Codes(std::string("0000010 0000000") + zeros + "11111111"), 8, 1);
        EXPECT_EQ(decoded.results[0], Outcome::kBadCode) << zeros;
        EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in EOL at scanline (x 5)"}));
    }
}

TEST(CcittGroup4, NothingIsSpecialAboutAnEndOfBlock) {
    // Its ones are vertical codes, its zeros rows; padding follows.
    const DecodedRows decoded = DecodeByRow(Codes("1 000000000001 000000000001"), 8, 7);
    EXPECT_EQ(decoded.rows, Rows(7, "........"));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittGroup4, DecodingGoesOnBehindAnEndOfBlock) {
    const DecodedRows decoded = DecodeByRow(Codes("1 000000000001 000000000001 001 1011 011"), 8, 6);
    EXPECT_EQ(decoded.rows, (Rows{"........", "........", "........", "........", "........", "....####"}));
}

TEST(CcittGroup3, RowsBeginBehindTheNextEndOfLine) {
    // Something that is no row, an end of line with more zeros than it takes, 3 white 5 black.
    const DecodedRows decoded =
        DecodeByRow(Codes("1010 00000000000000001 1000 0011  000000000001 1000 11 1000"), 8, 2, Mode::kGroup3);
    EXPECT_EQ(decoded.rows, (Rows{"...#####", "...##..."}));
    EXPECT_EQ(decoded.results, Outcomes(2, Outcome::kDecoded));
}

TEST(CcittGroup3, ARowThatAnEndOfLineCutsIsWhiteFromThere) {
    const std::string end = "000000000001";
    const DecodedRows decoded =
        DecodeByRow(Codes(end + "1000" + end + "1000 11" + end + "1100 00011"), 8, 3, Mode::kGroup3);
    EXPECT_EQ(decoded.rows, (Rows{"........", "...##...", ".....###"})) << "the last: 5 white, 7 black";
    EXPECT_EQ(decoded.results[0], Outcome::kDecoded);
    EXPECT_EQ(decoded.results[1], Outcome::kDecoded) << "the end of line that cuts a row begins the next";
}

TEST(CcittGroup3, WithoutAnyEndOfLineThereIsNoRow) {
    const DecodedRows decoded = DecodeByRow(Codes("1000 11 1000 1000 11 1000"), 8, 2, Mode::kGroup3);
    EXPECT_EQ(decoded.rows, Rows(2, "........"));
    EXPECT_EQ(decoded.results, Outcomes(2, Outcome::kEndOfData));
}

TEST(CcittGroup3, TheRowBehindABadCodeIsFoundByItsEndOfLine) {
    const std::string end = "000000000001";
    const DecodedRows decoded =
        DecodeByRow(Codes(end + "1000 000000001 10101010" + end + "1000 0011" + "00"), 8, 2, Mode::kGroup3);
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in BlackTable at scanline (x 3)"}));
    EXPECT_EQ(decoded.rows[1], "...#####");
}

TEST(CcittRowsWithoutEnds, EachBeginsAtAByte) {
    const DecodedRows decoded = DecodeByRow(Codes("1000 0011  1000 11 1000 111111  10011"), 8, 3, Mode::kRows);
    EXPECT_EQ(decoded.rows, (Rows{"...#####", "...##...", "........"}));
    EXPECT_EQ(decoded.results, Outcomes(3, Outcome::kDecoded));
}

TEST(CcittGroup3TwoDimensional, ABitBehindTheEndOfLineTellsTheCodingOfTheRow) {
    const std::string end = "000000000001";
    const DecodedRows decoded = DecodeByRow(Codes(end + "1 1000 11 1000" + end + "0 1 011 1" + end + "1 1000 0011"), 8,
                                            3, Mode::kGroup3TwoDimensional);
    EXPECT_EQ(decoded.rows, (Rows{"...##...", "...###..", "...#####"}));
    EXPECT_EQ(decoded.results, Outcomes(3, Outcome::kDecoded));
}

TEST(CcittGroup3TwoDimensional, AnEndOfLineThatCutsATwoDimensionalRowBeginsTheNext) {
    const std::string end = "000000000001";
    const DecodedRows decoded =
        DecodeByRow(Codes(end + "1 1000 11 1000" + end + "0 1" + end + "0 1 1 1"), 8, 3, Mode::kGroup3TwoDimensional);
    EXPECT_EQ(decoded.rows, (Rows{"...##...", "...#####", "...#####"})) << "black was due";
}

}  // namespace
