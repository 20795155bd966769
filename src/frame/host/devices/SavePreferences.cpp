#include "frame/host/devices/PreferenceStack.h"

#include <kavra/devices/SavePreferences.h>

namespace Kavra::Devices {

namespace {

constinit thread_local PreferenceStack<SavePreferences> tPreferences;

}  // namespace

void PushSavePreferences(const SavePreferences& preferences) {
    tPreferences.Push(preferences);
}

void PopSavePreferences() noexcept {
    tPreferences.Pop();
}

void GetSavePreferences(SavePreferences& preferences) {
    tPreferences.Get(preferences);
}

}  // namespace Kavra::Devices
