#include "common/dds/DdsWidening.h"

#include "common/PixelFormats.h"

#include <Imath/half.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace Kavra::Devices::Dds {
namespace {

static_assert(std::endian::native == std::endian::little, "pixels are copied as they are stored");

using Row = std::span<const unsigned char>;

template <std::size_t Bytes, class Body>
void ForEachPixelOf(Row row, std::size_t width, const Body& body) {
    for (std::size_t x = 0; x < width; ++x) {
        std::uint64_t pixel = 0;
        std::memcpy(&pixel, row.data() + x * Bytes, Bytes);
        body(x, pixel);
    }
}

/// Calls `body(x, pixel)` for each pixel of the row, its bytes as a number.
template <class Body>
void ForEachPixel(const StoredLayout& layout, Row row, std::size_t width, const Body& body) {
    switch (layout.unit.bytes) {
        case 1:
            return ForEachPixelOf<1>(row, width, body);
        case 2:
            return ForEachPixelOf<2>(row, width, body);
        case 3:
            return ForEachPixelOf<3>(row, width, body);
        case 4:
            return ForEachPixelOf<4>(row, width, body);
        case 8:
            return ForEachPixelOf<8>(row, width, body);
        default:
            std::unreachable();
    }
}

/// One unsigned channel and the way to another maximum.
struct Scale {
    std::uint64_t mask;
    int shift;
    double factor;
    std::uint32_t absent;

    Scale(std::uint64_t channelMask, std::uint32_t top, std::uint32_t absentValue)
        : mask(channelMask), shift(mask == 0 ? 0 : std::countr_zero(mask)), factor(0), absent(absentValue) {
        if (mask != 0) factor = static_cast<double>(top) / static_cast<double>(mask >> shift);
    }

    /// Rounded half up. Doubles are exact enough: a maximum 2^n - 1 is odd, so no quotient comes nearer to a half
    /// than 2^-17.
    std::uint32_t operator()(std::uint64_t pixel) const {
        if (mask == 0) return absent;
        constexpr double halfStep = 0.5;
        return static_cast<std::uint32_t>(static_cast<double>((pixel & mask) >> shift) * factor + halfStep);
    }
};

std::array<Scale, 4> ScalesTo(const Masks& masks, std::uint32_t top) {
    return {Scale(masks[0], top, 0), Scale(masks[1], top, 0), Scale(masks[2], top, 0), Scale(masks[3], top, top)};
}

template <class Value>
void WidenUnsigned(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    const std::array<Scale, 4> scales = ScalesTo(layout.masks, std::numeric_limits<Value>::max());
    ForEachPixel(layout, row, width, [&](std::size_t x, std::uint64_t pixel) {
        Value values[4];
        for (int c = 0; c < 4; ++c)
            values[c] = static_cast<Value>(scales[c](pixel));
        std::memcpy(out + x * sizeof values, values, sizeof values);
    });
}

/// One channel as a float in -1..1 or 0..1.
float Normalised(std::uint64_t pixel, std::uint64_t mask, bool isSigned) {
    const int bits = std::bit_width(mask) - std::countr_zero(mask);
    const std::uint64_t stored = (pixel & mask) >> std::countr_zero(mask);
    if (!isSigned) return static_cast<float>(stored) / static_cast<float>((1U << bits) - 1);
    const int unused = 64 - bits;
    const std::int64_t value = static_cast<std::int64_t>(stored << unused) >> unused;
    return std::max(static_cast<float>(value) / static_cast<float>((1U << (bits - 1)) - 1), -1.0F);
}

template <class Value>
void WidenNormalised(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    const auto channels = static_cast<std::size_t>(Common::FactsOf(layout.format).channels);
    ForEachPixel(layout, row, width, [&](std::size_t x, std::uint64_t pixel) {
        for (std::size_t c = 0; c < channels; ++c) {
            const float absent = c == 3 ? 1.0F : 0.0F;
            const std::uint64_t mask = layout.masks[c];
            const bool isSigned = (layout.signedChannels >> c & 1) != 0;
            const Value value(mask == 0 ? absent : Normalised(pixel, mask, isSigned));
            std::memcpy(out + (x * channels + c) * sizeof value, &value, sizeof value);
        }
    });
}

/// One channel on the way to colours around a middle.
struct MiddleScale {
    std::uint64_t mask;
    int bits, shift;
    std::int64_t top;
    bool isSigned;

