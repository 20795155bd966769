#include "frame/host/objects/Threads.h"

#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/NetObjectCountImpl.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace Kavra::Objects {
namespace {

struct Shared : ARefCounted, NetObjectCountImpl<Shared> {
    explicit Shared(std::string* log = nullptr) : log(log) {}

    UString* ClassName() const override { return Intern(L"Shared"); }
    int CurObjectCount() const override { return NetObjectCount(); }

    static int mNetObjectCount;
    std::string* log;

protected:
    void Delete() override {
        if (log != nullptr) *log += "Delete ";
        ARefCounted::Delete();
    }
};
int Shared::mNetObjectCount = 0;

TEST(ARefCounted, StartsWithoutReferencesAndGoesWithTheLast) {
    std::string log;
    auto* const object = new Shared(&log);
    EXPECT_EQ(object->RefCount(), 0);
    object->AddRef();
    object->AddRef();
    EXPECT_EQ(object->RefCount(), 2);
    object->ReleaseRef();
    EXPECT_EQ(object->RefCount(), 1);
    EXPECT_EQ(log, "");
    EXPECT_EQ(Shared::mNetObjectCount, 1);
    object->ReleaseRef();
    EXPECT_EQ(log, "Delete ");
    EXPECT_EQ(Shared::mNetObjectCount, 0);
}

TEST(ARefCounted, ItsMemoryGoesBackToTheHostsHeap) {
    const std::size_t before = ObjModel::ObjectCounters().liveBlocks;
    ARefCounted* const object = new Shared;
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before + 1);
    object->AddRef();
    object->ReleaseRef();
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before);
}

TEST(ARefCounted, SettingTheCountDestroysNothing) {
    std::string log;
    auto* const object = new Shared(&log);
    object->RefCount(5);
    EXPECT_EQ(object->RefCount(), 5);
    object->RefCount(0);
    EXPECT_EQ(log, "");
    object->RefCount(1);
    object->ReleaseRef();
    EXPECT_EQ(log, "Delete ");
}

TEST(ARefCounted, ACopyStartsWithoutReferencesAndAssignmentLeavesBothCountsAlone) {
    Shared original;
    original.RefCount(3);
    Shared copy(original);
    EXPECT_EQ(copy.RefCount(), 0);
    copy.RefCount(7);
    copy = original;
    EXPECT_EQ(copy.RefCount(), 7);
    EXPECT_EQ(original.RefCount(), 3);
}

TEST(ARefCounted, TheBaseKnowsNoInterface) {
    Shared object;
    EXPECT_EQ(object.GetInterface(Intern(L"Shared")), nullptr);
    EXPECT_EQ(object.GetInterface(nullptr), nullptr);
    EXPECT_EQ(object.ClassName(), Intern(L"Shared"));
}

TEST(ARefCounted, ThreadsTakeAndReleaseReferencesWithoutLosingOne) {
    std::string log;
    auto* const object = new Shared(&log);
    object->AddRef();
    Tests::OnThreads(8, [&](int) {
        for (int i = 0; i < 5000; ++i)
            object->AddRef();
        for (int i = 0; i < 5000; ++i)
            object->ReleaseRef();
    });
    EXPECT_EQ(object->RefCount(), 1);
    object->RefCount(8);
    Tests::OnThreads(8, [&](int) { object->ReleaseRef(); });
    EXPECT_EQ(log, "Delete ");
}

/// Every slot leaves its number.
struct Numbered : ARefCounted {
    void* GetInterface(UString*) override { return Leave(1); }
    UString* ClassName() const override { return static_cast<UString*>(Leave(2)); }
    void AddRef() override { Leave(4); }
    void ReleaseRef() override { Leave(5); }
    void RefCount(int) override { Leave(6); }
    int RefCount() const override { return Leave(7), 0; }
    int CurObjectCount() const override { return Leave(8), 0; }

    mutable int left = 0;

protected:
    void Delete() override { Leave(3); }

private:
    void* Leave(int number) const {
        left = number;
        return nullptr;
    }
};

TEST(ARefCounted, HasItsOperationsInTheOrderOfTheHostsTable) {
    Numbered object;
    void** table = nullptr;
    std::memcpy(static_cast<void*>(&table), static_cast<void*>(&object), sizeof(table));
    for (int slot = 1; slot <= 8; ++slot) {
        // The destructor, slot 0, has two entries. The second argument is read by the slots that have one.
        reinterpret_cast<void (*)(void*, std::size_t)>(table[slot + 1])(&object, 0);
        EXPECT_EQ(object.left, slot);
    }
}

struct Plain {
    int value = 0;
    virtual ~Plain() = default;
};
struct CountedPlain : Plain, NetObjectCountImpl<CountedPlain> {
    static int mNetObjectCount;
};
int CountedPlain::mNetObjectCount = 0;

TEST(NetObjectCountImpl, CountsEveryConstructionOnceAndNoAssignment) {
    EXPECT_EQ(CountedPlain::NetObjectCount(), 0);
    {
        CountedPlain first;
        EXPECT_EQ(CountedPlain::mNetObjectCount, 1);
        CountedPlain copy(first);
        EXPECT_EQ(CountedPlain::mNetObjectCount, 2);
        copy = first;
        EXPECT_EQ(CountedPlain::mNetObjectCount, 2);
        const CountedPlain moved(std::move(copy));
        EXPECT_EQ(CountedPlain::mNetObjectCount, 3);
    }
    EXPECT_EQ(CountedPlain::mNetObjectCount, 0);
}

TEST(NetObjectCountImpl, AddsNothingToTheLayout) {
    static_assert(sizeof(CountedPlain) == sizeof(Plain));
    static_assert(std::is_same_v<decltype(CountedPlain::mNetObjectCount), int>);
}

TEST(NetObjectCountImpl, IsExactWhenManyThreadsMakeObjects) {
    Tests::OnThreads(8, [](int) {
        for (int i = 0; i < 5000; ++i)
            CountedPlain object;
    });
    EXPECT_EQ(CountedPlain::mNetObjectCount, 0);
    CountedPlain::IncreaseNetObjectCount();
    EXPECT_EQ(CountedPlain::NetObjectCount(), 1);
    CountedPlain::DecreaseNetObjectCount();
    EXPECT_EQ(CountedPlain::NetObjectCount(), 0);
}

}  // namespace
}  // namespace Kavra::Objects
