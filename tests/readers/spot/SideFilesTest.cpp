#include "readers/ByteBuilder.h"
#include "readers/spot/SpotHeader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Common::Failure;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

std::wstring Replaced(const wchar_t* path) {
    return PathWithExtension(path, L".hdr").value_or(L"(none)");
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

TEST(SideFiles, AFileIsReadWholeUpToItsLimit) {
    const auto bytes = Kavra::Tests::ByteBuilder().Text(std::string_view("a\0b\r\n", 5));
    ByteSource file = bytes.Source();
    EXPECT_EQ(ReadWhole(file, 5), std::string("a\0b\r\n", 5));
    EXPECT_EQ(ReadWhole(file, 5), std::string("a\0b\r\n", 5)) << "wherever it stands";
    EXPECT_EQ(ReadWhole(file, 4).error(), Failure::kTooLarge);
    ByteSource empty{std::span<const unsigned char>()};
    EXPECT_EQ(ReadWhole(empty, 5), "");
}

/// "q.bil" and "q.hdr".
class SpotFiles : public testing::Test {
protected:
    SpotFiles() {
        mFolder.Write("q.bil", "data");
        mFolder.Write("q.hdr", "header");
    }

    TemporaryFolder mFolder;
};

TEST_F(SpotFiles, AnyPathOfTheirNameLeadsToThem) {
    for (const char* name : {"q.bil", "q.hdr", "q.not-there", "q."}) {
        auto files = OpenSpotFiles(Wide(mFolder / name));
        ASSERT_TRUE(files) << name;
        EXPECT_EQ(ReadWhole(files->source, 10), "data") << name;
        EXPECT_EQ(ReadWhole(*files->header, 10), "header") << name;
        EXPECT_EQ(files->path, Wide(mFolder / name).ToChars());
    }
    EXPECT_EQ(OpenSpotFiles(Wide(mFolder / "q")).error(), Failure::kCannotOpen) << "without an extension";
}

TEST_F(SpotFiles, BothMustBeThere) {
    mFolder.Write("p.bil", "");
    mFolder.Write("o.hdr", "");
    EXPECT_EQ(OpenSpotFiles(Wide(mFolder / "p.bil")).error(), Failure::kCannotOpen);
    EXPECT_EQ(OpenSpotFiles(Wide(mFolder / "o.bil")).error(), Failure::kCannotOpen);
}

TEST_F(SpotFiles, ThePathsOwnFileIsNotOpenedTwice) {
    const KString path = Wide(mFolder / "q.bil");
    ByteSource open = ByteSource::Open(path).value();
    std::filesystem::remove(mFolder / "q.bil");
    auto files = OpenSpotFiles(path, &open);
    ASSERT_TRUE(files) << "it was there when it was opened";
    EXPECT_EQ(ReadWhole(files->source, 10), "data");
    EXPECT_FALSE(OpenSpotFiles(Wide(mFolder / "q.dat"), &open)) << "which is another file";
}

}  // namespace
