/// The connection to the decoder.
#pragma once

#include "common/isolation/DecoderRequest.h"

#include <span>
#include <string>

namespace Kavra::Devices {

/// Sends a request to the decoder of a module, which is started where none runs. False where that cannot be; `reason`
/// then says why, in English. Throws `std::bad_alloc`. Threads: any.
bool SendToDecoder(const char* module, const Common::DecoderRequest& request, std::span<const int> descriptors,
                   std::string& reason);

}  // namespace Kavra::Devices
