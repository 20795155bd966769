/// Recognising PICT pictures.
#pragma once

#include "common/ByteSource.h"

namespace Kavra::Devices {

/// Whether a picture follows the 512 bytes that every file begins with: a frame that is not empty, and the opcode of
/// version 1 or 2. Needs 512 bytes after those, and takes no file of 2 GiB or more. The position of the source does not
/// matter and is not kept.
bool IsPict(Common::ByteSource& source);

}  // namespace Kavra::Devices
