/// Opening files with OpenImageIO.
#pragma once

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <memory>

namespace Kavra::Devices {

/// The file opened at its first subimage, set to deliver alpha as it is stored (no multiplication into the colours).
///
/// As `ImageInput::open` does, asks the reader of the file's extension and then, where that refuses, all others; but
/// none whose format starts with other bytes than the file does (`MayBeOfFormat`). Null, without a message, when the
/// library cannot read it or the path names anything but a regular file: the library would wait for ever on a pipe, and
/// describes names like "x.null" that do not exist. Throws `std::bad_alloc` when it is memory that failed.
std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path);

/// Takes the errors that `input` has collected, which the library would keep for ever, and throws `std::bad_alloc` when
/// one of them is for want of memory. For after a failure: what fails for want of memory is not to be tried another
/// way.
void TakeErrors(const OIIO::ImageInput& input);

}  // namespace Kavra::Devices
