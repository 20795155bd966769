/// Telling image files apart by name and content, and making readers for them.
#pragma once

#include "readers/ImageFileType.h"
#include "readers/ImageReaderInterface.h"

#include <kavra/devices/Export.h>

#include <array>
#include <optional>

namespace Kavra::Devices {

/// What a file is, and the file itself as detection opened it: whoever reads it need not open it again.
struct DetectedFile {
    ImageFileType type = None;
    std::optional<PictureFiles> files;                  ///< nothing of type `None`, nor where the extension decided
    std::optional<std::array<unsigned char, 4>> start;  ///< its first bytes, zero where it has fewer; likewise
};

/// Opens a file and tells what it is: by its extension where that is a common one, else by its first bytes. Never
/// throws for what a file holds. Threads: any.
DetectedFile DetectFile(const KString& path);

/// The `ImageFileType` alone.
int DetectImageFileType(const KString& path);

/// `Other` when the extension (all from the last "." of the whole path, ignoring case) is one that is always left to
/// OpenImageIO, else -1. No file is opened.
int IsCommonImageExtension(const KString& path);

/// A new reader for the type, which the caller owns, or null when there is none.
ImageReaderInterface* CreateImageReader(int fileType);

}  // namespace Kavra::Devices
