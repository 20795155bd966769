#include "readers/dds/DdsCommonLayout.h"

#include "common/PixelFormats.h"
#include "common/SrgbFormats.h"
#include "common/dds/DdsMendedHeader.h"
#include "common/dds/DdsWidening.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace Kavra::Devices::Dds {
namespace {

// --- What the contract's reading does otherwise ----------------------------------------------------------------------

constexpr const char* kSignedIsLight = "signed values are light from -1 to 1 by the host's rules, the lower half black";
constexpr const char* kStaysBlocks = "its blocks are not decoded by the host's rules";
constexpr const char* kPairIsGrey = "red and green are taken for grey and alpha by the host's rules";
constexpr const char* kDivides = "premultiplied colours wrap around where they exceed their alpha by the host's rules";
constexpr const char* kStrayAlpha = "a channel without meaning is taken for alpha by the host's rules";
constexpr const char* kIsCut = "channels of more than 8 bits are cut to 8 by the host's rules";
constexpr const char* kRepeatsBits = "5 and 6 bits are widened to 8 by repeating some of them by the host's rules";
constexpr const char* kLoneRed = "a single channel is drawn in red by the host's rules";
constexpr const char* kUnknownKind = "of a kind of pixels that the host's rules do not know";
constexpr const char* kAlphaIsData = "a fourth channel that is no transparency is taken for alpha by the host's rules";

// --- Blocks ----------------------------------------------------------------------------------------------------------

struct BlockKind {
    EFormat blocks;
    EFormat pixels;
    bool hasAlpha;
    int colourChannels;
    Common::DecodeBlock decode;
    const char* difference;  ///< where the library knows the number
};

constexpr BlockKind kBlockKinds[] = {
    {kBC1, kR8G8B8A8, true, 3, Common::DecodeBc1, nullptr},
    {kBC2, kR8G8B8A8, true, 3, Common::DecodeBc2, nullptr},
    {kBC3, kR8G8B8A8, true, 3, Common::DecodeBc3, nullptr},
    {kBC4, kL8, false, 1, Common::DecodeBc4, nullptr},
    {kBC4Snorm, kL8, false, 1, Common::DecodeBc4Signed, kStaysBlocks},
    {kBC5, kR8G8B8A8, false, 2, Common::DecodeBc5, kPairIsGrey},
    {kBC5Snorm, kR8G8B8A8, false, 2, Common::DecodeBc5Signed, kStaysBlocks},
    {kBC6H, kR16G16B16A16F, false, 3, Common::DecodeBc6h, nullptr},
    {kBC6HSigned, kR16G16B16A16F, false, 3, Common::DecodeBc6hSigned, nullptr},
    {kBC7, kR8G8B8A8, true, 3, Common::DecodeBc7, nullptr},
};

/// Numbers of blocks for which the library has no other than the typed ones.
constexpr bool IsTypeless(std::uint32_t code) {
    constexpr Dxgi kTypeless[] = {kDxgiBC1Typeless, kDxgiBC2Typeless,  kDxgiBC3Typeless, kDxgiBC4Typeless,
                                  kDxgiBC5Typeless, kDxgiBC6HTypeless, kDxgiBC7Typeless};
    return std::ranges::contains(kTypeless, code);
}

std::optional<CommonLayout> BlockLayout(const StoredLayout& stored, std::uint32_t dxgi) {
    const auto* const kind = std::ranges::find(kBlockKinds, Common::WithoutSrgb(stored.format), &BlockKind::blocks);
    if (kind == std::end(kBlockKinds)) return std::nullopt;
    const char* const difference = IsTypeless(dxgi) ? kStaysBlocks : kind->difference;
    return CommonLayout{
        .pixels = {.format = kind->pixels, .hasAlpha = kind->hasAlpha, .unit = stored.unit},
        .decodeBlock = kind->decode,
        .colourChannels = kind->colourChannels,
        .isLeftToLibrary = difference == nullptr,
        .difference = difference,
    };
}

/// What codes mean beyond their number.
void Specialise(CommonLayout& layout, const Header& header) {
    const auto become = [&](Common::DecodeBlock decode, const char* difference) {
        layout.decodeBlock = decode;
        layout.isLeftToLibrary = false;
        layout.difference = difference;
    };
    switch (header.fourCC) {
        case kFourCCDXT2:
        case kFourCCDXT4:
            layout.isPremultiplied = true;
            return become(layout.decodeBlock, kDivides);
        case kFourCCRXGB:
            layout.pixels.hasAlpha = false;
            return become(Common::DecodeRxgb, kStrayAlpha);
        case kFourCCATI2:
            // Writers that store red first say so where others have the number of bits.
            if (header.bitCount != kFourCCA2XY) become(Common::DecodeAti2, kPairIsGrey);
            return;
        default:
            return;
    }
}

// --- Pixels ----------------------------------------------------------------------------------------------------------

constexpr StoredLayout InRows(StoredLayout stored, EFormat format, WidenRow widen) {
    stored.format = format;
    stored.widen = widen;
    return stored;
}

/// Formats that hold signed values as floats become those of 8 or 16 bits around the middle.
CommonLayout AroundMiddle(const StoredLayout& stored) {
    const bool isFine = std::ranges::any_of(stored.masks, [](auto mask) { return std::popcount(mask) > 8; });
    const bool isOne = stored.masks[1] == 0 && stored.masks[2] == 0 && stored.masks[3] == 0;
    CommonLayout layout;
    layout.colourChannels = isOne ? 1 : stored.masks[2] == 0 ? 2 : 3;
    layout.difference = kSignedIsLight;
    const EFormat format = isOne ? (isFine ? kL16 : kL8) : isFine ? kR16G16B16A16 : kR8G8B8A8;
    layout.pixels = InRows(stored, format, isFine ? WidenAroundMiddleToShorts : WidenAroundMiddleToBytes);
    return layout;
}

/// The masks of formats that are stored as they are delivered, but not in the common reading.
constexpr Masks MasksOf(EFormat format) {
    switch (format) {
        case kB8G8R8A8:
            return {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
        case kB8G8R8X8:
            return {0xFF0000, 0xFF00, 0xFF, 0};
        case kR8G8B8X8:
            return {0xFF, 0xFF00, 0xFF0000, 0};
        case kR16G16:
            return {0xFFFF, 0xFFFF0000, 0, 0};
        default:
            return {};
    }
}

int ColourChannels(const StoredLayout& stored) {
    const Common::PixelFormat& facts = Common::FactsOf(stored.format);
    if (facts.channels < 3) return facts.channels;
    const bool isPair = stored.masks[0] != 0 && stored.masks[2] == 0;
    return isPair ? 2 : 3;
}

/// The same pixels in formats that are of use to everyone.
CommonLayout PixelLayout(StoredLayout stored) {
    if (stored.signedChannels != 0) return AroundMiddle(stored);
    CommonLayout layout;
    switch (stored.format) {
        case kB8G8R8A8:
        case kB8G8R8X8:
        case kR8G8B8X8:
            stored.masks = MasksOf(stored.format);
            stored = InRows(stored, kR8G8B8A8, WidenToBytes);
            break;
        case kR16G16:
            stored.masks = MasksOf(stored.format);
            stored = InRows(stored, kR16G16B16A16, WidenToShorts);
            layout.difference = kPairIsGrey;
            break;
        case kR32G32B32F:
            stored = InRows(stored, kR32G32B32A32F, WidenThreeFloats);
            break;
        case kA8:
            stored.format = kL8;
            stored.hasAlpha = false;
            break;
        default:
            break;
    }
    layout.pixels = stored;
    layout.colourChannels = ColourChannels(stored);
    return layout;
}

// --- Masks -----------------------------------------------------------------------------------------------------------

/// A single channel is grey, whatever it is called.
void MakeGrey(CommonLayout& layout, const Header& header) {
    Masks& masks = layout.pixels.masks;
    masks[1] = masks[2] = masks[0];
    layout.colourChannels = 1;
    layout.difference = kLoneRed;
    if (header.bitCount != static_cast<unsigned>(std::popcount(masks[0])) || masks[3] != 0) return;
    if (header.bitCount == 8) layout.pixels = InRows(layout.pixels, kL8, nullptr);
    if (header.bitCount == 16) layout.pixels = InRows(layout.pixels, kL16, nullptr);
}

/// Which channels the library widens as everybody does: those of 8 bits at most, but for 5 and 6.
const char* MaskDifference(const Header& header, bool hasAlpha) {
    const std::uint32_t masks[] = {header.redMask, header.greenMask, header.blueMask, hasAlpha ? header.alphaMask : 0};
    const auto has = [&](auto isSo) {
        return std::ranges::any_of(masks, [&](std::uint32_t mask) { return isSo(std::popcount(mask)); });
    };
    if (has([](int bits) { return bits > 8; })) return kIsCut;
    if (has([](int bits) { return bits == 5 || bits == 6; })) return kRepeatsBits;
    return nullptr;
}

std::optional<CommonLayout> MaskedLayout(const Header& header) {
    const std::optional<StoredLayout> stored = FindLayout(header);
    if (!stored) return std::nullopt;
    CommonLayout layout = PixelLayout(*stored);
    const bool isGrey = (header.pixelFlags & kPixelLuminance) != 0, isYuv = (header.pixelFlags & kPixelYuv) != 0;
    if (isGrey) layout.colourChannels = 1;
    if (layout.pixels.signedChannels != 0 || isYuv) return layout;
    const bool isLone =
        (header.pixelFlags & kPixelRgb) != 0 && header.redMask != 0 && header.greenMask == 0 && header.blueMask == 0;
    if (isLone) {
        MakeGrey(layout, header);
        return layout;
    }
    // The host's reader is asked for grey of 16 bits.
    const bool isGrey16 = isGrey && layout.pixels.format == kL16;
    layout.difference = isGrey16 ? nullptr : MaskDifference(header, layout.pixels.hasAlpha);
    layout.isLeftToLibrary = layout.difference == nullptr;
    return layout;
}

// --- Palettes --------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kD3dA8P8 = 40, kD3dP8 = 41;

/// Indices of 8 bits, alone or with an alpha behind each.
std::optional<CommonLayout> PaletteLayout(const Header& header) {
    const bool isCode = header.HasFourCC() && (header.fourCC == kD3dP8 || header.fourCC == kD3dA8P8);
    const bool isFlag = (header.pixelFlags & kPixelPalette) != 0 && (header.bitCount == 8 || header.bitCount == 16);
    if (!isCode && !isFlag) return std::nullopt;
    const bool isPair = isCode ? header.fourCC == kD3dA8P8 : header.bitCount == 16;
    return CommonLayout{
        .pixels = {.format = kR8G8B8A8, .hasAlpha = true, .unit = PixelUnit(isPair ? 2 : 1)},
        .hasPalette = true,
        .difference = kUnknownKind,
    };
}

// --- All together ----------------------------------------------------------------------------------------------------

std::optional<CommonLayout> LayoutOf(const Header& header) {
    if (!header.isExtended) {
        if (const auto palette = PaletteLayout(header)) return palette;
        if (!header.HasFourCC()) return MaskedLayout(header);
    }
    if (const std::optional<Dxgi> number = WritersNumber(header)) {
        Header known = header;
        known.isExtended = true;
        known.dxgiFormat = *number;
        std::optional<CommonLayout> layout = LayoutOf(known);
        layout->isLeftToLibrary = false;
        layout->difference = kUnknownKind;
        return layout;
    }
    const std::optional<StoredLayout> stored = FindLayout(header);
    if (!stored) return std::nullopt;
    const std::uint32_t dxgi = header.isExtended ? header.dxgiFormat : DxgiOfLegacy(header.fourCC);
    if (stored->IsCompressed()) {
        std::optional<CommonLayout> layout = BlockLayout(*stored, dxgi);
        if (layout && !header.isExtended) Specialise(*layout, header);
        return layout;
    }
    constexpr Dxgi kShownByLibrary[] = {kDxgiR8G8B8A8Unorm,    kDxgiR8G8B8A8UnormSrgb, kDxgiR16Unorm,
                                        kDxgiB8G8R8A8Unorm,    kDxgiB8G8R8X8Unorm,     kDxgiB8G8R8A8UnormSrgb,
                                        kDxgiB8G8R8X8UnormSrgb};
    CommonLayout layout = PixelLayout(*stored);
    if (!header.isExtended && header.fourCC == kD3dCxV8U8) {
        layout.pixels.widen = WidenNormals;
        layout.colourChannels = 3;
    }
    layout.isLeftToLibrary = header.isExtended && std::ranges::contains(kShownByLibrary, dxgi);
    if (header.isExtended && dxgi == kDxgiR10G10B10A2Unorm) layout.difference = kIsCut;
    return layout;
}

void ApplyAlphaMode(CommonLayout& layout, AlphaMode mode) {
    if (!layout.pixels.hasAlpha) return;
    if (mode == kAlphaModePremultiplied) layout.isPremultiplied = true;
    if (mode != kAlphaModeOpaque && mode != kAlphaModeCustom) return;
    layout.pixels.hasAlpha = false;
    layout.dropsAlpha = true;
    layout.isLeftToLibrary = false;
    if (mode == kAlphaModeCustom && layout.difference == nullptr) layout.difference = kAlphaIsData;
}

}  // namespace

std::optional<CommonLayout> FindCommonLayout(const Header& header) {
    const Header mended = Mended(header);
    std::optional<CommonLayout> layout = LayoutOf(mended);
    if (!layout) return std::nullopt;
    if (mended != header) {
        layout->isLeftToLibrary = false;
        layout->difference = kUnknownKind;
    }
    if (header.isExtended) ApplyAlphaMode(*layout, header.Alpha());
    return layout;
}

}  // namespace Kavra::Devices::Dds
