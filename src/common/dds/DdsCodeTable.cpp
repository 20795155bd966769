#include "common/dds/DdsCodeTable.h"

#include <algorithm>
#include <iterator>

namespace Kavra::Devices::Dds {
namespace {

/// The first row of a format is the number it is written as. A typeless number is read as the first typed one of its
/// family; unsigned integers have the bytes of the normalised ones and are delivered as they.
constexpr DxgiRow kDxgiRows[] = {
    {kDxgiR32G32B32A32Float, PixelUnit(16), kR32G32B32A32F, true},
    {kDxgiR32G32B32A32Typeless, PixelUnit(16), kR32G32B32A32F, true},
    {kDxgiR32G32B32Float, PixelUnit(12), kR32G32B32F, false},
    {kDxgiR32G32B32Typeless, PixelUnit(12), kR32G32B32F, false},
    {kDxgiR16G16B16A16Float, PixelUnit(8), kR16G16B16A16F, true},
    {kDxgiR16G16B16A16Typeless, PixelUnit(8), kR16G16B16A16F, true},
    {kDxgiR16G16B16A16Unorm, PixelUnit(8), kR16G16B16A16, true},
    {kDxgiR16G16B16A16Uint, PixelUnit(8), kR16G16B16A16, true},
    {kDxgiR16G16B16A16Snorm, PixelUnit(8), kUnknown, true},
    {kDxgiR32G32Float, PixelUnit(8), kR32G32F, false},
    {kDxgiR32G32Typeless, PixelUnit(8), kR32G32F, false},
    {kDxgiR10G10B10A2Typeless, PixelUnit(4), kUnknown, true},
    {kDxgiR10G10B10A2Unorm, PixelUnit(4), kUnknown, true},
    {kDxgiR11G11B10Float, PixelUnit(4), kUnknown, false},
    {kDxgiR8G8B8A8Unorm, PixelUnit(4), kR8G8B8A8, true},
    {kDxgiR8G8B8A8Typeless, PixelUnit(4), kR8G8B8A8, true},
    {kDxgiR8G8B8A8UnormSrgb, PixelUnit(4), kR8G8B8A8, true},
    {kDxgiR8G8B8A8Uint, PixelUnit(4), kR8G8B8A8, true},
    {kDxgiR8G8B8A8Snorm, PixelUnit(4), kUnknown, true},
    {kDxgiR16G16Float, PixelUnit(4), kR16G16F, false},
    {kDxgiR16G16Typeless, PixelUnit(4), kR16G16F, false},
    {kDxgiR16G16Unorm, PixelUnit(4), kR16G16, false},
    {kDxgiR16G16Uint, PixelUnit(4), kR16G16, false},
    {kDxgiR16G16Snorm, PixelUnit(4), kUnknown, false},
    {kDxgiR32Float, PixelUnit(4), kR32F, false},
    {kDxgiR32Typeless, PixelUnit(4), kR32F, false},
    {kDxgiD32Float, PixelUnit(4), kR32F, false},
    {kDxgiR8G8Typeless, PixelUnit(2), kUnknown, false},
    {kDxgiR8G8Unorm, PixelUnit(2), kUnknown, false},
    {kDxgiR8G8Uint, PixelUnit(2), kUnknown, false},
    {kDxgiR8G8Snorm, PixelUnit(2), kUnknown, false},
    {kDxgiR16Float, PixelUnit(2), kR16F, false},
    {kDxgiR16Typeless, PixelUnit(2), kR16F, false},
    {kDxgiR16Unorm, PixelUnit(2), kR16, false},
    {kDxgiD16Unorm, PixelUnit(2), kR16, false},
    {kDxgiR16Uint, PixelUnit(2), kR16, false},
    {kDxgiR16Snorm, PixelUnit(2), kUnknown, false},
    {kDxgiR8Unorm, PixelUnit(1), kR8, false},
    {kDxgiR8Typeless, PixelUnit(1), kR8, false},
    {kDxgiR8Uint, PixelUnit(1), kR8, false},
    {kDxgiR8Snorm, PixelUnit(1), kUnknown, false},
    {kDxgiA8Unorm, PixelUnit(1), kA8, true},
    {kDxgiR9G9B9E5SharedExp, PixelUnit(4), kUnknown, false},
    {kDxgiR8G8B8G8Unorm, PairUnit(), kUnknown, false},
    {kDxgiG8R8G8B8Unorm, PairUnit(), kUnknown, false},
    {kDxgiBC1Unorm, BlockUnit(8), kBC1, true},
    {kDxgiBC1Typeless, BlockUnit(8), kBC1, true},
    {kDxgiBC1UnormSrgb, BlockUnit(8), kBC1Srgb, true},
    {kDxgiBC2Unorm, BlockUnit(16), kBC2, true},
    {kDxgiBC2Typeless, BlockUnit(16), kBC2, true},
    {kDxgiBC2UnormSrgb, BlockUnit(16), kBC2Srgb, true},
    {kDxgiBC3Unorm, BlockUnit(16), kBC3, true},
    {kDxgiBC3Typeless, BlockUnit(16), kBC3, true},
    {kDxgiBC3UnormSrgb, BlockUnit(16), kBC3Srgb, true},
    {kDxgiBC4Unorm, BlockUnit(8), kBC4, false},
    {kDxgiBC4Typeless, BlockUnit(8), kBC4, false},
    {kDxgiBC4Snorm, BlockUnit(8), kBC4Snorm, false},
    {kDxgiBC5Unorm, BlockUnit(16), kBC5, false},
    {kDxgiBC5Typeless, BlockUnit(16), kBC5, false},
    {kDxgiBC5Snorm, BlockUnit(16), kBC5Snorm, false},
    {kDxgiB5G6R5Unorm, PixelUnit(2), kUnknown, false},
    {kDxgiB5G5R5A1Unorm, PixelUnit(2), kUnknown, true},
    {kDxgiB8G8R8A8Unorm, PixelUnit(4), kB8G8R8A8, true},
    {kDxgiB8G8R8A8Typeless, PixelUnit(4), kB8G8R8A8, true},
    {kDxgiB8G8R8A8UnormSrgb, PixelUnit(4), kB8G8R8A8, true},
    {kDxgiB8G8R8X8Unorm, PixelUnit(4), kB8G8R8X8, false},
    {kDxgiB8G8R8X8Typeless, PixelUnit(4), kB8G8R8X8, false},
    {kDxgiB8G8R8X8UnormSrgb, PixelUnit(4), kB8G8R8X8, false},
    {kDxgiR10G10B10XrBiasA2Unorm, PixelUnit(4), kUnknown, true},
    {kDxgiBC6HUf16, BlockUnit(16), kBC6H, false},
    {kDxgiBC6HTypeless, BlockUnit(16), kBC6H, false},
    {kDxgiBC6HSf16, BlockUnit(16), kBC6HSigned, false},
    {kDxgiBC7Unorm, BlockUnit(16), kBC7, true},
    {kDxgiBC7Typeless, BlockUnit(16), kBC7, true},
    {kDxgiBC7UnormSrgb, BlockUnit(16), kBC7Srgb, true},
    {kDxgiAYUV, PixelUnit(4), kUnknown, true},
    {kDxgiYUY2, PairUnit(), kUnknown, false},
    {kDxgiB4G4R4A4Unorm, PixelUnit(2), kUnknown, true},
    {kDxgiA4B4G4R4Unorm, PixelUnit(2), kUnknown, true},
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
