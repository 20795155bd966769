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

TEST(CcittBadCode, NamesTheTableAndThePixel) {
    // 3 white, then nine zeros where a black run should begin.
    const DecodedRows black = DecodeByRow(Codes("001 1000 000000001 11111111"), 16, 1);
    EXPECT_EQ(black.messages, (Texts{L"Bad code word in BlackTable at scanline (x 3)"}));
    EXPECT_EQ(black.results[0], Outcome::kBadCode);
    const DecodedRows white = DecodeByRow(Codes("001 1000 11 001 11011 000000001 11111111"), 200, 1);
    EXPECT_EQ(white.messages, (Texts{L"Bad code word in WhiteTable at scanline (x 69)"})) << "3 + 2 + 64";
    EXPECT_EQ(DecodeByRow(Codes("001 000000000001 1111"), 8, 1).messages,
              (Texts{L"Bad code word in WhiteTable at scanline (x 0)"}))
        << "an end of line is no run";
}

TEST(CcittBadCode, ThePixelMayLieBeyondTheWidth) {
    EXPECT_EQ(DecodeByRow(Codes("001 01000 000000001 11111111"), 8, 1).messages,
              (Texts{L"Bad code word in BlackTable at scanline (x 11)"}));
}

TEST(CcittBadCode, AChangeLeftOfTheLastOneIsBad) {
    // Above: black from 2 to 3. One right of 2 is 3; one left of 3 is 2.
    const std::string first = "001 0111 010 1";
    ASSERT_EQ(DecodeByRow(Codes(first), 8, 1).rows[0], "..#.....");
    const DecodedRows decoded = DecodeByRow(Codes(first + "1 0000010 11111111"), 8, 2);
    EXPECT_EQ(decoded.results[1], Outcome::kBadCode) << "3 - 3 is left of 2";
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in MainTable at scanline (x 2)"}));
    const DecodedRows empty = DecodeByRow(Codes(first + "1 010 1"), 8, 2);
    EXPECT_EQ(empty.rows[1], "........") << "3 - 1 is an empty run";
    EXPECT_TRUE(empty.messages.empty());
}

TEST(CcittBadCode, AChangeLeftOfTheRowIsBad) {
    const std::string first = Join({"001", kWhite0, "010 1"});
    const DecodedRows decoded = DecodeByRow(Codes(first + "010 11111111"), 8, 2);
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in MainTable at scanline (x 0)"}));
}

TEST(CcittBadCode, ARowHoldsAsManyRunsAsItsWidthAndFour) {
    // Pairs of empty runs, then 8 white by a vertical code. Of 8 columns 12 runs fit.
    const std::string pair = Join({"001", kWhite0, kBlack0});
    const DecodedRows fits = DecodeByRow(Codes(Repeat(pair, 5) + "1 11111111"), 8, 1);
    EXPECT_EQ(fits.results[0], Outcome::kDecoded) << "11 runs";
    EXPECT_EQ(fits.rows[0], "........");
    const DecodedRows full = DecodeByRow(Codes(Repeat(pair, 5) + "010 1 11111111"), 8, 1);
    EXPECT_EQ(full.results[0], Outcome::kDecoded) << "12 runs";
    EXPECT_EQ(full.rows[0], ".......#");
    const DecodedRows over = DecodeByRow(Codes(Repeat(pair, 6) + "1 11111111"), 8, 1);
    EXPECT_EQ(over.results[0], Outcome::kBadCode) << "13 runs";
    EXPECT_EQ(over.messages, (Texts{L"Bad code word in MainTable at scanline (x 0)"}));
    const DecodedRows inPair = DecodeByRow(Codes(Repeat(pair, 7) + "11111111"), 8, 1);
    EXPECT_EQ(inPair.messages, (Texts{L"Bad code word in MainTable at scanline (x 0)"}))
        << "whatever table it was found with";
}

TEST(CcittBadCode, ManyMoreRunsThanAnyRowHoldsAreBadToo) {
    const DecodedRows decoded = DecodeByRow(Codes(Repeat(Join({"001", kWhite0, kBlack0}), 5000)), 3, 1);
    EXPECT_EQ(decoded.results[0], Outcome::kBadCode);
}

TEST(CcittBadCode, TheNextRowBeginsWithTheBitsBeforeAndTheBytesBehind) {
    // "1": a white row; seven bits of the first byte stand ready then. The second row draws a second byte (7 bits for
    // the look-up are there, so none yet), then for the white run (12 bits: 4 left and a byte more) and the black one.
    //   byte 0: 1 001 0111   the first row; horizontal, 2 white
    //   byte 1: 00000000     \ no black run begins with eight zeros and a one
    //   byte 2: 10000000     /
    // White: 7 - 3 = 4 bits, 12 wanted: byte 1 is drawn. 8 left, 13 wanted: byte 2 is drawn. Bad.
    // The third row: seven bits 001 0111 again, then byte 3.
    //   byte 3: 11 1 10000   2 black, and a vertical code to the end
    const DecodedRows decoded = DecodeByRow(Codes("1 001 0111  00000000 10000000  11 1 10000"), 8, 3);
    EXPECT_EQ(decoded.results, (Outcomes{Outcome::kDecoded, Outcome::kBadCode, Outcome::kDecoded}));
    EXPECT_EQ(decoded.rows, (Rows{"........", "????????", "..##...."}));
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in BlackTable at scanline (x 2)"}));
}

