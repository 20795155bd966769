/// Opening files with OpenImageIO.
#pragma once

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <memory>

namespace Kavra::Devices {

/// The file opened at its first subimage, set to deliver alpha as it is stored (no multiplication into the colours).
/// Null, without a message, when the library cannot read it or the path names anything but a regular file: the library
/// would wait for ever on a pipe, and describes names like "x.null" that do not exist.
std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path);

}  // namespace Kavra::Devices
