#include "readers/pcx/PcxPalette.h"

#include <algorithm>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

constexpr std::size_t kTripleBytes = 3;
constexpr std::size_t kTrailingBytes = 256 * kTripleBytes;
constexpr std::size_t kMarkerBytes = 1;  // before the trailing palette, whatever its value
constexpr unsigned char kOpaque = 255;

}  // namespace

PcxPalette::PcxPalette(std::span<const unsigned char> triples) : mCount(triples.size() / kTripleBytes) {
    for (std::size_t i = 0; i < mCount; ++i) {
        const auto triple = triples.subspan(i * kTripleBytes, kTripleBytes);
        mEntries[i] = {triple[0], triple[1], triple[2], kOpaque};
    }
}

std::optional<PcxPalette> PcxPalette::Read(ByteSource& source, const PcxHeader& header) {
    if (header.HasTrailingPalette()) {
        if (source.Size() < kMarkerBytes + kTrailingBytes) return std::nullopt;
        const auto triples = source.BytesAt<kTrailingBytes>(source.Size() - kTrailingBytes);
        return triples ? std::optional(PcxPalette(*triples)) : std::nullopt;
    }
    if (header.Bits() != 1) return PcxPalette(header.palette);
    PcxPalette palette(std::span(header.palette).first<2 * kTripleBytes>());
    palette.TellTwoColoursApart();
    return palette;
}

void PcxPalette::TellTwoColoursApart() {
    if (mEntries[0] != mEntries[1]) return;
    for (unsigned char& component : std::span(mEntries[1]).first<kTripleBytes>())
        --component;
}

bool PcxPalette::IsGreyRamp() const {
    for (std::size_t i = 0; i < mCount; ++i) {
        const auto grey = static_cast<unsigned char>(i);
        if (mEntries[i] != Entry{grey, grey, grey, kOpaque}) return false;
    }
    return true;
}

void PcxPalette::Colour(std::span<const unsigned char> indices, std::span<unsigned char> pixels) const {
    auto pixel = pixels.begin();
    for (const unsigned char index : indices) {
        if (index < mCount) std::ranges::copy(mEntries[index], pixel);
        pixel += sizeof(Entry);
    }
}

}  // namespace Kavra::Devices
