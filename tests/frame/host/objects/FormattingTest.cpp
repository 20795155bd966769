#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace Kavra::OS {
namespace {

template <class... Arguments>
std::wstring Formatted(const wchar_t* format, Arguments... arguments) {
    wchar_t buffer[200] = L"#";
    const int written = swprintf_s(buffer, 200, format, arguments...);
    if (written < 0) {
        EXPECT_EQ(written, -1);
        EXPECT_STREQ(buffer, L"");
        return L"(refused)";
    }
    EXPECT_EQ(static_cast<std::size_t>(written), std::wcslen(buffer));
    return buffer;
}

TEST(Format, StringsAreWideAndNarrowOnesAreMarked) {
    EXPECT_EQ(Formatted(L"%s", L"wide"), L"wide");
    EXPECT_EQ(Formatted(L"%ls", L"wide"), L"wide");
    EXPECT_EQ(Formatted(L"%hs", "narrow"), L"narrow");
    EXPECT_EQ(Formatted(L"%s|%hs|%s", L"a", "b", L"c"), L"a|b|c");
    EXPECT_EQ(Formatted(L"%c%lc", L'\u00e4', L'\u20ac'), L"\u00e4\u20ac");
}

TEST(Format, TextOutsideAsciiNeedsNoLocale) {
    EXPECT_EQ(Formatted(L"\u00e4 %s", L"\u20ac\x1F600"), L"\u00e4 \u20ac\x1F600");
    EXPECT_EQ(Formatted(L"%hs", "\xC3\xA4\xF0\x9F\x98\x80"), L"\u00e4\x1F600");
}

TEST(Format, WidthAndPrecisionApplyToStrings) {
    EXPECT_EQ(Formatted(L"[%5s]", L"ab"), L"[   ab]");
    EXPECT_EQ(Formatted(L"[%-5s]", L"ab"), L"[ab   ]");
    EXPECT_EQ(Formatted(L"[%.1s]", L"ab"), L"[a]");
    EXPECT_EQ(Formatted(L"[%*.*s]", 4, 2, L"abc"), L"[  ab]");
}

TEST(Format, NumbersArePassedThrough) {
    EXPECT_EQ(Formatted(L"%d %i %u %x", -1, 2, 3U, 255), L"-1 2 3 ff");
    EXPECT_EQ(Formatted(L"%05.2f|%+d|%lld|%zu", 1.5, 7, 1LL << 40, std::size_t{9}), L"01.50|+7|1099511627776|9");
    EXPECT_EQ(Formatted(L"%hd%%%hhd", 1, 2), L"1%2");
    EXPECT_EQ(Formatted(L"%2$s%1$s", L"a", L"b"), L"ba");
    EXPECT_EQ(Formatted(L"100%% sure"), L"100% sure");
    EXPECT_EQ(Formatted(L""), L"");
}

TEST(Format, AFormatThatEndsInsideAConversionIsRefused) {
    EXPECT_EQ(Formatted(L"abc%"), L"(refused)");
    EXPECT_EQ(Formatted(L"abc%5."), L"(refused)");
    EXPECT_EQ(Formatted(L"abc%l"), L"(refused)");
}

TEST(Format, AFormatThatWritesThroughItsArgumentsIsRefused) {
    int count = 77;
    EXPECT_EQ(Formatted(L"abc%n", &count), L"(refused)");
    EXPECT_EQ(Formatted(L"abc%hhn", &count), L"(refused)");
    EXPECT_EQ(count, 77);
}

TEST(Format, NarrowTextThatIsNotUtf8IsRefused) {
    EXPECT_EQ(Formatted(L"%hs", "\xFF"), L"(refused)");
}

TEST(Format, TheTextMustFitWithItsNul) {
    wchar_t buffer[5] = {L'#', L'#', L'#', L'#', L'#'};
    EXPECT_EQ(swprintf_s(buffer, 4, L"%s", L"abc"), 3);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(buffer[4], L'#');
    EXPECT_EQ(swprintf_s(buffer, 4, L"%s", L"abcd"), -1);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(buffer[4], L'#');
}

TEST(Format, NullArgumentsAreRefused) {
    wchar_t buffer[4] = L"###";
    EXPECT_EQ(swprintf_s(nullptr, 4, L"a"), -1);
    EXPECT_EQ(swprintf_s(buffer, 0, L"a"), -1);
    EXPECT_STREQ(buffer, L"###");
    EXPECT_EQ(swprintf_s(buffer, 4, nullptr), -1);
    EXPECT_STREQ(buffer, L"");
}

TEST(BoundedCopy, CopiesAtMostCountCharacters) {
    char dest[6] = "#####";
    EXPECT_EQ(strncpy_s(dest, 6, "abc", 10), 0);
    EXPECT_STREQ(dest, "abc");
    EXPECT_EQ(strncpy_s(dest, 6, "abcdefgh", 2), 0);
    EXPECT_STREQ(dest, "ab");
    EXPECT_EQ(strncpy_s(dest, 6, "abc", 0), 0);
    EXPECT_STREQ(dest, "");
    EXPECT_EQ(strncpy_s(dest, 6, "", 3), 0);
    EXPECT_STREQ(dest, "");
}

TEST(BoundedCopy, ATextThatDoesNotFitEmptiesTheDestination) {
    char dest[5] = {'#', '#', '#', '#', '#'};
    EXPECT_EQ(strncpy_s(dest, 4, "abc", 10), 0);
    EXPECT_STREQ(dest, "abc");
    EXPECT_EQ(strncpy_s(dest, 4, "abcd", 10), ERANGE);
    EXPECT_STREQ(dest, "");
    EXPECT_EQ(strncpy_s(dest, 4, "abcd", 4), ERANGE);
    EXPECT_EQ(strncpy_s(dest, 4, "abcd", 3), 0);
    EXPECT_STREQ(dest, "abc");
    EXPECT_EQ(dest[4], '#');
}

TEST(BoundedCopy, TheSourceNeedsNoNulWithinTheCount) {
    const char source[3] = {'a', 'b', 'c'};
    char dest[10];
    EXPECT_EQ(strncpy_s(dest, 10, source, 3), 0);
    EXPECT_STREQ(dest, "abc");
    EXPECT_EQ(strncpy_s(dest, 3, source, 3), ERANGE);
}

TEST(BoundedCopy, NullArgumentsAreRefused) {
    char dest[4] = "###";
    EXPECT_EQ(strncpy_s(nullptr, 4, "a", 1), EINVAL);
    EXPECT_EQ(strncpy_s(dest, 0, "a", 1), EINVAL);
    EXPECT_STREQ(dest, "###");
    EXPECT_EQ(strncpy_s(dest, 4, nullptr, 1), EINVAL);
    EXPECT_STREQ(dest, "");
}

}  // namespace
}  // namespace Kavra::OS
