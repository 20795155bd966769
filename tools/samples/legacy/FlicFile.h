/// Writing FLC animations.
#pragma once

#include "legacy/ByteBuilder.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Kavra::Legacy {

/// Frames of palette indices, rows from the top without gaps.
struct FlicMovie {
    int width = 0;
    int height = 0;
    int milliseconds = 100;  ///< of a frame
    std::array<std::array<unsigned char, 3>, 256> palette{};
    std::vector<std::vector<unsigned char>> frames{};
};

/// How frames behind the first are coded.
enum class FlicCoding {
    kChanges,  ///< DELTA_FLC: of each row the stretch that changed, as one packet of words
    kWhole,    ///< BYTE_RUN again
    kCopies,   ///< COPY, the first frame too
};

/// The file, its first frame run-length coded with the palette before it. Written so that strict and lenient programs
/// read it alike: no chunk is padded, no row is skipped, no row has more than one packet. A frame that is like the one
/// before it holds nothing. `kChanges` reaches columns up to 508; frames that change behind them are written whole.
ByteBuilder MakeFlic(const FlicMovie& movie, FlicCoding coding = FlicCoding::kChanges);

}  // namespace Kavra::Legacy
