#include "readers/flic/FlicChunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace {

using Kavra::Devices::FlicFrame;

bool IsBlack(const FlicFrame& frame) {
    return std::ranges::all_of(frame.Indices(), [](unsigned char index) { return index == 0; });
}

TEST(FlicFrame, BeginsBlack) {
    const FlicFrame frame(300, 200);
    EXPECT_EQ(frame.Indices().size(), 60'000U);
    EXPECT_TRUE(IsBlack(frame));
}

TEST(FlicFrame, OnlyWhatLiesInTheFrameCanBeWritten) {
    FlicFrame frame(4, 3);
    EXPECT_EQ(frame.At(0, 12).size(), 12U);
    EXPECT_EQ(frame.At(3, 100).size(), 9U);
    EXPECT_EQ(frame.At(11, 1).data(), frame.Indices().data() + 11);
    EXPECT_TRUE(frame.At(12, 1).empty());
    EXPECT_TRUE(frame.At(~0ULL, ~0ULL).empty());
    EXPECT_EQ(frame.At(1, ~0ULL).size(), 11U);
    EXPECT_TRUE(frame.At(5, 0).empty());
}

TEST(FlicFrame, ClearingFindsWhateverWasWritten) {
    constexpr std::size_t kSize = 1000 * 300;
    FlicFrame frame(1000, 300);
    for (const std::size_t first : {0, 1, 1023, 1024, 65'535, 65'536, 131'071, 299'998, 299'999}) {
        for (const std::size_t count : {1, 2, 1024, 1025, 70'000, 300'000}) {
            std::ranges::fill(frame.At(first, count), 5);
            ASSERT_EQ(frame.Indices()[first], 5);
            ASSERT_EQ(frame.Indices()[std::min(first + count, kSize) - 1], 5);
            frame.Clear();
            ASSERT_TRUE(IsBlack(frame)) << first << " " << count;
        }
    }
}

TEST(FlicFrame, OfNoPixelsTakesNothing) {
    for (const auto& [width, height] : {std::pair{0U, 5U}, {5U, 0U}, {0U, 0U}}) {
        FlicFrame frame(width, height);
        EXPECT_TRUE(frame.Indices().empty());
        EXPECT_TRUE(frame.At(0, 1).empty());
        frame.Clear();
    }
}

}  // namespace
