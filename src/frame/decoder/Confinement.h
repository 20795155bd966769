/// Taking away from a process all that decoding a picture does not need.
#pragma once

#include "common/isolation/DecoderRequest.h"

#include <cstdint>

namespace Kavra::Decoder {

/// What this system has of what confinement is made of.
Common::DecoderGreeting SystemGreeting();

struct Bounds {
    std::uint64_t addressBytes;  ///< beside those that are taken already
    std::uint64_t seconds;       ///< of processor time, of all threads together
};

/// Confines the calling process, which has one thread, for good: no file system, no network, no other process, no more
/// memory and time than said. What the system has no means for is left out; false where it has, and refuses.
bool Confine(const Bounds& bounds, const Common::DecoderGreeting& system);

/// Leaves these descriptors open and no others above standard error.
void CloseOthers(const int* kept, std::size_t count);

}  // namespace Kavra::Decoder
