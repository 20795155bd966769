/// Opening files with OpenImageIO.
#pragma once

#include "common/ByteSource.h"

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <memory>
#include <optional>

namespace Kavra::Devices {

/// The file that a path names, for the two below. Nothing when it is no regular file that can be opened. Throws
/// `std::bad_alloc` when it is memory that failed.
std::optional<Common::ByteSource> OpenFile(const KString& path);

/// The file opened at its first subimage, set to deliver alpha as it is stored (no multiplication into the colours).
///
/// As `ImageInput::open` does, asks the reader of the file's extension and then, where that refuses, all others; but
/// none whose format starts with other bytes than the file does (`MayBeOfFormat`). Null, without a message, when the
/// library cannot read it, of which the thread's failure tells, or the path names anything but a regular file: the library would wait for ever on a pipe, and
/// describes names like "x.null" that do not exist. Throws `std::bad_alloc` when it is memory that failed.
std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path);
/// The same for a file that is open already: it is looked at there, and only the library opens it.
std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path, Common::ByteSource& file);

}  // namespace Kavra::Devices
