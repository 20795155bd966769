#include "readers/pict/PictTransfer.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Kavra::Devices {

// --- Pixels ----------------------------------------------------------------------------------------------------------

namespace {

template <int Bits>
constexpr std::size_t kPixelsPerByte = 8 / Bits;

/// The indices in each byte, the highest bits first.
template <int Bits>
constexpr auto kIndicesOfByte = [] {
    std::array<std::array<unsigned char, kPixelsPerByte<Bits>>, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        for (std::size_t at = 0; at < kPixelsPerByte<Bits>; ++at)
            table[byte][at] = static_cast<unsigned char>(byte >> (8 - Bits * (at + 1)) & ((1U << Bits) - 1));
    }
    return table;
}();

template <int Bits>
void WidenIndices(std::span<const unsigned char> row, std::size_t first, std::span<unsigned char> out) {
    constexpr std::size_t kPixels = kPixelsPerByte<Bits>;
    const unsigned char* byte = row.data() + first / kPixels;
    const std::size_t skipped = first % kPixels;
    const std::size_t head = std::min(out.size(), (kPixels - skipped) % kPixels);
    unsigned char* to = out.data();
    if (head > 0) to = std::copy_n(kIndicesOfByte<Bits>[*byte++].begin() + skipped, head, to);
    for (std::size_t whole = (out.size() - head) / kPixels; whole > 0; --whole)
        to = std::ranges::copy(kIndicesOfByte<Bits>[*byte++], to).out;
    const std::size_t tail = (out.size() - head) % kPixels;
    if (tail > 0) std::copy_n(kIndicesOfByte<Bits>[*byte].begin(), tail, to);
}

/// The first colour for 0, the last for anything else, without a look-up a pixel.
void ChooseOfTwo(std::span<const PictColour> colours, std::span<const unsigned char> indices, const PictRun& out) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::uint16_t zero = colours[0][channel];
        const auto flip = static_cast<std::uint16_t>(zero ^ colours.back()[channel]);
        std::uint16_t* to = out[channel].data();
        for (std::size_t i = 0; i < indices.size(); ++i)
            to[i] = static_cast<std::uint16_t>(zero ^ (indices[i] != 0 ? flip : 0));
    }
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

/// The five bits of a pixel from `Below` on, repeated until there are 16.
template <unsigned Below>
void Widen5(const unsigned char* pixels, std::span<std::uint16_t> out) {
    std::uint16_t* to = out.data();
    for (std::size_t i = 0; i < out.size(); ++i) {
        std::uint16_t pixel = 0;
        std::memcpy(&pixel, pixels + 2 * i, 2);
        if constexpr (std::endian::native == std::endian::little) pixel = std::byteswap(pixel);
        const auto high = static_cast<std::uint16_t>(static_cast<std::uint16_t>(pixel << (11 - Below)) & 0xF800);
        to[i] = static_cast<std::uint16_t>(high | high >> 5 | high >> 10 | high >> 15);
    }
}

