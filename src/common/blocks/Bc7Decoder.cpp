#include "common/blocks/Bc7Packing.h"
#include "common/blocks/BlockDecoders.h"

#include <algorithm>
#include <cstring>

namespace Kavra::Common {
namespace {

/// Red, green, blue and alpha, 16 bits each, the first lowest: one multiplication is four.
using Lanes = std::uint64_t;

constexpr Lanes kEach = 0x0001000100010001;
constexpr unsigned kAlphaShift = 48;
constexpr Lanes kColours = (Lanes{1} << kAlphaShift) - 1;

/// An end as 8 bits a channel; opaque where the mode has no alpha.
Lanes WidenedEnd(const Bc7Block& block, const Bc7Mode& mode, std::size_t end) {
    const int lowBits = mode.lowBits == LowBits::kNone ? 0 : 1;
    const auto widened = [&](std::size_t channel, int bits) {
        const int value = block.ends[end][channel] << lowBits | (lowBits > 0 ? block.lowBits[end] : 0);
        return static_cast<Lanes>(Widened(value, bits + lowBits)) << 16 * channel;
    };
    const Lanes alpha = mode.alphaBits > 0 ? widened(3, mode.alphaBits) : Lanes{255} << kAlphaShift;
    return widened(0, mode.colourBits) | widened(1, mode.colourBits) | widened(2, mode.colourBits) | alpha;
}

Lanes Between(Lanes a, Lanes b, unsigned weight) {
    return (a * (64 - weight) + b * weight + 32 * kEach) >> 6 & 255 * kEach;
}

std::uint32_t PackedBytes(Lanes lanes) {
    lanes |= lanes >> 8;
    return static_cast<std::uint32_t>((lanes & 0xFFFF) | (lanes >> 16 & 0xFFFF0000));
}

/// Alpha and one of the colours change places.
std::uint32_t Rotated(std::uint32_t pixel, int rotation) {
    if (rotation == 0) return pixel;
    const auto shift = static_cast<unsigned>(8 * (rotation - 1));
    const std::uint32_t alpha = pixel >> 24, colour = pixel >> shift & 255;
    return (pixel & ~(255U << shift) & 0xFFFFFF) | alpha << shift | colour << 24;
}

/// How much of the second end each index stands for.
using Weights = std::array<unsigned char, 16>;

constexpr std::array<Weights, 5> kWeights = [] {
    std::array<Weights, 5> weights{};
    for (int bits = 2; bits <= 4; ++bits)
        for (int index = 0; index < 1 << bits; ++index)
            weights[static_cast<std::size_t>(bits)][static_cast<std::size_t>(index)] =
                static_cast<std::uint8_t>(WeightOf(index, bits));
    return weights;
}();

const Weights& WeightsOf(int bits) {
    return kWeights[static_cast<std::size_t>(bits)];
}

using Pixels = std::array<std::uint32_t, kBlockSide * kBlockSide>;

/// One set of indices for all channels.
Pixels Shared(const Bc7Block& block, const Bc7Mode& mode) {
    std::array<Lanes, 6> ends{};
    for (std::size_t end = 0; end < mode.Ends(); ++end)
        ends[end] = WidenedEnd(block, mode, end);
    const Partition partition = PartitionOf(mode.subsets, static_cast<std::size_t>(block.partition));
    const Weights& weights = WeightsOf(mode.indexBits);
    Pixels pixels;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t subset = SubsetOf(partition, i);
        pixels[i] = PackedBytes(Between(ends[2 * subset], ends[2 * subset + 1], weights[block.indices[i]]));
    }
    return pixels;
}

/// Alpha, or the colour that it changed places with, has indices of its own.
Pixels Separate(const Bc7Block& block, const Bc7Mode& mode) {
    const Lanes a = WidenedEnd(block, mode, 0), b = WidenedEnd(block, mode, 1);
    const bool isSelected = block.selection != 0;
    const auto& colours = isSelected ? block.alphaIndices : block.indices;
    const auto& alphas = isSelected ? block.indices : block.alphaIndices;
    const Weights& ofColours = WeightsOf(isSelected ? mode.alphaIndexBits : mode.indexBits);
    const Weights& ofAlphas = WeightsOf(isSelected ? mode.indexBits : mode.alphaIndexBits);
    Pixels pixels;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const Lanes colour = Between(a, b, ofColours[colours[i]]) & kColours;
        const Lanes alpha = Between(a >> kAlphaShift, b >> kAlphaShift, ofAlphas[alphas[i]]) & 255;
        pixels[i] = Rotated(PackedBytes(colour | alpha << kAlphaShift), block.rotation);
    }
    return pixels;
}

}  // namespace

void DecodeBc7(const unsigned char* bytes, unsigned char* out, std::size_t pitch) {
    Pixels pixels{};
    if (const std::optional<Bc7Block> block = UnpackBc7(bytes)) {
        const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(block->mode)];
        pixels = mode.alphaIndexBits > 0 ? Separate(*block, mode) : Shared(*block, mode);
    }
    for (std::size_t y = 0; y < kBlockSide; ++y)
        std::memcpy(out + y * pitch, &pixels[y * kBlockSide], kBlockSide * sizeof(pixels[0]));
}

}  // namespace Kavra::Common
