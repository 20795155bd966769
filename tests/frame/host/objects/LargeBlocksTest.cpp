#include "common/PixelBlock.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <fstream>

#if defined(__SANITIZE_ADDRESS__)
#define KAVRA_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KAVRA_ASAN 1
#endif
#endif

namespace Kavra::Objects {
namespace {

using Common::NewBlock;
using Common::NewZeroedBlock;
using Common::PixelBlock;

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// A mark in a freed block is seen again in the next one only when that is the same memory: fresh memory is zero.
class KeptBlock : public testing::Test {
protected:
    void SetUp() override {
#ifdef KAVRA_ASAN
        GTEST_SKIP() << "AddressSanitizer makes the blocks itself and keeps none";
#endif
        ObjModel::ReleaseKeptBlock();
    }
    void TearDown() override { ObjModel::ReleaseKeptBlock(); }

    static constexpr std::size_t kMarkAt = kMiB;

    static PixelBlock Marked(std::size_t bytes) {
        PixelBlock block = NewBlock(bytes);
        block.get()[kMarkAt] = 0x5A;
        return block;
    }
    static bool HasMark(const PixelBlock& block) { return block.get()[kMarkAt] == 0x5A; }
};

TEST_F(KeptBlock, ServesTheNextRequestOfItsSize) {
    Marked(8 * kMiB).reset();
    const PixelBlock next = NewBlock(8 * kMiB);
    EXPECT_TRUE(HasMark(next));
}

TEST_F(KeptBlock, ServesOnlyOneRequestAtATime) {
    Marked(8 * kMiB).reset();
    const PixelBlock first = NewBlock(8 * kMiB);
    const PixelBlock second = NewBlock(8 * kMiB);
    EXPECT_NE(first.get(), second.get());
    EXPECT_FALSE(HasMark(second));
}

TEST_F(KeptBlock, IsNeverGivenToARequestForZeroedMemory) {
    Marked(8 * kMiB).reset();
    const PixelBlock zeroed = NewZeroedBlock(8 * kMiB);
    EXPECT_EQ(std::count(zeroed.get(), zeroed.get() + 8 * kMiB, 0), static_cast<std::ptrdiff_t>(8 * kMiB));
    EXPECT_TRUE(HasMark(NewBlock(8 * kMiB)));
}

TEST_F(KeptBlock, ServesARequestOfHalfItsSizeButNoneBelow) {
    Marked(16 * kMiB).reset();
    EXPECT_FALSE(HasMark(NewBlock(8 * kMiB - 8192)));
    ObjModel::ReleaseKeptBlock();
    Marked(16 * kMiB).reset();
    EXPECT_TRUE(HasMark(NewBlock(8 * kMiB)));
}

TEST_F(KeptBlock, DoesNotServeALargerRequest) {
    Marked(8 * kMiB).reset();
    EXPECT_FALSE(HasMark(NewBlock(9 * kMiB)));
}

TEST_F(KeptBlock, KeepsItsSizeWhenASmallerRequestHadIt) {
    Marked(16 * kMiB).reset();
    NewBlock(9 * kMiB).reset();
    const PixelBlock again = NewBlock(16 * kMiB);
    EXPECT_TRUE(HasMark(again));
    again.get()[16 * kMiB - 1] = 1;
}

TEST_F(KeptBlock, IsOnlyOne) {
    PixelBlock a = Marked(8 * kMiB);
    PixelBlock b = Marked(8 * kMiB);
    a.reset();
    b.reset();
    const PixelBlock first = NewBlock(8 * kMiB);
    const PixelBlock second = NewBlock(8 * kMiB);
    EXPECT_TRUE(HasMark(first));
    EXPECT_FALSE(HasMark(second));
}

TEST_F(KeptBlock, HasAtMostTheStatedSize) {
    Marked(ObjModel::kKeptBlockBytes).reset();
    EXPECT_TRUE(HasMark(NewBlock(ObjModel::kKeptBlockBytes)));
    ObjModel::ReleaseKeptBlock();
    Marked(ObjModel::kKeptBlockBytes + kMiB).reset();
    EXPECT_FALSE(HasMark(NewBlock(ObjModel::kKeptBlockBytes + kMiB)));
}

TEST_F(KeptBlock, GoesBackToTheSystemOnRequest) {
    Marked(8 * kMiB).reset();
    ObjModel::ReleaseKeptBlock();
    EXPECT_FALSE(HasMark(NewBlock(8 * kMiB)));
    ObjModel::ReleaseKeptBlock();
}

TEST_F(KeptBlock, ALargeOneStaysWhenASmallerIsFreedBesideIt) {
    PixelBlock large = Marked(32 * kMiB);
    PixelBlock small = NewBlock(8 * kMiB);
    large.reset();
    small.reset();
    EXPECT_TRUE(HasMark(NewBlock(32 * kMiB)));
}

TEST_F(KeptBlock, ALargeOneThatWasOfNoUseGivesWayToASmaller) {
    Marked(32 * kMiB).reset();
    Marked(8 * kMiB).reset();
    EXPECT_FALSE(HasMark(NewBlock(32 * kMiB)));
    ObjModel::ReleaseKeptBlock();
    Marked(32 * kMiB).reset();
    Marked(8 * kMiB).reset();
    EXPECT_TRUE(HasMark(NewBlock(8 * kMiB)));
}

TEST_F(KeptBlock, SmallBlocksAreNotKept) {
    Marked(8 * kMiB).reset();
    NewBlock(100).reset();
    EXPECT_TRUE(HasMark(NewBlock(8 * kMiB)));
}

TEST_F(KeptBlock, IsNotCountedAsLive) {
    const AllocationCounters before = ObjModel::BlockCounters();
    Marked(8 * kMiB).reset();
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before.liveBlocks);
    EXPECT_EQ(ObjModel::BlockCounters().liveBytes, before.liveBytes);
}

std::size_t ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0, resident = 0;
    statm >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(LargeBlocks, AZeroedBlockTakesMemoryOnlyWhereItIsTouched) {
    constexpr std::size_t kBytes = 512 * kMiB;
    const std::size_t before = ResidentBytes();
    const PixelBlock block = NewZeroedBlock(kBytes);
    const std::size_t after = ResidentBytes();
    EXPECT_LT(after, before + kBytes / 4);
    EXPECT_EQ(block.get()[0], 0);
    EXPECT_EQ(block.get()[kBytes / 2 + 12345], 0);
    EXPECT_EQ(block.get()[kBytes - 1], 0);
}

TEST(LargeBlocks, StartWhereAHugePageDoes) {
#ifdef KAVRA_ASAN
    GTEST_SKIP() << "AddressSanitizer makes the blocks itself";
#endif
    const PixelBlock a = NewBlock(5 * kMiB), b = NewBlock(7 * kMiB);
    EXPECT_LT(reinterpret_cast<std::uintptr_t>(a.get()) % (2 * kMiB), 4096U);
    EXPECT_LT(reinterpret_cast<std::uintptr_t>(b.get()) % (2 * kMiB), 4096U);
}

}  // namespace
}  // namespace Kavra::Objects
