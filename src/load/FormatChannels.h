/// What a pixel format says of a part where nothing else is known of its pixels.
#pragma once

#include "common/PixelFormats.h"
#include "load/InspectedFile.h"

namespace Kavra::Devices {

/// Channels, bits, alpha and light of a part whose pixels a host's reader delivers in `format`: straight alpha, linear
/// floats, integers by sRGB.
void SetChannels(PartFacts& facts, const Common::PixelFormat& format);

}  // namespace Kavra::Devices
