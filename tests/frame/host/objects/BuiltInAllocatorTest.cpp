#include "frame/host/objects/Threads.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace Kavra::Objects {
namespace {

IMemoryAllocator* Default() {
    return ObjModel::mDefaultAllocator;
}

std::size_t MachineMemory() {
    return static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

class BlockCeiling : public testing::Test {
protected:
    ~BlockCeiling() override { ObjModel::SetBlockCeiling(0); }
};

TEST_F(BlockCeiling, IsTheMachinesMemoryUntilItIsSet) {
    EXPECT_EQ(ObjModel::BlockCeiling(), MachineMemory());
    ObjModel::SetBlockCeiling(12345);
    EXPECT_EQ(ObjModel::BlockCeiling(), 12345U);
    ObjModel::SetBlockCeiling(0);
    EXPECT_EQ(ObjModel::BlockCeiling(), MachineMemory());
}

TEST_F(BlockCeiling, TheMachinesMemoryIsTheMostThatABlockCanHave) {
    EXPECT_THROW(::operator new(MachineMemory() + 1, Default()), std::bad_alloc);
    EXPECT_THROW(NewZeroed(MachineMemory() + 1, Default()), std::bad_alloc);
}

TEST_F(BlockCeiling, ABlockMayHaveAsManyBytesAsTheCeilingAndNoMore) {
    for (const std::size_t ceiling : {1000, 1 << 20, 5 << 20}) {
        ObjModel::SetBlockCeiling(ceiling);
        KavraDelete(::operator new(ceiling, Default()));
        KavraDelete(NewZeroed(ceiling, Default()));
        Default()->Free(Default()->Allocate(ceiling), ceiling);
        EXPECT_THROW(::operator new(ceiling + 1, Default()), std::bad_alloc);
        EXPECT_THROW(NewZeroed(ceiling + 1, Default()), std::bad_alloc);
        EXPECT_THROW(Default()->Allocate(ceiling + 1), std::bad_alloc);
        EXPECT_THROW(Default()->AllocateZeroed(ceiling + 1), std::bad_alloc);
    }
}

TEST_F(BlockCeiling, DoesNotBindObjects) {
    ObjModel::SetBlockCeiling(1);
    KavraDelete(::operator new(1000, ObjModel::mHeapAllocator));
}

TEST(BlockCounters, SpeakOfTheBytesThatWereAskedFor) {
    const AllocationCounters before = ObjModel::BlockCounters();
    void* const small = ::operator new(100, Default());
    void* const large = NewZeroed((3 << 20) + 1, Default());
    AllocationCounters now = ObjModel::BlockCounters();
    EXPECT_EQ(now.liveBlocks, before.liveBlocks + 2);
    EXPECT_EQ(now.liveBytes, before.liveBytes + 100 + (3 << 20) + 1);
    EXPECT_EQ(now.totalBlocks, before.totalBlocks + 2);
    KavraDelete(small);
    now = ObjModel::BlockCounters();
    EXPECT_EQ(now.liveBlocks, before.liveBlocks + 1);
    EXPECT_EQ(now.liveBytes, before.liveBytes + (3 << 20) + 1);
    KavraDelete(large);
    now = ObjModel::BlockCounters();
    EXPECT_EQ(now.liveBlocks, before.liveBlocks);
    EXPECT_EQ(now.liveBytes, before.liveBytes);
    EXPECT_EQ(now.totalBlocks, before.totalBlocks + 2);
}

TEST(BlockCounters, ARefusedRequestCountsOnlyAmongTheLargest) {
    static volatile std::size_t asked = std::numeric_limits<std::size_t>::max();  // which the compiler is not to see
    const std::size_t bytes = asked;
    const AllocationCounters before = ObjModel::BlockCounters();
    EXPECT_THROW(::operator new(bytes, Default()), std::bad_alloc);
    const AllocationCounters now = ObjModel::BlockCounters();
    EXPECT_EQ(now.liveBlocks, before.liveBlocks);
    EXPECT_EQ(now.liveBytes, before.liveBytes);
    EXPECT_EQ(now.totalBlocks, before.totalBlocks);
    EXPECT_EQ(now.largestBytes, bytes);
    KavraDelete(::operator new(10, Default()));
    EXPECT_EQ(ObjModel::BlockCounters().largestBytes, bytes);
}

TEST(BlockCounters, ABlockTakenFromTheAllocatorItselfCountsTheSame) {
    const AllocationCounters before = ObjModel::BlockCounters();
    void* const block = Default()->Allocate(77);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
    EXPECT_EQ(ObjModel::BlockCounters().liveBytes, before.liveBytes + 77);
    Default()->Free(block, 77);
    void* const none = Default()->Allocate(0);
    EXPECT_NE(none, nullptr);
    Default()->Free(none, 0);
    Default()->Free(nullptr, 0);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before.liveBlocks);
    EXPECT_EQ(ObjModel::BlockCounters().liveBytes, before.liveBytes);
}

/// Fills blocks of many sizes with a byte of the thread's own and sees that no other thread writes into them.
void Hammer(int thread, int rounds) {
    std::vector<std::pair<unsigned char*, std::size_t>> held;
    const auto mine = static_cast<unsigned char>(thread + 1);
    const auto check = [&] {
        const auto [block, bytes] = held.back();
        held.pop_back();
        EXPECT_EQ(std::count(block, block + bytes, mine), static_cast<std::ptrdiff_t>(bytes));
        KavraDelete(block);
    };
    for (int round = 0; round < rounds; ++round) {
        const std::size_t bytes = round % 50 == 0 ? (2 << 20) + 4096 * thread : (round * 37 + thread) % 3000;
        const bool zeroed = round % 3 == 0;
        void* const made = zeroed ? NewZeroed(bytes, Default()) : ::operator new(bytes, Default());
        auto* const block = static_cast<unsigned char*>(made);
        if (zeroed) {
            EXPECT_EQ(std::count(block, block + bytes, 0), static_cast<std::ptrdiff_t>(bytes));
        }
        std::memset(block, mine, bytes);
        held.emplace_back(block, bytes);
        if (held.size() > 5) check();
    }
    while (!held.empty())
        check();
}

TEST(BlockCounters, AreExactWhenManyThreadsAllocateAndBlocksAreNeverShared) {
    const AllocationCounters before = ObjModel::BlockCounters();
    Tests::OnThreads(8, [](int thread) { Hammer(thread, 600); });
    const AllocationCounters now = ObjModel::BlockCounters();
    EXPECT_EQ(now.liveBlocks, before.liveBlocks);
    EXPECT_EQ(now.liveBytes, before.liveBytes);
    EXPECT_EQ(now.totalBlocks, before.totalBlocks + 8 * 600);
}

TEST(BlockCounters, ABlockMayBeFreedOnAnotherThread) {
    const std::size_t before = ObjModel::BlockCounters().liveBlocks;
    std::vector<void*> blocks(8);
    Tests::OnThreads(8, [&](int thread) { blocks[thread] = NewZeroed(4 << 20, Default()); });
    Tests::OnThreads(8, [&](int thread) { KavraDelete(blocks[7 - thread]); });
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
}

}  // namespace
}  // namespace Kavra::Objects
