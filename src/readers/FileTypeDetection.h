/// Telling image files apart by name and content, and making readers for them.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

class ImageReaderInterface;

/// The `ImageFileType` of a file: by its extension where that is a common one, else by its first bytes. Never throws
/// for what a file holds. Threads: any.
int DetectImageFileType(const KString& path);

/// `Other` when the extension (all from the last "." of the whole path, ignoring case) is one that is always left to
/// OpenImageIO, else -1. No file is opened.
int IsCommonImageExtension(const KString& path);

/// A new reader for the type, which the caller owns, or null when there is none.
ImageReaderInterface* CreateImageReader(int fileType);

}  // namespace Kavra::Devices
