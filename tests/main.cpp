// The main function of every test program: Google Test's own, which also says how to repeat a shuffled order.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

namespace {

/// Prints the seed before the first test, so that it is known even when a test ends the process.
class ShuffleReport final : public testing::EmptyTestEventListener {
    void OnTestIterationStart(const testing::UnitTest& program, int /*iteration*/) override {
        if (!GTEST_FLAG_GET(shuffle)) return;
        std::printf("this order again: --gtest_shuffle --gtest_random_seed=%d\n", program.random_seed());
        std::fflush(stdout);
    }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new ShuffleReport);
    return RUN_ALL_TESTS();
}
