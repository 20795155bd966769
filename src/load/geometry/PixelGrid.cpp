#include "load/geometry/PixelGrid.h"

#include "common/WatchedRange.h"

#include <hwy/highway.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace Kavra::Devices {
namespace {

// Below this, waking a worker costs more than the copy.
constexpr std::size_t kSerialBytes = std::size_t{1} << 18;

// A rotation by 90 degrees goes by tiles of so many cache lines: each is read once and each row of the result is
// written in runs.
constexpr std::size_t kLineBytes = 64;
constexpr std::size_t kTileLines = 64;

// One register of every machine: all that is done is moving lanes, and memory is the limit, so wider ones gain nothing
// and no target has to be chosen at run time.
namespace hn = hwy::HWY_NAMESPACE;
constexpr std::size_t kVectorBytes = 16;

std::ptrdiff_t Signed(std::size_t value) {
    return static_cast<std::ptrdiff_t>(value);
}

template <std::size_t N>
struct LaneOf;
template <>
struct LaneOf<1> {
    using type = std::uint8_t;
};
template <>
struct LaneOf<2> {
    using type = std::uint16_t;
};
template <>
struct LaneOf<4> {
    using type = std::uint32_t;
};
template <>
struct LaneOf<8> {
    using type = std::uint64_t;
};
template <std::size_t N>
using Lane = typename LaneOf<N>::type;
template <std::size_t N>
using Tag = hn::FixedTag<Lane<N>, kVectorBytes / N>;

/// Whether pixels of `N` bytes are moved as lanes of a vector.
template <std::size_t N>
constexpr bool kHasLanes = N == 1 || N == 2 || N == 4 || N == 8;

/// The pixel's size: known to the compiler (then a pixel is a load and a store), or for `N` 0 a number.
template <std::size_t N>
struct PixelSize {
    explicit PixelSize(std::size_t) {}
    static constexpr std::size_t Bytes() { return N; }
};
template <>
struct PixelSize<0> {
    explicit PixelSize(std::size_t bytes) : bytes(bytes) {}
    std::size_t Bytes() const { return bytes; }
    std::size_t bytes;
};

template <std::size_t N>
void CopyPixel(unsigned char* to, const unsigned char* from, PixelSize<N> size) {
    std::memcpy(to, from, size.Bytes());
}

/// The 1- or 2-byte pixels of a word in reverse order.
template <std::size_t N>
std::uint64_t Reversed(std::uint64_t word) {
    word = std::byteswap(word);
    if constexpr (N == 1) return word;
    constexpr std::uint64_t lowBytes = 0x00FF00FF00FF00FF;
    return (word & lowBytes) << 8 | (word >> 8 & lowBytes);
}

/// `count` pixels whose first lies at `from` and whose next ones follow at `stride`.
template <std::size_t N>
void CopyRow(unsigned char* to, const unsigned char* from, std::ptrdiff_t stride, std::size_t count,
             PixelSize<N> size) {
    if (stride == Signed(size.Bytes())) {
        std::memcpy(to, from, count * size.Bytes());
        return;
    }
    std::size_t i = 0;
    if constexpr (N == 1 || N == 2) {  // larger pixels fill a register better
        std::uint64_t word;
        constexpr std::size_t step = sizeof word / N;
        for (; stride == -Signed(N) && i + step <= count; i += step) {
            std::memcpy(&word, from - (i + step - 1) * N, sizeof word);
            word = Reversed<N>(word);
            std::memcpy(to + i * N, &word, sizeof word);
        }
    }
    for (; i < count; ++i)
        CopyPixel(to + i * size.Bytes(), from + Signed(i) * stride, size);
}

/// A part of a rotation by 90 degrees: `lines` runs of `pixels` pixels along memory, which become columns.
struct Tile {
    const unsigned char* from;
    std::ptrdiff_t lineStride;
    unsigned char* to;
    std::ptrdiff_t rowStride;
    std::size_t lines, pixels;
};

/// Transposes a square of one vector's width: after log2(lanes) rounds of interleaving, rows have become columns.
template <std::size_t N>
void TransposeSquare(unsigned char* to, std::ptrdiff_t rowStride, const unsigned char* from) {
    constexpr std::size_t lanes = kVectorBytes / N;
    const Tag<N> tag;
    hn::Vec<Tag<N>> rows[lanes], next[lanes];
    for (std::size_t i = 0; i < lanes; ++i)
        rows[i] = hn::LoadU(tag, reinterpret_cast<const Lane<N>*>(from + i * kLineBytes));
    for (std::size_t round = 1; round < lanes; round *= 2) {
        for (std::size_t i = 0; i < lanes / 2; ++i) {
            next[2 * i] = hn::InterleaveLower(tag, rows[i], rows[i + lanes / 2]);
            next[2 * i + 1] = hn::InterleaveUpper(tag, rows[i], rows[i + lanes / 2]);
        }
        std::copy(next, next + lanes, rows);
    }
    for (std::size_t i = 0; i < lanes; ++i)
        hn::StoreU(rows[i], tag, reinterpret_cast<Lane<N>*>(to + Signed(i) * rowStride));
}

template <std::size_t N>
void RotateWholeTile(const Tile& tile, const unsigned char* lines) {
    constexpr std::size_t lanes = kVectorBytes / N;
    for (std::size_t p = 0; p < kLineBytes / N; p += lanes) {
        for (std::size_t k = 0; k < kTileLines; k += lanes) {
            TransposeSquare<N>(tile.to + Signed(p) * tile.rowStride + k * N, tile.rowStride,
                               lines + k * kLineBytes + p * N);
        }
    }
}

/// Goes through a buffer, since lines that lie a power of two apart would throw each other out of the cache.
template <std::size_t N>
void RotateTile(const Tile& tile, PixelSize<N> size) {
    alignas(kLineBytes) unsigned char lines[kTileLines * kLineBytes];
    for (std::size_t k = 0; k < tile.lines; ++k) {
        std::memcpy(lines + k * kLineBytes, tile.from + Signed(k) * tile.lineStride, tile.pixels * size.Bytes());
    }
    if constexpr (kHasLanes<N>) {
        if (tile.lines == kTileLines && tile.pixels == kLineBytes / N) return RotateWholeTile<N>(tile, lines);
    }
    for (std::size_t p = 0; p < tile.pixels; ++p) {
        unsigned char* to = tile.to + Signed(p) * tile.rowStride;
        for (std::size_t k = 0; k < tile.lines; ++k) {
            CopyPixel(to + k * size.Bytes(), lines + k * kLineBytes + p * size.Bytes(), size);
        }
    }
}

/// Rows [top, bottom) of a grid whose columns lie along memory, forwards or backwards.
template <std::size_t N>
void RotateRows(const PixelGrid& grid, unsigned char* rows, std::size_t top, std::size_t bottom, PixelSize<N> size) {
    const std::size_t tileRows = kLineBytes / size.Bytes();
    const std::ptrdiff_t rowBytes = Signed(grid.width * size.Bytes());
    const bool backwards = grid.rowStride < 0;
    for (std::size_t y = top; y < bottom; y += tileRows) {
        const std::size_t pixels = std::min(tileRows, bottom - y);
        const std::size_t lowest = backwards ? y + pixels - 1 : y;  // the row whose pixels come first in memory
        for (std::size_t x = 0; x < grid.width; x += kTileLines) {
            RotateTile(Tile{.from = grid.first + Signed(x) * grid.columnStride + Signed(lowest) * grid.rowStride,
                            .lineStride = grid.columnStride,
                            .to = rows + Signed(lowest) * rowBytes + x * size.Bytes(),
                            .rowStride = backwards ? -rowBytes : rowBytes,
                            .lines = std::min(kTileLines, grid.width - x),
                            .pixels = pixels},
                       size);
        }
    }
}

template <std::size_t N>
void CopyRows(const PixelGrid& grid, unsigned char* rows, std::size_t top, std::size_t bottom) {
    const PixelSize<N> size(grid.pixelBytes);
    const bool columnsAlongMemory = std::abs(grid.rowStride) == Signed(grid.pixelBytes) && grid.width > 1;
    if (columnsAlongMemory && grid.pixelBytes <= kLineBytes) return RotateRows(grid, rows, top, bottom, size);
    for (std::size_t y = top; y < bottom; ++y) {
        CopyRow(rows + y * grid.width * size.Bytes(), grid.first + Signed(y) * grid.rowStride, grid.columnStride,
                grid.width, size);
    }
}

auto RowCopier(std::size_t pixelBytes) {
    switch (pixelBytes) {
        case 1:
            return CopyRows<1>;
        case 2:
            return CopyRows<2>;
        case 3:
            return CopyRows<3>;
        case 4:
            return CopyRows<4>;
        case 6:
            return CopyRows<6>;
        case 8:
            return CopyRows<8>;
        case 12:
            return CopyRows<12>;
        case 16:
            return CopyRows<16>;
        default:
            return CopyRows<0>;
    }
}

}  // namespace

