/// The bodies of an animation's chunks. All numbers are little-endian.
///
/// Each function reads one body from where the source stands and leaves it where the fields ended, which need not be
/// where the chunk says that it ends. The result is false when the file ended first: what could be read is in place
/// then, and nothing that follows can be relied on.
///
/// | body                | fields                                                                                    |
/// |---------------------|-------------------------------------------------------------------------------------------|
/// | palette             | packets (2), then of each: entries to skip (1), entries (1, 0 = 256), their colours (3 each)
/// | | byte run            | of each row: an unused byte, then packets until the row is full: n (1, signed); n >= 0: a
/// | |                     | byte to be written n times; n < 0: -n bytes | | byte delta (FLI)    | first row (2), rows
/// (2), then of each: packets (1), of each packet: columns to skip (1),    | |                     | n (1, signed); n
/// >= 0: n bytes; n < 0: a byte to be written -n times                      | | word delta (FLC)    | rows (2), then of
/// each: words (2) up to the first below 0x4000, which is the number of      | |                     | packets; of each
/// packet: column (1), n (1, signed); n > 0: n words; else one word          |
#pragma once

#include "readers/ByteSource.h"
#include "readers/flic/FlicFrame.h"

namespace Kavra::Devices {

/// Packets of colours, each component multiplied by `scale` modulo 256. Colours beyond entry 255 are left unread.
bool DecodeFlicPalette(ByteSource& source, FlicPalette& palette, unsigned scale);

/// All indices as they are.
bool DecodeFlicCopy(ByteSource& source, FlicFrame& frame);

/// All indices, run-length coded. A run ends at the end of its row.
bool DecodeFlicByteRun(ByteSource& source, FlicFrame& frame);

bool DecodeFlicByteDelta(ByteSource& source, FlicFrame& frame);

/// The words before the number of packets: bit 14 moves down by the low 14 bits; bit 15 alone gives the last index of
/// the row. Unlike elsewhere, columns count from the start of the row for every packet, and a packet of one word writes
/// it as often as its column, taken as a signed byte, is below zero.
bool DecodeFlicWordDelta(ByteSource& source, FlicFrame& frame);

}  // namespace Kavra::Devices
