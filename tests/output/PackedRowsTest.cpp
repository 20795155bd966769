#include "output/PackedRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <vector>

using Kavra::Devices::PackRows;
using testing::ElementsAre;

namespace {

std::vector<int> Bytes(const Kavra::Common::PixelBlock& block, std::size_t count) {
    return {block.get(), block.get() + count};
}

TEST(PackedRows, TheGapsOfALongPitchAreLeftOut) {
    const std::array<unsigned char, 8> data = {1, 2, 3, 99, 4, 5, 6, 99};
    EXPECT_THAT(Bytes(PackRows(data.data(), 4, 3, 2), 6), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(PackedRows, NothingIsReadBehindTheLastRow) {
    const std::vector<unsigned char> data = {1, 2, 99, 99, 3, 4};  // a heap block of exactly that size
    EXPECT_THAT(Bytes(PackRows(data.data(), 4, 2, 2), 4), ElementsAre(1, 2, 3, 4));
}

TEST(PackedRows, AShortPitchLeavesTheEndOfEachRowZero) {
    const std::vector<unsigned char> data = {1, 2, 3, 4};
    EXPECT_THAT(Bytes(PackRows(data.data(), 2, 3, 2), 6), ElementsAre(1, 2, 0, 3, 4, 0));
}

TEST(PackedRows, BytesThatCannotBeCountedAreNotAllocated) {
    const unsigned char data = 0;
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW((void)PackRows(&data, 1, kMost / 2, 3), std::bad_alloc);
}

}  // namespace
