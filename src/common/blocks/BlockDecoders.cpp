#include "common/blocks/BlockDecoders.h"

#include "common/ByteOrder.h"

#include <hwy/base.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Kavra::Common {
namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kPixels = kBlockSide * kBlockSide;
constexpr std::size_t kMaxPixelBytes = 8;
constexpr std::size_t kHalfBytes = 2;
constexpr std::size_t kHalfBlock = 8;  // bytes
constexpr int kMaxSigned = 127;

using Colour = std::array<unsigned char, kPixelBytes>;

std::uint64_t LittleBits(const unsigned char* bytes, int count) {
    std::uint64_t bits = 0;
    for (int i = count; i-- > 0;)
        bits = bits << 8 | bytes[i];
    return bits;
}

/// A colour of 5, 6 and 5 bits, each widened to the nearest of 8.
std::array<int, 3> EndOf(std::uint64_t word) {
    const auto widened = [](std::uint64_t value, int maximum) {
        return (static_cast<int>(value) * 510 + maximum) / (2 * maximum);
    };
    return {widened(word >> 11, 31), widened(word >> 5 & 63, 63), widened(word & 31, 31)};
}

enum class Colours { kThreeOrFour, kFour };

void DecodeColours(const unsigned char* block, Colours kind, unsigned char* out, std::size_t pitch) {
    const std::uint64_t word0 = LittleBits(block, 2), word1 = LittleBits(block + 2, 2);
    const std::array<int, 3> first = EndOf(word0), last = EndOf(word1);
    const bool hasFour = kind == Colours::kFour || word0 > word1;
    std::array<Colour, 4> colours{};  // the fourth of three is transparent black
    for (std::size_t c = 0; c < 3; ++c) {
        const int a = first[c], b = last[c];
        colours[0][c] = static_cast<std::uint8_t>(a);
        colours[1][c] = static_cast<std::uint8_t>(b);
        colours[2][c] = static_cast<std::uint8_t>(hasFour ? (2 * a + b + 1) / 3 : (a + b + 1) / 2);
        if (hasFour) colours[3][c] = static_cast<std::uint8_t>((a + 2 * b + 1) / 3);
    }
    colours[0][3] = colours[1][3] = colours[2][3] = 255;
    colours[3][3] = hasFour ? 255 : 0;
    std::uint64_t bits = LittleBits(block + 4, 4);
    for (int y = 0; y < kBlockSide; ++y, out += pitch) {
        for (std::size_t x = 0; x < kBlockSide; ++x, bits >>= 2)
            std::memcpy(out + x * kPixelBytes, colours[bits & 3].data(), kPixelBytes);
    }
}

/// One value of each pixel of a block, `step` bytes apart.
template <class Value>
void PutIndexed(const unsigned char* block, const std::array<Value, 8>& values, unsigned char* out, std::size_t pitch,
                std::size_t step) {
    std::uint64_t bits = LittleBits(block + 2, 6);
    for (int y = 0; y < kBlockSide; ++y, out += pitch) {
        for (std::size_t x = 0; x < kBlockSide; ++x, bits >>= 3)
            std::memcpy(out + x * step, &values[bits & 7], sizeof(Value));
    }
}

using Channel = std::array<unsigned char, 8>;

/// What the indices of an unsigned channel stand for.
Channel ValuesOf(const unsigned char* block) {
    const int a = block[0], b = block[1];
    const int steps = a > b ? 7 : 5;
    Channel values{block[0], block[1], 0, 0, 0, 0, 0, 255};
    for (int i = 1; i < steps; ++i)
        values[static_cast<std::size_t>(i) + 1] = static_cast<std::uint8_t>(((steps - i) * a + i * b + 1) / steps);
    return values;
}

void DecodeChannel(const unsigned char* block, unsigned char* out, std::size_t pitch, std::size_t step) {
    PutIndexed(block, ValuesOf(block), out, pitch, step);
}

/// Two unsigned channels of which nothing else is known: blue 0, opaque.
void DecodePair(const unsigned char* red, const unsigned char* green, unsigned char* out, std::size_t pitch) {
    const Channel redValues = ValuesOf(red), greenValues = ValuesOf(green);
    std::array<std::uint32_t, 8> reds{}, greens{};  // pixels of which the other one is 0
    for (std::size_t i = 0; i < reds.size(); ++i) {
        reds[i] = std::bit_cast<std::uint32_t>(Colour{redValues[i], 0, 0, 255});
        greens[i] = std::bit_cast<std::uint32_t>(Colour{0, greenValues[i], 0, 0});
    }
    std::uint64_t redBits = LittleBits(red + 2, 6), greenBits = LittleBits(green + 2, 6);
    for (int y = 0; y < kBlockSide; ++y, out += pitch) {
        for (std::size_t x = 0; x < kBlockSide; ++x, redBits >>= 3, greenBits >>= 3) {
            const std::uint32_t pixel = reds[redBits & 7] | greens[greenBits & 7];
            std::memcpy(out + x * kPixelBytes, &pixel, kPixelBytes);
        }
    }
}

