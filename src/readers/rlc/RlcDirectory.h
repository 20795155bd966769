/// The directory of images in the trailer of an RLC file.
#pragma once

#include "readers/ByteSource.h"
#include "readers/rlc/RlcTrailer.h"

namespace Kavra::Devices {

/// How many images the directory of a trailer lists: those of this file, and those of other RLC files that it refers to
/// and that exist. Such a file is looked for by the name as it is stored, from the process's own folder; what it refers
/// to in turn is not followed.
///
/// Little-endian, offsets in the trailer:
///
///     offset    bytes  field
///         22        2  entries, signed; there is room for 20
///     24 + 16i      2  kind of entry i: 2 an image in this file, 4 a reference
///     32 + 16i      4  of a reference: offset in the file of a record of 200 bytes, with the name from its byte 56
int CountImages(ByteSource& source, const RlcTrailer& trailer);

}  // namespace Kavra::Devices
