#include "readers/pict/PictModes.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Kavra::Devices {

namespace {

using Source = std::span<const unsigned char>;
using Page = std::span<unsigned char>;
using Kernel = void (*)(const PictInks&, Source, Page);
using Word = std::uint32_t;  // a pixel, in whatever order its bytes have

constexpr std::size_t kPixelBytes = 4;
constexpr std::uint16_t kDither = 64;
constexpr std::uint16_t kPatterns = 8;
constexpr std::uint16_t kHighlight = 50;

Word WordOf(const PictPixel& pixel) {
    return std::bit_cast<Word>(pixel);
}

const Word kAlpha = WordOf({0, 0, 0, 0xFF});

/// `combine(source, page)` for each pixel, as words.
template <class Combine>
void EachPixel(Source source, Page page, Combine combine) {
    const unsigned char* from = source.data();
    unsigned char* to = page.data();
    for (std::size_t at = 0; at + kPixelBytes <= page.size(); at += kPixelBytes) {
        Word s = 0, p = 0;
        std::memcpy(&s, from + at, kPixelBytes);
        std::memcpy(&p, to + at, kPixelBytes);
        p = combine(s, p) | kAlpha;
        std::memcpy(to + at, &p, kPixelBytes);
    }
}

void Copy(const PictInks& /*inks*/, Source source, Page page) {
    std::ranges::copy(source, page.begin());
}

// --- Modes of bits ---------------------------------------------------------------------------------------------------

/// What black, or white, of the source becomes.
enum class Becomes { kPage, kForeground, kBackground };

template <Becomes What>
Word Bits(Word page, Word foreground, Word background) {
    switch (What) {
        case Becomes::kForeground:
            return foreground;
        case Becomes::kBackground:
            return background;
        case Becomes::kPage:
            break;
    }
    return page;
}

template <Becomes Black, Becomes White>
void Weigh(const PictInks& inks, Source source, Page page) {
    const Word foreground = WordOf(inks.foreground), background = WordOf(inks.background);
    EachPixel(source, page, [=](Word s, Word p) {
        return (~s & Bits<Black>(p, foreground, background)) | (s & Bits<White>(p, foreground, background));
    });
}

void Xor(const PictInks& /*inks*/, Source source, Page page) {
    EachPixel(source, page, [](Word s, Word p) { return p ^ ~s; });
}

void NotXor(const PictInks& /*inks*/, Source source, Page page) {
    EachPixel(source, page, [](Word s, Word p) { return p ^ s; });
}

// --- Modes of colours ------------------------------------------------------------------------------------------------

void Transparent(const PictInks& inks, Source source, Page page) {
    const Word background = WordOf(inks.background) | kAlpha;
    EachPixel(source, page, [=](Word s, Word p) { return (s | kAlpha) == background ? p : s; });
}

void Highlight(const PictInks& inks, Source source, Page page) {
    const Word background = WordOf(inks.background) | kAlpha, highlight = WordOf(inks.highlight) | kAlpha;
    EachPixel(source, page, [=](Word s, Word p) {
        const Word opaque = p | kAlpha;
        if ((s | kAlpha) == background) return p;
        return opaque == background ? highlight : opaque == highlight ? background : p;
    });
}

// The largest sum is 65535 * 65535 + 32767, which has 32 bits.
constexpr auto kBlend = [](PictValue c, PictValue s, PictValue o) {
    return (s * o + c * (0xFFFF - o) + 0x7FFF) / 0xFFFF;
};

/// `Channel(page, source, operation)` for every channel by itself. In parts of a fixed size, with an operation for each
/// of their bytes, those of alpha too, which is set afterwards: so compilers make vectors of the loops.
template <auto Channel>
void EachChannel(const PictInks& inks, Source source, Page page) {
    constexpr std::size_t kPart = 64;
    std::array<std::uint16_t, kPart> operations{};
    for (std::size_t i = 0; i < kPart; ++i)
        operations[i] = i % kPixelBytes < 3 ? inks.operation[i % kPixelBytes] : 0;
    std::array<unsigned char, kPart> from{}, to{};
    for (std::size_t at = 0; at < page.size(); at += kPart) {
        const std::size_t bytes = std::min(kPart, page.size() - at);
        std::memcpy(from.data(), source.data() + at, bytes);
        std::memcpy(to.data(), page.data() + at, bytes);
        for (std::size_t i = 0; i < kPart; ++i) {
            const auto value = static_cast<std::uint16_t>(Channel(to[i] * 257, from[i] * 257, operations[i]));
            to[i] = static_cast<unsigned char>(value >> 8);
        }
        for (std::size_t i = 3; i < kPart; i += kPixelBytes)
            to[i] = 0xFF;
        std::memcpy(page.data() + at, to.data(), bytes);
    }
}

constexpr std::size_t kModes = 51;

/// A line a mode; one that has none copies.
constexpr auto kKernels = [] {
    using enum Becomes;
    std::array<Kernel, kModes> kernels{};
    kernels.fill(Copy);
    kernels[1] = Weigh<kForeground, kPage>;
    kernels[2] = Xor;
    kernels[3] = Weigh<kBackground, kPage>;
    kernels[4] = Weigh<kBackground, kForeground>;
    kernels[5] = Weigh<kPage, kForeground>;
    kernels[6] = NotXor;
    kernels[7] = Weigh<kPage, kBackground>;
    kernels[32] = EachChannel<kBlend>;
    kernels[33] = EachChannel<kPictAddPin>;
    kernels[34] = EachChannel<kPictAddOver>;
    kernels[35] = EachChannel<kPictSubtractPin>;
    kernels[36] = Transparent;
    kernels[37] = EachChannel<kPictMaximum>;
    kernels[38] = EachChannel<kPictSubtractOver>;
    kernels[39] = EachChannel<kPictMinimum>;
    kernels[kHighlight] = Highlight;
    return kernels;
}();

}  // namespace

PictPixel ToPictPixel(const PictColour& colour) {
    PictPixel pixel{0, 0, 0, 0xFF};
    for (std::size_t channel = 0; channel < 3; ++channel)
        pixel[channel] = static_cast<unsigned char>(colour[channel] >> 8);
    return pixel;
}

std::uint16_t ToPictMode(std::uint16_t field) {
    std::uint16_t mode = field;
    if (mode >= kDither && mode < 2 * kDither) mode -= kDither;
    if (mode >= kPatterns && mode < 2 * kPatterns) mode -= kPatterns;
    return mode < kModes && kKernels[mode] != Copy ? mode : 0;
}

void DrawPictPixels(std::uint16_t mode, const PictInks& inks, Source source, Page page) {
    kKernels[mode < kModes ? mode : 0](inks, source, page);
}

}  // namespace Kavra::Devices
