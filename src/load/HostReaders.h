/// The host's own readers of DDS and OpenEXR files, asked for a file or for the picture in memory that stands for it.
#pragma once

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/EXRHandler.h>

#include <array>
#include <optional>

namespace Kavra::Devices {

/// `DDSReader::Load` of a file.
bool OpenHostDds(DDSReader& reader, const KString& path);

/// `EXRHandler::ReadFromFile`.
bool ReadHostExr(EXRHandler& handler, const KString& path);

/// Whether the host's OpenEXR reader wants a file, of which the start may be known.
bool HostPrefersExr(const KString& path, const std::optional<std::array<unsigned char, 4>>& start);

}  // namespace Kavra::Devices
