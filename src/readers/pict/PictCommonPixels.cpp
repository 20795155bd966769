#include "readers/pict/PictCommonPixels.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kAtATime = 256;  // pixels, in an array of their own: so compilers make vectors of the loops

using Pixels = std::array<std::uint32_t, kAtATime>;

/// Four bytes in the order of the result.
std::uint32_t Rgba(std::uint32_t red, std::uint32_t green, std::uint32_t blue, std::uint32_t alpha) {
    const std::uint32_t pixel = alpha << 24 | blue << 16 | green << 8 | red;
    return std::endian::native == std::endian::little ? pixel : std::byteswap(pixel);
}

/// Calls `fill(first, pixels)`, which writes all of `pixels`, for parts of `out`.
template <class Fill>
void InParts(std::span<unsigned char> out, Fill fill) {
    Pixels pixels;
    for (std::size_t first = 0; first < out.size() / kPixelBytes; first += kAtATime) {
        const std::size_t count = std::min(kAtATime, out.size() / kPixelBytes - first);
        fill(first, std::span(pixels).first(count));
        std::memcpy(out.subspan(kPixelBytes * first, kPixelBytes * count).data(), pixels.data(), kPixelBytes * count);
    }
}

std::vector<PictColour> Ramp(std::size_t colours) {
    std::vector<PictColour> greys(colours);
    for (std::size_t i = 0; i < colours; ++i)
        greys[i].fill(static_cast<std::uint16_t>(0xFFFF * i / (colours - 1)));
    return greys;
}

bool IsBlackOrWhite(const PictColour& colour) {
    return colour == kPictBlack || colour == kPictWhite;
}

void Indexed(std::span<const unsigned char> row, const PictRowLayout& layout, const std::array<PictPixel, 256>& palette,
             std::size_t first, std::span<unsigned char> out) {
    std::array<unsigned char, kAtATime> indices;
    for (std::size_t done = 0; done < out.size() / kPixelBytes; done += kAtATime) {
        const std::size_t count = std::min(kAtATime, out.size() / kPixelBytes - done);
        PictIndices(row, layout, first + done, std::span(indices).first(count));
        unsigned char* to = out.subspan(kPixelBytes * done, kPixelBytes * count).data();
        for (std::size_t i = 0; i < count; ++i)
            std::memcpy(to + kPixelBytes * i, palette[indices[i]].data(), kPixelBytes);
    }
}

void Direct16(std::span<const unsigned char> row, std::size_t start, std::span<unsigned char> out) {
    InParts(out, [&](std::size_t first, std::span<std::uint32_t> pixels) {
        const unsigned char* from = row.subspan(2 * (start + first), 2 * pixels.size()).data();
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            std::uint16_t stored = 0;
            std::memcpy(&stored, from + 2 * i, 2);
            const std::uint32_t pixel = std::endian::native == std::endian::little ? std::byteswap(stored) : stored;
            const std::uint32_t red = pixel >> 10 & 31, green = pixel >> 5 & 31, blue = pixel & 31;
            pixels[i] = Rgba(red << 3 | red >> 2, green << 3 | green >> 2, blue << 3 | blue >> 2, 0xFF);
        }
    });
}

/// A run of each component.
void Planar32(std::span<const unsigned char> row, const PictRowLayout& layout, bool hasAlpha, std::size_t start,
              std::span<unsigned char> out) {
    const auto width = static_cast<std::size_t>(layout.width);
    const std::size_t unused = layout.components == 4 ? width : 0;
    const std::uint32_t opaque = hasAlpha ? 0 : 0xFF;
    InParts(out, [&](std::size_t first, std::span<std::uint32_t> pixels) {
        const auto component = [&](std::size_t offset) {
            return row.subspan(offset + start + first, pixels.size()).data();
        };
        const unsigned char* alpha = component(0);
        const unsigned char* red = component(unused);
        const unsigned char* green = component(unused + width);
        const unsigned char* blue = component(unused + 2 * width);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = Rgba(red[i], green[i], blue[i], alpha[i] | opaque);
    });
}

/// Pixels of `Stride` bytes, of which the last three are red, green and blue.
template <std::size_t Stride>
void Plain32(std::span<const unsigned char> row, bool hasAlpha, std::size_t start, std::span<unsigned char> out) {
    const std::uint32_t opaque = hasAlpha ? 0 : 0xFF;
    InParts(out, [&](std::size_t first, std::span<std::uint32_t> pixels) {
        const unsigned char* from = row.subspan(Stride * (start + first), Stride * pixels.size()).data();
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const unsigned char* pixel = from + Stride * i;
            pixels[i] = Rgba(pixel[Stride - 3], pixel[Stride - 2], pixel[Stride - 1], pixel[0] | opaque);
        }
    });
}

}  // namespace

std::array<PictPixel, 256> PictCommonPalette(const PictCommonRecord& record) {
    const PictRecord& bitmap = record.bitmap;
    std::array<PictPixel, 256> palette;
    palette.fill(ToPictPixel(kPictBlack));
    if (bitmap.layout.IsDirect()) return palette;
    const bool isOneBit = bitmap.layout.pixelSize == 1;
    std::vector<PictColour> table = bitmap.colours;
    if (table.empty())
        table = isOneBit ? std::vector{kPictWhite, kPictBlack} : Ramp(std::size_t{1} << bitmap.layout.pixelSize);
    std::ranges::transform(table, palette.begin(), ToPictPixel);
    if (!isOneBit || IsBooleanPictMode(bitmap.mode) || !std::ranges::all_of(table, IsBlackOrWhite)) return palette;
    for (std::size_t i = 0; i < table.size(); ++i)
        palette[i] = table[i] == kPictBlack ? record.inks.foreground : record.inks.background;
    return palette;
}

void PictCommonPixels(std::span<const unsigned char> row, const PictRowLayout& layout,
                      const std::array<PictPixel, 256>& palette, bool hasAlpha, std::size_t first,
                      std::span<unsigned char> out) {
    if (!layout.IsDirect()) return Indexed(row, layout, palette, first, out);
    if (layout.pixelSize == 16) return Direct16(row, first, out);
    if (layout.IsPacked()) return Planar32(row, layout, hasAlpha, first, out);
    if (layout.storage == PictRowStorage::kWithoutPad) return Plain32<3>(row, false, first, out);
    Plain32<4>(row, hasAlpha, first, out);
}

bool HasPictAlpha(std::span<const unsigned char> row, const PictRowLayout& layout) {
    const auto width = static_cast<std::size_t>(layout.width);
    if (layout.IsPacked()) return std::ranges::any_of(row.first(width), [](unsigned char byte) { return byte != 0; });
    for (std::size_t pixel = 0; pixel < width; ++pixel) {
        if (row[kPixelBytes * pixel] != 0) return true;
    }
    return false;
}

}  // namespace Kavra::Devices
