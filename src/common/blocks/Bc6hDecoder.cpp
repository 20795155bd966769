#include "common/blocks/Bc6hLayout.h"
#include "common/blocks/BlockDecoders.h"

#include <array>
#include <cstring>

namespace Kavra::Common {
namespace {

constexpr std::uint16_t kOne = 0x3C00;  // as a half

constexpr std::size_t kPixels = kBlockSide * kBlockSide;
constexpr std::size_t kChannels = 4;

/// The bits of the half that a component of 16 bits stands for: 31/64 of it, of signed ones 31/32.
template <bool kIsSigned>
std::uint16_t HalfOf(int wide) {
    if constexpr (!kIsSigned) return static_cast<std::uint16_t>(wide * 31 >> 6);
    const int size = (wide < 0 ? -wide : wide) * 31 >> 5;
    return static_cast<std::uint16_t>(wide < 0 && size > 0 ? 0x8000 | size : size);
}

/// Of 64, how much of the second end indices of 3 and 4 bits stand for.
constexpr auto kWeights = [] {
    std::array<std::array<unsigned char, 16>, 2> weights{};
    for (std::size_t bits = 3; bits <= 4; ++bits)
        for (int index = 0; index < 1 << bits; ++index)
            weights[bits - 3][static_cast<std::size_t>(index)] =
                static_cast<unsigned char>(WeightOf(index, static_cast<int>(bits)));
    return weights;
}();

using Colour = std::array<int, kChannels>;

/// Both ends of each pixel, and how much of the second one it has: laid out for vectors.
struct Mixture {
    std::array<Colour, kPixels> a, b;
    std::array<int, kPixels> weights;
};

template <bool kIsSigned>
void Gather(const Bc6hBlock& block, Mixture& mixture) {
    const Bc6hMode& mode = kBc6hModes[static_cast<std::size_t>(block.mode)];
    std::array<Colour, 4> ends{};
    for (std::size_t end = 0; end < mode.Ends(); ++end)
        for (std::size_t channel = 0; channel < 3; ++channel)
            ends[end][channel] = WidenedHdr(block.ends[end][channel], mode.endBits, kIsSigned);
    const Partition partition = PartitionOf(mode.regions, static_cast<std::size_t>(block.partition));
    const auto& weights = kWeights[mode.IndexBits() == 3 ? 0 : 1];
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::size_t region = SubsetOf(partition, i);
        mixture.a[i] = ends[2 * region];
        mixture.b[i] = ends[2 * region + 1];
        mixture.weights[i] = weights[block.indices[i]];
    }
}

template <bool kIsSigned>
void Decode(const unsigned char* bytes, unsigned char* out, std::size_t pitch) {
    std::array<std::uint16_t, kPixels * kChannels> pixels{};
    if (const std::optional<Bc6hBlock> block = UnpackBc6h(bytes, kIsSigned)) {
        Mixture mixture;
        Gather<kIsSigned>(*block, mixture);
        for (std::size_t i = 0; i < kPixels; ++i) {
            const int weight = mixture.weights[i];
            for (std::size_t channel = 0; channel < kChannels; ++channel) {
                const int mixed = (64 - weight) * mixture.a[i][channel] + weight * mixture.b[i][channel] + 32;
                pixels[kChannels * i + channel] = HalfOf<kIsSigned>(mixed >> 6);
            }
        }
    }
    for (std::size_t i = 3; i < pixels.size(); i += kChannels)
        pixels[i] = kOne;
    constexpr std::size_t kRow = kBlockSide * kChannels;
    for (std::size_t y = 0; y < kBlockSide; ++y)
        std::memcpy(out + y * pitch, &pixels[y * kRow], kRow * sizeof(pixels[0]));
}

}  // namespace

void DecodeBc6h(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    Decode<false>(block, out, pitch);
}

void DecodeBc6hSigned(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    Decode<true>(block, out, pitch);
}

}  // namespace Kavra::Common
