/// The files that lie beside a raster and share its name.
#pragma once

#include <kavra/devices/Export.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Kavra::Devices {

/// The path with its extension - from the last "." of its last component - replaced by `extension`, which begins with a
/// "."; nothing when it has none.
std::optional<KString> PathWithExtension(const KString& path, const wchar_t* extension);

/// Whether the path is a regular file that can be opened.
bool CanOpen(const KString& path);

/// A file whole. Nothing when it cannot be read or has more than `maximumBytes` bytes.
std::optional<std::string> ReadWhole(const KString& path, std::uint64_t maximumBytes);

}  // namespace Kavra::Devices
