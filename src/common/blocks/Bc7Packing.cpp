#include "common/blocks/Bc7Packing.h"

#include "common/blocks/BlockBits.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace Kavra::Common {

namespace {

void PutEnds(const Bc7Block& block, const Bc7Mode& mode, BitWriter& bits) {
    const auto ends = mode.Ends();
    for (std::size_t channel = 0; channel < (mode.alphaBits > 0 ? 4 : 3); ++channel)
        for (std::size_t end = 0; end < ends; ++end)
            bits.Put(block.ends[end][channel], channel == 3 ? mode.alphaBits : mode.colourBits);
    const std::size_t step = mode.lowBits == LowBits::kPerSubset ? 2 : 1;
    for (std::size_t end = 0; mode.lowBits != LowBits::kNone && end < ends; end += step)
        bits.Put(block.lowBits[end], 1);
}

bool IsAnchor(const Bc7Block& block, const Bc7Mode& mode, std::size_t pixel) {
    const auto number = static_cast<std::size_t>(block.partition);
    const std::size_t subset = SubsetOf(PartitionOf(mode.subsets, number), pixel);
    return AnchorOf(mode.subsets, number, subset) == pixel;
}

void PutIndices(const Bc7Block& block, const Bc7Mode& mode, BitWriter& bits) {
    for (std::size_t i = 0; i < block.indices.size(); ++i)
        bits.Put(block.indices[i], mode.indexBits - (IsAnchor(block, mode, i) ? 1 : 0));
    for (std::size_t i = 0; mode.alphaIndexBits > 0 && i < block.alphaIndices.size(); ++i)
        bits.Put(block.alphaIndices[i], mode.alphaIndexBits - (i == 0 ? 1 : 0));
}

using Indices = std::array<unsigned char, 16>;

/// Turns the indices of a subset where the highest bit of its anchor is set. Whether it did.
bool TurnIndices(Indices& indices, int bits, Partition partition, std::size_t subset, std::size_t anchor) {
    const int last = (1 << bits) - 1;
    if (indices[anchor] <= last / 2) return false;
    for (std::size_t i = 0; i < indices.size(); ++i)
        if (SubsetOf(partition, i) == subset) indices[i] = static_cast<std::uint8_t>(last - indices[i]);
    return true;
}

/// Modes with two sets of indices have one subset; the first set, of `indexBits`, is the colours' unless selected.
void TurnSingleSubset(Bc7Block& block, const Bc7Mode& mode) {
    const bool colours = TurnIndices(block.indices, mode.indexBits, 0, 0, 0);
    const bool alphas = TurnIndices(block.alphaIndices, mode.alphaIndexBits, 0, 0, 0);
    const bool isSelected = block.selection != 0;
    if (isSelected ? alphas : colours)
        for (std::size_t channel = 0; channel < 3; ++channel)
            std::swap(block.ends[0][channel], block.ends[1][channel]);
    if (isSelected ? colours : alphas) std::swap(block.ends[0][3], block.ends[1][3]);
}

}  // namespace

void PackBc7(const Bc7Block& block, unsigned char* out) {
    const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(block.mode)];
    BitWriter bits;
    bits.Put(1U << block.mode, block.mode + 1);
    bits.Put(static_cast<unsigned>(block.partition), mode.partitionBits);
    bits.Put(static_cast<unsigned>(block.rotation), mode.rotationBits);
    bits.Put(static_cast<unsigned>(block.selection), mode.selectionBits);
    PutEnds(block, mode, bits);
    PutIndices(block, mode, bits);
    bits.Store(out);
}

std::optional<Bc7Block> UnpackBc7(const unsigned char* bytes) {
    if (bytes[0] == 0) return std::nullopt;
    Bc7Block block;
    block.mode = std::countr_zero(bytes[0]);
    const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(block.mode)];
    BitReader bits(bytes);
    const auto take = [&](int count) { return static_cast<std::uint8_t>(bits.Take(count)); };
    (void)take(block.mode + 1);
    block.partition = take(mode.partitionBits);
    block.rotation = take(mode.rotationBits);
    block.selection = take(mode.selectionBits);
    const auto ends = mode.Ends();
    for (std::size_t channel = 0; channel < (mode.alphaBits > 0 ? 4 : 3); ++channel)
        for (std::size_t end = 0; end < ends; ++end)
            block.ends[end][channel] = take(channel == 3 ? mode.alphaBits : mode.colourBits);
    for (std::size_t end = 0; mode.lowBits != LowBits::kNone && end < ends; ++end) {
        const bool isShared = mode.lowBits == LowBits::kPerSubset && end % 2 == 1;
        block.lowBits[end] = isShared ? block.lowBits[end - 1] : take(1);
    }
    block.indices = TakeIndices(bits, mode.indexBits, mode.subsets, static_cast<std::size_t>(block.partition));
    if (mode.alphaIndexBits > 0) block.alphaIndices = TakeIndices(bits, mode.alphaIndexBits, 1, 0);
    return block;
}

void TurnEndsOfBc7(Bc7Block& block) {
    const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(block.mode)];
    if (mode.alphaIndexBits > 0) return TurnSingleSubset(block, mode);
    const auto number = static_cast<std::size_t>(block.partition);
    const Partition partition = PartitionOf(mode.subsets, number);
    for (std::size_t subset = 0; subset < static_cast<std::size_t>(mode.subsets); ++subset) {
        if (!TurnIndices(block.indices, mode.indexBits, partition, subset, AnchorOf(mode.subsets, number, subset)))
            continue;
        std::swap(block.ends[2 * subset], block.ends[2 * subset + 1]);
        std::swap(block.lowBits[2 * subset], block.lowBits[2 * subset + 1]);
    }
}

}  // namespace Kavra::Common
