// Memory that another process writes: what is read of it is there, or nothing is.

#include "common/isolation/SharedMemory.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Common;

namespace {

Descriptor Holding(const std::string& bytes) {
    Descriptor memory = NewSharedMemory();
    EXPECT_EQ(write(memory.Number(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    return memory;
}

}  // namespace

TEST(SharedMemory, BytesAreCopiedFromWhereTheyStand) {
    const Descriptor memory = Holding("0123456789");
    std::vector<unsigned char> out(4);
    ASSERT_TRUE(CopyShared(memory.Number(), 3, out));
    EXPECT_EQ(std::string(out.begin(), out.end()), "3456");
    EXPECT_TRUE(CopyShared(memory.Number(), 0, {}));
}

TEST(SharedMemory, BytesThatAreNotAllThereAreNotCopied) {
    const Descriptor memory = Holding("0123456789");
    std::vector<unsigned char> out(4);
    for (const std::uint64_t offset : {std::uint64_t{7}, std::uint64_t{10}, std::numeric_limits<std::uint64_t>::max()})
        EXPECT_FALSE(CopyShared(memory.Number(), offset, out)) << offset;
    EXPECT_FALSE(CopyShared(-1, 0, out));
}

TEST(SharedMemory, WhatIsMappedNeitherShrinksNorGrows) {
    const Descriptor memory = Holding(std::string(8192, 'x'));
    void* const pages = MapSealed(memory.Number(), 4096, 4096);
    ASSERT_NE(pages, nullptr);
    EXPECT_NE(ftruncate(memory.Number(), 0), 0);
    EXPECT_NE(ftruncate(memory.Number(), 10'000), 0);
    EXPECT_EQ(static_cast<const char*>(pages)[4095], 'x');
    EXPECT_EQ(munmap(pages, 4096), 0);
    const Descriptor shorter = Holding("0123");
    EXPECT_EQ(MapSealed(shorter.Number(), 0, 5), nullptr);
}
