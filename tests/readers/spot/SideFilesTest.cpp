#include "readers/spot/SideFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

std::wstring Replaced(const wchar_t* path) {
    const std::optional<KString> result = PathWithExtension(path, L".hdr");
    return result ? result->ToChars() : L"(none)";
}

TEST(PathWithExtension, ReplacesTheLastExtensionOfTheLastComponentOnly) {
    EXPECT_EQ(Replaced(L"x.bil"), L"x.hdr");
    EXPECT_EQ(Replaced(L"/a.bil/x.bil.bil"), L"/a.bil/x.bil.hdr");
    EXPECT_EQ(Replaced(L"a.b/c.d.e"), L"a.b/c.d.hdr");
    EXPECT_EQ(Replaced(L"x."), L"x.hdr");
    EXPECT_EQ(Replaced(L"d/.bil"), L"d/.hdr");
    EXPECT_EQ(Replaced(L"\u00FC\U0001F600.bil"), L"\u00FC\U0001F600.hdr");
}

TEST(PathWithExtension, WithoutAnExtensionThereIsNothingToReplace) {
    EXPECT_EQ(Replaced(L""), L"(none)");
    EXPECT_EQ(Replaced(L"x"), L"(none)");
    EXPECT_EQ(Replaced(L"a.bil/x"), L"(none)");
    EXPECT_EQ(Replaced(L"a.bil/"), L"(none)");
}

TEST(PathWithExtension, TakesPathsOfAnyLength) {
    const std::wstring stem(100'000, L'a');
    EXPECT_EQ(Replaced((stem + L".bil").c_str()), stem + L".hdr");
    EXPECT_EQ(Replaced((L"x." + stem).c_str()), L"x.hdr");
}

TEST(SideFiles, OnlyARegularFileCanBeOpened) {
    const TemporaryFolder folder;
    EXPECT_TRUE(CanOpen(Wide(folder.Write("x", ""))));
    EXPECT_FALSE(CanOpen(Wide(folder / "y")));
    EXPECT_FALSE(CanOpen(Wide(folder.Path())));
}

TEST(SideFiles, AFileIsReadWholeUpToItsLimit) {
    const TemporaryFolder folder;
    const KString path = Wide(folder.Write("x", std::string_view("a\0b\r\n", 5)));
    EXPECT_EQ(ReadWhole(path, 5), std::string("a\0b\r\n", 5));
    EXPECT_EQ(ReadWhole(path, 4), std::nullopt);
    EXPECT_EQ(ReadWhole(Wide(folder / "y"), 5), std::nullopt);
    EXPECT_EQ(ReadWhole(Wide(folder.Write("empty", "")), 5), "");
}

}  // namespace
