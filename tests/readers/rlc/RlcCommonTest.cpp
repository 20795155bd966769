// RLC rasters in both readings: they differ where the contract's leaves runs out. Letters are those of `BilevelPicture`.

#include "readers/BilevelPicture.h"
#include "readers/BothReadings.h"
#include "readers/FileSamples.h"
#include "readers/rlc/RlcReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

Read ReadRlc(ELegacyReading reading, int columns, std::initializer_list<RlcRow> rows) {
    const TemporaryFolder folder;
    return ReadIn<RlcReader>(reading, folder.Write("file.rlc", RlcFile(columns, rows).Bytes()));
}

TEST(RlcCommon, RunsThatTheContractTakesAreTheSameInBothReadings) {
    const std::initializer_list<RlcRow> rows = {
        {{2, 5}}, {}, {{0, 24}}, {{3, 4}, {8, 9}, {16, 23}}, {{0, 24}, {24, 24}}};
    const Read contract = ReadRlc(kLegacyContract, 24, rows);
    const Read common = ReadRlc(kLegacyCommon, 24, rows);
    EXPECT_EQ(contract.block, common.block);
    EXPECT_EQ(contract.note, "");
    EXPECT_TRUE(contract.messages.empty());
}

TEST(RlcCommon, EveryRunThatLiesInItsRowIsShown) {
    // Counted from the right: nine of sixteen pixels beginning with the third.
    const std::initializer_list<RlcRow> rows = {{{0, 1}, {5, 14}, {15, 16}}, {{0, 9}}, {{7, 16}}};
    const Read common = ReadRlc(kLegacyCommon, 16, rows);
    EXPECT_EQ(BilevelPicture(common), "#.#########....#|.......#########|#########.......|");
    EXPECT_TRUE(common.messages.empty());
    const Read contract = ReadRlc(kLegacyContract, 16, rows);
    EXPECT_EQ(contract.messages.size(), 3U);
    EXPECT_EQ(contract.note, "runs that come close to the end of a row are left out by the host's rules");
}

TEST(RlcCommon, RunsThatSetNothingMakeNoDifference) {
    const std::initializer_list<RlcRow> rows = {{{0, 0}}};
    const Read contract = ReadRlc(kLegacyContract, 16, rows);
    EXPECT_EQ(contract.messages.size(), 1U) << "but are refused by the contract's reading";
    EXPECT_EQ(contract.note, "");
    EXPECT_EQ(contract.block, ReadRlc(kLegacyCommon, 16, rows).block);
}

TEST(RlcCommon, RunsThatDoNotLieInTheRowAreLeftOutAlone) {
    EXPECT_EQ(BilevelPicture(ReadRlc(kLegacyCommon, 8, {{{0, 2}, {5, 4}, {3, 9}, {70, 80}, {6, 7}}})), ".#....##|");
}

}  // namespace
