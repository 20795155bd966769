/// \file
/// What a host wants of loads beyond what the interface of image handlers asks.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/LegacyReading.h>
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

    /// The face of a cube map that is loaded by itself, as a flat picture: 0 to 5 for +x -x +y -y +z -z. Negative: all of
    /// them. The load fails, with the warning "Frame index out of range", where there is none; so for `slice`, `mipLevel`
    /// and `channels`.
    std::int32_t face = -1;
    /// The slice of a volume that is loaded by itself, as a flat picture, from 0. Negative: all of them.
    std::int32_t slice = -1;
    /// The mip level that is loaded of files other than DDS, whose levels the load's own `level` chooses; that one is the
    /// frame of all others, as ever.
    std::int32_t mipLevel = 0;
    /// One to four names of channels of the file, separated by commas, that become red, green, blue and alpha: "Z", or
    /// "diffuse.R,diffuse.G,diffuse.B". One channel is grey, of three the alpha is opaque; of two the second is the alpha
    /// of a grey first one where it is called so ("A", "layer.A"), else they are red and green. The picture has four
    /// channels of a type that holds them all. For what the image library reads. Null: the contract's choice. The text
    /// lives until the scope ends.
    const char* channels = nullptr;

    /// How files of the old raster formats are read, by descriptions and inspections as well.
    ELegacyReading legacy = kLegacyContract;
    /// Hears of files that the other reading shows differently; null where nobody asks. Lives until the scope ends.
    ILegacyObserver* legacyObserver = nullptr;

    /// Whether files are decoded by a confined process (DecoderProcess.h), so that nothing that a file contains can end
    /// or stall this one. Holds for loads, descriptions and inspections, of files and of memory.
    bool isolated = false;
    /// How long such a process may take for one operation; 0 means 60 seconds.
    std::uint32_t timeoutSeconds = 0;
    /// The memory in bytes that it may take beside its own; 0 means three quarters of the machine's.
    std::uint64_t maxDecoderBytes = 0;
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
