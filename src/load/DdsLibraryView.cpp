#include "load/DdsLibraryView.h"

#include <algorithm>

namespace Kavra::Devices::Dds {
namespace {

/// The codes that the library decodes.
constexpr LegacyCode kLibraryCodes[] = {kFourCCDXT1, kFourCCDXT2, kFourCCDXT3, kFourCCDXT4, kFourCCDXT5,
                                        kFourCCRXGB, kFourCCATI1, kFourCCATI2, kFourCCBC4U, kFourCCBC5U};
constexpr Dxgi kLibraryDxgi[] = {
    kDxgiR10G10B10A2Unorm, kDxgiR8G8B8A8Unorm,     kDxgiR8G8B8A8UnormSrgb, kDxgiR16Unorm,     kDxgiB8G8R8A8Unorm,
    kDxgiB8G8R8X8Unorm,    kDxgiB8G8R8A8UnormSrgb, kDxgiB8G8R8X8UnormSrgb, kDxgiBC1Unorm,     kDxgiBC1UnormSrgb,
    kDxgiBC2Unorm,         kDxgiBC2UnormSrgb,      kDxgiBC3Unorm,          kDxgiBC3UnormSrgb, kDxgiBC4Unorm,
    kDxgiBC5Unorm,         kDxgiBC6HUf16,          kDxgiBC6HSf16,          kDxgiBC7Unorm,     kDxgiBC7UnormSrgb,
};

std::optional<StoredUnit> UnitOfDxgi(std::uint32_t code) {
    const DxgiRow* const row = FindDxgi(code);
    return row != nullptr ? std::optional(row->unit) : std::nullopt;
}

bool IsPossible(std::uint32_t side) {
    return side >= 1 && side <= kMaxLibrarySide;
}

}  // namespace

std::optional<Shape> LibraryShapeOf(const Header& header) {
    const bool volume = (header.caps2 & kCapsVolume) != 0;
    const bool cube = (header.caps2 & kCapsCube) != 0;
    const std::uint32_t faces = cube ? header.NamedFaces() : 1;
    const std::uint32_t depth = volume ? header.depth : 1;
    if ((cube && volume) || faces == 0) return std::nullopt;
    if (!IsPossible(header.width) || !IsPossible(header.height) || !IsPossible(depth)) return std::nullopt;

    const Extent size{static_cast<int>(header.width), static_cast<int>(header.height), static_cast<int>(depth)};
    const int levels = (header.flags & kHasMipCount) != 0 ? ClampLevels(header.mipCount, size) : 1;
    const ETextureType type = volume ? kTextureVolume : cube ? kTextureCube : kTexture2D;
    return Shape{size, levels, type, faces};
}

std::optional<StoredUnit> LibraryUnitOf(const Header& header) {
    if (header.isExtended) {
        if (!std::ranges::contains(kLibraryDxgi, header.dxgiFormat)) return std::nullopt;
        const std::optional<StoredUnit> unit = UnitOfDxgi(header.dxgiFormat);
        // It looks for blocks only where the flags say that a code is meant.
        return unit && unit->IsBlock() && !header.HasFourCC() ? std::nullopt : unit;
    }
    if (header.HasFourCC()) {
        if (!std::ranges::contains(kLibraryCodes, header.fourCC)) return std::nullopt;
        return UnitOfDxgi(DxgiOfLegacy(header.fourCC));
    }
    // It checks the bit count only for some kinds of masks, and overruns a buffer of its own with more than 32.
    return UnitOfBits(header.bitCount);
}

Header FlatHeader(Header header, const Extent& levelSize) {
    header.flags &= ~(kHasMipCount | kHasDepth);
    header.width = static_cast<std::uint32_t>(levelSize.width);
    header.height = static_cast<std::uint32_t>(levelSize.height);
    header.depth = 0;
    header.mipCount = 0;
    header.caps1 = kCapsTexture;
    header.caps2 = 0;
    if (header.isExtended) {
        header.dimension = kDimension2D;
        header.misc &= ~kMiscCube;
        header.arraySize = 1;
        header.misc2 = 0;
    }
    return header;
}

}  // namespace Kavra::Devices::Dds