    MiddleScale(std::uint64_t channelMask, bool signedChannel, std::int64_t maximum)
        : mask(channelMask),
          bits(mask == 0 ? 0 : std::bit_width(mask) - std::countr_zero(mask)),
          shift(mask == 0 ? 0 : std::countr_zero(mask)),
          top(maximum),
          isSigned(signedChannel) {}

    /// Rounded half up.
    std::int64_t operator()(std::uint64_t pixel) const {
        const auto stored = static_cast<std::int64_t>((pixel & mask) >> shift);
        const std::int64_t whole = (std::int64_t{1} << bits) - 1;
        if (!isSigned) return (2 * stored * top + whole) / (2 * whole);
        const std::int64_t largest = whole / 2;
        const std::int64_t value = stored > largest ? std::max(stored - whole - 1, -largest) : stored;
        return ((value + largest) * top + largest) / (2 * largest);
    }
};

template <class Value>
void WidenAroundMiddle(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    constexpr std::int64_t kTop = std::numeric_limits<Value>::max();
    const auto channels = static_cast<std::size_t>(Common::FactsOf(layout.format).channels);
    const auto scale = [&](int c) { return MiddleScale(layout.masks[c], (layout.signedChannels >> c & 1) != 0, kTop); };
    const std::array<MiddleScale, 4> scales = {scale(0), scale(1), scale(2), scale(3)};
    ForEachPixel(layout, row, width, [&](std::size_t x, std::uint64_t pixel) {
        for (std::size_t c = 0; c < channels; ++c) {
            const std::int64_t absent = c == 3 ? kTop : (kTop + 1) / 2;
            const auto value = static_cast<Value>(scales[c].mask == 0 ? absent : scales[c](pixel));
            std::memcpy(out + (x * channels + c) * sizeof value, &value, sizeof value);
        }
    });
}

using Halfs = std::array<std::uint16_t, 4>;

constexpr std::uint16_t kHalfOne = 0x3C00;

/// Runs `convert`, from a 32-bit pixel to four halfs, over a row.
template <class Convert>
void WidenWordsToHalfs(Row row, unsigned char* out, std::size_t width, const Convert& convert) {
    ForEachPixelOf<4>(row, width, [&](std::size_t x, std::uint64_t pixel) {
        const Halfs halfs = convert(static_cast<std::uint32_t>(pixel));
        std::memcpy(out + x * sizeof halfs, halfs.data(), sizeof halfs);
    });
}

std::uint16_t HalfBits(float value) {
    return Imath::half(value).bits();
}

struct Colour {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
    std::uint8_t alpha;
};

/// BT.601 colour of limited range, by the integer formula of
/// https://learn.microsoft.com/windows/win32/medfound/recommended-8-bit-yuv-formats-for-video-rendering
/// ("Converting 8-bit YUV to RGB888").
Colour FromYuv(int y, int u, int v, std::uint8_t alpha) {
    const int c = 298 * (y - 16) + 128;
    const int d = u - 128;
    const int e = v - 128;
    const auto clip = [](int value) { return static_cast<std::uint8_t>(std::clamp(value >> 8, 0, 255)); };
    return {clip(c + 409 * e), clip(c - 100 * d - 208 * e), clip(c + 516 * d), alpha};
}

Colour FromRgb(int green, int red, int blue, std::uint8_t alpha) {
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue), alpha};
}

/// Pairs of four bytes: each pixel's own channel at `First` or `Second`, the shared two at `ShareA` and `ShareB`.
template <int First, int ShareA, int Second, int ShareB, class Convert>
void WidenPairs(Row row, unsigned char* out, std::size_t width, const Convert& convert) {
    for (std::size_t x = 0; x < width; ++x) {
        const unsigned char* pair = row.data() + x / 2 * 4;
        const Colour colour = convert(pair[x % 2 == 0 ? First : Second], pair[ShareA], pair[ShareB], 255);
        std::memcpy(out + x * sizeof colour, &colour, sizeof colour);
    }
}

}  // namespace

