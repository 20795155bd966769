#include "support/TemporaryFolder.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using Kavra::Devices::IFileHandler;
using Kavra::Devices::Sys;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

namespace {

IFileHandler& Files() {
    return *Sys::FileHandler();
}

TEST(FileHandler, TheWholePathIsTakenNoteOfAndNothingMore) {
    const TemporaryFolder folder;
    EXPECT_TRUE(Files().PreparePath(Wide(folder / "a/b/c.png")));
    EXPECT_TRUE(Files().PreparePath(nullptr));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(FileHandler, AFolderExistsWithAndWithoutItsSeparator) {
    const TemporaryFolder folder;
    const std::wstring name = Wide(folder.Path()).ToChars();
    EXPECT_TRUE(Files().DirectoryExists(name.c_str()));
    EXPECT_TRUE(Files().DirectoryExists((name + L"/").c_str()));
}

TEST(FileHandler, TheEmptyNameIsTheCurrentFolder) {
    EXPECT_TRUE(Files().DirectoryExists(L""));
    EXPECT_TRUE(Files().DirectoryExists(nullptr));
    EXPECT_TRUE(Files().CreateDirectory(L""));
}

TEST(FileHandler, AFileIsNoFolder) {
    const TemporaryFolder folder;
    folder.Write("file", "text");
    EXPECT_FALSE(Files().DirectoryExists(Wide(folder / "file")));
    EXPECT_FALSE(Files().DirectoryExists(Wide(folder / "missing")));
    EXPECT_FALSE(Files().CreateDirectory(Wide(folder / "file")));
    EXPECT_FALSE(Files().CreateDirectory(Wide(folder / "file/below")));
}

TEST(FileHandler, CreatingMakesTheFoldersAboveToo) {
    const TemporaryFolder folder;
    EXPECT_TRUE(Files().CreateDirectory(Wide(folder / "a/b/c/")));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a/b/c"));
    EXPECT_TRUE(Files().CreateDirectory(Wide(folder / "a/b/c")));
}

TEST(FileHandler, NamesBeyondAsciiAreUtf8OnDisk) {
    const TemporaryFolder folder;
    const std::wstring name = std::wstring(Wide(folder.Path()).ToChars()) + L"/\u00fc\u4e2d\U0001F600/x";
    EXPECT_TRUE(Files().CreateDirectory(name.c_str()));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "\xc3\xbc\xe4\xb8\xad\xf0\x9f\x98\x80/x"));
    EXPECT_TRUE(Files().DirectoryExists(name.c_str()));
}

TEST(FileHandler, NamesThatAreNoTextKeepTheirBytes) {
    const TemporaryFolder folder;
    EXPECT_TRUE(Files().CreateDirectory(Wide(folder / "caf\xE9/x")));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "caf\xE9/x"));
    EXPECT_TRUE(Files().DirectoryExists(Wide(folder / "caf\xE9")));
}

TEST(FileHandler, ANameThatTheSystemDoesNotTakeIsFalse) {
    const std::wstring longName(5000, L'a');
    EXPECT_FALSE(Files().DirectoryExists(longName.c_str()));
    EXPECT_FALSE(Files().CreateDirectory(longName.c_str()));
    EXPECT_FALSE(Files().CreateDirectory(L"/proc/kavra/folder"));
}

TEST(FileHandler, EightThreadsMayCreateOneFolder) {
    const TemporaryFolder folder;
    const Kavra::Objects::KString name = Wide(folder / "p/q/r/s");
    std::vector<int> made(8);
    {
        std::vector<std::jthread> threads;
        for (int& result : made)
            threads.emplace_back([&] { result = Files().CreateDirectory(name); });
    }
    EXPECT_EQ(made, std::vector<int>(8, 1));
}

}  // namespace
