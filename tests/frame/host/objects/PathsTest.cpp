#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kavra::OS {
namespace {

struct SplitCase {
    const wchar_t *path, *directory, *name, *extension;
};

const SplitCase kCases[] = {
    {L"/a/b/picture.png", L"/a/b/", L"picture", L".png"},
    {L"picture.png", L"", L"picture", L".png"},
    {L"picture", L"", L"picture", L""},
    {L"/picture", L"/", L"picture", L""},
    {L"a/b/", L"a/b/", L"", L""},
    {L"/", L"/", L"", L""},
    {L"", L"", L"", L""},
    {L".dds", L"", L"", L".dds"},
    {L"d.png/a", L"d.png/", L"a", L""},
    {L"a.tar.gz", L"", L"a.tar", L".gz"},
    {L"a.", L"", L"a", L"."},
    {L"a/..", L"a/", L".", L"."},
    {L"a\\b.png", L"", L"a\\b", L".png"},
    {L"/\x1F600/\x1F600.p\x1F600g", L"/\x1F600/", L"\x1F600", L".p\x1F600g"},
};

TEST(SplitPath, GivesTheFourParts) {
    for (const SplitCase& c : kCases) {
        // Each output has exactly the capacity that it is promised to need.
        const std::size_t capacity = std::wcslen(c.path) + 1;
        std::vector<wchar_t> drive(capacity, L'#'), dir(capacity, L'#'), name(capacity, L'#'), ext(capacity, L'#');
        _wsplitpath(c.path, drive.data(), dir.data(), name.data(), ext.data());
        EXPECT_STREQ(drive.data(), L"");
        EXPECT_STREQ(dir.data(), c.directory);
        EXPECT_STREQ(name.data(), c.name);
        EXPECT_STREQ(ext.data(), c.extension);
    }
}

TEST(SplitPath, AnyOutputMayBeLeftOut) {
    wchar_t ext[20] = L"#";
    _wsplitpath(L"/a/b.png", nullptr, nullptr, nullptr, ext);
    EXPECT_STREQ(ext, L".png");
    _wsplitpath(L"/a/b.png", nullptr, nullptr, nullptr, nullptr);
    _wsplitpath(nullptr, nullptr, nullptr, nullptr, ext);
    EXPECT_STREQ(ext, L"");
}

TEST(SplitPath, ALongPathIsSplitWhole) {
    const std::wstring folder = std::wstring(3000, L'f') + L"/";
    const std::wstring file = std::wstring(2000, L'n');
    std::vector<wchar_t> dir(6000), name(6000), ext(6000);
    _wsplitpath((folder + file + L".png").c_str(), nullptr, dir.data(), name.data(), ext.data());
    EXPECT_EQ(dir.data(), folder);
    EXPECT_EQ(name.data(), file);
    EXPECT_STREQ(ext.data(), L".png");
}

TEST(SplitPath, TheDirectoryAloneHasItsTrailingSeparator) {
    for (const SplitCase& c : kCases) {
        if (*c.path == L'\0') continue;
        wchar_t out[100] = L"#";
        EXPECT_EQ(wsplitpath(c.path, out, 100), 0);
        EXPECT_STREQ(out, c.directory);
    }
}

TEST(SplitPath, ADirectoryMustFitWithItsNul) {
    wchar_t out[6] = L"#####";
    EXPECT_EQ(wsplitpath(L"/a/b/c.png", out, 6), 0);
    EXPECT_STREQ(out, L"/a/b/");
    EXPECT_EQ(wsplitpath(L"/a/b/c.png", out, 5), -1);
    EXPECT_STREQ(out, L"");
    EXPECT_EQ(wsplitpath(L"c.png", out, 1), 0);
    EXPECT_EQ(wsplitpath((std::wstring(5000, L'f') + L"/x").c_str(), out, 6), -1);
    EXPECT_STREQ(out, L"");
}

TEST(SplitPath, NoPathOrNoRoomIsAnError) {
    wchar_t out[4] = L"###";
    EXPECT_EQ(wsplitpath(L"", out, 4), -1);
    EXPECT_STREQ(out, L"");
    out[0] = L'#';
    EXPECT_EQ(wsplitpath(nullptr, out, 4), -1);
    EXPECT_STREQ(out, L"");
    out[0] = L'#';
    EXPECT_EQ(wsplitpath(L"a/b", out, 0), -1);
    EXPECT_EQ(out[0], L'#');
    EXPECT_EQ(wsplitpath(L"a/b", nullptr, 4), -1);
}

}  // namespace
}  // namespace Kavra::OS