TEST(CcittBadCode, MayRepeatForEveryLaterRow) {
    // Horizontal, and no white run: two bytes are drawn. No bit stood ready, so the next row begins with two more of
    // them.
    std::string codes;
    for (int row = 0; row < 50; ++row)
        codes += "001 000000001 1111";
    const DecodedRows decoded = DecodeByRow(Codes(codes), 64, 52);
    EXPECT_EQ(decoded.messages, Texts(50, L"Bad code word in WhiteTable at scanline (x 0)"));
    EXPECT_EQ(decoded.results[49], Outcome::kBadCode);
    EXPECT_EQ(decoded.results[50], Outcome::kEndOfData);
}

TEST(CcittBadCode, LeavesTheReferenceRowAndTheCountAlone) {
    // The first row draws three bytes and leaves 13 bits: below its first change, then 4 black, then six zeros. With
    // the fourth byte they are no white run, with the fifth they are one of 29 pixels.
    const Bytes data = Codes("001 1011 011 1  1 001 011 000000  00100000  10000000");
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, 16, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    Bytes packed(2);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed, (Bytes{0x0F, 0x00}));
    packed = {0x12, 0x34};
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kBadCode);
    EXPECT_EQ(packed, (Bytes{0x12, 0x34})) << "the row is left as it was";
    EXPECT_STREQ(decoder.LastBadCode().Message().data(), L"Bad code word in WhiteTable at scanline (x 8)");
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed, (Bytes{0x0F, 0x00}));
    EXPECT_EQ(decoder.RowsDecoded(), 2U);
}

