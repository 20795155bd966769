#include "frame/host/devices/PreferenceStack.h"

#include <kavra/devices/LoadPreferences.h>

namespace Kavra::Devices {

namespace {

constinit thread_local PreferenceStack<LoadPreferences> tPreferences;

}  // namespace

void PushLoadPreferences(const LoadPreferences& preferences) {
    tPreferences.Push(preferences);
}

void PopLoadPreferences() noexcept {
    tPreferences.Pop();
}

void GetLoadPreferences(LoadPreferences& preferences) {
    tPreferences.Get(preferences);
}

}  // namespace Kavra::Devices
