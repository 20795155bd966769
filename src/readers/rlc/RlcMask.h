/// The bits of one row of an RLC raster.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Runs of pixels are given by two positions counted from the right end of the row, as unsigned 16-bit numbers whose
/// arithmetic wraps: (2, 5) of eight pixels is `...###..`.
class RlcMask {
public:
    /// A row of so many pixels, 1 to 32767.
    explicit RlcMask(std::int16_t columns);

    void Clear();

    /// Sets the bits of a run, and leaves them alone and returns false when it is refused: when it begins behind the
    /// last byte, or does not end in its first byte and leaves too little room behind it. That takes length / 8 + 1
    /// bytes more to lie inside the row, which refuses many a run that would fit; only the run over all columns is
    /// always taken.
    [[nodiscard]] bool SetRun(std::uint16_t start, std::uint16_t end);

    /// The leftmost pixel in the highest bit. Bits behind the last column may be set.
    std::span<const unsigned char> Bytes() const { return mBytes; }

private:
    std::uint16_t mColumns;
    std::vector<unsigned char> mBytes;
};

}  // namespace Kavra::Devices
