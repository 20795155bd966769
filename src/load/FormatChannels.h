/// What a pixel format says of a part where nothing else is known of its pixels.
#pragma once

#include "common/PixelFormats.h"
#include "load/InspectedFile.h"

#include <OpenImageIO/typedesc.h>

#include <string_view>

namespace Kavra::Devices {

/// "uint8", "half" ... as `FileChannel` has them; empty of types that are no numbers.
const char* TypeName(OIIO::TypeDesc type);

/// One letter a channel, in their order in memory; none of blocks.
std::string_view ChannelLetters(const Common::PixelFormat& format);

/// Channels, bits, alpha and light of a part whose pixels a host's reader delivers in `format`: straight alpha, linear
/// floats, integers by sRGB.
void SetChannels(PartFacts& facts, const Common::PixelFormat& format);

}  // namespace Kavra::Devices
