#include "common/dds/DdsMendedHeader.h"

#include "common/dds/DdsCodeTable.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Kavra::Devices::Dds {
namespace {

constexpr std::uint32_t kRgba = kPixelRgb | kPixelAlpha;

/// Numbers of D3DFORMAT that mean masks.
struct NumberedMasks {
    std::uint32_t code, pixelFlags, bitCount;
    std::uint32_t masks[4];
};

constexpr NumberedMasks kNumberedMasks[] = {
    {20, kPixelRgb, 24, {0xFF0000, 0xFF00, 0xFF, 0}},                // R8G8B8
    {21, kRgba, 32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}},           // A8R8G8B8
    {22, kPixelRgb, 32, {0xFF0000, 0xFF00, 0xFF, 0}},                // X8R8G8B8
    {23, kPixelRgb, 16, {0xF800, 0x7E0, 0x1F, 0}},                   // R5G6B5
    {24, kPixelRgb, 16, {0x7C00, 0x3E0, 0x1F, 0}},                   // X1R5G5B5
    {25, kRgba, 16, {0x7C00, 0x3E0, 0x1F, 0x8000}},                  // A1R5G5B5
    {26, kRgba, 16, {0xF00, 0xF0, 0xF, 0xF000}},                     // A4R4G4B4
    {27, kPixelRgb, 8, {0xE0, 0x1C, 0x3, 0}},                        // R3G3B2
    {28, kPixelAlphaOnly, 8, {0, 0, 0, 0xFF}},                       // A8
    {29, kRgba, 16, {0xE0, 0x1C, 0x3, 0xFF00}},                      // A8R3G3B2
    {30, kPixelRgb, 16, {0xF00, 0xF0, 0xF, 0}},                      // X4R4G4B4
    {31, kRgba, 32, {0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000}},       // A2B10G10R10
    {32, kRgba, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}},           // A8B8G8R8
    {33, kPixelRgb, 32, {0xFF, 0xFF00, 0xFF0000, 0}},                // X8B8G8R8
    {34, kPixelRgb, 32, {0xFFFF, 0xFFFF0000, 0, 0}},                 // G16R16
    {35, kRgba, 32, {0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000}},       // A2R10G10B10
    {50, kPixelLuminance, 8, {0xFF, 0, 0, 0}},                       // L8
    {51, kPixelLuminance | kPixelAlpha, 16, {0xFF, 0, 0, 0xFF00}},   // A8L8
    {52, kPixelLuminance | kPixelAlpha, 8, {0xF, 0, 0, 0xF0}},       // A4L4
    {60, kPixelBump, 16, {0xFF, 0xFF00, 0, 0}},                      // V8U8
    {61, kPixelBumpLuminance, 16, {0x1F, 0x3E0, 0xFC00, 0}},         // L6V5U5
    {62, kPixelBumpLuminance, 32, {0xFF, 0xFF00, 0xFF0000, 0}},      // X8L8V8U8
    {63, kPixelBump, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}},      // Q8W8V8U8
    {64, kPixelBump, 32, {0xFFFF, 0xFFFF0000, 0, 0}},                // V16U16
    {67, kPixelBump, 32, {0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000}},  // A2W10V10U10
    {81, kPixelLuminance, 16, {0xFFFF, 0, 0, 0}},                    // L16
};

void SetMasks(Header& header, const NumberedMasks& row) {
    header.pixelFlags = row.pixelFlags;
    header.fourCC = 0;
    header.bitCount = row.bitCount;
    header.redMask = row.masks[0];
    header.greenMask = row.masks[1];
    header.blueMask = row.masks[2];
    header.alphaMask = row.masks[3];
}

constexpr std::uint32_t kSaysKind = kPixelAlpha | kPixelAlphaOnly | kPixelFourCC | kPixelPalette | kPixelRgb |
                                    kPixelYuv | kPixelLuminance | kPixelBumpLuminance | kPixelBump;

bool IsCode(std::uint32_t fourCC) {
    return DxgiOfLegacy(fourCC) != kDxgiUnknown || fourCC == kFourCCUYVY;
}

/// Grey whose masks lie outside of its pixels, as some writers have them: it comes first, its alpha behind it.
void MendGrey(Header& header) {
    if ((header.pixelFlags & kPixelLuminance) == 0 || (header.bitCount != 8 && header.bitCount != 16)) return;
    const std::uint32_t all = (1U << header.bitCount) - 1;
    const bool hasAlpha = (header.pixelFlags & kPixelAlpha) != 0;
    if ((header.redMask & all) != 0 && (!hasAlpha || (header.alphaMask & all) != 0)) return;
    const std::uint32_t lower = (1U << header.bitCount / 2) - 1;
    header.redMask = hasAlpha ? lower : all;
    header.alphaMask = hasAlpha ? all & ~lower : 0;
}

/// Codes that some writers have for numbers that have none.
constexpr std::pair<std::uint32_t, Dxgi> kWritersCodes[] = {
    {kFourCCA2XY, kDxgiBC5Unorm}, {FourCC("BC6H"), kDxgiBC6HUf16}, {FourCC("BC7L"), kDxgiBC7Unorm}};

}  // namespace

Header Mended(Header header) {
    if (header.isExtended) return header;
    const std::uint32_t colours = header.redMask | header.greenMask | header.blueMask;
    const bool hasMasks = (colours | header.alphaMask) != 0 && header.bitCount != 0;
    const bool isNoCode = header.HasFourCC() && header.fourCC == 0 && hasMasks;
    if (isNoCode) header.pixelFlags &= ~kPixelFourCC;
    if ((header.pixelFlags & kSaysKind) == 0) {
        if (IsCode(header.fourCC)) {
            header.pixelFlags |= kPixelFourCC;
        } else if (colours != 0) {
            header.pixelFlags |= header.alphaMask != 0 ? kRgba : kPixelRgb;
        } else if (header.alphaMask != 0) {
            header.pixelFlags |= kPixelAlphaOnly;
        }
    }
    const auto* const numbered = std::ranges::find(kNumberedMasks, header.fourCC, &NumberedMasks::code);
    if (header.HasFourCC() && numbered != std::end(kNumberedMasks)) SetMasks(header, *numbered);
    // Fifteen bits are stored in two bytes.
    if (!header.HasFourCC() && header.bitCount > 0 && header.bitCount < 32)
        header.bitCount = (header.bitCount + 7) & ~7U;
    MendGrey(header);
    return header;
}

std::optional<Dxgi> WritersNumber(const Header& header) {
    using Row = std::pair<std::uint32_t, Dxgi>;
    const auto* const row = std::ranges::find(kWritersCodes, header.fourCC, &Row::first);
    if (header.isExtended || !header.HasFourCC() || row == std::end(kWritersCodes)) return std::nullopt;
    return row->second;
}

}  // namespace Kavra::Devices::Dds
