/// The header of a DDS file: field by field as stored
/// (https://learn.microsoft.com/windows/win32/direct3ddds/dds-header).
#pragma once

#include "common/dds/DdsCodes.h"

#include <kavra/devices/ETextureType.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices::Dds {

inline constexpr std::uint32_t kAllFaces = (1U << kCubeFaces) - 1;  ///< a bit a face, +x -x +y -y +z -z

/// Bits of `Header::flags`: which fields are meant.
enum : std::uint32_t {
    kHasCaps = 0x1,
    kHasHeight = 0x2,
    kHasWidth = 0x4,
    kHasPitch = 0x8,
    kHasPixelFormat = 0x1000,
    kHasMipCount = 0x20000,
    kHasLinearSize = 0x80000,
    kHasDepth = 0x800000,
};

/// Bits of `Header::pixelFlags`: what the pixels are.
enum : std::uint32_t {
    kPixelAlpha = 0x1,  ///< the alpha mask is meant
    kPixelAlphaOnly = 0x2,
    kPixelFourCC = 0x4,
    kPixelPalette = 0x20,  ///< indices of 8 bits into 256 colours, which stand before them
    kPixelRgb = 0x40,
    kPixelYuv = 0x200,
    kPixelLuminance = 0x20000,
    kPixelBumpLuminance = 0x40000,  ///< two signed channels and a luminance
    kPixelBump = 0x80000,           ///< signed channels
};

/// Bits of `Header::caps1` and `caps2`: what the texture is.
enum : std::uint32_t {
    kCapsComplex = 0x8,
    kCapsTexture = 0x1000,
    kCapsMipmaps = 0x400000,
    kCapsCube = 0x200,
    kCapsFirstFace = 0x400,
    kCapsAllFaces = kAllFaces * kCapsFirstFace,
    kCapsVolume = 0x200000,
};

/// Values of the DX10 extension.
enum : std::uint32_t {
    kDimension2D = 3,
    kDimensionVolume = 4,
    kMiscCube = 0x4,
};

/// What the alpha is, by the DX10 extension.
enum AlphaMode : std::uint32_t {
    kAlphaModeUnknown = 0,
    kAlphaModeStraight = 1,
    kAlphaModePremultiplied = 2,
    kAlphaModeOpaque = 3,  ///< there is none
    kAlphaModeCustom = 4,  ///< a fourth channel that is no transparency
};

/// All fields that mean something. Those of the DX10 extension are 0 when the file has none.
struct Header {
    std::uint32_t flags = 0;
    std::uint32_t height = 0;
    std::uint32_t width = 0;
    std::uint32_t pitch = 0;  ///< bytes of a row, or of level 0 for block-compressed data; the host ignores it
    std::uint32_t depth = 0;
    std::uint32_t mipCount = 0;
    std::uint32_t pixelFlags = 0;
    std::uint32_t fourCC = 0;
    std::uint32_t bitCount = 0;  ///< bits of a pixel
    std::uint32_t redMask = 0;   ///< also luminance, Y, U of a bump map
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;
    std::uint32_t alphaMask = 0;
    std::uint32_t caps1 = 0;
    std::uint32_t caps2 = 0;
    std::uint32_t dxgiFormat = 0;
    std::uint32_t dimension = 0;
    std::uint32_t misc = 0;
    std::uint32_t arraySize = 0;
    std::uint32_t misc2 = 0;  ///< its low three bits: an `AlphaMode`
    bool isExtended = false;  ///< the DX10 extension follows

    bool operator==(const Header&) const = default;

    /// Where the pixels begin.
    std::size_t Bytes() const;
    /// Whether `fourCC` is what says how the pixels are stored.
    bool HasFourCC() const { return (pixelFlags & kPixelFourCC) != 0; }
    AlphaMode Alpha() const { return static_cast<AlphaMode>(misc2 & 7); }
    /// Bit i: the caps name face i of a cube.
    std::uint32_t NamedFaces() const { return (caps2 & kCapsAllFaces) / kCapsFirstFace; }
};

/// Bytes of the longest header.
inline constexpr std::size_t kMaxHeaderBytes = 148;

/// What says that the DX10 extension follows: the code "DX10" where the pixel flags say that the code is meant, or the
/// code whatever the flags say.
enum class ExtensionRule : std::uint8_t { kFlaggedCode, kAnyCode };

/// Reads the header at the start of `file` (all of it, or its first `kMaxHeaderBytes` bytes). Nothing when the magic
/// number or one of the two structure sizes is wrong, or it ends early. No other field is judged.
std::optional<Header> ParseHeader(std::span<const unsigned char> file,
                                  ExtensionRule rule = ExtensionRule::kFlaggedCode);

/// The bytes of a header, with the extension where it has one. Reserved fields are 0.
std::vector<unsigned char> ComposeHeader(const Header& header);

}  // namespace Kavra::Devices::Dds
