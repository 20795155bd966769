#include "frame/host/devices/DdsPixelLayouts.h"

#include "frame/host/devices/DdsWidening.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices::Dds {
namespace {

constexpr PixelLayout Plain(EFormat format, std::uint8_t bytes, bool hasAlpha = false) {
    return {.format = format, .hasAlpha = hasAlpha, .unitBytes = bytes};
}

constexpr PixelLayout Blocks(EFormat format, std::uint8_t bytes, bool hasAlpha = false) {
    return {.format = format, .hasAlpha = hasAlpha, .unitBytes = bytes, .unitWidth = 4, .unitHeight = 4};
}

constexpr PixelLayout Pairs(WidenRow widen) {
    return {.format = kR8G8B8A8, .unitBytes = 4, .unitWidth = 2, .widen = widen};
}

constexpr PixelLayout Words(WidenRow widen, bool hasAlpha = false) {
    return {.format = kR16G16B16A16F, .hasAlpha = hasAlpha, .unitBytes = 4, .widen = widen};
}

constexpr PixelLayout Masked(EFormat format, WidenRow widen, std::uint8_t bytes, const Masks& masks) {
    return {.format = format, .hasAlpha = masks[3] != 0, .unitBytes = bytes, .widen = widen, .masks = masks};
}

/// All channels signed.
constexpr PixelLayout Signed(EFormat format, std::uint8_t bytes, int channels, int bits) {
    Masks masks{};
    for (int c = 0; c < channels; ++c)
        masks[c] = ((std::uint64_t{1} << bits) - 1) << (c * bits);
    PixelLayout layout = Masked(format, bits > 11 ? WidenToFloats : WidenToHalfs, bytes, masks);
    layout.signedChannels = 0xf;
    return layout;
}

struct DxgiRow {
    std::uint32_t code;
    PixelLayout layout;
};

/// DXGI_FORMAT numbers (https://learn.microsoft.com/windows/win32/api/dxgiformat/ne-dxgiformat-dxgi_format). The first
/// row of an EFormat is the number it is written as. A typeless number is read as the first typed one of its family;
/// unsigned integers have the bytes of the normalised ones and are delivered as they. There is no pixel format
/// for signed and 32-bit integers, nor for depth with stencil, planes and palettes.
constexpr DxgiRow kDxgiRows[] = {
    {2, Plain(kR32G32B32A32F, 16, true)},
    {1, Plain(kR32G32B32A32F, 16, true)},
    {6, Plain(kR32G32B32F, 12)},
    {5, Plain(kR32G32B32F, 12)},
    {10, Plain(kR16G16B16A16F, 8, true)},
    {9, Plain(kR16G16B16A16F, 8, true)},
    {11, Plain(kR16G16B16A16, 8, true)},
    {12, Plain(kR16G16B16A16, 8, true)},
    {13, Signed(kR32G32B32A32F, 8, 4, 16)},
    {16, Plain(kR32G32F, 8)},
    {15, Plain(kR32G32F, 8)},
    {23, Masked(kR16G16B16A16, WidenToShorts, 4, {0x3ff, 0xffc00, 0x3ff00000, 0xc0000000})},
    {24, Masked(kR16G16B16A16, WidenToShorts, 4, {0x3ff, 0xffc00, 0x3ff00000, 0xc0000000})},
    {26, Words(WidenPackedFloats)},
    {28, Plain(kR8G8B8A8, 4, true)},
    {27, Plain(kR8G8B8A8, 4, true)},
    {29, Plain(kR8G8B8A8, 4, true)},
    {30, Plain(kR8G8B8A8, 4, true)},
    {31, Signed(kR16G16B16A16F, 4, 4, 8)},
    {34, Plain(kR16G16F, 4)},
    {33, Plain(kR16G16F, 4)},
    {35, Plain(kR16G16, 4)},
    {36, Plain(kR16G16, 4)},
    {37, Signed(kR32G32F, 4, 2, 16)},
    {41, Plain(kR32F, 4)},
    {39, Plain(kR32F, 4)},
    {40, Plain(kR32F, 4)},
    {48, Masked(kR8G8B8A8, WidenToBytes, 2, {0xff, 0xff00, 0, 0})},
    {49, Masked(kR8G8B8A8, WidenToBytes, 2, {0xff, 0xff00, 0, 0})},
    {50, Masked(kR8G8B8A8, WidenToBytes, 2, {0xff, 0xff00, 0, 0})},
    {51, Signed(kR16G16F, 2, 2, 8)},
    {54, Plain(kR16F, 2)},
    {53, Plain(kR16F, 2)},
    {56, Plain(kR16, 2)},
    {55, Plain(kR16, 2)},
    {57, Plain(kR16, 2)},
    {58, Signed(kR32F, 2, 1, 16)},
    {61, Plain(kR8, 1)},
    {60, Plain(kR8, 1)},
    {62, Plain(kR8, 1)},
    {63, Signed(kR16F, 1, 1, 8)},
    {65, Plain(kA8, 1, true)},
    {67, Words(WidenSharedExponent)},
    {68, Pairs(WidenRgbg)},
    {69, Pairs(WidenGrgb)},
    {71, Blocks(kBC1, 8, true)},
    {70, Blocks(kBC1, 8, true)},
    {72, Blocks(kBC1Srgb, 8, true)},
    {74, Blocks(kBC2, 16, true)},
    {73, Blocks(kBC2, 16, true)},
    {75, Blocks(kBC2Srgb, 16, true)},
    {77, Blocks(kBC3, 16, true)},
    {76, Blocks(kBC3, 16, true)},
    {78, Blocks(kBC3Srgb, 16, true)},
    {80, Blocks(kBC4, 8)},
    {79, Blocks(kBC4, 8)},
    {81, Blocks(kBC4Snorm, 8)},
    {83, Blocks(kBC5, 16)},
    {82, Blocks(kBC5, 16)},
    {84, Blocks(kBC5Snorm, 16)},
    {85, Masked(kR8G8B8A8, WidenToBytes, 2, {0xf800, 0x7e0, 0x1f, 0})},
    {86, Masked(kR8G8B8A8, WidenToBytes, 2, {0x7c00, 0x3e0, 0x1f, 0x8000})},
    {87, Plain(kB8G8R8A8, 4, true)},
    {90, Plain(kB8G8R8A8, 4, true)},
    {91, Plain(kB8G8R8A8, 4, true)},
    {88, Plain(kB8G8R8X8, 4)},
    {92, Plain(kB8G8R8X8, 4)},
    {93, Plain(kB8G8R8X8, 4)},
    {89, Words(WidenExtendedRange, true)},
    {95, Blocks(kBC6H, 16)},
    {94, Blocks(kBC6H, 16)},
    {96, Blocks(kBC6HSigned, 16)},
    {98, Blocks(kBC7, 16, true)},
    {97, Blocks(kBC7, 16, true)},
    {99, Blocks(kBC7Srgb, 16, true)},
    {100, Masked(kR8G8B8A8, WidenYuv, 4, {0xff0000, 0xff00, 0xff, 0xff000000})},
    {107, Pairs(WidenYuy2)},
    {115, Masked(kR8G8B8A8, WidenToBytes, 2, {0xf00, 0xf0, 0xf, 0xf000})},
    {191, Masked(kR8G8B8A8, WidenToBytes, 2, {0xf000, 0xf00, 0xf0, 0xf})},
};

struct FourCCRow {
    std::uint32_t fourCC;
    std::uint32_t dxgi;
};

/// Legacy codes by the DXGI number that means the same; some are numbers of the older D3DFORMAT. The first row of
/// a DXGI number is the code it is written as. DXT2 and DXT4 differ from DXT3 and DXT5 in what the colour means,
/// RXGB from DXT5 in which channel is which: the blocks are the same.
constexpr FourCCRow kFourCCRows[] = {
    {FourCC("DXT1"), 71},
    {FourCC("DXT3"), 74},
    {FourCC("DXT2"), 74},
    {FourCC("DXT5"), 77},
    {FourCC("DXT4"), 77},
    {FourCC("RXGB"), 77},
    {FourCC("ATI1"), 80},
    {FourCC("BC4U"), 80},
    {FourCC("BC4S"), 81},
    {FourCC("ATI2"), 83},
    {FourCC("BC5U"), 83},
    {FourCC("BC5S"), 84},
    {FourCC("RGBG"), 68},
    {FourCC("GRGB"), 69},
    {FourCC("YUY2"), 107},
    {36, 11},
    {110, 13},
    {111, 54},
    {112, 34},
    {113, 10},
    {114, 41},
    {115, 16},
    {116, 2},
    {117, 51},
};

struct MaskRow {
    EFormat format;
    std::uint32_t pixelFlags;
    std::uint32_t bitCount;
    std::array<std::uint32_t, 4> masks;
    PixelLayout layout;
};

constexpr std::uint32_t kRgba = kPixelRgb | kPixelAlpha;

/// Masks that are exactly a format.
constexpr MaskRow kMaskRows[] = {
    {kL8, kPixelLuminance, 8, {0xff, 0, 0, 0}, Plain(kL8, 1)},
    {kL16, kPixelLuminance, 16, {0xffff, 0, 0, 0}, Plain(kL16, 2)},
    {kA8, kPixelAlphaOnly, 8, {0, 0, 0, 0xff}, Plain(kA8, 1, true)},
    {kR8G8B8A8, kRgba, 32, {0xff, 0xff00, 0xff0000, 0xff000000}, Plain(kR8G8B8A8, 4, true)},
    {kR8G8B8X8, kPixelRgb, 32, {0xff, 0xff00, 0xff0000, 0}, Plain(kR8G8B8X8, 4)},
    {kB8G8R8A8, kRgba, 32, {0xff0000, 0xff00, 0xff, 0xff000000}, Plain(kB8G8R8A8, 4, true)},
    {kB8G8R8X8, kPixelRgb, 32, {0xff0000, 0xff00, 0xff, 0}, Plain(kB8G8R8X8, 4)},
    {kR16G16, kPixelRgb, 32, {0xffff, 0xffff0000, 0, 0}, Plain(kR16G16, 4)},
};

std::optional<PixelLayout> FindDxgi(std::uint32_t code) {
    const auto row = std::ranges::find(kDxgiRows, code, &DxgiRow::code);
    if (row == std::end(kDxgiRows)) return std::nullopt;
    return row->layout;
}

std::optional<PixelLayout> FindFourCC(std::uint32_t fourCC) {
    // The one code that never got a number.
    if (fourCC == FourCC("UYVY")) return Pairs(WidenUyvy);
    const auto row = std::ranges::find(kFourCCRows, fourCC, &FourCCRow::fourCC);
    if (row == std::end(kFourCCRows)) return std::nullopt;
    return FindDxgi(row->dxgi);
}

/// The kinds of masked pixels, in the order in which they are looked for.
constexpr std::uint32_t kKinds[] = {kPixelLuminance, kPixelBumpLuminance, kPixelBump,
                                    kPixelYuv,       kPixelRgb,           kPixelAlphaOnly};

/// Nothing but "the alpha mask is meant" is taken as red, green, blue and alpha.
std::uint32_t KindOf(std::uint32_t pixelFlags) {
    const auto kind = std::ranges::find_if(kKinds, [&](std::uint32_t flag) { return (pixelFlags & flag) != 0; });
    if (kind != std::end(kKinds)) return *kind;
    return (pixelFlags & kPixelAlpha) != 0 ? kPixelRgb : 0u;
}

/// The masks that are meant, cut to the pixel's bits. The alpha mask is meant where a flag says so, and in bump maps.
std::array<std::uint32_t, 4> MeantMasks(const Header& header, std::uint32_t kind) {
    const std::uint32_t bits = header.bitCount >= 32 ? ~0u : (1u << header.bitCount) - 1;
    const bool hasAlpha = (header.pixelFlags & (kPixelAlpha | kPixelAlphaOnly)) != 0 || kind == kPixelBump;
    std::array<std::uint32_t, 4> masks{header.redMask & bits, header.greenMask & bits, header.blueMask & bits,
                                       hasAlpha ? header.alphaMask & bits : 0};
    if (kind == kPixelAlphaOnly) masks[0] = masks[1] = masks[2] = 0;
    if (kind == kPixelLuminance) masks[1] = masks[2] = 0;
    return masks;
}

int BitsOf(std::uint64_t mask) {
    return std::bit_width(mask) - (mask == 0 ? 0 : std::countr_zero(mask));
}

/// Bits of the widest channel, 0 when there is none.
int WidestOf(const Masks& masks) {
    int widest = 0;
    for (const std::uint64_t mask : masks)
        widest = std::max(widest, BitsOf(mask));
    return widest;
}

/// Bump maps: U and V, then W and Q, or a luminance. Two bits beside ten are an alpha, not a Q.
std::optional<PixelLayout> BumpLayout(PixelLayout layout, std::uint32_t kind) {
    const Masks& masks = layout.masks;
    const bool signedQ = BitsOf(masks[3]) == BitsOf(masks[0]);
    layout.signedChannels = kind == kPixelBumpLuminance ? 0x3 : signedQ ? 0xf : 0x7;
    for (int c = 0; c < 4; ++c) {
        // One bit has no sign and a value besides.
        if ((layout.signedChannels >> c & 1) != 0 && BitsOf(masks[c]) == 1) return std::nullopt;
    }
    const bool two = masks[2] == 0 && masks[3] == 0;
    const bool fine = WidestOf(masks) > 11;
    layout.widen = fine ? WidenToFloats : WidenToHalfs;
    if (fine) layout.format = two ? kR32G32F : kR32G32B32A32F;
    if (!fine) layout.format = two ? kR16G16F : kR16G16B16A16F;
    return layout;
}

/// Masks that are no format of their own.
std::optional<PixelLayout> WidenedLayout(const Header& header, std::uint32_t kind,
                                         const std::array<std::uint32_t, 4>& stored) {
    Masks masks{stored[0], stored[1], stored[2], stored[3]};
    if (kind == kPixelLuminance) masks[1] = masks[2] = masks[0];
    const int widest = WidestOf(masks);
    if (widest == 0 || widest > 16) return std::nullopt;

    const auto bytes = static_cast<std::uint8_t>(header.bitCount / 8);
    PixelLayout layout = Masked(kR8G8B8A8, WidenToBytes, bytes, masks);
    if (kind == kPixelBump || kind == kPixelBumpLuminance) return BumpLayout(layout, kind);
    if (kind == kPixelYuv) {
        layout.widen = WidenYuv;
    } else if (widest > 8) {
        layout.format = kR16G16B16A16;
        layout.widen = WidenToShorts;
    }
    return layout;
}

std::optional<PixelLayout> FindMasked(const Header& header) {
    const std::uint32_t kind = KindOf(header.pixelFlags);
    if (kind == 0 || header.bitCount % 8 != 0 || header.bitCount < 8 || header.bitCount > 32) return std::nullopt;
    const std::array<std::uint32_t, 4> masks = MeantMasks(header, kind);
    for (const MaskRow& row : kMaskRows) {
        if (KindOf(row.pixelFlags) == kind && row.bitCount == header.bitCount && row.masks == masks) return row.layout;
    }
    return WidenedLayout(header, kind, masks);
}

bool DescribeByMasks(EFormat format, Header& header) {
    const auto row = std::ranges::find(kMaskRows, format, &MaskRow::format);
    if (row == std::end(kMaskRows)) return false;
    header.pixelFlags = row->pixelFlags;
    header.bitCount = row->bitCount;
    header.redMask = row->masks[0];
    header.greenMask = row->masks[1];
    header.blueMask = row->masks[2];
    header.alphaMask = row->masks[3];
    return true;
}

}  // namespace

std::optional<PixelLayout> FindLayout(const Header& header) {
    if (header.IsExtended()) return FindDxgi(header.dxgiFormat);
    if ((header.pixelFlags & kPixelFourCC) != 0) return FindFourCC(header.fourCC);
    return FindMasked(header);
}

bool DescribeFormat(EFormat format, Header& header) {
    // The alternative name of a layout: the file cannot tell them apart, and is read back as the canonical one.
    if (format == kR8G8B8A8Alt) format = kR8G8B8A8;
    if (DescribeByMasks(format, header)) return true;

    const auto isPlain = [&](const DxgiRow& row) { return row.layout.format == format && row.layout.widen == nullptr; };
    const auto row = std::ranges::find_if(kDxgiRows, isPlain);
    if (row == std::end(kDxgiRows)) return false;
    const auto legacy = std::ranges::find(kFourCCRows, row->code, &FourCCRow::dxgi);
    const bool extended = legacy == std::end(kFourCCRows);
    header.pixelFlags = kPixelFourCC;
    header.fourCC = extended ? FourCC("DX10") : legacy->fourCC;
    header.dxgiFormat = extended ? row->code : 0;
    return true;
}

}  // namespace Kavra::Devices::Dds
