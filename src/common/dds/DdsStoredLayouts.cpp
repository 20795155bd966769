#include "common/dds/DdsStoredLayouts.h"

#include "common/PixelFormats.h"
#include "common/dds/DdsWidening.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices::Dds {
namespace {

/// A layout of a DXGI number without what the number itself says: its unit, and whether there is an alpha.
constexpr StoredLayout Widened(EFormat format, WidenRow widen, const Masks& masks = {}) {
    return {.format = format, .widen = widen, .masks = masks};
}

/// All channels signed.
constexpr StoredLayout Signed(EFormat format, int channels, int bits) {
    Masks masks{};
    for (int c = 0; c < channels; ++c)
        masks[c] = ((std::uint64_t{1} << bits) - 1) << (c * bits);
    StoredLayout layout = Widened(format, bits > 11 ? WidenToFloats : WidenToHalfs, masks);
    layout.signedChannels = 0xF;
    return layout;
}

struct WidenedRow {
    Dxgi code;
    StoredLayout layout;
};

constexpr Masks kMasksR10G10B10A2 = {0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000};
constexpr Masks kMasksR8G8 = {0xFF, 0xFF00, 0, 0};

/// The DXGI numbers whose pixels are no format of their own.
constexpr WidenedRow kWidenedRows[] = {
    {kDxgiR16G16B16A16Snorm, Signed(kR32G32B32A32F, 4, 16)},
    {kDxgiR10G10B10A2Typeless, Widened(kR16G16B16A16, WidenToShorts, kMasksR10G10B10A2)},
    {kDxgiR10G10B10A2Unorm, Widened(kR16G16B16A16, WidenToShorts, kMasksR10G10B10A2)},
    {kDxgiR11G11B10Float, Widened(kR16G16B16A16F, WidenPackedFloats)},
    {kDxgiR8G8B8A8Snorm, Signed(kR16G16B16A16F, 4, 8)},
    {kDxgiR16G16Snorm, Signed(kR32G32F, 2, 16)},
    {kDxgiR8G8Typeless, Widened(kR8G8B8A8, WidenToBytes, kMasksR8G8)},
    {kDxgiR8G8Unorm, Widened(kR8G8B8A8, WidenToBytes, kMasksR8G8)},
    {kDxgiR8G8Uint, Widened(kR8G8B8A8, WidenToBytes, kMasksR8G8)},
    {kDxgiR8G8Snorm, Signed(kR16G16F, 2, 8)},
    {kDxgiR16Snorm, Signed(kR32F, 1, 16)},
    {kDxgiR8Snorm, Signed(kR16F, 1, 8)},
    {kDxgiR9G9B9E5SharedExp, Widened(kR16G16B16A16F, WidenSharedExponent)},
    {kDxgiR8G8B8G8Unorm, Widened(kR8G8B8A8, WidenRgbg)},
    {kDxgiG8R8G8B8Unorm, Widened(kR8G8B8A8, WidenGrgb)},
    {kDxgiB5G6R5Unorm, Widened(kR8G8B8A8, WidenToBytes, {0xF800, 0x7E0, 0x1F, 0})},
    {kDxgiB5G5R5A1Unorm, Widened(kR8G8B8A8, WidenToBytes, {0x7C00, 0x3E0, 0x1F, 0x8000})},
    {kDxgiR10G10B10XrBiasA2Unorm, Widened(kR16G16B16A16F, WidenExtendedRange)},
    {kDxgiAYUV, Widened(kR8G8B8A8, WidenYuv, {0xFF0000, 0xFF00, 0xFF, 0xFF000000})},
    {kDxgiYUY2, Widened(kR8G8B8A8, WidenYuy2)},
    {kDxgiB4G4R4A4Unorm, Widened(kR8G8B8A8, WidenToBytes, {0xF00, 0xF0, 0xF, 0xF000})},
    {kDxgiA4B4G4R4Unorm, Widened(kR8G8B8A8, WidenToBytes, {0xF000, 0xF00, 0xF0, 0xF})},
};

/// What a header without a code says of its pixels.
struct MaskRow {
    EFormat format;
    std::uint32_t pixelFlags;
    std::uint32_t bitCount;
    std::array<std::uint32_t, 4> masks;
};

constexpr std::uint32_t kRgba = kPixelRgb | kPixelAlpha;

/// Masks that are exactly a format.
constexpr MaskRow kMaskRows[] = {
    {kL8, kPixelLuminance, 8, {0xFF, 0, 0, 0}},
    {kL16, kPixelLuminance, 16, {0xFFFF, 0, 0, 0}},
    {kA8, kPixelAlphaOnly, 8, {0, 0, 0, 0xFF}},
    {kR8G8B8A8, kRgba, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}},
    {kR8G8B8X8, kPixelRgb, 32, {0xFF, 0xFF00, 0xFF0000, 0}},
    {kB8G8R8A8, kRgba, 32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}},
    {kB8G8R8X8, kPixelRgb, 32, {0xFF0000, 0xFF00, 0xFF, 0}},
    {kR16G16, kPixelRgb, 32, {0xFFFF, 0xFFFF0000, 0, 0}},
};

