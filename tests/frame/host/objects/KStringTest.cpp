#include <kavra/objects/KString.h>

#include <gtest/gtest.h>

#include <utility>

namespace Kavra::Objects {
namespace {

TEST(KString, NothingAndNullAreTheEmptyString) {
    for (const KString& text : {KString(), KString(nullptr), KString(L"")}) {
        EXPECT_EQ(text.GetLen(), 0U);
        ASSERT_NE(text.ToChars(), nullptr);
        EXPECT_STREQ(text.ToChars(), L"");
    }
}

TEST(KString, OwnsACopyOfItsCharacters) {
    wchar_t source[] = L"picture.png";
    const KString text(source);
    source[0] = L'X';
    EXPECT_STREQ(text.ToChars(), L"picture.png");
    EXPECT_STREQ(static_cast<const wchar_t*>(text), L"picture.png");
    EXPECT_EQ(text.GetLen(), 11U);
}

TEST(KString, CountsCodePointsBeyondTheBasicPlaneOnce) {
    EXPECT_EQ(KString(L"\x1F600x").GetLen(), 2U);
}

TEST(KString, CopiesAreIndependent) {
    KString a(L"one");
    KString b(a);
    KString c;
    c = a;
    EXPECT_NE(a.ToChars(), b.ToChars());
    EXPECT_TRUE(a.FindAndReplace(L"one", L"two", 0));
    EXPECT_STREQ(b, L"one");
    EXPECT_STREQ(c, L"one");
    b = std::move(a);
    EXPECT_STREQ(b, L"two");
    const KString& same = b;
    b = same;
    EXPECT_STREQ(b, L"two");
}

TEST(KString, CompareNoCaseFindsEqualityAndOrder) {
    EXPECT_EQ(KString(L".DDS").CompareNoCase(L".dds"), 0);
    EXPECT_EQ(KString(L"").CompareNoCase(nullptr), 0);
    EXPECT_EQ(KString(L"a").CompareNoCase(nullptr), 1);
    EXPECT_EQ(KString(L"").CompareNoCase(L"a"), -1);
    EXPECT_EQ(KString(L"abc").CompareNoCase(L"ABD"), -1);
    EXPECT_EQ(KString(L"ABD").CompareNoCase(L"abc"), 1);
    EXPECT_EQ(KString(L"ab").CompareNoCase(L"abc"), -1);
    EXPECT_EQ(KString(L"abc").CompareNoCase(L"AB"), 1);
    EXPECT_EQ(KString(L"Z").CompareNoCase(L"_"), 1) << "compared in lower case, where _ comes before letters";
}

TEST(KString, RightGivesTheEndOrAllThereIs) {
    const KString text(L"file.dds");
    EXPECT_STREQ(text.Right(4), L".dds");
    EXPECT_STREQ(text.Right(0), L"");
    EXPECT_STREQ(text.Right(8), L"file.dds");
    EXPECT_STREQ(text.Right(9), L"file.dds");
    EXPECT_STREQ(KString().Right(4), L"");
}

struct Replacement {
    const wchar_t *text, *find, *replace;
    std::size_t start;
    bool replaced;
    const wchar_t* result;
};

TEST(KString, FindAndReplaceFollowsItsRule) {
    const Replacement cases[] = {
        {L"a/b/c", L"/", L"\\", 0, true, L"a\\b\\c"},
        {L"a/b/c", L"/", L"\\", 2, true, L"a/b\\c"},
        {L"a/b/c", L"/", L"\\", 1, true, L"a\\b\\c"},
        {L"a/b/c", L"/", L"\\", 4, false, L"a/b/c"},
        {L"a/b/c", L"/", L"\\", 5, false, L"a/b/c"},
        {L"a/b/c", L"/", L"\\", 99, false, L"a/b/c"},
        {L"aaaa", L"aa", L"a", 0, true, L"aa"},
        {L"aaaaa", L"aa", L"b", 0, true, L"bba"},
        {L"x", L"x", L"xx", 0, true, L"xx"},
        {L"ab", L"a", L"", 0, true, L"b"},
        {L"ab", L"a", nullptr, 0, true, L"b"},
        {L"a", L"a", L"", 0, true, L""},
        {L"ab", L"", L"x", 0, false, L"ab"},
        {L"ab", nullptr, L"x", 0, false, L"ab"},
        {L"", L"a", L"x", 0, false, L""},
        {L"Ab", L"a", L"x", 0, false, L"Ab"},
    };
    for (const Replacement& c : cases) {
        KString text(c.text);
        EXPECT_EQ(text.FindAndReplace(c.find, c.replace, c.start), c.replaced) << testing::PrintToString(c.text);
        EXPECT_STREQ(text, c.result);
        EXPECT_EQ(text.GetLen(), std::wcslen(c.result));
    }
}

TEST(KString, FindAndReplaceMayBeGivenPartsOfTheStringItself) {
    KString text(L"abcabc");
    EXPECT_TRUE(text.FindAndReplace(text.Right(3), text, 0));
    EXPECT_STREQ(text, L"abcabcabcabc");
    KString word(L"xyz");
    EXPECT_TRUE(word.FindAndReplace(word.ToChars() + 1, word.ToChars(), 0));
    EXPECT_STREQ(word, L"xxyz");
}

}  // namespace
}  // namespace Kavra::Objects
