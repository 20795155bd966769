// Pictures that change their size while their rows come.

#include "load/geometry/RowReshape.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace Kavra::Devices {
namespace {

constexpr unsigned char kGrey = 200;

/// A grey picture of which a reader fills only the first half of the rows, brought to another size.
std::vector<unsigned char> HalfFilled(int width, int height, int toWidth, int toHeight) {
    const IncomingRows picture{.format = kR8, .width = width, .height = height};
    RowReshape rows(picture, ReshapingFor({.highQuality = true}, toWidth, toHeight, kTopLeft));
    for (int y = 0; y < height;) {
        const std::span<unsigned char> next = rows.NextRows(64);
        const auto count = static_cast<int>(next.size() / static_cast<std::size_t>(width));
        const int filled = std::clamp(height / 2 - y, 0, count);
        std::ranges::fill(next.first(static_cast<std::size_t>(filled) * static_cast<std::size_t>(width)), kGrey);
        y += count;
    }
    const Raster raster = rows.Finish();
    return {raster.first, raster.first + raster.bytes};
}

/// The filter reaches over two rows of the result to either side of the last row that is filled.
void ExpectHalfGrey(const std::vector<unsigned char>& pixels, int width, int height) {
    ASSERT_EQ(pixels.size(), static_cast<std::size_t>(width * height));
    const auto row = [&](int y) { return pixels.begin() + y * width; };
    EXPECT_TRUE(std::all_of(row(0), row(height / 2 - 2), [](int pixel) { return pixel == kGrey; }));
    EXPECT_TRUE(std::all_of(row(height / 2 + 2), row(height), [](int pixel) { return pixel == 0; }));
}

TEST(RowReshape, RowsThatAreNotFilledAreZeroAlthoughTheirMemoryIsUsedAgain) {
    ExpectHalfGrey(HalfFilled(4096, 8192, 512, 1024), 512, 1024);
}

TEST(RowReshape, RowsThatAreNotFilledAddNothingWhereRowsAreAddedUp) {
    // 4,000 rows lie under the filter at a time: more than are kept.
    ExpectHalfGrey(HalfFilled(20'000, 20'000, 20, 20), 20, 20);
}

TEST(RowReshape, WhatItHoldsCountsTheRowsThatAreSummedInTheLibrarysOrder) {
    // The filter reaches over four times the height, of which each row is 200 floats.
    const IncomingRows picture{.format = kL16, .width = 200, .height = 1000};
    const Reshaping wanted = ReshapingFor({.highQuality = true}, 2, 1, kTopLeft);
    EXPECT_GE(RowReshape::BytesFor(picture, wanted), 4000U * 200 * 4);
}

}  // namespace
}  // namespace Kavra::Devices
