#include "load/geometry/PackedRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <vector>

using Kavra::Devices::MoveRows;
using Kavra::Devices::PackRows;
using Kavra::Devices::PlaceRows;
using Kavra::Devices::Rows;
using testing::ElementsAre;

namespace {

std::vector<int> Bytes(const Kavra::Common::PixelBlock& block, std::size_t count) {
    return {block.get(), block.get() + count};
}

/// The rows of `data`, which is a heap block of exactly that size.
Rows Of(const std::vector<unsigned char>& data, std::size_t pitch, std::size_t bytes, std::size_t count) {
    return {.first = data.data(), .pitch = pitch, .bytes = bytes, .count = count};
}

TEST(PackedRows, TheGapsOfALongPitchAreLeftOut) {
    const std::vector<unsigned char> data = {1, 2, 3, 99, 4, 5, 6, 99};
    EXPECT_THAT(Bytes(PackRows(Of(data, 4, 3, 2)), 6), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(Bytes(PackRows(Of(data, 4, 3, 2), {.overlaps = true}), 6), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(PackedRows, NothingIsReadBehindTheLastRow) {
    const std::vector<unsigned char> data = {1, 2, 99, 99, 3, 4};
    EXPECT_THAT(Bytes(PackRows(Of(data, 4, 2, 2)), 4), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(Bytes(PackRows(Of(data, 4, 2, 2), {.overlaps = true}), 4), ElementsAre(1, 2, 3, 4));
}

TEST(PackedRows, AShortPitchLeavesTheEndOfEachRowZero) {
    const std::vector<unsigned char> data = {1, 2, 3, 4};
    EXPECT_THAT(Bytes(PackRows(Of(data, 2, 3, 2)), 6), ElementsAre(1, 2, 0, 3, 4, 0));
}

TEST(PackedRows, OverlappingRowsRunOnIntoTheNextAsFarAsTheBlockGoes) {
    const std::vector<unsigned char> data = {1, 2, 3, 4, 5, 6};
    EXPECT_THAT(Bytes(PackRows(Of(data, 2, 3, 3), {.overlaps = true}), 9), ElementsAre(1, 2, 3, 3, 4, 5, 5, 6, 0));
    EXPECT_THAT(Bytes(PackRows(Of(data, 2, 5, 3), {.overlaps = true}), 15),
                ElementsAre(1, 2, 3, 4, 5, 3, 4, 5, 6, 0, 5, 6, 0, 0, 0));
}

TEST(PackedRows, RedAndBlueAreExchangedInWholeAndInCutPixels) {
    const std::vector<unsigned char> data = {1, 2, 3, 4, 5, 6, 7, 8, 99, 11, 12, 13, 14, 15, 16, 17, 18};
    EXPECT_THAT(Bytes(PackRows(Of(data, 9, 8, 2), {.swapsRedAndBlue = true}), 16),
                ElementsAre(3, 2, 1, 4, 7, 6, 5, 8, 13, 12, 11, 14, 17, 16, 15, 18));
    EXPECT_THAT(Bytes(PackRows(Of(data, 5, 8, 1), {.overlaps = true, .swapsRedAndBlue = true}), 8),
                ElementsAre(3, 2, 1, 4, 0, 0, 5, 0));
}

TEST(PackedRows, RowsAreMovedBetweenDifferentPitches) {
    const std::vector<unsigned char> from = {1, 2, 99, 3, 4};
    std::vector<unsigned char> to(6, 77);
    MoveRows(to.data() + 1, 3, Of(from, 3, 2, 2));
    EXPECT_THAT(to, ElementsAre(77, 1, 2, 77, 3, 4));
}

TEST(PackedRows, RowsThatOverlapArriveAsTheyWere) {
    std::vector<unsigned char> bytes = {1, 2, 3, 4, 5, 6};
    MoveRows(bytes.data() + 1, 2, Of(bytes, 2, 2, 2));
    EXPECT_THAT(bytes, ElementsAre(1, 1, 2, 3, 4, 6));
    bytes = {1, 2, 3, 4, 5, 6};
    MoveRows(bytes.data(), 2, {.first = bytes.data() + 1, .pitch = 2, .bytes = 2, .count = 2});
    EXPECT_THAT(bytes, ElementsAre(2, 3, 4, 5, 5, 6));
}

TEST(PackedRows, PlacedRowsGoNoFurtherThanTheNextOnesPlaceAndTheRestIsZero) {
    const std::vector<unsigned char> data = {1, 2, 3, 4, 5, 6};
    std::vector<unsigned char> to(8, 77);
    PlaceRows(to.data(), 4, to.size(), Of(data, 3, 3, 2), data.size());
    EXPECT_THAT(to, ElementsAre(1, 2, 3, 0, 4, 5, 6, 0)) << "gaps";
    PlaceRows(to.data(), 2, to.size(), Of(data, 3, 3, 2), data.size());
    EXPECT_THAT(to, ElementsAre(1, 2, 4, 5, 6, 0, 0, 0)) << "only the last row runs on";
    PlaceRows(to.data(), 4, 6, Of(data, 3, 3, 2), 5);
    EXPECT_THAT(to, ElementsAre(1, 2, 3, 0, 4, 5, 0, 0)) << "no further than the capacity and what is readable";
    PlaceRows(to.data(), 4, to.size(), Of(data, 3, 3, 0), data.size());
    EXPECT_THAT(to, testing::Each(0)) << "no rows";
}

TEST(PackedRows, BytesThatCannotBeCountedAreNotAllocated) {
    const std::vector<unsigned char> data(1);
    constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW((void)PackRows(Of(data, 1, kMax / 2, 3)), std::bad_alloc);
}

}  // namespace
