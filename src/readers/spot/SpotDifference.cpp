#include "readers/spot/SpotDifference.h"

#include "readers/spot/SpotCommonHeader.h"
#include "readers/spot/SpotCommonRows.h"
#include "readers/spot/SpotKernels.h"
#include "readers/spot/SpotReader.h"

namespace Kavra::Devices {

namespace {

/// Whether both headers have the samples at the same places.
bool LieAlike(const SpotHeader& a, const SpotHeader& b) {
    const bool isOneBand = a.bands == 1;
    const bool haveShape = a.columns == b.columns && a.rows == b.rows && a.bands == b.bands && a.bits == b.bits;
    const bool haveStarts = a.skipBytes == b.skipBytes && a.recordSkipBytes == b.recordSkipBytes;
    if (!haveShape || !haveStarts || (!isOneBand && a.layout != b.layout)) return false;
    if (!isOneBand && a.layout == SpotLayout::kSequential) {
        return a.bandRowBytes == b.bandRowBytes && a.bandGapBytes == b.bandGapBytes;
    }
    return a.totalRowBytes == b.totalRowBytes &&
           (isOneBand || a.layout == SpotLayout::kByPixel || a.bandRowBytes == b.bandRowBytes);
}

/// The pixels of 8-bit values in the contract's reading.
PixelTable ContractPixels(const SpotHeader& header) {
    if (header.colourEntries > 0) return ColourTable(header.palette);
    PixelTable pixels;
    for (std::size_t value = 0; value < pixels.size(); ++value) {
        const auto grey = header.greyEntries > 0 ? header.palette[value].red : static_cast<std::uint8_t>(value);
        pixels[value] = PackedPixel(grey, grey, grey, 255);
    }
    return pixels;
}

/// Whether one band of 8 bits has a value whose pixels differ.
bool HasOtherValue(Common::ByteSource& file, const SpotHeader& contract, const SpotHeader& common) {
    const PixelTable host = ContractPixels(contract);
    SpotHeader marked = common;
    marked.colours = SpotValuePixels(common);
    bool isAny = false;
    for (std::size_t value = 0; value < host.size(); ++value) {
        const bool isOther = host[value] != marked.colours[value];
        isAny |= isOther;
        marked.colours[value] = isOther ? 0 : PackedPixel(0, 0, 0, 255);
    }
    return isAny && HasTransparentPixel(file, marked);
}

/// Whether a palette changes the colours of three bands.
bool IsMapping(const SpotHeader& header) {
    return header.greyEntries > 0 && header.palette != GreyRamp();
}

constexpr const char* kShowsNoData = "pixels without data are shown as their numbers by the host's rules";

/// Of two headers for the same samples.
const char* HowPixelsDiffer(Common::ByteSource& file, const SpotHeader& contract, const SpotHeader& common) {
    const bool isSeveral = contract.bits > 8;
    if (!LieAlike(contract, common))
        return "what the header says of the samples is taken otherwise by the host's rules";
    if (isSeveral && contract.bands > 1) return "each band is a picture in grey by the host's rules";
    if (isSeveral && common.bigEndian) return "numbers begin with their lowest byte by the host's rules";
    const bool isSigned = common.sampleKind == SampleKind::kSigned8 || common.sampleKind == SampleKind::kSigned16;
    if (isSigned && !common.fitsWords) return "numbers have no sign by the host's rules";
    if (isSeveral && !common.colours.empty()) return "only 8 bits have a palette by the host's rules";
    if (contract.sampleKind != common.sampleKind && !isSigned)
        return "what a sample is is told otherwise by the host's rules";
    const bool mapsBands = contract.bands == 3 && IsMapping(contract);
    if (mapsBands) return "the palette beside them changes three bands by the host's rules";
    if (contract.bands == 1 && contract.bits == 8) {
        const bool hasPalette = !common.colours.empty() || contract.greyEntries > 0 || contract.colourEntries > 0;
        if (!HasOtherValue(file, contract, common)) return nullptr;
        return hasPalette ? "the palette is read otherwise by the host's rules" : kShowsNoData;
    }
    const bool isTransparent = common.noData && SpotCommonFormat(common) != kR32F && HasTransparentPixel(file, common);
    return isTransparent ? kShowsNoData : nullptr;
}

}  // namespace

const char* HowSpotDiffers(const std::wstring& path, const SpotHeader* contract) {
    const KString name(path.c_str());
    Common::Result<PictureFiles> files = OpenSpotCommonFiles(name);
    if (!files || AreSpotCommon(*files) != SpotFiles::kWhole) return nullptr;
    Common::Result<SpotHeader> common = ReadSpotCommonHeader(*files);
    if (!common) return nullptr;
    if (contract == nullptr) return "samples of this depth are not shown by the host's rules";
    if (PathWithExtension(name, L".bil") != path) {
        return "the samples are those of the file that ends in .bil by the host's rules";
    }
    AddSpotColours(name, *common);
    LookAtIntegers(files->source, *common);
    return HowPixelsDiffer(files->source, *contract, *common);
}

}  // namespace Kavra::Devices
