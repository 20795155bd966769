/// The colours of indexed pixels.
#pragma once

#include "readers/pict/PictPicture.h"

#include <array>
#include <cstddef>
#include <span>

namespace Kavra::Devices {

/// The colour table of a record, or the ramp of 256 greys where it has none.
std::span<const PictColour> PictColourTable(const PictRecord& record);

/// Looks indices up.
class PictPalette {
public:
    explicit PictPalette(std::span<const PictColour> colours);

    /// Writes the high bytes of a colour's channels and alpha 255 for each index. Of an index that has no colour the
    /// four bytes of `out` stay as they are.
    void ToRgba(std::span<const unsigned char> indices, std::span<unsigned char> out) const;

private:
    std::array<std::array<unsigned char, 4>, 256> mPixels{};
    std::size_t mCount;
};

}  // namespace Kavra::Devices
