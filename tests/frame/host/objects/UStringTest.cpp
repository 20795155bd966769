#include "frame/host/objects/Threads.h"

#include <kavra/objects/UString.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kavra::Objects {
namespace {

TEST(Intern, EqualTextsHaveOneName) {
    const std::wstring text = L"ImageHandler";
    const std::wstring same = L"ImageHandler";
    ASSERT_NE(text.c_str(), same.c_str());
    EXPECT_EQ(Intern(text.c_str()), Intern(same.c_str()));
    EXPECT_STREQ(Intern(text.c_str())->ToChars(), L"ImageHandler");
}

TEST(Intern, DifferentTextsHaveDifferentNames) {
    EXPECT_NE(Intern(L"a"), Intern(L"A"));
    EXPECT_NE(Intern(L"a"), Intern(L"a "));
    EXPECT_NE(Intern(L"\x1F600"), Intern(L"\x1F601"));
}

TEST(Intern, NullIsTheEmptyName) {
    EXPECT_EQ(Intern(nullptr), Intern(L""));
    EXPECT_STREQ(Intern(nullptr)->ToChars(), L"");
}

TEST(Intern, KeepsItsOwnCopyOfTheText) {
    wchar_t text[] = L"volatile";
    UString* const name = Intern(text);
    text[0] = L'V';
    EXPECT_STREQ(name->ToChars(), L"volatile");
    EXPECT_EQ(Intern(L"volatile"), name);
    EXPECT_NE(Intern(text), name);
}

TEST(Intern, NamesStayInPlaceWhenManyMoreCome) {
    UString* const name = Intern(L"first of many");
    for (int i = 0; i < 2000; ++i)
        Intern((L"many " + std::to_wstring(i)).c_str());
    EXPECT_EQ(Intern(L"first of many"), name);
    EXPECT_STREQ(name->ToChars(), L"first of many");
}

TEST(Intern, AllThreadsGetTheSameNames) {
    std::vector<std::vector<UString*>> names(8);
    Tests::OnThreads(8, [&](int thread) {
        for (int i = 0; i < 500; ++i)
            names[thread].push_back(Intern((L"thread " + std::to_wstring(i)).c_str()));
    });
    for (const auto& list : names)
        EXPECT_EQ(list, names[0]);
}

}  // namespace
}  // namespace Kavra::Objects
