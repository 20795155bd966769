/// What the image library says of the parts of a file.
#pragma once

#include "load/InspectedFile.h"

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// Everything that an `ImageSpec` says, with its own size as the only level; the profile stays that of `spec`. `format` is
/// the name of the reader.
PartFacts FactsOfSpec(std::string_view format, const OIIO::ImageSpec& spec);

/// Adds the parts of an open file: as many as there are, no more than `InspectedFile::kMaxParts`, and none that would
/// take long: those of a file that makes each of many parts carry the same megabytes, and frames of a GIF, which have to
/// be decoded, beyond 2^30 pixels.
void AddLibraryParts(InspectedFile& file, OIIO::ImageInput& input);

}  // namespace Kavra::Devices
