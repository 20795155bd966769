#include "output/SmallDisk.h"
#include "output/WatchedFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

using Kavra::Devices::WatchedFile;
using Kavra::Tests::ReadAll;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

namespace {

std::string Text(const std::filesystem::path& path) {
    const std::vector<unsigned char> bytes = ReadAll(path);
    return {bytes.begin(), bytes.end()};
}

bool Write(WatchedFile& file, std::string_view text) {
    return file.write(text.data(), text.size()) == text.size();
}

TEST(WatchedFile, WhatIsWrittenIsInTheFile) {
    const TemporaryFolder folder;
    WatchedFile file(Wide(folder / "x"));
    EXPECT_TRUE(Write(file, "hello "));
    EXPECT_TRUE(Write(file, "world"));
    EXPECT_EQ(file.tell(), 11);
    EXPECT_EQ(file.size(), 11U);
    EXPECT_TRUE(file.Finish());
    EXPECT_EQ(Text(folder / "x"), "hello world");
}

TEST(WatchedFile, AWriterMayGoBackAndReadWhatItWrote) {
    const TemporaryFolder folder;
    WatchedFile file(Wide(folder / "x"));
    Write(file, "0123456789");
    EXPECT_TRUE(file.seek(2));
    char read[3] = {};
    EXPECT_EQ(file.read(read, 3), 3U);
    EXPECT_EQ(std::string_view(read, 3), "234");
    EXPECT_EQ(file.tell(), 5);
    Write(file, "AB");
    EXPECT_EQ(file.pwrite("Z", 1, 0), 1U);
    EXPECT_EQ(file.tell(), 7);
    Write(file, "C");
    EXPECT_FALSE(file.seek(-1));
    EXPECT_TRUE(file.Finish());
    EXPECT_EQ(Text(folder / "x"), "Z1234ABC89");
}

TEST(WatchedFile, WithoutAWriteThereIsNoFileAndNoSuccess) {
    const TemporaryFolder folder;
    const std::filesystem::path old = folder.Write("old", "kept");
    WatchedFile file(Wide(folder / "x"));
    EXPECT_FALSE(file.Finish());
    EXPECT_FALSE(std::filesystem::exists(folder / "x"));
    WatchedFile over(Wide(old));
    over.seek(100);
    EXPECT_FALSE(over.Finish());
    EXPECT_EQ(Text(old), "kept");
}

TEST(WatchedFile, AnOldFileIsReplacedByTheFirstWrite) {
    const TemporaryFolder folder;
    const std::filesystem::path old = folder.Write("old", "a long old text");
    WatchedFile file(Wide(old));
    Write(file, "new");
    EXPECT_TRUE(file.Finish());
    EXPECT_EQ(Text(old), "new");
}

TEST(WatchedFile, WritesThatDoNotReachTheDiskSucceedUntilTheEnd) {
    const TemporaryFolder folder;
    const std::string much(100000, 'x');
    const SmallDisk disk(4096);
    WatchedFile file(Wide(folder / "x"));
    EXPECT_TRUE(Write(file, much));
    EXPECT_TRUE(Write(file, much));
    EXPECT_EQ(file.tell(), 200000);
    EXPECT_FALSE(file.Finish());
}

TEST(WatchedFile, AFewBytesTooManyAreNoticedWhenTheFileIsClosed) {
    const TemporaryFolder folder;
    const SmallDisk disk(10);
    WatchedFile file(Wide(folder / "x"));
    EXPECT_TRUE(Write(file, "12345678901"));
    EXPECT_FALSE(file.Finish());
    WatchedFile fits(Wide(folder / "y"));
    EXPECT_TRUE(Write(fits, "1234567890"));
    EXPECT_TRUE(fits.Finish());
}

TEST(WatchedFile, AFolderIsNoFile) {
    const TemporaryFolder folder;
    WatchedFile file(Wide(folder.Path()));
    EXPECT_TRUE(Write(file, "text"));
    EXPECT_FALSE(file.Finish());
}

}  // namespace
