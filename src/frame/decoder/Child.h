/// One picture, decoded by a process of its own.
#pragma once

#include "common/isolation/DecoderRequest.h"
#include "common/isolation/Packets.h"

#include <kavra/devices/IImageHandler.h>

namespace Kavra::Decoder {

/// Confines the calling process, which is a fresh child of one thread, decodes and ends it.
[[noreturn]] void RunChild(Devices::IImageHandler& handler, const Common::DecoderRequest& request,
                           const Common::Packet& packet, const Common::DecoderGreeting& system);

}  // namespace Kavra::Decoder
