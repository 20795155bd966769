/// The bodies of an animation's chunks. All numbers are little-endian, `n` is a signed byte.
///
/// Each function reads one body from where the source stands and leaves it where the fields ended, which need not be
/// where the chunk says that it ends. The result is false when the file ended first: what could be read is in place
/// then, and nothing that follows can be relied on.
#pragma once

#include "readers/ByteSource.h"
#include "readers/flic/FlicFrame.h"

namespace Kavra::Devices {

/// The number of packets (2 bytes); of each: entries to skip (1), entries that follow (1, 0 means 256), their red,
/// green and blue. Each component is multiplied by `scale` modulo 256. Colours beyond entry 255 are left unread.
bool DecodeFlicPalette(ByteSource& source, FlicPalette& palette, unsigned scale);

/// All indices as they are.
bool DecodeFlicCopy(ByteSource& source, FlicFrame& frame);

/// Of each row: an unused byte, then packets until it is full: `n`, then a byte to be written `n` times, or -`n` bytes
/// where that is negative. What passes the end of the row is not written; of bytes it is not read either.
bool DecodeFlicByteRun(ByteSource& source, FlicFrame& frame);

/// The first row and the number of rows (2 bytes each); of each row: the number of packets (1); of each packet: columns
/// to skip since the last one (1), `n`, then `n` bytes, or one to be written -`n` times where that is negative.
bool DecodeFlicByteDelta(ByteSource& source, FlicFrame& frame);

/// The number of rows (2 bytes). Of each row: words (2 bytes), of which the first below 0x4000 is the number of
/// packets. Before it, one with bit 14 moves down by its low 14 bits, one with bit 15 alone gives the row's last index.
/// Of each packet: the column (1), `n`, then `n` words, or one where that is not positive.
///
/// Unlike in other programs, the column counts from the start of the row for every packet, one word is written as often
/// as the column, taken as a signed byte, is below zero, and a move that is written as a negative number goes far down.
bool DecodeFlicWordDelta(ByteSource& source, FlicFrame& frame);

}  // namespace Kavra::Devices
