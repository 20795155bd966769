#include "readers/spot/SpotHeader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Kavra::Devices::HeaderText;

using namespace std::string_view_literals;

std::optional<std::int32_t> Columns(std::string_view text) {
    return HeaderText(text).Integer("NCOLS");
}

TEST(HeaderText, AKeywordBeginsALineInAnyCase) {
    EXPECT_EQ(Columns("NCOLS 17\n"), 17);
    EXPECT_EQ(Columns("ncols 17\n"), 17);
    EXPECT_EQ(Columns("NROWS 3\nnCoLs 17\n"), 17);
    EXPECT_EQ(Columns("\n\nNCOLS 17\n"), 17);
    EXPECT_EQ(Columns(" NCOLS 17\n"), std::nullopt) << "not at the start of its line";
}

TEST(HeaderText, ALineThatGoesOnAfterTheKeywordStillHasIt) {
    EXPECT_EQ(Columns("NCOLSX 17\n"), 17);
    EXPECT_EQ(HeaderText("NCOLSUM 5\nNCOLS 17\n").Integer("NCOLS"), std::nullopt)
        << "the first line counts: one character is skipped, then M is no number";
}

TEST(HeaderText, TheFirstLineCounts) {
    EXPECT_EQ(Columns("NCOLS 1\nNCOLS 2\n"), 1);
    EXPECT_EQ(Columns("NCOLS x\nNCOLS 2\n"), std::nullopt);
}

TEST(HeaderText, ExactlyOneCharacterIsSkippedWhateverItIs) {
    EXPECT_EQ(Columns("NCOLS17\n"), 7);
    EXPECT_EQ(Columns("NCOLS=17\n"), 17);
    EXPECT_EQ(Columns("NCOLS:17\n"), 17);
    EXPECT_EQ(Columns("NCOLS\t17\n"), 17);
    EXPECT_EQ(Columns("NCOLS==17\n"), std::nullopt);
    EXPECT_EQ(Columns("NCOLS-17\n"), 17);
    EXPECT_EQ(Columns("NCOLS7\n"), std::nullopt) << "the only digit is gone";
}

TEST(HeaderText, WhiteSpaceBeforeTheValueDoesNotMatter) {
    EXPECT_EQ(Columns("NCOLS       17\n"), 17);
    EXPECT_EQ(Columns("NCOLS \t\t 17\r\n"), 17);
    EXPECT_EQ(Columns("NCOLS\n17\n"), 17) << "the line feed is the character skipped";
    EXPECT_EQ(Columns("NCOLS\r\n17\r\n"), 17);
    EXPECT_EQ(Columns("NCOLS \n\n 17"), 17);
    EXPECT_EQ(Columns("NCOLS\nNROWS 17\n"), std::nullopt);
}

TEST(HeaderText, AKeywordThatIsNotThereIsAbsent) {
    EXPECT_EQ(Columns(""), std::nullopt);
    EXPECT_EQ(Columns("\n"), std::nullopt);
    EXPECT_EQ(Columns("NROWS 5\n"), std::nullopt);
    EXPECT_EQ(Columns("NROWS 5 NCOLS 17\n"), std::nullopt);
    EXPECT_EQ(Columns("NCO"), std::nullopt);
}

TEST(HeaderText, AKeywordAtTheVeryEndHasNoValue) {
    EXPECT_EQ(Columns("NROWS 5\nNCOLS"), std::nullopt);
    EXPECT_EQ(Columns("NROWS 5\nNCOLS "), std::nullopt);
    EXPECT_EQ(Columns("NROWS 5\nNCOLS\n"), std::nullopt);
}

TEST(HeaderText, InALastLineWithoutLineFeedAKeywordMayStandAnywhere) {
    EXPECT_EQ(Columns("NROWS 5\nxx NCOLS 17"), 17);
    EXPECT_EQ(Columns("xxNCOLS 17 NCOLS 18"), 17) << "the first one";
    EXPECT_EQ(Columns("NROWS 5\nxx ncols 17"), std::nullopt) << "then in its own case";
    EXPECT_EQ(Columns("NROWS 5\nncols 17"), 17) << "at its start in any case";
    EXPECT_EQ(Columns("NROWS 5\nxx NCOLS 17\n"), std::nullopt) << "a line feed ends it";
    EXPECT_EQ(HeaderText("NCOLS 5\nRECORDSKIPBYTES 1").Integer("SKIPBYTES"), 1);
    EXPECT_EQ(HeaderText("NCOLS 5\nRECORDSKIPBYTES 1\n").Integer("SKIPBYTES"), std::nullopt);
}

TEST(HeaderText, ANulEndsTheText) {
    EXPECT_EQ(Columns("NROWS 5\n\0NCOLS 17\n"sv), std::nullopt);
    EXPECT_EQ(Columns("NCOLS 1\0007\n"sv), 1);
    EXPECT_EQ(Columns("xx NCOLS 17\0\n"sv), 17) << "what is left has no line feed";
}

TEST(HeaderText, WordsAreCutAtTheirWidth) {
    const HeaderText text("LAYOUT bilbilbilbilbil\n");
    EXPECT_EQ(text.Word("LAYOUT", 10), "bilbilbilb");
    EXPECT_EQ(text.Word("DATUM", 10), std::nullopt);
}

TEST(HeaderText, ReadsReals) {
    EXPECT_EQ(HeaderText("XDIM 30.25\r\n").Real("XDIM"), 30.25);
    EXPECT_EQ(HeaderText("XDIM x\n").Real("XDIM"), std::nullopt);
}

}  // namespace
