/// What a PICT picture says, and where in its file the pixels lie.
#pragma once

#include "readers/pict/PictRows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace Kavra::Devices {

/// Pixels from (left, top) up to but not including (right, bottom). Every rectangle of a picture uses the coordinates
/// of its frame.
struct PictRect {
    int top = 0, left = 0, bottom = 0, right = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
};

inline PictRect Intersection(const PictRect& a, const PictRect& b) {
    return {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
}

/// Red, green and blue, 0 to 65535.
using PictColour = std::array<std::uint16_t, 3>;

inline constexpr PictColour kPictBlack = {0, 0, 0};
inline constexpr PictColour kPictWhite = {0xFFFF, 0xFFFF, 0xFFFF};

/// The colours that transfer modes draw with.
struct PictColours {
    PictColour foreground = kPictBlack;
    PictColour background = kPictWhite;
    PictColour operation = kPictBlack;  ///< the weights of a blend, the limits of the pins
};

/// A bitmap or pixel map that the picture draws.
struct PictRecord {
    PictRect bounds;  ///< of the stored pixels, never empty
    PictRect source;
    PictRect destination;
    PictRect covered;  ///< what is drawn: the destination inside the bounds and the frame; empty: nothing
    std::uint16_t mode = 0;
    PictRowLayout layout;
    std::vector<PictColour> colours;  ///< of indexed pixels, up to 256; none: a ramp of 256 greys
    std::uint64_t rows = 0;           ///< offset in the file of the first row that is drawn
};

struct PictPicture {
    PictRect frame;                   ///< never empty
    std::vector<PictRecord> records;  ///< those that draw anything, in the order of the picture
    PictColours colours;              ///< as they are at the end of the stream: nothing is drawn before
    /// One record of palette indices: these are copied, and looked up in the record's colours when they are put out.
    /// Anything else is drawn in 16-bit colour.
    bool indexed = false;

    /// What a record takes, with its places in the lists of those that wait and those that are being drawn; lists grow
    /// by doubling, and are copied when they do.
    static std::uint64_t BytesOf(const PictRecord& record) { return 512 + record.colours.size() * sizeof(PictColour); }
    /// What all records take.
    std::uint64_t WorkingBytes() const {
        std::uint64_t bytes = 0;
        for (const PictRecord& record : records)
            bytes += BytesOf(record);
        return bytes;
    }
};

}  // namespace Kavra::Devices
