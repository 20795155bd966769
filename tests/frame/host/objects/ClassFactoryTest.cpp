#include "frame/host/objects/Threads.h"

#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

namespace Kavra::Objects {
namespace {

/// A handler-like prototype: the clone view is its second base.
struct Prototype : IDelete, IClone {
    explicit Prototype(std::atomic<int>& alive) : alive(alive) { ++alive; }
    ~Prototype() override {
        if (onDestroy) onDestroy();
        --alive;
    }
    IClone* Clone() override {
        if (onClone) onClone();
        return this;
    }

    std::atomic<int>& alive;
    std::function<void()> onClone, onDestroy;
};

class Factory : public testing::Test {
protected:
    Prototype* Add(UString* key) {
        auto* const prototype = new Prototype(alive);
        EXPECT_TRUE(factory.AddObject(key, prototype));
        return prototype;
    }

    std::atomic<int> alive{0};
    ClassFactory factory;
    UString* const key = Intern(L"ClassFactoryTest");
    UString* const other = Intern(L"ClassFactoryTest other");
};

TEST_F(Factory, ClonesWhatWasRegisteredUnderTheKey) {
    Prototype* const prototype = Add(key);
    EXPECT_TRUE(factory.Contains(key));
    EXPECT_FALSE(factory.Contains(other));
    EXPECT_EQ(factory.CloneObject(key), static_cast<IClone*>(prototype));
    EXPECT_EQ(factory.CloneObject(other), nullptr);
    EXPECT_EQ(factory.CloneObject(nullptr), nullptr);
}

TEST_F(Factory, RemovingDestroysThePrototypeThroughItsSecondView) {
    const std::size_t before = ObjModel::ObjectCounters().liveBlocks;
    Add(key);
    EXPECT_TRUE(factory.RemoveObject(key));
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before);
    EXPECT_FALSE(factory.Contains(key));
    EXPECT_FALSE(factory.RemoveObject(key));
    EXPECT_FALSE(factory.RemoveObject(nullptr));
    EXPECT_EQ(factory.CloneObject(key), nullptr);
}

TEST_F(Factory, ARefusedPrototypeStaysItsCallers) {
    Prototype* const first = Add(key);
    Prototype second(alive);
    EXPECT_FALSE(factory.AddObject(key, &second));
    EXPECT_FALSE(factory.AddObject(nullptr, &second));
    EXPECT_FALSE(factory.AddObject(other, nullptr));
    EXPECT_FALSE(factory.Contains(other));
    EXPECT_FALSE(factory.Contains(nullptr));
    EXPECT_EQ(factory.CloneObject(key), static_cast<IClone*>(first));
    EXPECT_TRUE(factory.RemoveObject(key));
    EXPECT_EQ(alive, 1);
}

TEST_F(Factory, AKeyCanBeUsedAgainAfterItsRemoval) {
    Add(key);
    factory.RemoveObject(key);
    Prototype* const next = Add(key);
    EXPECT_EQ(factory.CloneObject(key), static_cast<IClone*>(next));
}

TEST_F(Factory, DisposesOfWhatItStillHoldsWhenItGoes) {
    {
        ClassFactory local;
        EXPECT_TRUE(local.AddObject(key, new Prototype(alive)));
        EXPECT_TRUE(local.AddObject(other, new Prototype(alive)));
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST_F(Factory, ItsPrototypesMayUseItWhenTheyAreClonedAndDestroyed) {
    Prototype* const prototype = Add(key);
    Prototype* const second = Add(other);
    prototype->onClone = [&] { EXPECT_EQ(factory.CloneObject(other), static_cast<IClone*>(second)); };
    prototype->onDestroy = [&] {
        EXPECT_FALSE(factory.Contains(key));
        EXPECT_TRUE(factory.RemoveObject(other));
    };
    EXPECT_NE(factory.CloneObject(key), nullptr);
    EXPECT_TRUE(factory.RemoveObject(key));
    EXPECT_EQ(alive, 0);
}

TEST_F(Factory, ACloneThatThrowsLeavesItAsItWas) {
    Prototype* const prototype = Add(key);
    prototype->onClone = [] { throw std::runtime_error("no clone"); };
    EXPECT_THROW(factory.CloneObject(key), std::runtime_error);
    EXPECT_TRUE(factory.RemoveObject(key));
    EXPECT_EQ(alive, 0);
}

TEST_F(Factory, RemovalWaitsForTheCloneThatIsUnderWay) {
    Prototype* const prototype = Add(key);
    std::atomic<bool> cloning = false;
    std::atomic<bool> removed = false;
    prototype->onClone = [&] {
        cloning = true;
        while (factory.Contains(key))
            std::this_thread::yield();  // until the removal has begun
        for (int i = 0; i < 100; ++i)
            std::this_thread::yield();
        EXPECT_FALSE(removed);
        EXPECT_EQ(alive, 1);
    };
    std::jthread cloner([&] { factory.CloneObject(key); });
    while (!cloning)
        std::this_thread::yield();
    EXPECT_TRUE(factory.RemoveObject(key));
    removed = true;
    EXPECT_EQ(alive, 0);
}

TEST_F(Factory, StandsThreadsThatAddCloneAndRemoveTheSameKeys) {
    std::atomic<int> clones = 0;
    const auto round = [&](int index) {
        UString* const name = index % 2 == 0 ? key : other;
        auto* const prototype = new Prototype(alive);
        prototype->onClone = [&] { clones += alive > 0; };
        if (!factory.AddObject(name, prototype)) delete prototype;
        factory.CloneObject(name);
        if (index % 3 == 0) factory.RemoveObject(name);
    };
    Tests::OnThreads(8, [&](int thread) {
        for (int i = 0; i < 500; ++i)
            round(thread + i);
    });
    factory.RemoveObject(key);
    factory.RemoveObject(other);
    EXPECT_EQ(alive, 0);
    EXPECT_GT(clones, 0);
}

TEST(ObjModel, HasOneFactoryForTheProcess) {
    EXPECT_EQ(&ObjModel::Factory(), &ObjModel::Factory());
}

}  // namespace
}  // namespace Kavra::Objects
