/// Images of two colours.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace Kavra::Legacy {

/// One bit a pixel, rows from the top, each from a byte of its own, the leftmost pixel in the highest bit.
struct Bitmap {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;

    /// All bits 0.
    Bitmap(int columns, int rows)
        : width(columns),
          height(rows),
          bytes(static_cast<std::size_t>(rows) * ((static_cast<std::size_t>(columns) + 7) / 8)) {}

    std::size_t RowBytes() const { return (static_cast<std::size_t>(width) + 7) / 8; }
    std::span<const unsigned char> Row(int y) const {
        return std::span(bytes).subspan(static_cast<std::size_t>(y) * RowBytes(), RowBytes());
    }
    bool At(int x, int y) const { return (Row(y)[static_cast<std::size_t>(x) / 8] >> (7 - x % 8) & 1) != 0; }
    void Set(int x, int y) {
        bytes[static_cast<std::size_t>(y) * RowBytes() + static_cast<std::size_t>(x) / 8] |=
            static_cast<unsigned char>(0x80 >> x % 8);
    }
};

/// The columns at which the pixels of a row change, beginning with a change from 0 to 1, which is at 0 when the first
/// pixel is 1.
std::vector<int> Changes(const Bitmap& image, int y);

}  // namespace Kavra::Legacy