/// A signed channel: `convert(sum, parts)` makes a pixel of `sum / (127 * parts)`, which is -1 to 1. The lowest value is as
/// the one above it, but tells the two kinds of blocks apart.
template <class Convert>
void DecodeSigned(const unsigned char* block, unsigned char* out, std::size_t pitch, std::size_t step,
                  const Convert& convert) {
    const auto signedOf = [](int byte) { return byte > kMaxSigned ? byte - 256 : byte; };
    const int storedA = signedOf(block[0]), storedB = signedOf(block[1]);
    const int a = std::max(storedA, -kMaxSigned), b = std::max(storedB, -kMaxSigned);
    const int steps = storedA > storedB ? 7 : 5;
    using Value = decltype(convert(0, 1));
    std::array<Value, 8> values{convert(a, 1),           convert(b, 1),         {}, {}, {}, {},
                                convert(-kMaxSigned, 1), convert(kMaxSigned, 1)};
    for (int i = 1; i < steps; ++i)
        values[static_cast<std::size_t>(i) + 1] = convert((steps - i) * a + i * b, steps);
    PutIndexed(block, values, out, pitch, step);
}

/// The colour around the middle of `sum / (127 * parts)`, rounded half up.
std::uint8_t AroundMiddle(int sum, int parts) {
    return static_cast<std::uint8_t>(((sum + kMaxSigned * parts) * 255 + kMaxSigned * parts) /
                                     (2 * kMaxSigned * parts));
}

std::uint16_t AsHalf(int sum, int parts) {
    const float value = static_cast<float>(sum) / static_cast<float>(kMaxSigned * parts);
    return hwy::BitCastScalar<std::uint16_t>(hwy::F16FromF32(value));
}

template <class Write>
void ForEachPixel(unsigned char* out, std::size_t pitch, const Write& write) {
    for (int y = 0; y < kBlockSide; ++y, out += pitch) {
        for (std::size_t x = 0; x < kBlockSide; ++x)
            write(out + x * kPixelBytes);
    }
}

/// Two channels of which nothing else is known.
void SetBlue(unsigned char blue, unsigned char* out, std::size_t pitch) {
    ForEachPixel(out, pitch, [&](unsigned char* pixel) {
        pixel[2] = blue;
        pixel[3] = 255;
    });
}

}  // namespace

void DecodeBc1(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeColours(block, Colours::kThreeOrFour, out, pitch);
}

void DecodeBc2(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeColours(block + kHalfBlock, Colours::kFour, out, pitch);
    std::uint64_t alphas = LittleBits(block, kHalfBlock);
    ForEachPixel(out, pitch, [&](unsigned char* pixel) {
        pixel[3] = static_cast<std::uint8_t>((alphas & 15) * 17);
        alphas >>= 4;
    });
}

void DecodeBc3(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeColours(block + kHalfBlock, Colours::kFour, out, pitch);
    DecodeChannel(block, out + 3, pitch, kPixelBytes);
}

void DecodeRxgb(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeBc3(block, out, pitch);
    ForEachPixel(out, pitch, [](unsigned char* pixel) {
        pixel[0] = pixel[3];
        pixel[3] = 255;
    });
}

void DecodeBc4(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeChannel(block, out, pitch, 1);
}

void DecodeBc4Signed(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeSigned(block, out, pitch, 1, AroundMiddle);
}

void DecodeBc4AsHalfs(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeSigned(block, out, pitch, kHalfBytes, AsHalf);
}

void DecodeBc5AsHalfs(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodeSigned(block, out, pitch, 2 * kHalfBytes, AsHalf);
    DecodeSigned(block + kHalfBlock, out + kHalfBytes, pitch, 2 * kHalfBytes, AsHalf);
}

void DecodeBc5(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodePair(block, block + kHalfBlock, out, pitch);
}

void DecodeBc5Signed(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    constexpr unsigned char kMiddle = 128;
    DecodeSigned(block, out, pitch, kPixelBytes, AroundMiddle);
    DecodeSigned(block + kHalfBlock, out + 1, pitch, kPixelBytes, AroundMiddle);
    SetBlue(kMiddle, out, pitch);
}

void DecodeAti2(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    DecodePair(block + kHalfBlock, block, out, pitch);
}

void DecodeBlockRow(DecodeBlock decode, std::span<const unsigned char> blocks, std::size_t blockBytes,
                    std::size_t width, int rows, std::size_t pixelBytes, unsigned char* out, std::size_t pitch) {
    const std::size_t across = blocks.size() / blockBytes;
    std::array<unsigned char, kPixels * kMaxPixelBytes> edge;
    const std::size_t edgePitch = kBlockSide * pixelBytes;
    for (std::size_t i = 0; i < across; ++i) {
        const std::size_t x = i * kBlockSide;
        const unsigned char* const block = blocks.data() + i * blockBytes;
        unsigned char* const first = out + x * pixelBytes;
        if (rows == kBlockSide && x + kBlockSide <= width) {
            decode(block, first, pitch);
            continue;
        }
        decode(block, edge.data(), edgePitch);
        const std::size_t bytes = std::min<std::size_t>(kBlockSide, width - x) * pixelBytes;
        for (int y = 0; y < rows; ++y)
            std::memcpy(first + static_cast<std::size_t>(y) * pitch, edge.data() + y * edgePitch, bytes);
    }
}

}  // namespace Kavra::Common
