#include "frame/host/objects/RecordingAllocator.h"

#include <kavra/objects/HeapOperators.h>
#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Kavra::Objects {
namespace {

using Tests::Instead;
using Tests::RecordingAllocator;

IMemoryAllocator* Default() {
    return ObjModel::mDefaultAllocator;
}

bool IsAligned(const void* block) {
    return reinterpret_cast<std::uintptr_t>(block) % 64 == 0;
}

/// Through a variable that the compiler cannot see through, or it warns of the size.
std::size_t Huge() {
    static volatile std::size_t bytes = std::numeric_limits<std::size_t>::max();
    return bytes;
}

TEST(MemoryOperators, EveryBlockIsAlignedAndWritable) {
    for (const std::size_t bytes : {1, 2, 63, 64, 65, 4095, 1 << 20, (2 << 20) - 64, (2 << 20) - 63, 5 << 20}) {
        auto* const block = static_cast<unsigned char*>(::operator new(bytes, Default()));
        EXPECT_TRUE(IsAligned(block)) << bytes;
        std::memset(block, 0xA5, bytes);
        KavraDelete(block);
    }
}

TEST(MemoryOperators, ABlockOfNoBytesCanBeFreedAndIsLikeNoOther) {
    void* const a = ::operator new(0, Default());
    void* const b = ::operator new(0, Default());
    EXPECT_NE(a, nullptr);
    EXPECT_NE(b, nullptr);
    EXPECT_NE(a, b);
    KavraDelete(a);
    KavraDelete(b);
    void* const zeroed = NewZeroed(0, Default());
    EXPECT_NE(zeroed, nullptr);
    KavraDelete(zeroed);
}

TEST(MemoryOperators, FreeingNullDoesNothing) {
    const auto before = ObjModel::BlockCounters();
    KavraDelete(nullptr);
    HeapOperators::operator delete(nullptr);
    HeapOperators::operator delete[](nullptr);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before.liveBlocks);
}

TEST(MemoryOperators, ANullAllocatorMeansTheDefaultOne) {
    RecordingAllocator host;
    const Instead<IMemoryAllocator*> instead(ObjModel::mDefaultAllocator, &host);
    KavraDelete(::operator new(10, static_cast<IMemoryAllocator*>(nullptr)));
    KavraDelete(NewZeroed(10, nullptr));
    EXPECT_EQ(host.given.size(), 2U);
    EXPECT_EQ(host.returned, host.given);
}

TEST(MemoryOperators, ABlockGoesBackToTheAllocatorThatMadeItWhoeverIsDefaultByThen) {
    RecordingAllocator first, second;
    const auto before = ObjModel::BlockCounters().liveBlocks;
    void* const builtIn = ::operator new(100, Default());
    void* block = nullptr;
    {
        const Instead<IMemoryAllocator*> instead(ObjModel::mDefaultAllocator, &first);
        block = ::operator new(100, Default());
        KavraDelete(builtIn);
    }
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
    const Instead<IMemoryAllocator*> instead(ObjModel::mDefaultAllocator, &second);
    KavraDelete(block);
    EXPECT_EQ(first.given.size(), 1U);
    EXPECT_EQ(first.returned, first.given);
    EXPECT_TRUE(second.given.empty());
    EXPECT_TRUE(second.returned.empty());
}

TEST(MemoryOperators, AHostsAllocatorIsAskedForRoomForAllTheData) {
    RecordingAllocator host;
    auto* const block = static_cast<unsigned char*>(::operator new(1000, &host));
    EXPECT_TRUE(IsAligned(block));
    ASSERT_EQ(host.given.size(), 1U);
    const auto* const start = static_cast<unsigned char*>(host.given[0].block);
    EXPECT_GE(block, start);
    EXPECT_GE(start + host.given[0].bytes, block + 1000);
    KavraDelete(block);
}

TEST(MemoryOperators, ZeroedBlocksAreZeroAlsoFromAnAllocatorWithoutZeroedMemory) {
    RecordingAllocator host;
    for (IMemoryAllocator* const allocator : {Default(), static_cast<IMemoryAllocator*>(&host)}) {
        for (const std::size_t bytes : {1, 100, 5000, (2 << 20) + 12345}) {
            void* const dirty = ::operator new(bytes, allocator);
            std::memset(dirty, 0xFF, bytes);
            KavraDelete(dirty);
            auto* const block = static_cast<unsigned char*>(NewZeroed(bytes, allocator));
            EXPECT_TRUE(std::all_of(block, block + bytes, [](unsigned char byte) { return byte == 0; })) << bytes;
            KavraDelete(block);
        }
    }
}