PixelGrid Rotated(const PixelGrid& grid, Rotation rotation) {
    PixelGrid rotated = grid;
    const std::ptrdiff_t toBottom = Signed(grid.height - 1) * grid.rowStride;
    const std::ptrdiff_t toRight = Signed(grid.width - 1) * grid.columnStride;
    switch (rotation) {
        case Rotation::kNone:
            break;
        case Rotation::kFlip:
            rotated.first += toBottom;
            rotated.rowStride = -grid.rowStride;
            break;
        case Rotation::kFlop:
            rotated.first += toRight;
            rotated.columnStride = -grid.columnStride;
            break;
        case Rotation::kRotate180:
            return Rotated(Rotated(grid, Rotation::kFlip), Rotation::kFlop);
        case Rotation::kRotate90:
        case Rotation::kRotate270:
            std::swap(rotated.width, rotated.height);
            std::swap(rotated.columnStride, rotated.rowStride);
            return Rotated(rotated, rotation == Rotation::kRotate90 ? Rotation::kFlop : Rotation::kFlip);
    }
    return rotated;
}

void CopyPixels(const PixelGrid& grid, unsigned char* rows) {
    const auto copyRows = RowCopier(grid.pixelBytes);
    const std::size_t serial = kSerialBytes / (grid.width * grid.pixelBytes);
    Common::ForEachRangeOf(kProgressResizing, grid.height, serial,
                           [&](std::size_t top, std::size_t bottom) { copyRows(grid, rows, top, bottom); });
}

}  // namespace Kavra::Devices