void WidenToBytes(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenUnsigned<std::uint8_t>(layout, row, out, width);
}

void WidenToShorts(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenUnsigned<std::uint16_t>(layout, row, out, width);
}

void WidenToHalfs(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenNormalised<Imath::half>(layout, row, out, width);
}

void WidenToFloats(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenNormalised<float>(layout, row, out, width);
}

void WidenAroundMiddleToBytes(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenAroundMiddle<std::uint8_t>(layout, row, out, width);
}

void WidenAroundMiddleToShorts(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenAroundMiddle<std::uint16_t>(layout, row, out, width);
}

void WidenNormals(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    WidenAroundMiddleToBytes(layout, row, out, width);
    ForEachPixel(layout, row, width, [&](std::size_t x, std::uint64_t pixel) {
        const float u = Normalised(pixel, layout.masks[0], true), v = Normalised(pixel, layout.masks[1], true);
        const float third = std::sqrt(std::max(1 - u * u - v * v, 0.0F));
        constexpr float kHalfRange = 127.5F, kHalfStep = 0.5F;
        out[x * sizeof(Colour) + 2] = static_cast<std::uint8_t>((third + 1) * kHalfRange + kHalfStep);
    });
}

void WidenThreeFloats(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    constexpr std::size_t kStored = 3 * sizeof(float), kPixel = 4 * sizeof(float);
    const float opaque = 1;
    for (std::size_t x = 0; x < width; ++x) {
        std::memcpy(out + x * kPixel, row.data() + x * kStored, kStored);
        std::memcpy(out + x * kPixel + kStored, &opaque, sizeof opaque);
    }
}

void WidenPackedFloats(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    // The exponents are a half's own, and there is no sign: only the mantissas' missing bits are added.
    WidenWordsToHalfs(row, out, width, [](std::uint32_t pixel) {
        return Halfs{static_cast<std::uint16_t>((pixel & 0x7FF) << 4),
                     static_cast<std::uint16_t>((pixel >> 11 & 0x7FF) << 4),
                     static_cast<std::uint16_t>((pixel >> 22) << 5), kHalfOne};
    });
}

void WidenSharedExponent(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenWordsToHalfs(row, out, width, [](std::uint32_t pixel) {
        const float unit = std::ldexp(1.0F, static_cast<int>(pixel >> 27) - 24);
        const auto channel = [&](int shift) { return HalfBits(static_cast<float>(pixel >> shift & 0x1FF) * unit); };
        return Halfs{channel(0), channel(9), channel(18), kHalfOne};
    });
}

void WidenExtendedRange(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenWordsToHalfs(row, out, width, [](std::uint32_t pixel) {
        const auto channel = [&](int shift) {
            return HalfBits((static_cast<float>(pixel >> shift & 0x3FF) - 384.0F) / 510.0F);
        };
        return Halfs{channel(0), channel(10), channel(20), HalfBits(static_cast<float>(pixel >> 30) / 3.0F)};
    });
}

void WidenRgbg(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenPairs<1, 0, 3, 2>(row, out, width, FromRgb);
}

void WidenGrgb(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenPairs<0, 1, 2, 3>(row, out, width, FromRgb);
}

void WidenYuy2(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenPairs<0, 1, 2, 3>(row, out, width, FromYuv);
}

void WidenUyvy(const StoredLayout&, Row row, unsigned char* out, std::size_t width) {
    WidenPairs<1, 0, 3, 2>(row, out, width, FromYuv);
}

void WidenYuv(const StoredLayout& layout, Row row, unsigned char* out, std::size_t width) {
    const std::array<Scale, 4> scales = ScalesTo(layout.masks, 255);
    ForEachPixel(layout, row, width, [&](std::size_t x, std::uint64_t pixel) {
        const auto channel = [&](int c) { return static_cast<int>(scales[c](pixel)); };
        const Colour colour = FromYuv(channel(0), channel(1), channel(2), static_cast<std::uint8_t>(channel(3)));
        std::memcpy(out + x * sizeof colour, &colour, sizeof colour);
    });
}

}  // namespace Kavra::Devices::Dds
