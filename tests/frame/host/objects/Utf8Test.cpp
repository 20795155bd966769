#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <string>

namespace Kavra::OS {
namespace {

std::wstring Replacements(std::size_t count) {
    return std::wstring(count, L'\xFFFD');
}

TEST(Utf8, CodePointsAtTheBordersOfEachLength) {
    const std::pair<std::wstring, std::string> cases[] = {
        {L"\x01", "\x01"},
        {L"\x7F", "\x7F"},
        {L"\x80", "\xC2\x80"},
        {L"\x7FF", "\xDF\xBF"},
        {L"\x800", "\xE0\xA0\x80"},
        {L"\xD7FF", "\xED\x9F\xBF"},
        {L"\xE000", "\xEE\x80\x80"},
        {L"\xFFFF", "\xEF\xBF\xBF"},
        {L"\x10000", "\xF0\x90\x80\x80"},
        {L"\x1F600", "\xF0\x9F\x98\x80"},
        {L"\x10FFFF", "\xF4\x8F\xBF\xBF"},
    };
    for (const auto& [wide, narrow] : cases) {
        EXPECT_EQ(ToUtf8(wide.c_str()), narrow);
        EXPECT_EQ(FromUtf8(narrow.c_str()), wide);
    }
}

TEST(Utf8, EveryCodePointSurvivesTheWayThereAndBack) {
    std::wstring all;
    for (int code = 1; code <= 0x10FFFF; ++code) {
        if (code < 0xD800 || code > 0xDFFF) all += static_cast<wchar_t>(code);
    }
    const std::string narrow = ToUtf8(all.c_str());
    // 127 of one byte, 1920 of two, 61440 of three, 2^20 of four.
    EXPECT_EQ(narrow.size(), 127u + 2 * 1920 + 3 * 61440 + 4 * 1048576);
    EXPECT_EQ(FromUtf8(narrow.c_str()), all);
}

TEST(Utf8, NullAndNothingAreNothing) {
    EXPECT_EQ(ToUtf8(nullptr), "");
    EXPECT_EQ(ToUtf8(L""), "");
    EXPECT_EQ(FromUtf8(nullptr), L"");
    EXPECT_EQ(FromUtf8(""), L"");
}

TEST(Utf8, SurrogatePairsAreJoined) {
    const wchar_t pair[] = {0xD83D, 0xDE00, L'x', 0};
    EXPECT_EQ(ToUtf8(pair), "\xF0\x9F\x98\x80x");
    const wchar_t first[] = {0xD800, 0xDC00, 0};
    EXPECT_EQ(ToUtf8(first), "\xF0\x90\x80\x80");
    const wchar_t last[] = {0xDBFF, 0xDFFF, 0};
    EXPECT_EQ(ToUtf8(last), "\xF4\x8F\xBF\xBF");
}

TEST(Utf8, WhatIsNoTextBecomesTheReplacementCharacter) {
    const std::string replacement = "\xEF\xBF\xBD";
    const wchar_t loneLead[] = {0xD83D, L'x', 0};
    EXPECT_EQ(ToUtf8(loneLead), replacement + "x");
    const wchar_t leadAtTheEnd[] = {L'x', 0xD83D, 0};
    EXPECT_EQ(ToUtf8(leadAtTheEnd), "x" + replacement);
    const wchar_t loneTrail[] = {0xDE00, L'x', 0};
    EXPECT_EQ(ToUtf8(loneTrail), replacement + "x");
    const wchar_t leadBeforePair[] = {0xD83D, 0xD83D, 0xDE00, 0};
    EXPECT_EQ(ToUtf8(leadBeforePair), replacement + "\xF0\x9F\x98\x80");
    const wchar_t beyond[] = {0x110000, -1, 0x7FFFFFFF, 0};
    EXPECT_EQ(ToUtf8(beyond), replacement + replacement + replacement);
}

TEST(Utf8, EachLongestStartOfASequenceIsReplacedOnce) {
    // The examples of the Unicode standard, "U+FFFD Substitution of Maximal Subparts".
    EXPECT_EQ(FromUtf8("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"), Replacements(8) + L"A");
    EXPECT_EQ(FromUtf8("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"), Replacements(8) + L"A");
    EXPECT_EQ(FromUtf8("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"), Replacements(5) + L"A" + Replacements(2) + L"B");
    EXPECT_EQ(FromUtf8("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), Replacements(4) + L"A");
}

TEST(Utf8, ATextMayEndInsideASequence) {
    EXPECT_EQ(FromUtf8("x\xF0\x9F\x98"), L"x" + Replacements(1));
    EXPECT_EQ(FromUtf8("\xE2"), Replacements(1));
    EXPECT_EQ(FromUtf8("\xF5\x80"), Replacements(2));
    EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80"), Replacements(4));
}

}  // namespace
}  // namespace Kavra::OS