TEST(CcittBadCode, EndsTheCallInWhichItStands) {
    const Bytes data = Codes("1 1 1 1 1 1 1 1  001 000000001 1111  1 1 1 1 1 1 1 1");
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, 8, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    Bytes packed(12, 0xEE);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kBadCode);
    EXPECT_EQ(packed, (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0xEE, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(decoder.RowsDecoded(), 8U);
}

TEST(CcittEndOfData, WithoutAnyBitTheRowIsWhite) {
    const DecodedRows decoded = DecodeByRow({}, 8, 3);
    EXPECT_EQ(decoded.rows, Rows(3, "........"));
    EXPECT_EQ(decoded.results, Outcomes(3, Outcome::kEndOfData));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittEndOfData, TheRestOfARowIsWhiteEvenWhereBlackWasDue) {
    // Sixteen bits to the last: 3 white and 2 black, then black from 7 on, then nothing.
    const DecodedRows decoded = DecodeByRow(Codes("001 1000 11  0000010"), 10, 3);
    EXPECT_EQ(decoded.rows, (Rows{"...##.....", "..........", ".........."}));
    EXPECT_EQ(decoded.results[0], Outcome::kEndOfData);
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittEndOfData, ARunThatAMakeUpCodeBeganStands) {
    const DecodedRows decoded = DecodeByRow(Codes("001 00110101 0000001111 000"), 100, 1);
    EXPECT_EQ(decoded.rows[0], std::string(64, '#') + std::string(36, '.'));
    EXPECT_EQ(decoded.results[0], Outcome::kEndOfData);
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittEndOfData, ARunThatAPassBeganStands) {
    const std::string first = Join({"001", kWhite0, "010 001 0111 010 1"});
    ASSERT_EQ(DecodeByRow(Codes(first + "1 0001 1 1"), 8, 2).rows, (Rows{"#..#....", "####...."}));
    // The same until behind the pass, which ends a byte.
    const DecodedRows decoded = DecodeByRow(Codes("1 1" + first + "1 0001"), 8, 4);
    EXPECT_EQ(decoded.rows[3], "###.....");
    EXPECT_EQ(decoded.results[3], Outcome::kEndOfData);
}

TEST(CcittEndOfData, ZerosStandInForTheBitsThatACodeLacks) {
    // Below the first change of "....####...."; then "01", which with a zero is one left of the second.
    const DecodedRows decoded = DecodeByRow(Codes("1 1 001 1011 011 1 1 01"), 12, 4);
    EXPECT_EQ(decoded.rows, (Rows{"............", "............", "....####....", "....###....."}));
    EXPECT_EQ(decoded.results[3], Outcome::kEndOfData);
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CcittEndOfData, ZerosStandInOnlyWhereABitOfTheCodeIsThere) {
    // Three left of the end. Seven bits make it, and nothing follows.
    EXPECT_EQ(DecodeByRow(Codes("1 0000010"), 8, 2).rows[1], "........");
    // One zero follows: with six more it begins an end of line, which gives the rest the colour that was due.
    EXPECT_EQ(DecodeByRow(Codes("0000010 0"), 8, 1).rows[0], ".....###");
}

TEST(CcittEndOfData, ACodeThatCannotBeDecodedThereIsNoBadCode) {
    // Horizontal, 3 white, and nine bits that begin no black run, but a look-up takes thirteen.
    const DecodedRows run = DecodeByRow(Codes("001 1000 000000001"), 16, 3);
    EXPECT_EQ(run.rows, Rows(3, "................")) << "the bits that are left are no codes of later rows";
    EXPECT_EQ(run.results, Outcomes(3, Outcome::kEndOfData));
    EXPECT_TRUE(run.messages.empty());
    // The zeros of an end of line and, of the four bits behind them, only a one.
    EXPECT_TRUE(DecodeByRow(Codes("0000000 1"), 8, 2).messages.empty());
    // A change left of the last one.
    const std::string first = "001 0111 010 1 ";
    EXPECT_TRUE(DecodeByRow(Codes("1111111" + first + "1 00001"), 8, 9).messages.empty())
        << "5 bits and a zero: two left of 3";
}

TEST(CcittEndOfData, ABadCodeWhoseOwnBitsAreAllThereIsBad) {
    // 4 white, 4 black; then 1 white and 2 black, whose look-up took zeros behind the end; then a code of the last
    // seven bits, three left of 4 and so left of 3.
    const DecodedRows decoded = DecodeByRow(Codes("1 1 1 1  001 1011 011  001 000111 11 0000010"), 8, 8);
    EXPECT_EQ(decoded.results[5], Outcome::kBadCode);
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in MainTable at scanline (x 3)"}));
    // The bits that stood ready before it stand ready again, now with nothing behind them.
    EXPECT_EQ(decoded.results[6], Outcome::kEndOfData);
    EXPECT_EQ(decoded.results[7], Outcome::kEndOfData);
    EXPECT_EQ(decoded.rows[7], "........");
}

TEST(CcittEndOfData, EndsTheCallInWhichItStands) {
    ByteSource source{std::span<const unsigned char>()};
    Decoder decoder(source, 8, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    Bytes packed(3, 0xEE);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kEndOfData);
    EXPECT_EQ(packed, (Bytes{0x00, 0xEE, 0xEE}));
    EXPECT_EQ(decoder.RowsDecoded(), 1U);
}

TEST(CcittRows, AreAsManyAsHaveRoom) {
    const Bytes data = Codes("1 1 1 1 1 1 1 1");
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, 9, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    Bytes packed(7, 0xEE);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed, (Bytes{0, 0, 0, 0, 0, 0, 0xEE})) << "three rows of two bytes";
    EXPECT_EQ(decoder.RowsDecoded(), 3U);
}

TEST(CcittRows, WithoutWidthThereAreNone) {
    for (const int width : {0, -5}) {
        const Bytes data = Codes("11111111");
        ByteSource source{std::span<const unsigned char>(data)};
        Decoder decoder(source, width, Mode::kGroup4, BitOrder::kMostSignificantFirst);
        Bytes packed(3, 0xEE);
        EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
        EXPECT_EQ(packed, Bytes(3, 0xEE));
        EXPECT_EQ(decoder.RowsDecoded(), 0U);
    }
}

TEST(CcittRows, BeginAtTheSourcesPosition) {
    const Bytes data = {0xFF, 0x00, 0x00, 0b00000100, 0xFF};
    ByteSource source{std::span<const unsigned char>(data)};
    ASSERT_TRUE(source.Seek(3));
    Decoder decoder(source, 8, Mode::kGroup4, BitOrder::kMostSignificantFirst);
    Bytes packed(1);
    EXPECT_EQ(decoder.DecodeRows(packed), Outcome::kDecoded);
    EXPECT_EQ(packed[0], 0b00000111) << "three left of the end";
}

TEST(CcittBitOrder, DecodesTheSameFromReversedBytes) {
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        Bytes data(40);
        std::ranges::generate(data, [&] { return static_cast<unsigned char>(random()); });
        const DecodedRows high = DecodeByRow(data, 21, 12);
        const DecodedRows low =
            DecodeByRow(WithBitsReversed(data), 21, 12, Mode::kGroup4, BitOrder::kLeastSignificantFirst);
        EXPECT_EQ(high.rows, low.rows);
        EXPECT_EQ(high.messages, low.messages);
    }
}

}  // namespace
