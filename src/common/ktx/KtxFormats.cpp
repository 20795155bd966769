#include "common/ktx/KtxFormats.h"

#include "common/SrgbFormats.h"

#include <algorithm>
#include <iterator>

namespace Kavra::Devices::Ktx {

namespace {

using namespace Dds;

/// Numbers that are only read.
enum : std::uint32_t {
    kVkR4G4B4A4Pack16 = 2,
    kVkR5G6B5Pack16 = 4,
    kVkA1R5G5B5Pack16 = 8,
    kVkR8Snorm = 10,
    kVkR8Uint = 13,
    kVkR8G8Snorm = 17,
    kVkR8G8Uint = 20,
    kVkR8G8Srgb = 22,
    kVkR8G8B8Unorm = 23,
    kVkR8G8B8Srgb = 29,
    kVkB8G8R8Unorm = 30,
    kVkB8G8R8Srgb = 36,
    kVkR8G8B8A8Snorm = 38,
    kVkR8G8B8A8Uint = 41,
    kVkA8B8G8R8UnormPack32 = 51,
    kVkA8B8G8R8SrgbPack32 = 57,
    kVkA2R10G10B10Pack32 = 58,
    kVkA2B10G10R10Pack32 = 64,
    kVkR16Snorm = 71,
    kVkR16Uint = 74,
    kVkR16G16Snorm = 78,
    kVkR16G16Uint = 81,
    kVkR16G16B16A16Snorm = 92,
    kVkR16G16B16A16Uint = 95,
    kVkB10G11R11UfloatPack32 = 122,
    kVkE5B9G9R9UfloatPack32 = 123,
    kVkA4R4G4B4Pack16 = 1000340000,
    kVkA8Unorm = 1000470001,
};

/// A layout by the number of DXGI that has the same bytes, with the number of its sRGB twin or 0.
struct NumberRow {
    std::uint32_t plain, srgb;
    Dxgi dxgi, srgbDxgi;
};

constexpr NumberRow Alone(std::uint32_t plain, Dxgi dxgi) {
    return {plain, 0, dxgi, dxgi};
}

/// The first row of a number of DXGI is the one that is written.
constexpr NumberRow kNumberRows[] = {
    {kVkR8Unorm, kVkR8Srgb, kDxgiR8Unorm, kDxgiR8Unorm},
    {kVkR8G8Unorm, kVkR8G8Srgb, kDxgiR8G8Unorm, kDxgiR8G8Unorm},
    {kVkR8G8B8A8Unorm, kVkR8G8B8A8Srgb, kDxgiR8G8B8A8Unorm, kDxgiR8G8B8A8Unorm},
    {kVkB8G8R8A8Unorm, kVkB8G8R8A8Srgb, kDxgiB8G8R8A8Unorm, kDxgiB8G8R8A8Unorm},
    Alone(kVkR16Unorm, kDxgiR16Unorm),
    Alone(kVkR16Sfloat, kDxgiR16Float),
    Alone(kVkR16G16Unorm, kDxgiR16G16Unorm),
    Alone(kVkR16G16Sfloat, kDxgiR16G16Float),
    Alone(kVkR16G16B16A16Unorm, kDxgiR16G16B16A16Unorm),
    Alone(kVkR16G16B16A16Sfloat, kDxgiR16G16B16A16Float),
    Alone(kVkR32Sfloat, kDxgiR32Float),
    Alone(kVkR32G32Sfloat, kDxgiR32G32Float),
    Alone(kVkR32G32B32Sfloat, kDxgiR32G32B32Float),
    Alone(kVkR32G32B32A32Sfloat, kDxgiR32G32B32A32Float),
    {kVkBC1RgbaUnorm, kVkBC1RgbaSrgb, kDxgiBC1Unorm, kDxgiBC1UnormSrgb},
    {kVkBC1RgbUnorm, kVkBC1RgbSrgb, kDxgiBC1Unorm, kDxgiBC1UnormSrgb},
    {kVkBC2Unorm, kVkBC2Srgb, kDxgiBC2Unorm, kDxgiBC2UnormSrgb},
    {kVkBC3Unorm, kVkBC3Srgb, kDxgiBC3Unorm, kDxgiBC3UnormSrgb},
    Alone(kVkBC4Unorm, kDxgiBC4Unorm),
    Alone(kVkBC4Snorm, kDxgiBC4Snorm),
    Alone(kVkBC5Unorm, kDxgiBC5Unorm),
    Alone(kVkBC5Snorm, kDxgiBC5Snorm),
    Alone(kVkBC6HUfloat, kDxgiBC6HUf16),
    Alone(kVkBC6HSfloat, kDxgiBC6HSf16),
    {kVkBC7Unorm, kVkBC7Srgb, kDxgiBC7Unorm, kDxgiBC7UnormSrgb},
    {kVkA8B8G8R8UnormPack32, kVkA8B8G8R8SrgbPack32, kDxgiR8G8B8A8Unorm, kDxgiR8G8B8A8Unorm},
    Alone(kVkR4G4B4A4Pack16, kDxgiA4B4G4R4Unorm),
    Alone(kVkR5G6B5Pack16, kDxgiB5G6R5Unorm),
    Alone(kVkA1R5G5B5Pack16, kDxgiB5G5R5A1Unorm),
    Alone(kVkR8Snorm, kDxgiR8Snorm),
    Alone(kVkR8Uint, kDxgiR8Uint),
    Alone(kVkR8G8Snorm, kDxgiR8G8Snorm),
    Alone(kVkR8G8Uint, kDxgiR8G8Uint),
    Alone(kVkR8G8B8A8Snorm, kDxgiR8G8B8A8Snorm),
    Alone(kVkR8G8B8A8Uint, kDxgiR8G8B8A8Uint),
    Alone(kVkA2B10G10R10Pack32, kDxgiR10G10B10A2Unorm),
    Alone(kVkR16Snorm, kDxgiR16Snorm),
    Alone(kVkR16Uint, kDxgiR16Uint),
    Alone(kVkR16G16Snorm, kDxgiR16G16Snorm),
    Alone(kVkR16G16Uint, kDxgiR16G16Uint),
    Alone(kVkR16G16B16A16Snorm, kDxgiR16G16B16A16Snorm),
    Alone(kVkR16G16B16A16Uint, kDxgiR16G16B16A16Uint),
    Alone(kVkB10G11R11UfloatPack32, kDxgiR11G11B10Float),
    Alone(kVkE5B9G9R9UfloatPack32, kDxgiR9G9B9E5SharedExp),
    Alone(kVkA4R4G4B4Pack16, kDxgiB4G4R4A4Unorm),
    Alone(kVkA8Unorm, kDxgiA8Unorm),
};

/// Layouts that have no number of DXGI.
struct MaskRow {
    std::uint32_t plain, srgb, bitCount;
    std::uint32_t red, green, blue, alpha;
};

constexpr MaskRow kMaskRows[] = {
    {kVkR8G8B8Unorm, kVkR8G8B8Srgb, 24, 0xFF, 0xFF00, 0xFF0000, 0},
    {kVkB8G8R8Unorm, kVkB8G8R8Srgb, 24, 0xFF0000, 0xFF00, 0xFF, 0},
    {kVkA2R10G10B10Pack32, 0, 32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000},
};

template <class Row>
const Row* FindRow(std::span<const Row> rows, std::uint32_t vkFormat) {
    if (vkFormat == kVkUndefined) return nullptr;
    const auto row = std::ranges::find_if(
        rows, [vkFormat](const Row& candidate) { return candidate.plain == vkFormat || candidate.srgb == vkFormat; });
    return row == rows.end() ? nullptr : &*row;
}

Header HeaderOf(const MaskRow& row) {
    Header header;
    header.pixelFlags = row.alpha == 0 ? kPixelRgb : kPixelRgb | kPixelAlpha;
    header.bitCount = row.bitCount;
    header.redMask = row.red;
    header.greenMask = row.green;
    header.blueMask = row.blue;
    header.alphaMask = row.alpha;
    return header;
}

Header HeaderOf(const NumberRow& row, bool isSrgb) {
    Header header;
    header.isExtended = true;
    header.dxgiFormat = isSrgb ? row.srgbDxgi : row.dxgi;
    return header;
}

/// The number of DXGI with the bytes of a format; the plain one of two.
const DxgiRow* DxgiBytesOf(EFormat format) {
    switch (format) {
        case kL8:
        case kA8:
            return FindDxgiOf(kR8);
        case kL16:
            return FindDxgiOf(kR16);
        case kR8G8B8A8Alt:
        case kR8G8B8X8:
            return FindDxgiOf(kR8G8B8A8);
        case kB8G8R8X8:
            return FindDxgiOf(kB8G8R8A8);
        default:
            return FindDxgiOf(Common::WithoutSrgb(format));
    }
}

}  // namespace

std::optional<FormatMeaning> MeaningOf(std::uint32_t vkFormat) {
    const NumberRow* const number = FindRow<NumberRow>(kNumberRows, vkFormat);
    const MaskRow* const masks = FindRow<MaskRow>(kMaskRows, vkFormat);
    if (number == nullptr && masks == nullptr) return std::nullopt;
    const std::uint32_t srgb = number != nullptr ? number->srgb : masks->srgb;
    const bool isSrgb = vkFormat == srgb;
    const Header header = number != nullptr ? HeaderOf(*number, isSrgb) : HeaderOf(*masks);
    const std::optional<StoredLayout> layout = FindLayout(header);
    if (!layout) return std::nullopt;
    return FormatMeaning{.layout = *layout,
                         .isSrgb = isSrgb,
                         .hasSrgbTwin = srgb != 0 && !isSrgb,
                         .isOpaque = vkFormat == kVkBC1RgbUnorm || vkFormat == kVkBC1RgbSrgb};
}

std::optional<std::uint32_t> NumberOf(EFormat format, bool isSrgb, bool isOpaque) {
    const DxgiRow* const dxgi = DxgiBytesOf(format);
    if (dxgi == nullptr) return std::nullopt;
    const auto* row = std::ranges::find(kNumberRows, dxgi->code, &NumberRow::dxgi);
    if (row == std::end(kNumberRows)) return std::nullopt;
    if (row->plain == kVkBC1RgbaUnorm && isOpaque) row = FindRow<NumberRow>(kNumberRows, kVkBC1RgbUnorm);
    return isSrgb && row->srgb != 0 ? row->srgb : row->plain;
}

}  // namespace Kavra::Devices::Ktx
