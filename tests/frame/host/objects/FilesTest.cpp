#include "common/FileHandle.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

namespace Kavra::OS {
namespace {

using Common::FileHandle;
using Tests::Wide;

struct Opened {
    int error;
    FileHandle file;
};

Opened Open(const std::filesystem::path& path, const char* mode) {
    std::FILE* file = reinterpret_cast<std::FILE*>(1);
    const int error = OS::fopen(&file, path.c_str(), mode);
    return {error, FileHandle(file)};
}

Opened OpenWide(const wchar_t* path, const wchar_t* mode) {
    std::FILE* file = reinterpret_cast<std::FILE*>(1);
    const int error = OS::wfopen(&file, path, mode);
    return {error, FileHandle(file)};
}

std::string Contents(const std::filesystem::path& path) {
    const std::vector<unsigned char> bytes = Tests::ReadAll(path);
    return std::string(bytes.begin(), bytes.end());
}

std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class Files : public testing::Test {
protected:
    void WriteTo(const std::filesystem::path& path, const char* mode, const char* text) {
        const Opened opened = Open(path, mode);
        ASSERT_EQ(opened.error, 0) << mode;
        EXPECT_GE(std::fputs(text, opened.file.get()), 0);
    }

    void ExpectRefused(const std::filesystem::path& path, int error) {
        for (const char* const mode : {"rb", "wb", "ab", "r+b", "w+", "a+"}) {
            const Opened opened = Open(path, mode);
            EXPECT_EQ(opened.error, error) << path << " " << mode;
            EXPECT_EQ(opened.file, nullptr);
        }
        EXPECT_FALSE(IsRegularFile(Wide(path)));
    }

    Tests::TemporaryFolder folder;
};

TEST_F(Files, AFileIsReadFromItsStart) {
    const auto path = folder.Write("a.txt", std::string_view("hello"));
    const Opened opened = Open(path, "rb");
    ASSERT_EQ(opened.error, 0);
    char bytes[10] = {};
    EXPECT_EQ(std::fread(bytes, 1, sizeof(bytes), opened.file.get()), 5U);
    EXPECT_STREQ(bytes, "hello");
    EXPECT_TRUE(IsRegularFile(Wide(path)));
}

TEST_F(Files, AMissingFileIsAnErrorForReadingOnly) {
    EXPECT_EQ(Open(folder / "none", "rb").error, ENOENT);
    EXPECT_EQ(Open(folder / "none", "r+b").error, ENOENT);
    EXPECT_EQ(Open(folder / "none", "rb").file, nullptr);
    EXPECT_FALSE(IsRegularFile(Wide(folder / "none")));
    WriteTo(folder / "new", "wb", "made");
    EXPECT_EQ(Contents(folder / "new"), "made");
    WriteTo(folder / "appended", "ab", "made");
    EXPECT_EQ(Contents(folder / "appended"), "made");
}

TEST_F(Files, EachModeTreatsOldContentsAsInTheCLibrary) {
    const auto path = folder / "f";
    const auto after = [&](const char* mode) {
        folder.Write("f", std::string_view("old text"));
        WriteTo(path, mode, "NEW");
        return Contents(path);
    };
    EXPECT_EQ(after("w"), "NEW");
    EXPECT_EQ(after("wb"), "NEW");
    EXPECT_EQ(after("wt"), "NEW");
    EXPECT_EQ(after("w+b"), "NEW");
    EXPECT_EQ(after("r+b"), "NEW text");
    EXPECT_EQ(after("rb+"), "NEW text");
    EXPECT_EQ(after("ab"), "old textNEW");
    EXPECT_EQ(after("a+"), "old textNEW");
}

TEST_F(Files, WhatWasOpenedForOneDirectionRefusesTheOther) {
    const auto path = folder.Write("f", std::string_view("old"));
    const Opened reading = Open(path, "rb");
    EXPECT_EQ(std::fputc('x', reading.file.get()), EOF);
    const Opened writing = Open(path, "ab");
    EXPECT_EQ(std::fgetc(writing.file.get()), EOF);
    EXPECT_TRUE(std::ferror(writing.file.get()));
    const Opened both = Open(path, "a+b");
    EXPECT_EQ(std::fgetc(both.file.get()), 'o');
}

TEST_F(Files, AnExclusiveModeRefusesAnExistingFile) {
    const auto path = folder.Write("f", std::string_view("old"));
    EXPECT_EQ(Open(path, "wx").error, EEXIST);
    EXPECT_EQ(Contents(path), "old");
    WriteTo(folder / "g", "wbx", "new");
    EXPECT_EQ(Contents(folder / "g"), "new");
}

TEST_F(Files, AModeThatIsNoneIsRefusedAndChangesNothing) {
    const auto path = folder.Write("f", std::string_view("old"));
    for (const char* const mode : {"", "b", "x", "rw", "q", "wb,ccs=UTF-8", " r"}) {
        EXPECT_EQ(Open(path, mode).error, EINVAL) << mode;
        EXPECT_EQ(Open(path, mode).file, nullptr) << mode;
    }
    EXPECT_EQ(Contents(path), "old");
}

TEST_F(Files, NullArgumentsAreRefused) {
    std::FILE* file = reinterpret_cast<std::FILE*>(1);
    EXPECT_EQ(OS::fopen(&file, nullptr, "rb"), EINVAL);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(OS::fopen(&file, "x", nullptr), EINVAL);
    EXPECT_EQ(OS::fopen(nullptr, "x", "rb"), EINVAL);
    EXPECT_EQ(OpenWide(nullptr, L"rb").error, EINVAL);
    EXPECT_EQ(OpenWide(L"x", nullptr).error, EINVAL);
    EXPECT_EQ(OS::wfopen(nullptr, L"x", L"rb"), EINVAL);
    EXPECT_EQ(OpenWide(L"", L"rb").error, ENOENT);
    EXPECT_FALSE(IsRegularFile(nullptr));
    EXPECT_FALSE(IsRegularFile(L""));
}

TEST_F(Files, AFolderIsRefused) {
    ExpectRefused(folder.Path(), EISDIR);
    std::filesystem::create_directory_symlink(folder.Path(), folder / "link");
    ExpectRefused(folder / "link", EISDIR);
}

TEST_F(Files, APipeIsRefusedWithoutWaitingForItsOtherEnd) {
    const auto path = folder / "pipe.png";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ExpectRefused(path, EINVAL);
    std::filesystem::create_symlink(path, folder / "link.png");
    ExpectRefused(folder / "link.png", EINVAL);
}

TEST_F(Files, ADeviceOrSocketIsRefused) {
    ExpectRefused("/dev/null", EINVAL);
    ExpectRefused("/dev/zero", EINVAL);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(listener, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, (folder / "s").c_str(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ExpectRefused(folder / "s", EINVAL);
    close(listener);
}

TEST_F(Files, ALinkToAFileIsTheFile) {
    const auto path = folder.Write("f", std::string_view("text"));
    std::filesystem::create_symlink(path, folder / "link");
    EXPECT_EQ(Open(folder / "link", "rb").error, 0);
    EXPECT_TRUE(IsRegularFile(Wide(folder / "link")));
    std::filesystem::create_symlink(folder / "nowhere", folder / "dangling");
    EXPECT_EQ(Open(folder / "dangling", "rb").error, ENOENT);
    EXPECT_FALSE(IsRegularFile(Wide(folder / "dangling")));
}

TEST_F(Files, WideNamesAreUtf8OnTheDisk) {
    const std::string name = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.png";
    folder.Write(name, std::string_view("text"));
    const std::wstring start = FromUtf8(folder.Path().c_str()) + L"/\xE4\x20AC";
    EXPECT_EQ(OpenWide((start + L"\x1F600.png").c_str(), L"rb").error, 0);
    EXPECT_TRUE(IsRegularFile((start + L"\x1F600.png").c_str()));
    const wchar_t surrogates[] = {0xD83D, 0xDE00, 0};
    EXPECT_EQ(OpenWide((start + surrogates + L".png").c_str(), L"rb").error, 0);
    EXPECT_EQ(OpenWide((start + L"\x1F601.png").c_str(), L"rb").error, ENOENT);
    EXPECT_EQ(OpenWide((start + L"\x1F601.png").c_str(), L"wb").error, 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x81.png"));
}

TEST_F(Files, NamesThatAreNoTextKeepTheirBytes) {
    const std::string name = "caf\xE9 \xFF\xC0\xAF.png";
    folder.Write(name, std::string_view("text"));
    const std::wstring wide = FromUtf8((folder / name).c_str());
    EXPECT_EQ(OpenWide(wide.c_str(), L"rb").error, 0);
    EXPECT_TRUE(IsRegularFile(wide.c_str()));
    EXPECT_EQ(OpenWide((wide + L".new").c_str(), L"wb").error, 0);
    EXPECT_TRUE(std::filesystem::exists(folder / (name + ".new")));
}

TEST_F(Files, AWideModeThatIsNoneIsRefused) {
    EXPECT_EQ(OpenWide(Wide(folder / "f"), L"\x1F600").error, EINVAL);
    EXPECT_FALSE(std::filesystem::exists(folder / "f"));
}

TEST_F(Files, APathThatIsTooLongIsAnError) {
    const std::wstring path(5000, L'a');
    EXPECT_EQ(OpenWide(path.c_str(), L"rb").error, ENAMETOOLONG);
    EXPECT_EQ(OpenWide(path.c_str(), L"wb").error, ENAMETOOLONG);
    EXPECT_FALSE(IsRegularFile(path.c_str()));
}

TEST_F(Files, AFolderThatMayNotBeWrittenIsAnError) {
    if (geteuid() == 0) GTEST_SKIP() << "the superuser may write anywhere";
    std::filesystem::permissions(folder.Path(),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    EXPECT_EQ(Open(folder / "new", "wb").error, EACCES);
    std::filesystem::permissions(folder.Path(), std::filesystem::perms::owner_all);
}

TEST_F(Files, HandlesAreNotInherited) {
    const Opened opened = Open(folder.Write("f", std::string_view("text")), "rb");
    EXPECT_TRUE(fcntl(fileno(opened.file.get()), F_GETFD) & FD_CLOEXEC);
}

TEST_F(Files, RefusalsLeaveNoHandleOpen) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    folder.Write("f", std::string_view("text"));
    const auto before = OpenDescriptors();
    for (int i = 0; i < 20; ++i) {
        Open(folder.Path(), "rb");
        Open(folder / "pipe", "rb");
        Open("/dev/zero", "rb");
        Open(folder / "f", "zz");
        Open(folder / "f", "rb");
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

}  // namespace
}  // namespace Kavra::OS
