/// Playing an animation up to one of its frames.
#pragma once

#include "readers/ByteSource.h"
#include "readers/flic/FlicFrame.h"
#include "readers/flic/FlicHeader.h"

namespace Kavra::Devices {

/// Plays the chunks from the first on into `frame` and `palette`, until those of frame `wanted` are done and the next
/// frame has begun, the file ends, or as many chunks were read as the header counts frames. The last limit means that
/// an animation whose frames hold several chunks each is never played to its end. Chunks of other kinds are skipped.
///
/// A chunk: its size (4 bytes, these included), its kind (2), its body. A frame is a chunk too, of which only the count
/// of chunks inside (2) and 8 unused bytes are the body: the chunks inside follow like any other.
void PlayFlic(ByteSource& source, const FlicHeader& header, int wanted, FlicFrame& frame, FlicPalette& palette);

}  // namespace Kavra::Devices
