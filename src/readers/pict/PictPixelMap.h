/// Bitmaps and pixel maps inside a picture.
#pragma once

#include "common/ByteSource.h"
#include "readers/pict/PictPicture.h"

#include <optional>

namespace Kavra::Devices {

/// What the opcode says of the bitmap that follows it.
enum class PictBitmapKind {
    kIndexed,        ///< one-bit bitmap or pixel map of palette indices
    kIndexedRegion,  ///< the same with a mask region, which has no effect
    kDirect,         ///< pixel map of colours
};

// Each leaves the source behind what it read, and answers with nothing or false where that is damaged. The sources are
// whole files in memory: offsets are counted from their start.

std::optional<PictRect> ReadPictRect(Common::ByteSource& source);
std::optional<PictColour> ReadPictColour(Common::ByteSource& source);

/// Skips a region or polygon, whose size (2 bytes) counts itself.
bool SkipPictRegion(Common::ByteSource& source);

/// Skips a pattern: its kind and 8 bytes; then a pixel map where the kind is 1, a colour where it is 2.
bool SkipPictPattern(Common::ByteSource& source);

/// Reads a bitmap after its opcode and looks through its rows without unpacking them.
std::optional<PictRecord> ReadPictRecord(Common::ByteSource& source, PictBitmapKind kind, const PictRect& frame);

}  // namespace Kavra::Devices
