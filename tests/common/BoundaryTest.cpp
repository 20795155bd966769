#include "common/Boundary.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>

using Kavra::Common::AtBoundary;

TEST(Boundary, PassesTheAnswerOn) {
    EXPECT_EQ(AtBoundary(-1, [] { return 7; }), 7);
}

TEST(Boundary, TurnsEveryKindOfExceptionIntoTheFailure) {
    EXPECT_FALSE(AtBoundary(false, []() -> bool { throw std::runtime_error("file"); }));
    EXPECT_FALSE(AtBoundary(false, []() -> bool { throw std::bad_alloc(); }));
    EXPECT_FALSE(AtBoundary(false, []() -> bool { throw 42; }));
    EXPECT_EQ(AtBoundary<int*>(nullptr, []() -> int* { throw std::logic_error("wrong"); }), nullptr);
}

TEST(Boundary, FreesWhatTheBodyHeld) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    AtBoundary(0, [owner = std::move(held)]() mutable -> int {
        const std::shared_ptr<int> local = std::move(owner);
        throw std::runtime_error("file");
    });
    EXPECT_TRUE(watched.expired());
}

TEST(Boundary, TakesAnswersThatCanOnlyBeMoved) {
    const auto answer = AtBoundary(std::unique_ptr<int>(), [] { return std::make_unique<int>(5); });
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(*answer, 5);
}
