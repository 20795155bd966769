#include "common/HostExtras.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Kavra::Devices;
using Kavra::Common::HostLoadPreferences;

namespace {

LoadPreferences Chosen(int filter) {
    LoadPreferences preferences;
    preferences.bounded = preferences.choosesFilter = true;
    preferences.filter = static_cast<EResampleFilter>(filter);
    return preferences;
}

TEST(HostExtras, TheModuleIsToldWhatTheHostPrefers) {
    EXPECT_FALSE(HostLoadPreferences().bounded);
    const LoadPreferencesScope scope(Chosen(kResampleLanczos3));
    EXPECT_TRUE(HostLoadPreferences().bounded);
    EXPECT_TRUE(HostLoadPreferences().choosesFilter);
    EXPECT_EQ(HostLoadPreferences().filter, kResampleLanczos3);
}

TEST(HostExtras, AFilterOfALaterVersionIsNoneThatIsChosen) {
    for (const int filter : {-1, 7, 1 << 30}) {
        const LoadPreferencesScope scope(Chosen(filter));
        EXPECT_FALSE(HostLoadPreferences().choosesFilter) << filter;
        EXPECT_TRUE(HostLoadPreferences().bounded);
    }
}

TEST(HostExtras, ThreadsAreToldOfTheirOwnPreferencesOnly) {
    const LoadPreferencesScope scope(Chosen(kResampleBox));
    bool isBounded = true;
    std::thread([&] { isBounded = HostLoadPreferences().bounded; }).join();
    EXPECT_FALSE(isBounded);
}

}  // namespace