static_assert(std::ranges::all_of(kMaskRows, [](const MaskRow& row) {
    return row.bitCount == 8 * static_cast<unsigned>(Common::FactsOf(row.format).BytesPerPixel());
}));

std::optional<StoredLayout> LayoutOfDxgi(std::uint32_t code) {
    const DxgiRow* const row = FindDxgi(code);
    if (row == nullptr) return std::nullopt;
    StoredLayout layout{.format = row->format};
    if (row->format == kUnknown) {
        const auto* const widened = std::ranges::find(kWidenedRows, row->code, &WidenedRow::code);
        if (widened == std::end(kWidenedRows)) return std::nullopt;
        layout = widened->layout;
    }
    layout.unit = row->unit;
    layout.hasAlpha = row->hasAlpha;
    return layout;
}

std::optional<StoredLayout> LayoutOfLegacy(std::uint32_t fourCC) {
    // The one code that never got a number.
    if (fourCC == kFourCCUYVY) return StoredLayout{.format = kR8G8B8A8, .unit = PairUnit(), .widen = WidenUyvy};
    return LayoutOfDxgi(DxgiOfLegacy(fourCC));
}

/// The kinds of masked pixels, in the order in which they are looked for.
constexpr std::uint32_t kKinds[] = {kPixelLuminance, kPixelBumpLuminance, kPixelBump,
                                    kPixelYuv,       kPixelRgb,           kPixelAlphaOnly};

/// Nothing but "the alpha mask is meant" is taken as red, green, blue and alpha.
std::uint32_t KindOf(std::uint32_t pixelFlags) {
    const auto kind = std::ranges::find_if(kKinds, [&](std::uint32_t flag) { return (pixelFlags & flag) != 0; });
    if (kind != std::end(kKinds)) return *kind;
    return (pixelFlags & kPixelAlpha) != 0 ? kPixelRgb : 0U;
}

/// The masks that are meant, cut to the pixel's bits. The alpha mask is meant where a flag says so, and in bump maps.
std::array<std::uint32_t, 4> MeantMasks(const Header& header, std::uint32_t kind) {
    const std::uint32_t bits = header.bitCount >= 32 ? ~0U : (1U << header.bitCount) - 1;
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
std::optional<StoredLayout> BumpLayout(StoredLayout layout, std::uint32_t kind) {
    const Masks& masks = layout.masks;
    const bool signedQ = BitsOf(masks[3]) == BitsOf(masks[0]);
    layout.signedChannels = kind == kPixelBumpLuminance ? 0x3 : signedQ ? 0xF : 0x7;
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
std::optional<StoredLayout> WidenedLayout(const StoredUnit& unit, std::uint32_t kind,
                                          const std::array<std::uint32_t, 4>& stored) {
    Masks masks{stored[0], stored[1], stored[2], stored[3]};
    if (kind == kPixelLuminance) masks[1] = masks[2] = masks[0];
    const int widest = WidestOf(masks);
    if (widest == 0 || widest > 16) return std::nullopt;

    StoredLayout layout{
        .format = kR8G8B8A8, .hasAlpha = masks[3] != 0, .unit = unit, .widen = WidenToBytes, .masks = masks};
    if (kind == kPixelBump || kind == kPixelBumpLuminance) return BumpLayout(layout, kind);
    if (kind == kPixelYuv) {
        layout.widen = WidenYuv;
    } else if (widest > 8) {
        layout.format = kR16G16B16A16;
        layout.widen = WidenToShorts;
    }
    return layout;
}

std::optional<StoredLayout> FindMasked(const Header& header) {
    const std::uint32_t kind = KindOf(header.pixelFlags);
    const std::optional<StoredUnit> unit = UnitOfBits(header.bitCount);
    if (kind == 0 || !unit) return std::nullopt;
    const std::array<std::uint32_t, 4> masks = MeantMasks(header, kind);
    for (const MaskRow& row : kMaskRows) {
        if (KindOf(row.pixelFlags) == kind && row.bitCount == header.bitCount && row.masks == masks) {
            return StoredLayout{.format = row.format, .hasAlpha = masks[3] != 0, .unit = *unit};
        }
    }
    return WidenedLayout(*unit, kind, masks);
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

std::optional<StoredLayout> FindLayout(const Header& header) {
    if (header.isExtended) return LayoutOfDxgi(header.dxgiFormat);
    if (header.HasFourCC()) return LayoutOfLegacy(header.fourCC);
    return FindMasked(header);
}

bool DescribeFormat(EFormat format, Header& header) {
    // The alternative name of a layout: the file cannot tell them apart, and is read back as the canonical one.
    if (format == kR8G8B8A8Alt) format = kR8G8B8A8;
    if (DescribeByMasks(format, header)) return true;

    const DxgiRow* const row = FindDxgiOf(format);
    if (row == nullptr) return false;
    const std::optional<LegacyCode> legacy = LegacyOfDxgi(row->code);
    header.pixelFlags = kPixelFourCC;
    header.fourCC = legacy.value_or(kFourCCDX10);
    header.isExtended = !legacy;
    header.dxgiFormat = legacy ? kDxgiUnknown : row->code;
    return true;
}

}  // namespace Kavra::Devices::Dds
