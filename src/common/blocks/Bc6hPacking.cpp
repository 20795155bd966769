#include "common/blocks/Bc6hLayout.h"
#include "common/blocks/BlockBits.h"

#include <algorithm>

namespace Kavra::Common {

namespace {

void PutField(const Bc6hField& field, std::uint32_t value, BitWriter& bits) {
    for (unsigned i = 0; i < field.bits; ++i) {
        const unsigned bit = field.isReversed ? field.first - i : field.first + i;
        bits.Put(value >> bit & 1, 1);
    }
}

std::uint32_t TakeField(const Bc6hField& field, BitReader& bits) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < field.bits; ++i)
        value |= bits.Take(1) << (field.isReversed ? field.first - i : field.first + i);
    return value;
}

std::int32_t SignExtended(std::int32_t value, int bits) {
    const std::int32_t sign = 1 << (bits - 1);
    return ((value & ((1 << bits) - 1)) ^ sign) - sign;
}

/// Makes values of differences and of bits, in place.
void FinishEnds(const Bc6hMode& mode, bool isSigned, Bc6hBlock& block) {
    const auto ends = mode.Ends();
    for (std::size_t channel = 0; channel < 3; ++channel) {
        std::int32_t& first = block.ends[0][channel];
        for (std::size_t end = 1; end < ends; ++end) {
            std::int32_t& value = block.ends[end][channel];
            if (mode.isDelta)
                value = (first + SignExtended(value, mode.deltaBits[channel])) & ((1 << mode.endBits) - 1);
            if (isSigned) value = SignExtended(value, mode.endBits);
        }
        if (isSigned) first = SignExtended(first, mode.endBits);
    }
}

/// The two bits of the short codes tell these from the five bits of all others.
std::optional<std::size_t> ModeOf(const unsigned char* block) {
    const unsigned bits = (block[0] & 3) < 2 ? block[0] & 3 : block[0] & 31;
    const auto* const found = std::ranges::find(kBc6hModes, bits, &Bc6hMode::code);
    if (found == kBc6hModes.end()) return std::nullopt;
    return static_cast<std::size_t>(found - kBc6hModes.begin());
}

}  // namespace

std::optional<Bc6hBlock> UnpackBc6h(const unsigned char* bytes, bool isSigned) {
    const std::optional<std::size_t> number = ModeOf(bytes);
    if (!number) return std::nullopt;
    const Bc6hMode& mode = kBc6hModes[*number];
    Bc6hBlock block;
    block.mode = static_cast<int>(*number);
    BitReader bits(bytes);
    (void)bits.Take(mode.codeBits);
    for (const Bc6hField& field : kBc6hFields[*number])
        block.ends[field.end][field.channel] |= static_cast<std::int32_t>(TakeField(field, bits));
    FinishEnds(mode, isSigned, block);
    if (mode.regions == 2) block.partition = static_cast<int>(bits.Take(5));
    block.indices = TakeIndices(bits, mode.IndexBits(), mode.regions, static_cast<std::size_t>(block.partition));
    return block;
}

void PackBc6h(const Bc6hBlock& block, unsigned char* out) {
    const auto number = static_cast<std::size_t>(block.mode);
    const Bc6hMode& mode = kBc6hModes[number];
    BitWriter bits;
    bits.Put(mode.code, mode.codeBits);
    for (const Bc6hField& field : kBc6hFields[number]) {
        const std::int32_t value = block.ends[field.end][field.channel];
        const std::int32_t from = mode.isDelta && field.end > 0 ? block.ends[0][field.channel] : 0;
        PutField(field, static_cast<std::uint32_t>(value - from), bits);
    }
    const auto partition = static_cast<std::size_t>(block.partition);
    if (mode.regions == 2) bits.Put(static_cast<std::uint32_t>(partition), 5);
    for (std::size_t i = 0; i < block.indices.size(); ++i) {
        const std::size_t region = SubsetOf(PartitionOf(mode.regions, partition), i);
        const bool isAnchor = AnchorOf(mode.regions, partition, region) == i;
        bits.Put(block.indices[i], mode.IndexBits() - (isAnchor ? 1 : 0));
    }
    bits.Store(out);
}

}  // namespace Kavra::Common
