/// What a DDS file says of itself.
#pragma once

#include "common/ByteSource.h"
#include "load/InspectedFile.h"

#include <kavra/devices/LegacyReading.h>

namespace Kavra::Devices {

/// Adds the only part of a DDS file: cubes, volumes, arrays and levels as the format has them (the image library is
/// wrong about them), pixels as whoever delivers them in this reading says. False where the header is none that is loaded.
bool AddDdsPart(InspectedFile& file, const KString& path, Common::ByteSource& source, ELegacyReading reading);

}  // namespace Kavra::Devices
