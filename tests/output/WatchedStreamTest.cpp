#include "output/SmallDisk.h"
#include "output/WatchedStream.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using Kavra::Devices::WatchedFile;
using Kavra::Devices::WatchedStream;
using Kavra::Tests::ReadAll;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
using testing::ElementsAre;

namespace {

TEST(WatchedStream, WhatIsWrittenIsInTheFile) {
    const TemporaryFolder folder;
    WatchedFile file(Wide(folder / "x"));
    WatchedStream stream(file);
    EXPECT_STREQ(stream.proxytype(), "file");
    EXPECT_GE(std::fputs("hello", stream.handle()), 0);
    stream.HandOn();
    EXPECT_EQ(std::fseek(stream.handle(), 1, SEEK_SET), 0);
    EXPECT_EQ(std::fputc('a', stream.handle()), 'a');
    EXPECT_EQ(std::fseek(stream.handle(), 0, SEEK_END), 0);
    EXPECT_EQ(std::ftell(stream.handle()), 5);
    EXPECT_EQ(std::fputc('!', stream.handle()), '!');
    stream.HandOn();
    EXPECT_TRUE(file.Finish());
    EXPECT_THAT(ReadAll(folder / "x"), ElementsAre('h', 'a', 'l', 'l', 'o', '!'));
}

TEST(WatchedStream, EveryWriteSucceedsAndTheFileTells) {
    const TemporaryFolder folder;
    const std::string much(100'000, 'x');
    const SmallDisk disk(4096);
    WatchedFile file(Wide(folder / "x"));
    WatchedStream stream(file);
    EXPECT_EQ(std::fwrite(much.data(), 1, much.size(), stream.handle()), much.size());
    stream.HandOn();
    EXPECT_EQ(std::ferror(stream.handle()), 0);
    EXPECT_FALSE(file.Finish());
}

TEST(WatchedStream, WithoutAWriteThereIsNoFile) {
    const TemporaryFolder folder;
    WatchedFile file(Wide(folder / "x"));
    {
        WatchedStream stream(file);
        stream.HandOn();
    }
    EXPECT_FALSE(file.Finish());
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

}  // namespace
