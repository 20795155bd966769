#include "readers/pcx/PcxDifferences.h"

#include "readers/SampleTables.h"
#include "readers/pcx/PcxCommonColours.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <span>

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

const char* HowColoursDiffer(const PcxHeader& header, std::uint32_t unlike) {
    if (header.Bits() == 1) return "set bits are drawn in the first of two colours by the host's rules";
    if (unlike == 0) return "pixels whose value has no colour of its own stay empty by the host's rules";
    return "colours are taken from another palette by the host's rules";
}

}  // namespace

PcxDifferences::PcxDifferences(Reading& reading, ByteSource& source, const PcxHeader& header, const PcxPalette* palette)
    : mReading(reading), mHeader(header) {
    const auto common = ReadCommonPcxHeader(source);
    if (!common) return;  // which shows nothing at all
    mDataEnd = source.Size();
    if (header.bytesPerLine == 0) (void)mReading.IsCommon("lines that have no length hold nothing by the host's rules");
    if (header.IsPlanar() && header.bitsPerPlane > 1)
        (void)mReading.IsCommon("planes of several bits a pixel count one by the host's rules");
    if (palette != nullptr) CompareColours(source, *common, *palette);
}

void PcxDifferences::CompareColours(ByteSource& source, const PcxHeader& common, const PcxPalette& palette) {
    const PcxCommonColours colours = FindCommonPcxColours(source, common);
    mDataEnd = colours.dataEnd;
    const Table256<std::uint32_t> ours = ContractPixels(mHeader, palette);
    for (std::size_t i = 0; i < std::size_t{1} << mHeader.Bits(); ++i) {
        if (ours[i] != colours.pixels[i]) (void)mReading.IsCommon(HowColoursDiffer(mHeader, ours[i]));
    }
}

void PcxDifferences::CompareLines(const PcxLines& lines) {
    if (mDataEnd == 0) return;
    if (!lines.WereInStep())
        (void)mReading.IsCommon("padding and runs at the end of a line go into the next one by the host's rules");
    if (lines.Position() > mDataEnd) (void)mReading.IsCommon("the palette is read as pixels by the host's rules");
    const bool keepsRowAbove = mHeader.Bits() != 24 && mHeader.Bits() != 1;
    if (keepsRowAbove && lines.EndedEarly())
        (void)mReading.IsCommon("pixels that are missing repeat the row above by the host's rules");
}

}  // namespace Kavra::Devices
