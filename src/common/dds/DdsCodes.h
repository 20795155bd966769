/// The codes by which DDS headers name pixel formats.
#pragma once

#include <cstdint>

namespace Kavra::Devices::Dds {

constexpr std::uint32_t FourCC(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i)
        code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// Values of `Header::fourCC`: four letters, or a number of the older D3DFORMAT
/// (https://learn.microsoft.com/windows/win32/direct3d9/d3dformat).
enum LegacyCode : std::uint32_t {
    kFourCCDX10 = FourCC("DX10"),  ///< none of them: the DX10 extension holds a `Dxgi`
    kFourCCDXT1 = FourCC("DXT1"),
    kFourCCDXT2 = FourCC("DXT2"),
    kFourCCDXT3 = FourCC("DXT3"),
    kFourCCDXT4 = FourCC("DXT4"),
    kFourCCDXT5 = FourCC("DXT5"),
    kFourCCRXGB = FourCC("RXGB"),
    kFourCCATI1 = FourCC("ATI1"),
    kFourCCATI2 = FourCC("ATI2"),
    kFourCCA2XY = FourCC("A2XY"),  ///< also where a bit count stands: BC5 under another code
    kFourCCBC4U = FourCC("BC4U"),
    kFourCCBC4S = FourCC("BC4S"),
    kFourCCBC5U = FourCC("BC5U"),
    kFourCCBC5S = FourCC("BC5S"),
    kFourCCRGBG = FourCC("RGBG"),
    kFourCCGRGB = FourCC("GRGB"),
    kFourCCYUY2 = FourCC("YUY2"),
    kFourCCUYVY = FourCC("UYVY"),

    kD3dA16B16G16R16 = 36,
    kD3dQ16W16V16U16 = 110,
    kD3dR16F = 111,
    kD3dG16R16F = 112,
    kD3dA16B16G16R16F = 113,
    kD3dR32F = 114,
    kD3dG32R32F = 115,
    kD3dA32B32G32R32F = 116,
    kD3dCxV8U8 = 117,
};

/// DXGI_FORMAT (https://learn.microsoft.com/windows/win32/api/dxgiformat/ne-dxgiformat-dxgi_format), without those that
/// nothing here reads: signed and 32-bit integers, depth with stencil, planes and palettes.
enum Dxgi : std::uint32_t {
    kDxgiUnknown = 0,
    kDxgiR32G32B32A32Typeless = 1,
    kDxgiR32G32B32A32Float = 2,
    kDxgiR32G32B32Typeless = 5,
    kDxgiR32G32B32Float = 6,
    kDxgiR16G16B16A16Typeless = 9,
    kDxgiR16G16B16A16Float = 10,
    kDxgiR16G16B16A16Unorm = 11,
    kDxgiR16G16B16A16Uint = 12,
    kDxgiR16G16B16A16Snorm = 13,
    kDxgiR32G32Typeless = 15,
    kDxgiR32G32Float = 16,
    kDxgiR10G10B10A2Typeless = 23,
    kDxgiR10G10B10A2Unorm = 24,
    kDxgiR11G11B10Float = 26,
    kDxgiR8G8B8A8Typeless = 27,
    kDxgiR8G8B8A8Unorm = 28,
    kDxgiR8G8B8A8UnormSrgb = 29,
    kDxgiR8G8B8A8Uint = 30,
    kDxgiR8G8B8A8Snorm = 31,
    kDxgiR16G16Typeless = 33,
    kDxgiR16G16Float = 34,
    kDxgiR16G16Unorm = 35,
    kDxgiR16G16Uint = 36,
    kDxgiR16G16Snorm = 37,
    kDxgiR32Typeless = 39,
    kDxgiD32Float = 40,
    kDxgiR32Float = 41,
    kDxgiR8G8Typeless = 48,
    kDxgiR8G8Unorm = 49,
    kDxgiR8G8Uint = 50,
    kDxgiR8G8Snorm = 51,
    kDxgiR16Typeless = 53,
    kDxgiR16Float = 54,
    kDxgiD16Unorm = 55,
    kDxgiR16Unorm = 56,
    kDxgiR16Uint = 57,
    kDxgiR16Snorm = 58,
    kDxgiR8Typeless = 60,
    kDxgiR8Unorm = 61,
    kDxgiR8Uint = 62,
    kDxgiR8Snorm = 63,
    kDxgiA8Unorm = 65,
    kDxgiR9G9B9E5SharedExp = 67,
    kDxgiR8G8B8G8Unorm = 68,
    kDxgiG8R8G8B8Unorm = 69,
    kDxgiBC1Typeless = 70,
    kDxgiBC1Unorm = 71,
    kDxgiBC1UnormSrgb = 72,
    kDxgiBC2Typeless = 73,
    kDxgiBC2Unorm = 74,
    kDxgiBC2UnormSrgb = 75,
    kDxgiBC3Typeless = 76,
    kDxgiBC3Unorm = 77,
    kDxgiBC3UnormSrgb = 78,
    kDxgiBC4Typeless = 79,
    kDxgiBC4Unorm = 80,
    kDxgiBC4Snorm = 81,
    kDxgiBC5Typeless = 82,
    kDxgiBC5Unorm = 83,
    kDxgiBC5Snorm = 84,
    kDxgiB5G6R5Unorm = 85,
    kDxgiB5G5R5A1Unorm = 86,
    kDxgiB8G8R8A8Unorm = 87,
    kDxgiB8G8R8X8Unorm = 88,
    kDxgiR10G10B10XrBiasA2Unorm = 89,
    kDxgiB8G8R8A8Typeless = 90,
    kDxgiB8G8R8A8UnormSrgb = 91,
    kDxgiB8G8R8X8Typeless = 92,
    kDxgiB8G8R8X8UnormSrgb = 93,
    kDxgiBC6HTypeless = 94,
    kDxgiBC6HUf16 = 95,
    kDxgiBC6HSf16 = 96,
    kDxgiBC7Typeless = 97,
    kDxgiBC7Unorm = 98,
    kDxgiBC7UnormSrgb = 99,
    kDxgiAYUV = 100,
    kDxgiYUY2 = 107,
    kDxgiB4G4R4A4Unorm = 115,
    kDxgiA4B4G4R4Unorm = 191,
};

}  // namespace Kavra::Devices::Dds
