#include "readers/pcx/PcxComparison.h"

#include "readers/SampleTables.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <numeric>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

/// The pixel of each value that a file can hold, as the contract has them. Those without a colour are 0.
Table256<std::uint32_t> ContractPixels(const PcxHeader& header, const PcxPalette& palette) {
    std::array<unsigned char, 256> indices{};
    std::iota(indices.begin(), indices.end(), static_cast<unsigned char>(0));
    if (header.Bits() == 1) std::swap(indices[0], indices[1]);  // a set bit is the first colour
    const PcxNibbles nibbles = CurrentPcxNibbles();
    if (header.bitsPerPlane == 4 && header.planes == 1) std::ranges::copy(nibbles, indices.begin());
    std::array<unsigned char, sizeof(Table256<std::uint32_t>)> bytes{};
    palette.Colour(indices, bytes);
    return std::bit_cast<Table256<std::uint32_t>>(bytes);
}

}  // namespace

PcxComparison::PcxComparison(ByteSource& source, const PcxHeader& header, const PcxPalette* palette)
    : mHeader(header), mRow(4 * static_cast<std::size_t>(header.Width())) {
    const auto common = ReadCommonPcxHeader(source);
    if (!common) return;
    mColours = FindCommonPcxColours(source, *common);
    mRows.emplace(source, *common, mColours);
    if (header.bytesPerLine == 0) {
        mHow = "lines that have no length hold nothing by the host's rules";
    } else if (header.IsPlanar() && header.bitsPerPlane > 1) {
        mHow = "planes of several bits a pixel count one by the host's rules";
    } else if (palette != nullptr) {
        mHow = HowColoursDiffer(*palette);
    }
}

const char* PcxComparison::HowColoursDiffer(const PcxPalette& palette) const {
    const Table256<std::uint32_t> ours = ContractPixels(mHeader, palette);
    const auto first = std::span(ours).first(std::size_t{1} << mHeader.Bits());
    const auto at = std::ranges::mismatch(first, mColours.pixels).in1;
    if (at == first.end()) return nullptr;
    if (mHeader.Bits() == 1) return "set bits are drawn in the first of two colours by the host's rules";
    if (*at == 0) return "pixels whose value has no colour of its own stay empty by the host's rules";
    return "colours are taken from another palette by the host's rules";
}

void PcxComparison::Look(std::span<const unsigned char> pixels) {
    if (!mRows || mIsOther) return;
    mRows->Next(mRow);
    mIsOther = !std::ranges::equal(pixels, mRow);
}

const char* PcxComparison::Difference(const PcxLines& lines) const {
    if (!mIsOther) return nullptr;
    if (mHow != nullptr) return mHow;
    if (!lines.WereInStep()) return "padding and runs at the end of a line go into the next one by the host's rules";
    if (lines.Position() > mColours.dataEnd) return "the palette is read as pixels by the host's rules";
    if (lines.EndedEarly()) return "pixels that are missing repeat the row above by the host's rules";
    return "rows are read in another way by the host's rules";
}

}  // namespace Kavra::Devices