void Colours16(std::span<const unsigned char> row, std::size_t first, const PictRun& out) {
    const unsigned char* pixels = row.subspan(2 * first, 2 * out[0].size()).data();
    Widen5<10>(pixels, out[0]);
    Widen5<5>(pixels, out[1]);
    Widen5<0>(pixels, out[2]);
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

/// Four bytes in the order of the result.
std::uint32_t RgbaPixel(std::uint16_t red, std::uint16_t green, std::uint16_t blue) {
    const std::uint32_t pixel = 0xFF000000U | (blue & 0xFF00U) << 8 | (green & 0xFF00U) | red >> 8;
    return std::endian::native == std::endian::little ? pixel : std::byteswap(pixel);
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

unsigned char LargestIndex(std::span<const unsigned char> indices) {
    // Without an early end, for which compilers make no vectors.
    unsigned char largest = 0;
    for (const unsigned char index : indices)
        largest = std::max(largest, index);
    return largest;
}

void PictIndexedColours(std::span<const PictColour> colours, std::span<const unsigned char> indices,
                        const PictRun& out) {
    if (colours.size() <= 2) return ChooseOfTwo(colours, indices, out);
    const PictColour* table = colours.data();
    for (std::size_t i = 0; i < indices.size(); ++i) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            out[channel][i] = table[indices[i]][channel];
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
    // By way of whole pixels in an array of their own, which nothing else can overlap: so compilers make vectors of it.
    constexpr std::size_t kAtATime = 256;
    std::array<std::uint32_t, kAtATime> pixels;
    for (std::size_t first = 0; first < colours[0].size(); first += kAtATime) {
        const std::size_t count = std::min(kAtATime, colours[0].size() - first);
        const std::uint16_t* red = colours[0].subspan(first, count).data();
        const std::uint16_t* green = colours[1].subspan(first, count).data();
        const std::uint16_t* blue = colours[2].subspan(first, count).data();
        for (std::size_t i = 0; i < count; ++i)
            pixels[i] = RgbaPixel(red[i], green[i], blue[i]);
        std::memcpy(out.subspan(4 * first, 4 * count).data(), pixels.data(), 4 * count);
    }
}

// --- Transfer modes --------------------------------------------------------------------------------------------------

namespace {

// Every loop here writes one channel and branches on nothing that changes within it, so that compilers make vectors of
// it.

using Kernel = void (*)(const PictColours&, const PictConstRun&, const PictRun&);

/// `Channel(canvas, source, operation)` for every channel by itself.
template <auto Channel>
void EachChannel(const PictColours& colours, const PictConstRun& source, const PictRun& canvas) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::uint16_t operation = colours.operation[channel];
        const std::uint16_t* s = source[channel].data();
        std::uint16_t* c = canvas[channel].data();
        for (std::size_t i = 0; i < canvas[channel].size(); ++i)
            c[i] = static_cast<std::uint16_t>(Channel(c[i], s[i], operation));
    }
}

/// What a source pixel becomes by its colour.
enum class Becomes { kCanvas, kForeground, kBackground };

struct Choice {
    std::uint16_t kept = 0;    ///< the bits of the canvas that stay
    std::uint16_t colour = 0;  ///< what is put in
};

Choice Chosen(Becomes becomes, const PictColours& colours, std::size_t channel) {
    switch (becomes) {
        case Becomes::kForeground:
            return {.colour = colours.foreground[channel]};
        case Becomes::kBackground:
            return {.colour = colours.background[channel]};
        case Becomes::kCanvas:
            break;
    }
    return {.kept = 0xFFFF};
}

/// Two colours, or one and the canvas.
template <Becomes Black, Becomes White, Becomes Other>
void ByColour(const PictColours& colours, const PictConstRun& source, const PictRun& canvas) {
    const std::uint16_t* red = source[0].data();
    const std::uint16_t* green = source[1].data();
    const std::uint16_t* blue = source[2].data();
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const Choice black = Chosen(Black, colours, channel);
        const Choice white = Chosen(White, colours, channel);
        const Choice other = Chosen(Other, colours, channel);
        std::uint16_t* c = canvas[channel].data();
        for (std::size_t i = 0; i < canvas[channel].size(); ++i) {
            const bool isBlack = (red[i] | green[i] | blue[i]) == 0;
            const bool isWhite = (red[i] & green[i] & blue[i]) == 0xFFFF;
            const std::uint16_t kept = isBlack ? black.kept : isWhite ? white.kept : other.kept;
            const std::uint16_t colour = isBlack ? black.colour : isWhite ? white.colour : other.colour;
            c[i] = static_cast<std::uint16_t>((c[i] & kept) | colour);
        }
    }
}

void Transparent(const PictColours& colours, const PictConstRun& source, const PictRun& canvas) {
    const auto [backRed, backGreen, backBlue] = colours.background;
    const std::uint16_t* red = source[0].data();
    const std::uint16_t* green = source[1].data();
    const std::uint16_t* blue = source[2].data();
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::uint16_t* s = source[channel].data();
        std::uint16_t* c = canvas[channel].data();
        for (std::size_t i = 0; i < canvas[channel].size(); ++i) {
            const std::uint16_t differs = (red[i] ^ backRed) | (green[i] ^ backGreen) | (blue[i] ^ backBlue);
            const std::uint16_t kept = differs == 0 ? 0xFFFF : 0;
            c[i] = static_cast<std::uint16_t>((c[i] & kept) | (s[i] & ~kept));
        }
    }
}

constexpr auto kXorNot = [](PictValue c, PictValue s, PictValue) { return c ^ ~s; };
constexpr auto kXor = [](PictValue c, PictValue s, PictValue) { return c ^ s; };
constexpr auto kBlend = [](PictValue c, PictValue s, PictValue o) { return (65536 - o) * c / 65536 + o * s / 65536; };

constexpr std::size_t kModes = 40;

/// A line a mode. A mode that has none, also one from `kModes` on, copies as mode 0 does.
constexpr auto kKernels = [] {
    using enum Becomes;
    std::array<Kernel, kModes> kernels{};
    kernels.fill(ByColour<kForeground, kBackground, kBackground>);
    kernels[1] = ByColour<kForeground, kCanvas, kCanvas>;
    kernels[2] = EachChannel<kXorNot>;
    kernels[3] = ByColour<kBackground, kCanvas, kCanvas>;
    kernels[4] = ByColour<kBackground, kForeground, kCanvas>;
    kernels[5] = ByColour<kCanvas, kForeground, kCanvas>;
    kernels[6] = EachChannel<kXor>;
    kernels[7] = ByColour<kCanvas, kBackground, kCanvas>;
    kernels[32] = EachChannel<kBlend>;
    kernels[33] = EachChannel<kPictAddPin>;
    kernels[34] = EachChannel<kPictAddOver>;
    kernels[35] = EachChannel<kPictSubtractPin>;
    kernels[36] = Transparent;
    kernels[37] = EachChannel<kPictMaximum>;
    kernels[38] = EachChannel<kPictSubtractOver>;
    kernels[39] = EachChannel<kPictMinimum>;
    return kernels;
}();

}  // namespace

void TransferPictRun(std::uint16_t mode, const PictColours& colours, const PictConstRun& source,
                     const PictRun& canvas) {
    kKernels[mode < kModes ? mode : 0](colours, source, canvas);
}

}  // namespace Kavra::Devices
