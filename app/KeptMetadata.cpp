#include "KeptMetadata.h"

#include <kavra/devices/IccProfile.h>

#include <algorithm>
#include <cmath>
#include <format>

namespace Kavra::App {

using namespace Devices;

KeptMetadata::KeptMetadata(const Source& source, std::string_view extension, int colourChannels)
    : mSource(source), mExtension(extension), mAbilities(AbilitiesOf(extension)) {
    KeepProfile(colourChannels);
    KeepResolution();
    KeepTexts();
}

void KeptMetadata::KeepProfile(int colourChannels) {
    const std::vector<unsigned char>& profile = mSource.iccProfile;
    if (profile.empty()) return;
    mHasBadProfile = !IsSoundIccProfile(profile.data(), profile.size(), colourChannels);
    mHasProfile = !mHasBadProfile && profile.size() <= mAbilities.maxProfile;
    if (!mHasBadProfile && !mHasProfile) mLosses.emplace_back("the colour profile");
}

void KeptMetadata::KeepResolution() {
    constexpr double kTolerance = 0.01, kUsual = 72;  // that programs write which know of none
    const double x = mSource.xResolution, y = mSource.yResolution;
    if (!(x > 0) || !(y > 0) || !std::isfinite(x) || !std::isfinite(y)) return;
    const bool isOne = std::abs(x - y) <= kTolerance * x;
    if (isOne && mAbilities.hasResolution) mResolution = x;
    mLosesResolution = mResolution == 0 && (!isOne || x != kUsual);
}

void KeptMetadata::KeepTexts() {
    std::vector<std::string_view> names;
    for (const Source::Text& text : mSource.texts) {
        const SavedText* const known = FindSavedText(text.name);
        if (known == nullptr || text.value.empty() || std::ranges::contains(names, known->name)) continue;
        names.emplace_back(known->name);
        if (mAbilities.HoldsText(*known)) {
            mTexts.push_back({known->name, text.value.c_str()});
        } else if (known->name != std::string_view("DateTime")) {  // of the last change, which nobody misses
            mLosses.emplace_back(known->name);
        }
    }
}

void KeptMetadata::AddTo(SavePreferences& preferences) const {
    if (mHasProfile) {
        preferences.iccProfile = mSource.iccProfile.data();
        preferences.iccBytes = mSource.iccProfile.size();
    }
    preferences.resolution = mResolution;
    preferences.texts = mTexts.data();
    preferences.textCount = mTexts.size();
}

void KeptMetadata::NoteLosses(Report& report, bool hasOwnResolution) const {
    if (mHasBadProfile) report.NoteOnce("the colour profile is damaged or of other channels, and is left out");
    std::string list;
    for (const std::string& loss : mLosses)
        list += (list.empty() ? "" : ", ") + loss;
    if (mLosesResolution && !hasOwnResolution) list += list.empty() ? "the resolution" : ", the resolution";
    if (!list.empty()) report.NoteOnce(std::format("{} files cannot keep: {}", mExtension, list));
}

}  // namespace Kavra::App
