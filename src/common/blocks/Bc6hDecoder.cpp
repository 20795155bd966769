#include "common/blocks/Bc6hLayout.h"
#include "common/blocks/BlockDecoders.h"

#include <array>
#include <cstring>

namespace Kavra::Common {
namespace {

constexpr std::uint16_t kOne = 0x3C00;  // as a half

/// The bits of the half that a component of 16 bits stands for: 31/64 of it, of signed ones 31/32.
std::uint16_t HalfOf(int wide, bool isSigned) {
    if (!isSigned) return static_cast<std::uint16_t>(wide * 31 >> 6);
    const int size = (wide < 0 ? -wide : wide) * 31 >> 5;
    return static_cast<std::uint16_t>(wide < 0 && size > 0 ? 0x8000 | size : size);
}

using HalfPixel = std::array<std::uint16_t, 4>;

void Decode(const unsigned char* bytes, bool isSigned, unsigned char* out, std::size_t pitch) {
    using Colour = std::array<int, 3>;
    std::array<HalfPixel, kBlockSide * kBlockSide> pixels;
    pixels.fill({0, 0, 0, kOne});
    if (const std::optional<Bc6hBlock> block = UnpackBc6h(bytes, isSigned)) {
        const Bc6hMode& mode = kBc6hModes[static_cast<std::size_t>(block->mode)];
        std::array<Colour, 4> ends{};
        for (std::size_t end = 0; end < mode.Ends(); ++end)
            for (std::size_t channel = 0; channel < 3; ++channel)
                ends[end][channel] = WidenedHdr(block->ends[end][channel], mode.endBits, isSigned);
        const Partition partition = PartitionOf(mode.regions, static_cast<std::size_t>(block->partition));
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const std::size_t region = SubsetOf(partition, i);
            const int weight = WeightOf(block->indices[i], mode.IndexBits());
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const int a = ends[2 * region][channel], b = ends[2 * region + 1][channel];
                pixels[i][channel] = HalfOf(((64 - weight) * a + weight * b + 32) >> 6, isSigned);
            }
        }
    }
    for (std::size_t y = 0; y < kBlockSide; ++y)
        std::memcpy(out + y * pitch, &pixels[y * kBlockSide], kBlockSide * sizeof(HalfPixel));
}

}  // namespace

void DecodeBc6h(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    Decode(block, false, out, pitch);
}

void DecodeBc6hSigned(const unsigned char* block, unsigned char* out, std::size_t pitch) {
    Decode(block, true, out, pitch);
}

}  // namespace Kavra::Common
