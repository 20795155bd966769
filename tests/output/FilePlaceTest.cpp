#include "output/FilePlace.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using Kavra::Devices::FilePlace;
using Kavra::Tests::ReadAll;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
namespace fs = std::filesystem;

namespace {

std::string Text(const fs::path& path) {
    const std::vector<unsigned char> bytes = ReadAll(path);
    return {bytes.begin(), bytes.end()};
}

void Fill(const FilePlace& place) {
    std::ofstream(fs::path(place.Path())) << "new";
}

bool IsItself(const FilePlace& place, const fs::path& path) {
    return fs::path(place.Path()) == path;
}

std::ptrdiff_t FilesIn(const TemporaryFolder& folder) {
    return std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator());
}

TEST(FilePlace, OfAFreeNameIsThatName) {
    const TemporaryFolder folder;
    {
        FilePlace place(Wide(folder / "x.png"));
        EXPECT_TRUE(IsItself(place, folder / "x.png"));
        EXPECT_FALSE(fs::exists(folder / "x.png"));
        Fill(place);
        EXPECT_TRUE(place.Commit());
    }
    {
        FilePlace torn(Wide(folder / "y.png"));
        Fill(torn);
    }
    EXPECT_EQ(Text(folder / "x.png"), "new");
    EXPECT_EQ(Text(folder / "y.png"), "new");
}

TEST(FilePlace, OfAnOldFileIsBesideItUntilTheNewOneIsWhole) {
    const TemporaryFolder folder;
    const fs::path old = folder.Write("x.tar.png", "old");
    FilePlace place(Wide(old));
    const fs::path beside(place.Path());
    EXPECT_EQ(beside.parent_path(), folder.Path());
    EXPECT_EQ(beside.extension(), ".png");
    EXPECT_EQ(beside.filename().string()[0], '.');
    Fill(place);
    EXPECT_EQ(Text(old), "old");
    EXPECT_TRUE(place.Commit());
    EXPECT_EQ(Text(old), "new");
    EXPECT_EQ(FilesIn(folder), 1);
}

TEST(FilePlace, ThatIsNotCommittedLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    const fs::path old = folder.Write("x.png", "old");
    {
        const FilePlace place(Wide(old));
        Fill(place);
    }
    EXPECT_EQ(Text(old), "old");
    EXPECT_EQ(FilesIn(folder), 1);
}

TEST(FilePlace, TwoForOneFileDoNotMeet) {
    const TemporaryFolder folder;
    const fs::path old = folder.Write("x", "old");
    const FilePlace one(Wide(old)), other(Wide(old));
    EXPECT_NE(std::wstring(one.Path()), std::wstring(other.Path()));
}

TEST(FilePlace, GivesTheNewFileThePermissionsOfTheOldOne) {
    const TemporaryFolder folder;
    const fs::path old = folder.Write("x", "old");
    fs::permissions(old, fs::perms(0604));
    FilePlace place(Wide(old));
    EXPECT_EQ(fs::status(place.Path()).permissions(), fs::perms(0604));
    EXPECT_TRUE(place.Commit());
    EXPECT_EQ(fs::status(old).permissions(), fs::perms(0604));
}

TEST(FilePlace, OfAFileWithAnotherNameOrALinkIsTheFileItself) {
    const TemporaryFolder folder;
    const fs::path hard = folder.Write("hard", "old"), soft = folder / "soft";
    fs::create_hard_link(hard, folder / "second");
    fs::create_symlink(hard, soft);
    for (const fs::path& path : {hard, soft}) {
        FilePlace place(Wide(path));
        EXPECT_TRUE(IsItself(place, path));
        Fill(place);
        EXPECT_TRUE(place.Commit());
        EXPECT_EQ(Text(folder / "second"), "new");
    }
    EXPECT_TRUE(fs::is_symlink(soft));
}

TEST(FilePlace, CannotBeCommittedWhenItsFileHasGone) {
    const TemporaryFolder folder;
    const fs::path old = folder.Write("x", "old");
    FilePlace place(Wide(old));
    fs::remove(place.Path());
    EXPECT_FALSE(place.Commit());
    EXPECT_EQ(Text(old), "old");
}

}  // namespace
