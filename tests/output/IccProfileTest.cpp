// Which bytes count as a colour profile (ICC.1:2022, 7.2 and 7.3).

#include "support/ColourProfile.h"

#include <kavra/devices/IccProfile.h>

#include <gtest/gtest.h>

#include <functional>

using Kavra::Devices::IsSoundIccProfile;
using Kavra::Devices::kMaxIccBytes;
using namespace Kavra::Tests;

namespace {

bool IsSound(const Profile& profile, int channels = 3) {
    return IsSoundIccProfile(profile.data(), profile.size(), channels);
}

/// A sound profile after a change.
Profile Changed(const std::function<void(Profile&)>& change) {
    Profile profile = MakeProfile();
    change(profile);
    return profile;
}

TEST(IccProfile, AProfileFitsPicturesOfItsColourSpace) {
    for (const int channels : {3, 4}) {
        EXPECT_TRUE(IsSound(MakeProfile("RGB "), channels));
        EXPECT_FALSE(IsSound(MakeProfile("GRAY"), channels));
    }
    for (const int channels : {1, 2}) {
        EXPECT_TRUE(IsSound(MakeProfile("GRAY"), channels));
        EXPECT_FALSE(IsSound(MakeProfile("RGB "), channels));
    }
    for (const int channels : {-1, 0, 5})
        EXPECT_FALSE(IsSound(MakeProfile("RGB "), channels));
    EXPECT_FALSE(IsSound(MakeProfile("CMYK"), 4));
}

TEST(IccProfile, ItsLengthIsTheOneItNames) {
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { p.pop_back(); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { p.push_back(0); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { p.resize(131); })));
    EXPECT_FALSE(IsSound(Profile()));
    EXPECT_FALSE(IsSoundIccProfile(nullptr, 160, 3));
}

TEST(IccProfile, FromVersionFourOnItsLengthIsAMultipleOfFour) {
    Profile profile = MakeProfile("RGB ", 17);
    EXPECT_FALSE(IsSound(profile));
    profile[8] = 2;
    EXPECT_TRUE(IsSound(profile));
}

TEST(IccProfile, ItIsAtMostSixteenMebibytesLong) {
    EXPECT_TRUE(IsSound(MakeProfile("RGB ", kMaxIccBytes - 144)));
    EXPECT_FALSE(IsSound(MakeProfile("RGB ", kMaxIccBytes - 144 + 4)));
}

TEST(IccProfile, ItsSignatureDeviceConnectionAndIntentAreThoseOfPictures) {
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { p[36] = 'A'; })));
    for (const char* device : {"scnr", "mntr", "prtr", "spac"})
        EXPECT_TRUE(IsSound(Changed([&](Profile& p) { SetSignature(p, 12, device); }))) << device;
    for (const char* device : {"link", "abst", "nmcl", "MNTR"})
        EXPECT_FALSE(IsSound(Changed([&](Profile& p) { SetSignature(p, 12, device); }))) << device;
    EXPECT_TRUE(IsSound(Changed([](Profile& p) { SetSignature(p, 20, "Lab "); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetSignature(p, 20, "RGB "); })));
    EXPECT_TRUE(IsSound(Changed([](Profile& p) { SetNumber(p, 64, 3); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 64, 4); })));
}

TEST(IccProfile, EveryTagIsInside) {
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 128, 0); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 128, 3); })));  // the table goes on beyond the end
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 128, 0xFFFFFFFF); })));  // times 12 it would be small
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 136, 100); })));         // in the header
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 136, 145); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 140, 17); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 140, 0xFFFFFFFF); })));
    EXPECT_FALSE(IsSound(Changed([](Profile& p) { SetNumber(p, 136, 0xFFFFFFFF); })));
}

}  // namespace
