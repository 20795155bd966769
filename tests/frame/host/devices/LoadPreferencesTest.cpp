#include <kavra/devices/LoadPreferences.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace Kavra::Devices;

LoadPreferences Current() {
    LoadPreferences preferences;
    GetLoadPreferences(preferences);
    return preferences;
}

LoadPreferences Filtered(EResampleFilter filter) {
    LoadPreferences preferences;
    preferences.choosesFilter = true;
    preferences.filter = filter;
    return preferences;
}

/// What an earlier version knew: a structure that ends before `fast`.
constexpr auto kOlder = static_cast<std::uint32_t>(offsetof(LoadPreferences, fast));

/// What a later version may know.
struct Newer {
    LoadPreferences known;
    std::array<unsigned char, 64> more;
};

TEST(LoadPreferences, AreTheDefaultsUnlessAHostSaysOtherwise) {
    const LoadPreferences preferences = Current();
    EXPECT_EQ(preferences.size, sizeof(LoadPreferences));
    EXPECT_FALSE(preferences.alphaWeighted || preferences.bounded || preferences.linearLight || preferences.fast);
    EXPECT_FALSE(preferences.choosesFilter);
    EXPECT_EQ(preferences.filter, kResampleMitchell);
}

TEST(LoadPreferences, EachFieldHoldsByItself) {
    for (bool LoadPreferences::* const field :
         {&LoadPreferences::alphaWeighted, &LoadPreferences::bounded, &LoadPreferences::linearLight,
          &LoadPreferences::fast, &LoadPreferences::choosesFilter}) {
        LoadPreferences preferences;
        preferences.*field = true;
        const LoadPreferencesScope scope(preferences);
        const LoadPreferences held = Current();
        EXPECT_TRUE(held.*field);
        EXPECT_EQ(held.alphaWeighted + held.bounded + held.linearLight + held.fast + held.choosesFilter, 1);
    }
    EXPECT_FALSE(Current().choosesFilter);
}

TEST(LoadPreferences, AnInnerScopeHoldsWholeAndGivesTheOuterOneBack) {
    const LoadPreferencesScope outer(Filtered(kResampleBox));
    {
        LoadPreferences bounded;
        bounded.bounded = true;
        const LoadPreferencesScope inner(bounded);
        EXPECT_TRUE(Current().bounded);
        EXPECT_FALSE(Current().choosesFilter) << "nothing of the outer one shines through";
        const LoadPreferencesScope innermost(Filtered(kResampleLanczos3));
        EXPECT_EQ(Current().filter, kResampleLanczos3);
        EXPECT_FALSE(Current().bounded);
    }
    EXPECT_EQ(Current().filter, kResampleBox);
}

TEST(LoadPreferences, AnExceptionEndsTheScopesThatItLeaves) {
    const LoadPreferencesScope outer(Filtered(kResampleTriangle));
    try {
        const LoadPreferencesScope inner(Filtered(kResampleNearest));
        const LoadPreferencesScope innermost(Filtered(kResampleBox));
        throw std::runtime_error("leaves");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(Current().filter, kResampleTriangle);
    }
}

TEST(LoadPreferences, TakingBackWhatWasNeverSaidDoesNothing) {
    PopLoadPreferences();
    PopLoadPreferences();
    const LoadPreferencesScope scope(Filtered(kResampleBox));
    EXPECT_EQ(Current().filter, kResampleBox);
}

TEST(LoadPreferences, EachThreadHasItsOwn) {
    const LoadPreferencesScope scope(Filtered(kResampleBox));
    std::optional<LoadPreferences> before, after;
    std::thread([&] {
        before = Current();
        const LoadPreferencesScope own(Filtered(kResampleCatmullRom));
        after = Current();
    }).join();
    EXPECT_FALSE(before->choosesFilter);
    EXPECT_EQ(after->filter, kResampleCatmullRom);
    EXPECT_EQ(Current().filter, kResampleBox);
}

TEST(LoadPreferences, ThreadsThatSayAndTakeBackAtTheSameTimeSeeTheirOwn) {
    constexpr std::array kFilters = {kResampleNearest, kResampleBox, kResampleTriangle, kResampleLanczos3};
    std::array<int, kFilters.size()> wrong{};
    std::array<std::thread, kFilters.size()> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] {
            for (int round = 0; round < 1000; ++round) {
                const LoadPreferencesScope scope(Filtered(kFilters[i]));
                const LoadPreferences held = Current();
                wrong[i] += !held.choosesFilter || held.filter != kFilters[i];
            }
            wrong[i] += Current().choosesFilter;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : wrong)
        EXPECT_EQ(count, 0);
}

TEST(LoadPreferences, FieldsThatAnOlderHostDoesNotKnowAreAtTheirDefaults) {
    LoadPreferences older = Filtered(kResampleLanczos3);
    older.size = kOlder;
    older.bounded = older.fast = true;
    const LoadPreferencesScope scope(older);
    EXPECT_TRUE(Current().bounded);
    EXPECT_FALSE(Current().fast || Current().choosesFilter);
    EXPECT_EQ(Current().filter, kResampleMitchell);
}

TEST(LoadPreferences, NoMoreIsFilledThanItsReaderKnows) {
    LoadPreferences all = Filtered(kResampleBox);
    all.bounded = all.fast = true;
    const LoadPreferencesScope scope(all);
    LoadPreferences older;
    older.size = kOlder;
    GetLoadPreferences(older);
    EXPECT_EQ(older.size, kOlder);
    EXPECT_TRUE(older.bounded);
    EXPECT_FALSE(older.fast || older.choosesFilter);

    LoadPreferences none;
    none.size = 0;
    GetLoadPreferences(none);
    EXPECT_FALSE(none.bounded);
    const LoadPreferencesScope nothing(none);
    EXPECT_FALSE(Current().bounded);
}

TEST(LoadPreferences, OfANewerHostTheKnownFieldsAreTaken) {
    Newer newer;
    newer.known = Filtered(kResampleTriangle);
    newer.known.size = sizeof(newer);
    newer.more.fill(0xEE);
    const LoadPreferencesScope scope(newer.known);
    EXPECT_EQ(Current().filter, kResampleTriangle);
    EXPECT_EQ(Current().size, sizeof(LoadPreferences));

    Newer asked;
    asked.known.size = sizeof(asked);
    asked.more.fill(0xDD);
    GetLoadPreferences(asked.known);
    EXPECT_EQ(asked.known.size, sizeof(asked));
    EXPECT_EQ(asked.known.filter, kResampleTriangle);
    for (const unsigned char byte : asked.more)
        EXPECT_EQ(byte, 0xDD);
}

}  // namespace
