#include "readers/pcx/PcxReader.h"

#include <gtest/gtest.h>

#include <stop_token>
#include <thread>

namespace {

using namespace Kavra::Devices;

constexpr PcxNibbles kPlain = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr PcxNibbles kSpread = {0, 17, 34, 51, 68, 85, 102, 119, 136, 153, 170, 187, 204, 221, 238, 255};

TEST(PcxNibbles, AGreyRampSpreadsTheValuesOver255) {
    SetPcxNibbles(true);
    EXPECT_EQ(CurrentPcxNibbles(), kSpread);
}

TEST(PcxNibbles, OtherPalettesKeepThem) {
    SetPcxNibbles(true);
    SetPcxNibbles(false);
    EXPECT_EQ(CurrentPcxNibbles(), kPlain);
}

TEST(PcxNibbles, ThreadsMaySetAndReadThemAtOnce) {
    SetPcxNibbles(false);
    const std::jthread writer([](const std::stop_token& stop) {
        for (bool isGreyRamp = false; !stop.stop_requested(); isGreyRamp = !isGreyRamp)
            SetPcxNibbles(isGreyRamp);
    });
    for (int i = 0; i < 1000; ++i) {
        const PcxNibbles nibbles = CurrentPcxNibbles();
        for (std::size_t value = 0; value < nibbles.size(); ++value)
            ASSERT_TRUE(nibbles[value] == kPlain[value] || nibbles[value] == kSpread[value]);
    }
}

}  // namespace
