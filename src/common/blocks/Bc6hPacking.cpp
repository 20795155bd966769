#include "common/blocks/BitWriter.h"
#include "common/blocks/Bc6hLayout.h"

namespace Kavra::Common {

namespace {

void PutField(const Bc6hField& field, std::uint32_t value, BitWriter& bits) {
    for (unsigned i = 0; i < field.bits; ++i) {
        const unsigned bit = field.isReversed ? field.first - i : field.first + i;
        bits.Put(value >> bit & 1, 1);
    }
}

}  // namespace

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
