#include "readers/pict/PictTransfer.h"

#include <algorithm>

namespace Kavra::Devices {

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

// The arithmetic of a channel. The products of a blend need all 32 bits.
using Value = std::uint32_t;

constexpr auto kXorNot = [](Value c, Value s, Value) { return c ^ ~s; };
constexpr auto kXor = [](Value c, Value s, Value) { return c ^ s; };
constexpr auto kBlend = [](Value c, Value s, Value o) { return (65536 - o) * c / 65536 + o * s / 65536; };
constexpr auto kAddPin = [](int c, int s, int o) { return std::min(c + s, o); };
constexpr auto kAddOver = [](Value c, Value s, Value) { return c + s; };
constexpr auto kSubtractPin = [](int c, int s, int o) { return std::max(c - s, o); };
constexpr auto kMaximum = [](Value c, Value s, Value) { return std::max(c, s); };
constexpr auto kSubtractOver = [](Value c, Value s, Value) { return c - s; };
constexpr auto kMinimum = [](Value c, Value s, Value) { return std::min(c, s); };

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
    kernels[33] = EachChannel<kAddPin>;
    kernels[34] = EachChannel<kAddOver>;
    kernels[35] = EachChannel<kSubtractPin>;
    kernels[36] = Transparent;
    kernels[37] = EachChannel<kMaximum>;
    kernels[38] = EachChannel<kSubtractOver>;
    kernels[39] = EachChannel<kMinimum>;
    return kernels;
}();

}  // namespace

void TransferPictRun(std::uint16_t mode, const PictColours& colours, const PictConstRun& source,
                     const PictRun& canvas) {
    kKernels[mode < kModes ? mode : 0](colours, source, canvas);
}

}  // namespace Kavra::Devices
