#include "common/OrderedParts.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Kavra::Common {
namespace {

TEST(OrderedParts, AreTakenInOrderOnTheCallersThreadHoweverManyThreadsMadeThem) {
    // 8192 parts are held at a time: less, as many, more, and a part of a third lot.
    for (const std::size_t count : {1, 2, 100, 8191, 8192, 8193, 20000}) {
        const auto caller = std::this_thread::get_id();
        std::vector<std::size_t> taken;
        ForEachInOrder<std::size_t>(
            count, 0, [](std::size_t i) { return i * i; },
            [&](std::size_t square) {
                EXPECT_EQ(std::this_thread::get_id(), caller);
                taken.push_back(square);
            });
        ASSERT_EQ(taken.size(), count);
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(taken[i], i * i);
    }
}

TEST(OrderedParts, AreMadeOnceEach) {
    std::vector<std::atomic<int>> made(10000);
    ForEachInOrder<int>(made.size(), 0, [&](std::size_t i) { return ++made[i]; }, [](int) {});
    for (const auto& count : made)
        ASSERT_EQ(count, 1);
}

TEST(OrderedParts, OfNothingAreNeitherMadeNorTaken) {
    ForEachInOrder<int>(
        0, 0,
        [](std::size_t) {
            ADD_FAILURE();
            return 0;
        },
        [](int) { ADD_FAILURE(); });
}

TEST(OrderedParts, AnExceptionReachesTheCaller) {
    const auto fail = [](std::size_t i) -> int {
        if (i == 5000) throw std::runtime_error("no part");
        return 0;
    };
    EXPECT_THROW(ForEachInOrder<int>(9000, 0, fail, [](int) {}), std::runtime_error);
}

}  // namespace
}  // namespace Kavra::Common