TEST(MemoryOperators, SizesThatWrapAroundAreRefused) {
    RecordingAllocator host;
    const std::size_t before = ObjModel::BlockCounters().liveBlocks;
    ObjModel::SetBlockCeiling(Huge());
    for (const std::size_t less : {0, 1, 63, 64, 127, 128, 4096, 1 << 22}) {
        EXPECT_THROW(::operator new(Huge() - less, Default()), std::bad_alloc) << less;
        EXPECT_THROW(NewZeroed(Huge() - less, Default()), std::bad_alloc) << less;
    }
    EXPECT_THROW(::operator new(Huge(), &host), std::bad_alloc);
    EXPECT_THROW(::operator new(Huge() - 63, &host), std::bad_alloc);
    EXPECT_TRUE(host.given.empty());
    ObjModel::SetBlockCeiling(0);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
}

struct ThrowsAtOnce {
    ThrowsAtOnce() { throw 1; }
    unsigned char bytes[100];
};

TEST(MemoryOperators, ABlockIsFreedWhenTheConstructorInItThrows) {
    const auto before = ObjModel::BlockCounters();
    EXPECT_THROW(new (Default()) ThrowsAtOnce, int);
    EXPECT_EQ(ObjModel::BlockCounters().totalBlocks, before.totalBlocks + 1);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before.liveBlocks);
}

class MemoryOperatorsDeathTest : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(MemoryOperatorsDeathTest, FreeingTwiceStopsTheProgram) {
    EXPECT_DEATH(
        {
            void* const block = ::operator new(100, Default());
            KavraDelete(block);
            KavraDelete(block);
        },
        "kavra: fatal: a memory block was freed twice|AddressSanitizer");
}

TEST_F(MemoryOperatorsDeathTest, FreeingABlockWithAByteWrittenInFrontOfItStopsTheProgram) {
    EXPECT_DEATH(
        {
            auto* const block = static_cast<unsigned char*>(::operator new(100, Default()));
            block[-1] ^= 1;
            KavraDelete(block);
        },
        "kavra: fatal: a memory block was freed twice, overwritten, or never allocated");
}

struct Counted : HeapOperators {
    Counted() { ++constructed; }
    static inline int constructed = 0;
    unsigned char bytes[200] = {};
};

static_assert(noexcept(HeapOperators::operator new(1)));
static_assert(noexcept(HeapOperators::operator new[](1)));

TEST(HeapOperators, WithoutMemoryTheConstructorIsSkippedAndTheObjectNull) {
    RecordingAllocator host;
    host.refuses = true;
    const Instead<IMemoryAllocator*> instead(ObjModel::mHeapAllocator, &host);
    Counted::constructed = 0;
    EXPECT_EQ(new Counted, nullptr);
    EXPECT_EQ(new Counted[3], nullptr);
    EXPECT_EQ(HeapOperators::operator new(Huge()), nullptr);
    EXPECT_EQ(Counted::constructed, 0);
}

TEST(HeapOperators, TheBuiltInAllocatorAnswersAHugeObjectWithNull) {
    EXPECT_EQ(HeapOperators::operator new(Huge()), nullptr);
    EXPECT_EQ(HeapOperators::operator new[](Huge() / 2), nullptr);
}

TEST(HeapOperators, ObjectsAndArraysAreCountedByTheirBytes) {
    const auto before = ObjModel::ObjectCounters();
    const auto blocksBefore = ObjModel::BlockCounters();
    const Counted* const one = new Counted;
    const Counted* const many = new Counted[3];
    const auto during = ObjModel::ObjectCounters();
    EXPECT_EQ(during.liveBlocks, before.liveBlocks + 2);
    EXPECT_EQ(during.liveBytes, before.liveBytes + 4 * sizeof(Counted));
    delete one;
    delete[] many;
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before.liveBlocks);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBytes, before.liveBytes);
    EXPECT_EQ(ObjModel::BlockCounters().totalBlocks, blocksBefore.totalBlocks);
}

TEST(HeapOperators, AnObjectGoesBackToTheHeapThatMadeIt) {
    RecordingAllocator host;
    Counted* object = nullptr;
    {
        const Instead<IMemoryAllocator*> instead(ObjModel::mHeapAllocator, &host);
        object = new Counted;
    }
    delete object;
    EXPECT_EQ(host.given.size(), 1U);
    EXPECT_EQ(host.returned, host.given);
}

/// Whether `new (place) Counted` compiles.
template <class Place>
concept MakesCountedIn = requires(Place place) { new (place) Counted; };

// An allocator is a pointer too: an operator that takes any place would build the object on top of it.
static_assert(!MakesCountedIn<IMemoryAllocator*>);
static_assert(!MakesCountedIn<RecordingAllocator*>);
static_assert(!MakesCountedIn<void*>);

TEST(HeapOperators, AnObjectCanBeMadeInPlace) {
    alignas(Counted) unsigned char storage[sizeof(Counted)];
    const auto before = ObjModel::ObjectCounters().totalBlocks;
    Counted* const object = ::new (static_cast<void*>(storage)) Counted;
    EXPECT_EQ(static_cast<void*>(object), storage);
    object->~Counted();
    EXPECT_EQ(ObjModel::ObjectCounters().totalBlocks, before);
}

}  // namespace
}  // namespace Kavra::Objects
