/// \file
/// What a host wants of the files that it writes beyond what the interface of image handlers asks.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/ImageDescription.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kavra::Devices {

/// A piece of metadata that is written where a kind of file has a place for it.
struct SavedText {
    /// What its value is: words, a number, or a whole number.
    enum Kind { kText, kNumber, kWhole };

    const char* name;  ///< the image library's
    Kind kind;         ///< numbers are handed over as text, too: "0.004"
    bool isCommon;     ///< kinds of files with a few fixed fields may have one for it
};

/// Everything else stays out of files: what a place, a person's software or a maker's camera adds for itself, and what
/// would no longer be true of the pixels (orientation, thumbnails, colour spaces).
inline constexpr std::array<SavedText, 14> kSavedTexts = {{
    {"ImageDescription", SavedText::kText, true},
    {"Copyright", SavedText::kText, true},
    {"Artist", SavedText::kText, true},
    {"DateTime", SavedText::kText, false},
    {"DocumentName", SavedText::kText, false},
    {"Make", SavedText::kText, false},
    {"Model", SavedText::kText, false},
    {"ExposureTime", SavedText::kNumber, false},
    {"FNumber", SavedText::kNumber, false},
    {"Exif:DateTimeOriginal", SavedText::kText, false},
    {"Exif:FocalLength", SavedText::kNumber, false},
    {"Exif:PhotographicSensitivity", SavedText::kWhole, false},
    {"Exif:LensMake", SavedText::kText, false},
    {"Exif:LensModel", SavedText::kText, false},
}};

/// The entry of a name, to the letter; null where it is none of them.
inline const SavedText* FindSavedText(std::string_view name) {
    for (const SavedText& text : kSavedTexts) {
        if (name == text.name) return &text;
    }
    return nullptr;
}

/// A further picture of a file that holds several.
struct SaveFrame {
    const ImageDescription* desc;  ///< read as `IImageHandler::SaveTexture` reads it
    const void* data;              ///< the pixels that it describes
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
    double gamma = 0;  ///< of `kTransferGamma`: the decoding exponent
    /// A colour profile of `iccBytes` bytes; null: none. One that `IsSoundIccProfile` (IccProfile.h) finds damaged, or of
    /// other channels than the file's, is left out, and of JPEG one beyond 65,519 bytes.
    const void* iccProfile = nullptr;
    std::size_t iccBytes = 0;  ///< of the profile
    /// Metadata by the names of `kSavedTexts`; others are left out, as is what goes beyond 32 KiB in all.
    const FileText* texts = nullptr;
    std::size_t textCount = 0;  ///< of the texts
    /// Further pictures behind the one that is saved, for GIF, TIFF and OpenEXR files, at most 4,096. A save to any
    /// other kind fails; so does one to GIF or OpenEXR whose pictures differ in size or format.
    const SaveFrame* moreFrames = nullptr;
    std::size_t moreFrameCount = 0;  ///< of the further pictures
    double framesPerSecond = 0;      ///< of an animation (GIF), at most 100; 0: the writer's own
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
