/// \file
/// What a host wants of loads beyond what the interface of image handlers asks.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/Resampler.h>

#include <cstdint>

namespace Kavra::Devices {

/// How loads, and everything else of an image handler that resizes pictures, treat what is a matter of taste. As it
/// stands, nothing changes: bytes and messages are those of a host that knows of no preferences.
///
/// Holds for the calling thread, for as long as a `LoadPreferencesScope` lives:
///
///     Kavra::Devices::LoadPreferences preferences;
///     preferences.bounded = true;  // no negative light around suns
///     const Kavra::Devices::LoadPreferencesScope scope(preferences);
///     handler->LoadTexture(...);
///
/// Later versions add fields at the end; a host that was built before has them at their defaults.
struct LoadPreferences {
    std::uint32_t size = sizeof(LoadPreferences);  ///< of the structure as its user knows it, in bytes
    bool alphaWeighted = false;                    ///< `ResampleOptions::alphaWeighted`
    bool bounded = false;                          ///< `ResampleOptions::bounded`
    bool linearLight = false;                      ///< `ResampleOptions::linearLight`
    /// Lets a load at a smaller size begin with a smaller picture where the file offers one for less: a JPEG decoded at
    /// a half, a quarter or an eighth, a level of a tiled OpenEXR or TIFF, a mip level of a DDS. Never one smaller than
    /// what is asked for. The pixels are others than without.
    bool fast = false;
    /// Whether pictures that change their size are always resampled with `filter`, instead of as the request and the
    /// change of size demand.
    bool choosesFilter = false;
    EResampleFilter filter = kResampleMitchell;  ///< one that is none counts as none chosen
};

/// Makes preferences those of the calling thread, over those that it had; fields beyond `preferences.size` are at their
/// defaults. Throws `std::bad_alloc`. Threads: any; each has its own.
KAVRA_DEVICES_API void PushLoadPreferences(const LoadPreferences& preferences);

/// Makes the preferences before the last ones pushed hold again on the calling thread; does nothing where there are none.
KAVRA_DEVICES_API void PopLoadPreferences() noexcept;

/// Fills `preferences`, as far as its `size` goes, with those of the calling thread.
KAVRA_DEVICES_API void GetLoadPreferences(LoadPreferences& preferences);

/// Makes preferences hold on the calling thread while it lives. Scopes end in the opposite order of their beginning, on
/// the thread that they began on.
class LoadPreferencesScope {
public:
    /// Pushes the preferences; its end pops them. Throws `std::bad_alloc`.
    explicit LoadPreferencesScope(const LoadPreferences& preferences) { PushLoadPreferences(preferences); }
    ~LoadPreferencesScope() { PopLoadPreferences(); }
    LoadPreferencesScope(const LoadPreferencesScope&) = delete;
    LoadPreferencesScope& operator=(const LoadPreferencesScope&) = delete;
};

}  // namespace Kavra::Devices
