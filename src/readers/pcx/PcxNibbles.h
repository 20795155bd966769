/// What four bits stand for in files that pack two pixels into a byte.
#pragma once

#include <array>

namespace Kavra::Devices {

/// The palette index that each value of four bits becomes.
using PcxNibbles = std::array<unsigned char, 16>;

/// There is one such table in the process, which whoever opens a 4-bit file writes and whoever reads one uses: a file's
/// pixels follow the 4-bit file that was opened last. With a grey ramp the values are spread over 0 to 255, else they
/// stay. Threads: any; while two open 4-bit files of different kinds, what either reads is unspecified.
void SetPcxNibbles(bool isGreyRamp);
PcxNibbles CurrentPcxNibbles();

}  // namespace Kavra::Devices
