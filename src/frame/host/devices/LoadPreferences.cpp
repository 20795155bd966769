#include "common/KnownFields.h"

#include <kavra/devices/LoadPreferences.h>

#include <utility>

namespace Kavra::Devices {

namespace {

struct Held {
    LoadPreferences preferences;
    Held* below;
};

/// Bare, so that also what ends after the thread's other objects can ask.
constinit thread_local Held* tTop = nullptr;

}  // namespace

void PushLoadPreferences(const LoadPreferences& preferences) {
    auto* const held = new Held{.preferences = {}, .below = tTop};
    Common::CopyKnownFields(preferences, held->preferences);
    tTop = held;
}

void PopLoadPreferences() noexcept {
    if (tTop != nullptr) delete std::exchange(tTop, tTop->below);
}

void GetLoadPreferences(LoadPreferences& preferences) {
    static constexpr LoadPreferences kDefaults;
    Common::CopyKnownFields(tTop != nullptr ? tTop->preferences : kDefaults, preferences);
}

}  // namespace Kavra::Devices
