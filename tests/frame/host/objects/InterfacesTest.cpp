#include "frame/host/objects/RecordingAllocator.h"

#include <kavra/objects/IClone.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/objects/Vec.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace Kavra::Objects {
namespace {

using Tests::Instead;
using Tests::RecordingAllocator;

/// Two views at different addresses, as a handler has them.
struct TwoViews : IMemoryWrapper<void>, IClone {
    explicit TwoViews(int& destroyed) : mDestroyed(destroyed) {}
    ~TwoViews() override { ++mDestroyed; }
    IClone* Clone() override { return this; }

    int& mDestroyed;
    char payload[100] = {};
};

/// Makes an object on a recorded heap, lets `destroy` destroy it, and sees that its memory came back whole.
void ExpectWholeDestruction(const std::function<void(TwoViews*)>& destroy) {
    RecordingAllocator heap;
    const Instead<IMemoryAllocator*> instead(ObjModel::mHeapAllocator, &heap);
    int destroyed = 0;
    auto* const object = new TwoViews(destroyed);
    ASSERT_NE(static_cast<void*>(static_cast<IClone*>(object)), static_cast<void*>(object));
    destroy(object);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(heap.given.size(), 1U);
    EXPECT_EQ(heap.returned, heap.given);
}

TEST(Interfaces, DeletingThroughTheSecondViewFreesTheWholeObject) {
    ExpectWholeDestruction([](TwoViews* object) { delete static_cast<IClone*>(object); });
}

TEST(Interfaces, DeletingThroughTheFirstViewFreesTheWholeObject) {
    ExpectWholeDestruction([](TwoViews* object) { delete static_cast<IDelete*>(object); });
    ExpectWholeDestruction([](TwoViews* object) { delete static_cast<IMemoryWrapper<void>*>(object); });
}

TEST(Interfaces, DeleteDestroysThroughTheVirtualDestructor) {
    ExpectWholeDestruction([](TwoViews* object) { static_cast<IDelete*>(object)->Delete(); });
    ExpectWholeDestruction([](TwoViews* object) { static_cast<IMemoryWrapper<void>*>(object)->Delete(); });
}

/// The entry of a slot in an object's table: the destructor, slot 0, has two.
void* SlotOf(const void* object, int slot) {
    void** table = nullptr;
    std::memcpy(static_cast<void*>(&table), object, sizeof(table));
    return table[slot + 1];
}

struct MarkedSlots : IDelete, IClone {
    void Delete() override { deleted = true; }
    IClone* Clone() override { return nullptr; }
    bool deleted = false;
};

TEST(Interfaces, DeleteAndCloneAreInSlotOne) {
    MarkedSlots object;
    reinterpret_cast<void (*)(void*)>(SlotOf(static_cast<IDelete*>(&object), 1))(static_cast<IDelete*>(&object));
    EXPECT_TRUE(object.deleted);
    IClone* const view = &object;
    EXPECT_EQ(reinterpret_cast<void* (*)(void*)>(SlotOf(view, 1))(view), nullptr);
}

TEST(MemoryArrayWrapper, FreesItsDataWithItself) {
    const std::size_t before = ObjModel::BlockCounters().liveBlocks;
    const std::size_t objectsBefore = ObjModel::ObjectCounters().liveBlocks;
    IMemoryWrapper<void>* const wrapper =
        new MemoryArrayWrapper<void, unsigned char>(::operator new(100, ObjModel::mDefaultAllocator));
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before + 1);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objectsBefore + 1);
    wrapper->Delete();
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objectsBefore);
}

TEST(MemoryArrayWrapper, MayBeEmptyOrHaveItsDataTakenAway) {
    const MemoryArrayWrapper<void, unsigned char> empty;
    EXPECT_EQ(empty.mData, nullptr);
    EXPECT_EQ(empty.Elements(), nullptr);
    void* const data = ::operator new(1, ObjModel::mDefaultAllocator);
    {
        MemoryArrayWrapper<void, unsigned char> wrapper(data);
        EXPECT_EQ(wrapper.Elements(), data);
        wrapper.mData = nullptr;
    }
    KavraDelete(data);
}

TEST(Vec, StartsAtZeroAndIsPlain) {
    EXPECT_EQ((vec2<int>{}.x), 0);
    EXPECT_EQ((vec3<float>{}.z), 0.0F);
    EXPECT_EQ((vec4<float>{}.w), 0.0F);
    const vec4<float> colour{1, 2, 3, 4};
    EXPECT_EQ(colour.x + 10 * colour.y + 100 * colour.z + 1000 * colour.w, 4321.0F);
    static_assert(sizeof(vec2<int>) == 8 && sizeof(vec3<float>) == 12 && sizeof(vec4<float>) == 16);
}

}  // namespace
}  // namespace Kavra::Objects
