#include "load/geometry/PackedRows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace Kavra::Devices {

namespace {

std::size_t Product(std::size_t count, std::size_t bytes) {
    if (bytes != 0 && count > std::numeric_limits<std::size_t>::max() / bytes) throw std::bad_alloc();
    return count * bytes;
}

/// `out` may be `in`.
void SwapRedAndBlue(unsigned char* out, const unsigned char* in, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, in + 4 * i, sizeof(pixel));
        pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
        std::memcpy(out + 4 * i, &pixel, sizeof(pixel));
    }
}

/// The bytes of a row that are there.
std::size_t Readable(const Rows& rows, std::size_t row, bool overlaps) {
    return std::min(rows.bytes, overlaps ? (rows.count - row) * rows.pitch : rows.pitch);
}

/// Fills `bytes` bytes at `out`: with as many from `in` as are readable, then with zeros.
void FillRow(unsigned char* out, std::size_t bytes, const unsigned char* in, std::size_t readable) {
    std::memcpy(out, in, readable);
    std::memset(out + readable, 0, bytes - readable);
}

}  // namespace

Common::PixelBlock NewRows(std::size_t count, std::size_t bytes, Contents contents) {
    const std::size_t total = Product(count, bytes);
    return contents == Contents::kZero ? Common::NewZeroedBlock(total) : Common::NewBlock(total);
}

void MoveRows(unsigned char* to, std::size_t toPitch, const Rows& rows) {
    const bool isBehind = to > rows.first;  // then the last row is copied first
    for (std::size_t i = 0; i < rows.count; ++i) {
        const std::size_t row = isBehind ? rows.count - 1 - i : i;
        std::memmove(to + row * toPitch, rows.first + row * rows.pitch, rows.bytes);
    }
}

Common::PixelBlock PackRows(const Rows& rows, Packing packing) {
    Common::PixelBlock packed = NewRows(rows.count, rows.bytes, Contents::kUnspecified);
    for (std::size_t row = 0; row < rows.count; ++row) {
        unsigned char* const out = packed.get() + row * rows.bytes;
        const unsigned char* const in = rows.first + row * rows.pitch;
        const std::size_t readable = Readable(rows, row, packing.overlaps);
        if (packing.swapsRedAndBlue && readable == rows.bytes) {
            SwapRedAndBlue(out, in, rows.bytes / 4);
            continue;
        }
        FillRow(out, rows.bytes, in, readable);
        if (packing.swapsRedAndBlue) SwapRedAndBlue(out, out, rows.bytes / 4);
    }
    return packed;
}

void PlaceRows(unsigned char* to, std::size_t toPitch, std::size_t capacity, const Rows& rows, std::size_t readable) {
    if (rows.count == 0) std::memset(to, 0, capacity);
    for (std::size_t row = 0; row < rows.count; ++row) {
        const std::size_t from = row * rows.pitch, at = row * toPitch;
        const std::size_t bytes = row + 1 < rows.count ? toPitch : capacity - at;
        FillRow(to + at, bytes, rows.first + from, std::min({rows.bytes, bytes, readable - from}));
    }
}

}  // namespace Kavra::Devices
