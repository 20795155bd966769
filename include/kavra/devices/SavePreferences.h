/// \file
/// What a host wants of the files that it writes beyond what the interface of image handlers asks.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/ImageDescription.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// A further picture of a file that holds several.
struct SaveFrame {
    const ImageDescription* desc;  ///< read as `IImageHandler::SaveTexture` reads it
    const void* data;
};

/// How an image handler writes files of the image library (all but ".dds"). As it stands, nothing changes: files are
/// those of a host that knows of no preferences.
///
/// Holds for the calling thread, for as long as a `SavePreferencesScope` lives:
///
///     Kavra::Devices::SavePreferences preferences;
///     preferences.quality = 90;
///     const Kavra::Devices::SavePreferencesScope scope(preferences);
///     handler->SaveTexture(L"photo.jpg", desc, pixels);
///
/// What a kind of file or its writer does not know is left out without a message, except where a field says otherwise.
/// All that is pointed to stays the host's and lives until the scope ends. Later versions add fields at the end; a host
/// that was built before has them at their defaults.
struct SavePreferences {
    std::uint32_t size = sizeof(SavePreferences);  ///< of the structure as its user knows it, in bytes
    std::int32_t quality = 0;                      ///< of lossy compression, 1 to 100; 0: the writer's own
    const char* compression = nullptr;  ///< by the library's name ("zip", "lzw", "none" ...); null: the writer's own
    std::int32_t tileSize = 0;          ///< side of square tiles in pixels, for OpenEXR and TIFF; 0: rows
    double resolution = 0;              ///< dots per inch, both ways; 0: none
    /// Leaves the alpha of formats that end in one out of the file: RGBA becomes RGB, grey with alpha grey. Kinds of
    /// files that hold three channels but not four (Radiance HDR, PPM, PFM) can be written so.
    bool dropsAlpha = false;
    /// What the colours that are handed over are to their alpha, so that the file can say so where its kind has both
    /// (TIFF). `kAlphaNone`: as without preferences.
    EAlphaKind alpha = kAlphaNone;
    /// What the values that are handed over are to light, so that the file can say so where its kind does.
    ETransferKind transfer = kTransferUnknown;
    double gamma = 0;                  ///< of `kTransferGamma`: the decoding exponent
    const void* iccProfile = nullptr;  ///< a colour profile of `iccBytes` bytes; null: none
    std::size_t iccBytes = 0;
    const FileText* texts = nullptr;  ///< metadata, by the library's names ("ImageDescription", "Copyright" ...)
    std::size_t textCount = 0;
    /// Further pictures behind the one that is saved, for kinds of files that hold several (GIF, TIFF, OpenEXR ...). A
    /// save to any other kind fails.
    const SaveFrame* moreFrames = nullptr;
    std::size_t moreFrameCount = 0;
    double framesPerSecond = 0;  ///< of an animation; 0: the writer's own
};

/// Makes preferences those of the calling thread, over those that it had; fields beyond `preferences.size` are at their
/// defaults. Throws `std::bad_alloc`. Threads: any; each has its own.
KAVRA_DEVICES_API void PushSavePreferences(const SavePreferences& preferences);

/// Makes the preferences before the last ones pushed hold again on the calling thread; does nothing where there are none.
KAVRA_DEVICES_API void PopSavePreferences() noexcept;

/// Fills `preferences`, as far as its `size` goes, with those of the calling thread.
KAVRA_DEVICES_API void GetSavePreferences(SavePreferences& preferences);

/// Makes preferences hold on the calling thread while it lives. Scopes end in the opposite order of their beginning, on
/// the thread that they began on.
class SavePreferencesScope {
public:
    /// Pushes the preferences; its end pops them. Throws `std::bad_alloc`.
    explicit SavePreferencesScope(const SavePreferences& preferences) { PushSavePreferences(preferences); }
    ~SavePreferencesScope() { PopSavePreferences(); }
    SavePreferencesScope(const SavePreferencesScope&) = delete;
    SavePreferencesScope& operator=(const SavePreferencesScope&) = delete;
};

}  // namespace Kavra::Devices
