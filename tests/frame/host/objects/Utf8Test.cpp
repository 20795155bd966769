#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace Kavra::OS {
namespace {

/// What bytes become that are part of no well-formed UTF-8.
std::wstring Escaped(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes)
        text += static_cast<wchar_t>(0xDC00 + static_cast<unsigned char>(byte));
    return text;
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
    EXPECT_EQ(narrow.size(), 127U + 2 * 1920 + 3 * 61440 + 4 * 1048576);
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

TEST(Utf8, BytesThatAreNoTextAreEscapedOneByOne) {
    // Ill-formed sequences of the Unicode standard, "U+FFFD Substitution of Maximal Subparts": overlong forms,
    // surrogates, beyond the last code point, cut short.
    EXPECT_EQ(FromUtf8("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"), Escaped("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82") + L"A");
    EXPECT_EQ(FromUtf8("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"), Escaped("\xED\xA0\x80\xED\xBF\xBF\xED\xAF") + L"A");
    EXPECT_EQ(FromUtf8("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"),
              Escaped("\xF4\x91\x92\x93\xFF") + L"A" + Escaped("\x80\xBF") + L"B");
    EXPECT_EQ(FromUtf8("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), Escaped("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF") + L"A");
    EXPECT_EQ(FromUtf8("\xF5\x80"), Escaped("\xF5\x80"));
}

TEST(Utf8, ATextMayEndInsideASequence) {
    EXPECT_EQ(FromUtf8("x\xF0\x9F\x98"), L"x" + Escaped("\xF0\x9F\x98"));
    EXPECT_EQ(FromUtf8("\xE2"), Escaped("\xE2"));
}

TEST(Utf8, TextAfterABrokenStartOfASequenceIsUnderstood) {
    EXPECT_EQ(FromUtf8("caf\xE9.png"), L"caf" + Escaped("\xE9") + L".png");
    EXPECT_EQ(FromUtf8("\xE2\x82\xC3\xA9"), Escaped("\xE2\x82") + L"\xE9");
    EXPECT_EQ(FromUtf8("\xF0\xE2\x82\xAC"), Escaped("\xF0") + L"\x20AC");
}

TEST(Utf8, AnEscapedByteIsThatByteAgain) {
    const wchar_t name[] = {L'a', 0xDC80, 0xDCFF, L'b', 0};
    EXPECT_EQ(ToUtf8(name),
              "a\x80\xFF"
              "b");
    // Bytes below 80 are never escaped: no escape may smuggle a separator in.
    const wchar_t slash[] = {0xDC2F, 0xDC7F, 0};
    EXPECT_EQ(ToUtf8(slash), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8, EveryStringOfBytesSurvivesTheWayThereAndBack) {
    const auto survives = [](const std::string& bytes) { return ToUtf8(FromUtf8(bytes.c_str()).c_str()) == bytes; };
    for (int a = 1; a < 256; ++a) {
        ASSERT_TRUE(survives({static_cast<char>(a)})) << a;
        for (int b = 1; b < 256; ++b)
            ASSERT_TRUE(survives({static_cast<char>(a), static_cast<char>(b)})) << a << ' ' << b;
    }
    std::mt19937 random(20);
    // Mostly bytes of sequences, so that many are nearly well-formed.
    std::uniform_int_distribution<int> length(0, 12), any(1, 255), lead(0xC0, 0xF7), follower(0x80, 0xBF), kind(0, 5);
    for (int i = 0; i < 200000; ++i) {
        std::string bytes(static_cast<std::size_t>(length(random)), ' ');
        for (char& byte : bytes) {
            const int chosen = kind(random);
            byte = static_cast<char>(chosen == 0 ? any(random) : chosen == 1 ? lead(random) : follower(random));
        }
        ASSERT_TRUE(survives(bytes)) << testing::PrintToString(bytes);
    }
}

}  // namespace
}  // namespace Kavra::OS
