/// FLI and FLC animations as their descriptions have them (Jim Kent, "The FLIC File Format"; Autodesk, Animator Pro file
/// formats) and the programs that follow these: every frame is a chunk that holds the chunks of its changes, and every
/// chunk ends where its size says.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/flic/FlicChunks.h"
#include "readers/flic/FlicHeader.h"

#include <cstdint>

namespace Kavra::Devices {

struct FlicMovie {
    FlicHeader header;
    std::uint64_t firstChunk = 0;
    bool hasSixBits = false;  ///< all colours, whatever their chunks say
    int frames = 0;           ///< at least 1; without the one that leads from the last back to the first
};

/// Animations of related kinds, which no reader shows: with more than 256 colours, or with other coding.
bool IsOtherFlic(Common::ByteSource& source);

/// Where the first chunk is looked for.
std::uint64_t FindFlicStart(Common::ByteSource& source);

/// Why a file that is an animation all the same is none that is shown, as a message to the user; null where it is shown.
const wchar_t* WhyFlicIsRefused(Common::ByteSource& source);

/// Describes a file, whose frames it counts. A size that the header does not tell is that of the screens of the time.
[[nodiscard]] Common::Result<FlicMovie> ReadFlicMovie(Common::ByteSource& source);

/// Plays frames up to `wanted`, or the last one where there are fewer. What is damaged changes as much as there is of
/// it, and what follows is played by the sizes of the chunks.
void PlayFlicMovie(Common::ByteSource& source, const FlicMovie& movie, int wanted, FlicFrame& frame,
                   FlicPalette& palette);

}  // namespace Kavra::Devices
