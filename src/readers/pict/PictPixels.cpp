#include "readers/pict/PictPixels.h"

#include <cstring>

namespace Kavra::Devices {

namespace {

template <int Bits>
void WidenIndices(std::span<const unsigned char> row, std::size_t first, std::span<unsigned char> out) {
    constexpr std::size_t kPixelsPerByte = 8 / Bits;
    constexpr unsigned kMask = (1U << Bits) - 1;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const std::size_t pixel = first + i;
        const std::size_t below = (kPixelsPerByte - 1 - pixel % kPixelsPerByte) * Bits;
        out[i] = static_cast<unsigned char>((row[pixel / kPixelsPerByte] >> below) & kMask);
    }
}

std::uint16_t Widen5(unsigned value) {
    value &= 0x1F;
    return static_cast<std::uint16_t>(value << 11 | value << 6 | value << 1 | value >> 4);
}

std::uint16_t Widen8(unsigned char value) {
    return static_cast<std::uint16_t>(value * 257);
}

/// Every `stride`th byte from `first` on.
template <std::size_t Stride>
void Widen(std::span<const unsigned char> bytes, std::span<std::uint16_t> out) {
    const unsigned char* from = bytes.first(out.empty() ? 0 : (out.size() - 1) * Stride + 1).data();
    std::uint16_t* to = out.data();
    for (std::size_t i = 0; i < out.size(); ++i)
        to[i] = Widen8(from[i * Stride]);
}

void Colours16(std::span<const unsigned char> row, std::size_t first, const PictRun& out) {
    const unsigned char* from = row.subspan(2 * first, 2 * out[0].size()).data();
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::size_t below = 10 - 5 * channel;
        std::uint16_t* to = out[channel].data();
        for (std::size_t i = 0; i < out[channel].size(); ++i) {
            const unsigned pixel = static_cast<unsigned>(from[2 * i]) << 8 | from[2 * i + 1];
            to[i] = Widen5(pixel >> below);
        }
    }
}

void Colours32(std::span<const unsigned char> row, const PictRowLayout& layout, std::size_t first, const PictRun& out) {
    const auto width = static_cast<std::size_t>(layout.width);
    const std::size_t unused = layout.components == 4 ? 1 : 0;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        if (layout.IsPacked()) {
            Widen<1>(row.subspan((unused + channel) * width + first), out[channel]);
        } else {
            Widen<4>(row.subspan(4 * first + 1 + channel), out[channel]);
        }
    }
}

}  // namespace

void PictIndices(std::span<const unsigned char> row, const PictRowLayout& layout, std::size_t first,
                 std::span<unsigned char> out) {
    switch (layout.pixelSize) {
        case 1:
            return WidenIndices<1>(row, first, out);
        case 2:
            return WidenIndices<2>(row, first, out);
        case 4:
            return WidenIndices<4>(row, first, out);
        default:
            std::ranges::copy(row.subspan(first, out.size()), out.begin());
    }
}

void PictDirectColours(std::span<const unsigned char> row, const PictRowLayout& layout, std::size_t first,
                       const PictRun& out) {
    if (layout.pixelSize == 16) {
        Colours16(row, first, out);
    } else {
        Colours32(row, layout, first, out);
    }
}

void PictToRgba(const PictConstRun& colours, std::span<unsigned char> out) {
    const std::uint16_t* red = colours[0].data();
    const std::uint16_t* green = colours[1].data();
    const std::uint16_t* blue = colours[2].data();
    unsigned char* to = out.data();
    for (std::size_t i = 0; i < colours[0].size(); ++i) {
        to[4 * i] = static_cast<unsigned char>(red[i] >> 8);
        to[4 * i + 1] = static_cast<unsigned char>(green[i] >> 8);
        to[4 * i + 2] = static_cast<unsigned char>(blue[i] >> 8);
        to[4 * i + 3] = 0xFF;
    }
}

}  // namespace Kavra::Devices
