/// The colours of a PCX picture that has a palette.
#pragma once

#include "readers/pcx/PcxHeader.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

namespace Kavra::Devices {

class PcxPalette {
public:
    /// The palette of a file with 1, 4 or 8 bits a pixel: the 256 colours at its end where it has those, else the first
    /// 2 or all 16 colours of the header. Two equal colours of a 1-bit file are told apart by making the second darker
    /// by one (and white, if they are black). Nothing when the file is too short to hold the 256 colours.
    static std::optional<PcxPalette> Read(Common::ByteSource& source, const PcxHeader& header);

    /// Whether every colour is as grey as its index says: entry i is (i, i, i).
    bool IsGreyRamp() const;

    /// Writes red, green, blue and 255 to the pixels whose index has a colour. The others stay as they are.
    void Colour(std::span<const unsigned char> indices, std::span<unsigned char> pixels) const;

private:
    using Entry = std::array<unsigned char, 4>;

    explicit PcxPalette(std::span<const unsigned char> triples);
    void TellTwoColoursApart();

    std::array<Entry, 256> mEntries{};
    std::size_t mCount = 0;
};

}  // namespace Kavra::Devices
