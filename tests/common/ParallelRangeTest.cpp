#include "common/ParallelRange.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace Kavra::Common {
namespace {

using Range = std::pair<std::size_t, std::size_t>;

std::size_t HardwareThreads() {
    const unsigned threads = std::thread::hardware_concurrency();
    return threads == 0 ? 1 : threads;
}

TEST(Grain, IsOneThreadsShareRoundedUpAndAtLeastOne) {
    const std::size_t threads = HardwareThreads();
    EXPECT_EQ(Grain(0), 1U);
    EXPECT_EQ(Grain(1), 1U);
    EXPECT_EQ(Grain(threads), 1U);
    EXPECT_EQ(Grain(threads + 1), 2U);
    EXPECT_EQ(Grain(1000 * threads), 1000U);
    EXPECT_EQ(Grain(1000 * threads + 1), 1001U);
}

TEST(Grain, IsTakenInSinglePrecision) {
    // A float does not tell 2^24 from 2^24 + 1, whose exact shares differ wherever the threads divide 2^24.
    EXPECT_EQ(Grain((std::size_t{1} << 24) + 1), Grain(std::size_t{1} << 24));
}

TEST(ForEachRange, VisitsEveryItemOnce) {
    for (const std::size_t count : {1, 2, 3, 64, 1000, 100001}) {
        std::vector<std::atomic<int>> visits(count);
        ForEachRange(count, 0, [&](std::size_t begin, std::size_t end) {
            EXPECT_LT(begin, end);
            EXPECT_LE(end, count);
            for (std::size_t i = begin; i < end; ++i)
                ++visits[i];
        });
        for (const auto& visit : visits)
            ASSERT_EQ(visit, 1);
    }
}

TEST(ForEachRange, NothingIsCalledForNothing) {
    ForEachRange(0, 0, [](std::size_t, std::size_t) { ADD_FAILURE(); });
    ForEachRange(0, 10, [](std::size_t, std::size_t) { ADD_FAILURE(); });
}

TEST(ForEachRange, UpToTheSerialCountItIsOneCallOnTheCallersThread) {
    const std::size_t count = 100 * HardwareThreads();
    const auto caller = std::this_thread::get_id();
    std::vector<Range> calls;
    ForEachRange(count, count, [&](std::size_t begin, std::size_t end) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        calls.emplace_back(begin, end);
    });
    EXPECT_EQ(calls, std::vector<Range>({{0, count}}));
}

TEST(ForEachRange, BeyondTheSerialCountNoPartIsLargerThanAThreadsShare) {
    const std::size_t count = 100 * HardwareThreads();
    std::atomic<std::size_t> largest = 0;
    std::atomic<std::size_t> sum = 0;
    ForEachRange(count, count - 1, [&](std::size_t begin, std::size_t end) {
        sum += end - begin;
        std::size_t known = largest;
        while (known < end - begin && !largest.compare_exchange_weak(known, end - begin)) {
        }
    });
    EXPECT_EQ(sum, count);
    EXPECT_LE(largest, 100U);
}

TEST(ForEachRange, AnExceptionReachesTheCallerAfterTheOthersHaveEnded) {
    for (const std::size_t serialCount : {0, 100000}) {
        std::atomic<int> running = 0;
        const auto body = [&](std::size_t begin, std::size_t) {
            ++running;
            for (int i = 0; i < 100; ++i)
                std::this_thread::yield();
            --running;
            if (begin == 0) throw std::runtime_error("stop");
        };
        EXPECT_THROW(ForEachRange(1000, serialCount, body), std::runtime_error);
        EXPECT_EQ(running, 0);
    }
}

TEST(ForEachRange, WritesOfTheWorkersAreSeenByTheCaller) {
    std::vector<int> values(200000);
    ForEachRange(values.size(), 0, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            values[i] = static_cast<int>(i);
    });
    for (std::size_t i = 0; i < values.size(); ++i)
        ASSERT_EQ(values[i], static_cast<int>(i));
}

thread_local bool tInside = false;

TEST(ForEachRange, TheCallerPicksUpNoOtherWorkWhileItWaits) {
#ifdef KAVRA_TSAN
    GTEST_SKIP() << "ThreadSanitizer cannot see how the outer loop, the library's own, orders its work";
#endif
    std::atomic<int> strays = 0;
    const auto outer = [&](std::size_t) {
        if (tInside) ++strays;
        tInside = true;
        ForEachRange(64, 0, [](std::size_t, std::size_t) { std::this_thread::yield(); });
        tInside = false;
    };
    tbb::parallel_for(std::size_t{0}, std::size_t{2000}, outer);
    EXPECT_EQ(strays, 0);
}

TEST(ReduceRange, FoldsEveryItemOnce) {
    for (const std::size_t serialCount : {0, 1000, 2000000}) {
        for (const std::uint64_t count : {1, 2, 1000, 1000001}) {
            const auto sum = ReduceRange(
                count, serialCount, std::uint64_t{0},
                [](std::size_t begin, std::size_t end, std::uint64_t value) {
                    for (std::size_t i = begin; i < end; ++i)
                        value += i;
                    return value;
                },
                [](std::uint64_t a, std::uint64_t b) { return a + b; });
            EXPECT_EQ(sum, count * (count - 1) / 2);
        }
    }
}

TEST(ReduceRange, PartsAreJoinedInTheirOrder) {
    const auto all = ReduceRange(
        10000, 0, std::vector<std::size_t>{},
        [](std::size_t begin, std::size_t end, std::vector<std::size_t> value) {
            for (std::size_t i = begin; i < end; ++i)
                value.push_back(i);
            return value;
        },
        [](std::vector<std::size_t> a, const std::vector<std::size_t>& b) {
            a.insert(a.end(), b.begin(), b.end());
            return a;
        });
    ASSERT_EQ(all.size(), 10000U);
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(all[i], i);
}

TEST(ReduceRange, NothingGivesTheIdentityWithoutACall) {
    const auto body = [](std::size_t, std::size_t, int value) { return ADD_FAILURE(), value; };
    EXPECT_EQ(ReduceRange(0, 0, 42, body, [](int a, int) { return a; }), 42);
}

TEST(ReduceRange, AnExceptionReachesTheCaller) {
    const auto body = [](std::size_t begin, std::size_t, int value) {
        if (begin == 0) throw std::runtime_error("stop");
        return value;
    };
    EXPECT_THROW(ReduceRange(1000, 0, 0, body, [](int a, int) { return a; }), std::runtime_error);
}

}  // namespace
}  // namespace Kavra::Common
