/// Preferences of a thread: each scope's over those before it.
#pragma once

#include "common/KnownFields.h"

#include <utility>

namespace Kavra::Devices {

/// A stack of structures that begin with their size. To be made `constinit thread_local`: bare, so that also what ends
/// after the thread's other objects can ask.
template <class Preferences>
class PreferenceStack {
public:
    constexpr PreferenceStack() = default;

    /// Throws `std::bad_alloc`.
    void Push(const Preferences& preferences) {
        auto* const held = new Held{.preferences = {}, .below = mTop};
        Common::CopyKnownFields(preferences, held->preferences);
        mTop = held;
    }

    void Pop() noexcept {
        if (mTop != nullptr) delete std::exchange(mTop, mTop->below);
    }

    void Get(Preferences& preferences) const {
        static constexpr Preferences kDefaults;
        Common::CopyKnownFields(mTop != nullptr ? mTop->preferences : kDefaults, preferences);
    }

private:
    struct Held {
        Preferences preferences;
        Held* below;
    };

    Held* mTop = nullptr;
};

}  // namespace Kavra::Devices
