#include "common/dds/DdsCodeTable.h"

#include "common/SrgbFormats.h"

#include <algorithm>
#include <iterator>

namespace Kavra::Devices::Dds {
namespace {

/// The number of pixels that are a format byte for byte.
constexpr DxgiRow Of(Dxgi code, EFormat format) {
    return {.code = code, .unit = UnitOf(format), .format = format, .hasAlpha = Common::FactsOf(format).hasAlpha};
}
constexpr DxgiRow Srgb(Dxgi code, EFormat format) {
    DxgiRow row = Of(code, format);
    row.isSrgb = true;
    return row;
}

/// The first row of a format is the number it is written as. A typeless number is read as the first typed one of its
/// family; unsigned integers have the bytes of the normalised ones and are delivered as they.
constexpr DxgiRow kDxgiRows[] = {
    Of(kDxgiR32G32B32A32Float, kR32G32B32A32F),
    Of(kDxgiR32G32B32A32Typeless, kR32G32B32A32F),
    Of(kDxgiR32G32B32Float, kR32G32B32F),
    Of(kDxgiR32G32B32Typeless, kR32G32B32F),
    Of(kDxgiR16G16B16A16Float, kR16G16B16A16F),
    Of(kDxgiR16G16B16A16Typeless, kR16G16B16A16F),
    Of(kDxgiR16G16B16A16Unorm, kR16G16B16A16),
    Of(kDxgiR16G16B16A16Uint, kR16G16B16A16),
    {.code = kDxgiR16G16B16A16Snorm, .unit = PixelUnit(8), .hasAlpha = true},
    Of(kDxgiR32G32Float, kR32G32F),
    Of(kDxgiR32G32Typeless, kR32G32F),
    {.code = kDxgiR10G10B10A2Typeless, .unit = PixelUnit(4), .hasAlpha = true},
    {.code = kDxgiR10G10B10A2Unorm, .unit = PixelUnit(4), .hasAlpha = true},
    {.code = kDxgiR11G11B10Float, .unit = PixelUnit(4), .hasAlpha = false},
    Of(kDxgiR8G8B8A8Unorm, kR8G8B8A8),
    Of(kDxgiR8G8B8A8Typeless, kR8G8B8A8),
    Srgb(kDxgiR8G8B8A8UnormSrgb, kR8G8B8A8),
    Of(kDxgiR8G8B8A8Uint, kR8G8B8A8),
    {.code = kDxgiR8G8B8A8Snorm, .unit = PixelUnit(4), .hasAlpha = true},
    Of(kDxgiR16G16Float, kR16G16F),
    Of(kDxgiR16G16Typeless, kR16G16F),
    Of(kDxgiR16G16Unorm, kR16G16),
    Of(kDxgiR16G16Uint, kR16G16),
    {.code = kDxgiR16G16Snorm, .unit = PixelUnit(4), .hasAlpha = false},
    Of(kDxgiR32Float, kR32F),
    Of(kDxgiR32Typeless, kR32F),
    Of(kDxgiD32Float, kR32F),
    {.code = kDxgiR8G8Typeless, .unit = PixelUnit(2), .hasAlpha = false},
    {.code = kDxgiR8G8Unorm, .unit = PixelUnit(2), .hasAlpha = false},
    {.code = kDxgiR8G8Uint, .unit = PixelUnit(2), .hasAlpha = false},
    {.code = kDxgiR8G8Snorm, .unit = PixelUnit(2), .hasAlpha = false},
    Of(kDxgiR16Float, kR16F),
    Of(kDxgiR16Typeless, kR16F),
    Of(kDxgiR16Unorm, kR16),
    Of(kDxgiD16Unorm, kR16),
    Of(kDxgiR16Uint, kR16),
    {.code = kDxgiR16Snorm, .unit = PixelUnit(2), .hasAlpha = false},
    Of(kDxgiR8Unorm, kR8),
    Of(kDxgiR8Typeless, kR8),
    Of(kDxgiR8Uint, kR8),
    {.code = kDxgiR8Snorm, .unit = PixelUnit(1), .hasAlpha = false},
    Of(kDxgiA8Unorm, kA8),
    {.code = kDxgiR9G9B9E5SharedExp, .unit = PixelUnit(4), .hasAlpha = false},
    {.code = kDxgiR8G8B8G8Unorm, .unit = PairUnit(), .hasAlpha = false},
    {.code = kDxgiG8R8G8B8Unorm, .unit = PairUnit(), .hasAlpha = false},
    Of(kDxgiBC1Unorm, kBC1),
    Of(kDxgiBC1Typeless, kBC1),
    Srgb(kDxgiBC1UnormSrgb, kBC1Srgb),
    Of(kDxgiBC2Unorm, kBC2),
    Of(kDxgiBC2Typeless, kBC2),
    Srgb(kDxgiBC2UnormSrgb, kBC2Srgb),
    Of(kDxgiBC3Unorm, kBC3),
    Of(kDxgiBC3Typeless, kBC3),
    Srgb(kDxgiBC3UnormSrgb, kBC3Srgb),
    Of(kDxgiBC4Unorm, kBC4),
    Of(kDxgiBC4Typeless, kBC4),
    Of(kDxgiBC4Snorm, kBC4Snorm),
    Of(kDxgiBC5Unorm, kBC5),
    Of(kDxgiBC5Typeless, kBC5),
    Of(kDxgiBC5Snorm, kBC5Snorm),
    {.code = kDxgiB5G6R5Unorm, .unit = PixelUnit(2), .hasAlpha = false},
    {.code = kDxgiB5G5R5A1Unorm, .unit = PixelUnit(2), .hasAlpha = true},
    Of(kDxgiB8G8R8A8Unorm, kB8G8R8A8),
    Of(kDxgiB8G8R8A8Typeless, kB8G8R8A8),
    Srgb(kDxgiB8G8R8A8UnormSrgb, kB8G8R8A8),
    Of(kDxgiB8G8R8X8Unorm, kB8G8R8X8),
    Of(kDxgiB8G8R8X8Typeless, kB8G8R8X8),
    Srgb(kDxgiB8G8R8X8UnormSrgb, kB8G8R8X8),
    {.code = kDxgiR10G10B10XrBiasA2Unorm, .unit = PixelUnit(4), .hasAlpha = true},
    Of(kDxgiBC6HUf16, kBC6H),
    Of(kDxgiBC6HTypeless, kBC6H),
    Of(kDxgiBC6HSf16, kBC6HSigned),
    Of(kDxgiBC7Unorm, kBC7),
    Of(kDxgiBC7Typeless, kBC7),
    Srgb(kDxgiBC7UnormSrgb, kBC7Srgb),
    {.code = kDxgiAYUV, .unit = PixelUnit(4), .hasAlpha = true},
    {.code = kDxgiYUY2, .unit = PairUnit(), .hasAlpha = false},
    {.code = kDxgiB4G4R4A4Unorm, .unit = PixelUnit(2), .hasAlpha = true},
    {.code = kDxgiA4B4G4R4Unorm, .unit = PixelUnit(2), .hasAlpha = true},
};

struct LegacyRow {
    LegacyCode code;
    Dxgi dxgi;
};

/// The first row of a DXGI number is the code it is written as. DXT2 and DXT4 differ from DXT3 and DXT5 in what the
/// colour means, RXGB from DXT5 in which channel is which: the blocks are the same.
constexpr LegacyRow kLegacyRows[] = {
    {kFourCCDXT1, kDxgiBC1Unorm},
    {kFourCCDXT3, kDxgiBC2Unorm},
    {kFourCCDXT2, kDxgiBC2Unorm},
    {kFourCCDXT5, kDxgiBC3Unorm},
    {kFourCCDXT4, kDxgiBC3Unorm},
    {kFourCCRXGB, kDxgiBC3Unorm},
    {kFourCCATI1, kDxgiBC4Unorm},
    {kFourCCBC4U, kDxgiBC4Unorm},
    {kFourCCBC4S, kDxgiBC4Snorm},
    {kFourCCATI2, kDxgiBC5Unorm},
    {kFourCCBC5U, kDxgiBC5Unorm},
    {kFourCCBC5S, kDxgiBC5Snorm},
    {kFourCCRGBG, kDxgiR8G8B8G8Unorm},
    {kFourCCGRGB, kDxgiG8R8G8B8Unorm},
    {kFourCCYUY2, kDxgiYUY2},
    {kD3dA16B16G16R16, kDxgiR16G16B16A16Unorm},
    {kD3dQ16W16V16U16, kDxgiR16G16B16A16Snorm},
    {kD3dR16F, kDxgiR16Float},
    {kD3dG16R16F, kDxgiR16G16Float},
    {kD3dA16B16G16R16F, kDxgiR16G16B16A16Float},
    {kD3dR32F, kDxgiR32Float},
    {kD3dG32R32F, kDxgiR32G32Float},
    {kD3dA32B32G32R32F, kDxgiR32G32B32A32Float},
    {kD3dCxV8U8, kDxgiR8G8Snorm},
};

}  // namespace

const DxgiRow* FindDxgi(std::uint32_t code) {
    const auto* row = std::ranges::find(kDxgiRows, code, &DxgiRow::code);
    return row == std::end(kDxgiRows) ? nullptr : row;
}

const DxgiRow* FindDxgiOf(EFormat format) {
    if (format == kUnknown) return nullptr;
    const auto* row = std::ranges::find(kDxgiRows, format, &DxgiRow::format);
    return row == std::end(kDxgiRows) ? nullptr : row;
}

const DxgiRow* FindSrgbDxgiOf(EFormat format) {
    const auto* row = std::ranges::find_if(kDxgiRows, [format](const DxgiRow& candidate) {
        return candidate.isSrgb && candidate.format == Common::WithSrgb(format);
    });
    return row == std::end(kDxgiRows) ? nullptr : row;
}

Dxgi DxgiOfLegacy(std::uint32_t fourCC) {
    const auto* row = std::ranges::find(kLegacyRows, fourCC, &LegacyRow::code);
    return row == std::end(kLegacyRows) ? kDxgiUnknown : row->dxgi;
}

std::optional<LegacyCode> LegacyOfDxgi(Dxgi code) {
    const auto* row = std::ranges::find(kLegacyRows, code, &LegacyRow::dxgi);
    if (row == std::end(kLegacyRows)) return std::nullopt;
    return row->code;
}

std::optional<StoredUnit> UnitOfBits(std::uint32_t bitCount) {
    if (bitCount % 8 != 0 || bitCount < 8 || bitCount > 32) return std::nullopt;
    return PixelUnit(static_cast<std::uint8_t>(bitCount / 8));
}

}  // namespace Kavra::Devices::Dds
