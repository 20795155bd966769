#include "common/blocks/Bc7Packing.h"
#include "common/blocks/BlockDecoders.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Common {
namespace {

constexpr std::size_t kPixels = kBlockSide * kBlockSide;

/// Red, green, blue and alpha.
using End = std::array<std::uint16_t, 4>;

/// An end as 8 bits a channel; opaque where the mode has no alpha.
End WidenedEnd(const Bc7Block& block, const Bc7Mode& mode, std::size_t end) {
    const int lowBits = mode.lowBits == LowBits::kNone ? 0 : 1;
    const auto widened = [&](std::size_t channel, int bits) {
        const int value = block.ends[end][channel] << lowBits | (lowBits > 0 ? block.lowBits[end] : 0);
        return static_cast<std::uint16_t>(Widened(value, bits + lowBits));
    };
    constexpr std::uint16_t kOpaque = 255;
    return {widened(0, mode.colourBits), widened(1, mode.colourBits), widened(2, mode.colourBits),
            mode.alphaBits > 0 ? widened(3, mode.alphaBits) : kOpaque};
}

/// Both ends of each channel of each pixel, and how much of the second one it has: laid out for vectors.
struct Mixture {
    std::array<End, kPixels> a, b, weights;

    void Set(std::size_t pixel, const End& first, const End& second, const End& weight) {
        a[pixel] = first;
        b[pixel] = second;
        weights[pixel] = weight;
    }
    void Mix(std::array<unsigned char, 4 * kPixels>& pixels) const {
        for (std::size_t i = 0; i < kPixels; ++i) {
            for (std::size_t c = 0; c < 4; ++c) {
                const auto share = weights[i][c];
                const auto sum = static_cast<std::uint16_t>(a[i][c] * (64 - share) + b[i][c] * share + 32);
                pixels[4 * i + c] = static_cast<unsigned char>(sum >> 6);
            }
        }
    }
};

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

/// One set of indices for all channels.
void MixShared(const Bc7Block& block, const Bc7Mode& mode, Mixture& mixture) {
    std::array<End, 6> ends{};
    for (std::size_t end = 0; end < mode.Ends(); ++end)
        ends[end] = WidenedEnd(block, mode, end);
    const Partition partition = PartitionOf(mode.subsets, static_cast<std::size_t>(block.partition));
    const Weights& weights = WeightsOf(mode.indexBits);
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::size_t subset = SubsetOf(partition, i);
        const std::uint16_t weight = weights[block.indices[i]];
        mixture.Set(i, ends[2 * subset], ends[2 * subset + 1], {weight, weight, weight, weight});
    }
}

/// Alpha has indices of its own; then it and one of the colours may change places.
void MixSeparate(const Bc7Block& block, const Bc7Mode& mode, Mixture& mixture) {
    End a = WidenedEnd(block, mode, 0), b = WidenedEnd(block, mode, 1);
    const bool isSelected = block.selection != 0;
    const auto& colours = isSelected ? block.alphaIndices : block.indices;
    const auto& alphas = isSelected ? block.indices : block.alphaIndices;
    const Weights& ofColours = WeightsOf(isSelected ? mode.alphaIndexBits : mode.indexBits);
    const Weights& ofAlphas = WeightsOf(isSelected ? mode.indexBits : mode.alphaIndexBits);
    const std::size_t place = block.rotation == 0 ? 3 : static_cast<std::size_t>(block.rotation - 1);
    std::swap(a[3], a[place]);
    std::swap(b[3], b[place]);
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::uint16_t colour = ofColours[colours[i]];
        End weights = {colour, colour, colour, colour};
        weights[place] = ofAlphas[alphas[i]];
        mixture.Set(i, a, b, weights);
    }
}

}  // namespace

void DecodeBc7(const unsigned char* bytes, unsigned char* out, std::size_t pitch) {
    std::array<unsigned char, 4 * kPixels> pixels{};
    if (const std::optional<Bc7Block> block = UnpackBc7(bytes)) {
        const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(block->mode)];
        Mixture mixture;
        mode.alphaIndexBits > 0 ? MixSeparate(*block, mode, mixture) : MixShared(*block, mode, mixture);
        mixture.Mix(pixels);
    }
    constexpr std::size_t kRowBytes = 4 * kBlockSide;
    for (std::size_t y = 0; y < kBlockSide; ++y)
        std::memcpy(out + y * pitch, &pixels[y * kRowBytes], kRowBytes);
}

}  // namespace Kavra::Common
