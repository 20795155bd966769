#include "Selection.h"

namespace Kavra::App {

void Selection::AddTo(Devices::LoadPreferences& preferences) const {
    preferences.face = face;
    preferences.slice = slice;
    preferences.mipLevel = mipLevel;
    preferences.channels = channels.empty() ? nullptr : channels.c_str();
}

}  // namespace Kavra::App
