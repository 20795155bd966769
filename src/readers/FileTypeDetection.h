/// Telling image files apart by name and content, and making readers for them.
#pragma once

#include "readers/ImageFileType.h"
#include "readers/ImageReaderInterface.h"

#include <kavra/devices/Export.h>
#include <kavra/devices/LegacyReading.h>

#include <array>
#include <optional>

namespace Kavra::Devices {

/// What a file is, and the file itself as detection opened it: whoever reads it need not open it again.
struct DetectedFile {
    ImageFileType type = None;
    std::optional<PictureFiles> files;                  ///< nothing of type `None`, nor where the extension decided
    std::optional<std::array<unsigned char, 4>> start;  ///< its first bytes, zero where it has fewer; likewise
    bool isShown = true;  ///< false: described and never shown; reading it raises a warning that says why
};

/// Opens a file and tells what it is: by its extension where that is a common one, else by its first bytes. The common
/// reading knows more files of the legacy formats; what the contract's knows is the same to both, but for rasters, whose
/// samples the common reading takes from the file that is named. Never throws for what a file holds. Threads: any.
DetectedFile DetectFile(const KString& path, ELegacyReading reading = kLegacyContract);

/// The `ImageFileType` alone, in the contract's reading.
int DetectImageFileType(const KString& path);

/// `Other` when the extension (all from the last "." of the whole path, ignoring case) is one that is always left to
/// OpenImageIO, else -1. No file is opened.
int IsCommonImageExtension(const KString& path);

/// Whether files of this type are read by a reader of our own.
bool HasImageReader(int fileType);

/// A new reader for the type, which the caller owns, or null when there is none or no memory for it.
ImageReaderInterface* CreateImageReader(int fileType, ELegacyReading reading = kLegacyContract);

}  // namespace Kavra::Devices
