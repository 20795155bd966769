#include "legacy/RlcFile.h"
#include "readers/rlc/RlcReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;
using Kavra::Legacy::AddRlcDirectory;
using Kavra::Legacy::AddRlcReference;
using Kavra::Legacy::Bitmap;
using Kavra::Legacy::ByteBuilder;
using Kavra::Legacy::RlcEntry;

/// A picture that the probe takes.
ByteBuilder Picture() {
    return Kavra::Legacy::RlcFile(Bitmap(20, 3));
}

int Count(const ByteBuilder& file) {
    ByteSource source = file.Source();
    const auto trailer = ReadRlcTrailer(source);
    return trailer ? CountImages(source, *trailer) : -1;
}

int Count(std::vector<RlcEntry> entries) {
    ByteBuilder file = Picture();
    AddRlcDirectory(file, entries);
    return Count(file);
}

/// How many images a file with one reference to this name has.
int CountReference(std::string_view name) {
    ByteBuilder file = Picture();
    const auto record = static_cast<std::uint32_t>(file.Size());
    AddRlcReference(file, name);
    AddRlcDirectory(file, std::vector{RlcEntry{.type = 4, .reference = record}});
    return Count(file);
}

/// Changes the number of entries that a directory claims.
ByteBuilder WithClaim(std::vector<RlcEntry> entries, unsigned claim) {
    ByteBuilder file = Picture();
    AddRlcDirectory(file, entries);
    file.At(file.Size() - 344 + 22).Little16(claim);
    return file;
}

TEST(RlcDirectory, CountsImagesOfThisFile) {
    EXPECT_EQ(Count(std::vector<RlcEntry>{}), 0);
    EXPECT_EQ(Count({{.type = 2}}), 1);
    EXPECT_EQ(Count({{.type = 2}, {.type = 2}}), 2);
    EXPECT_EQ(Count({{.type = 0}, {.type = 1}, {.type = 2}, {.type = 3}, {.type = 5}, {.type = 0x0202}}), 1);
}

TEST(RlcDirectory, HoldsTwentyEntriesAtMost) {
    const std::vector<RlcEntry> full(20, RlcEntry{.type = 2});
    EXPECT_EQ(Count(full), 20);
    for (const unsigned claim : {21U, 1000U, 0x7FFFU})
        EXPECT_EQ(Count(WithClaim(full, claim)), 20) << claim;
}

TEST(RlcDirectory, TheNumberOfEntriesIsSigned) {
    const std::vector<RlcEntry> full(20, RlcEntry{.type = 2});
    EXPECT_EQ(Count(WithClaim(full, 7)), 7);
    EXPECT_EQ(Count(WithClaim(full, 0x8000)), 0);
    EXPECT_EQ(Count(WithClaim(full, 0xFFFF)), 0);
}

TEST(RlcDirectory, CountsReferencesToPicturesThatExist) {
    const TemporaryFolder folder;
    EXPECT_EQ(CountReference(folder.Write("picture.rlc", Picture().Bytes()).string()), 1);
    EXPECT_EQ(CountReference((folder / "missing").string()), 0);
    EXPECT_EQ(CountReference(folder.Write("text", "no picture").string()), 0);
    EXPECT_EQ(CountReference(""), 0);
    EXPECT_EQ(CountReference(folder.Path().string()), 0) << "a folder";
}

TEST(RlcDirectory, NamesAreBytesAndNotText) {
    const TemporaryFolder folder;
    EXPECT_EQ(CountReference(folder.Write("caf\xE9", Picture().Bytes()).string()), 1);
}

TEST(RlcDirectory, DoesNotWaitForAPipe) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(CountReference((folder / "pipe").string()), 0);
}

TEST(RlcDirectory, NamesAreTakenFromTheProcesssFolder) {
    const TemporaryFolder folder;
    folder.Write("beside.rlc", Picture().Bytes());
    EXPECT_EQ(CountReference("beside.rlc"), 0);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_EQ(CountReference("beside.rlc"), 1);
    std::filesystem::current_path(before);
}

TEST(RlcDirectory, ANameEndsWithItsRecord) {
    const TemporaryFolder folder;
    std::string name = folder.Path().string() + "/";
    name.append(144 - name.size(), 'x');
    folder.Write(std::filesystem::path(name).filename().string(), Picture().Bytes());
    ByteBuilder file = Picture();
    const auto record = static_cast<std::uint32_t>(file.Size());
    AddRlcReference(file, "");
    file.At(record + 56).Text(name).At(file.Size()).Text("yyy");  // no zero in the record, something behind it
    AddRlcDirectory(file, std::vector{RlcEntry{.type = 4, .reference = record}});
    EXPECT_EQ(Count(file), 1);
}

TEST(RlcDirectory, ARecordHasToBeInTheFileWhole) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("p", Picture().Bytes()).string();
    const auto countAt = [&](std::uint32_t offset) {
        ByteBuilder file = Picture();
        AddRlcReference(file, name);
        AddRlcDirectory(file, std::vector{RlcEntry{.type = 4, .reference = offset}});
        return Count(file);
    };
    const auto record = static_cast<std::uint32_t>(Picture().Size());
    EXPECT_EQ(countAt(record), 1);
    EXPECT_EQ(countAt(record + 200 + 344 - 199), 0);
    EXPECT_EQ(countAt(0xFFFFFFFF), 0);
}

TEST(RlcDirectory, WhatAReferencedFileRefersToIsNotFollowed) {
    const TemporaryFolder folder;
    const std::string inner = folder.Write("inner", Picture().Bytes()).string();
    ByteBuilder middle = Kavra::Legacy::RlcFile(Bitmap(4000, 3));
    const auto record = static_cast<std::uint32_t>(middle.Size());
    AddRlcReference(middle, inner);
    AddRlcDirectory(middle, std::vector(3, RlcEntry{.type = 4, .reference = record}));
    ASSERT_EQ(Count(middle), 3);
    EXPECT_EQ(CountReference(folder.Write("middle", middle.Bytes()).string()), 1);
}

}  // namespace
