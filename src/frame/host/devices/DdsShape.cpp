#include "frame/host/devices/DdsShape.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices::Dds {
namespace {

bool IsVolume(const Header& header) {
    if ((header.caps2 & kCapsVolume) != 0) return true;
    if (header.IsExtended()) return header.dimension == kDimensionVolume;
    return (header.flags & kHasDepth) != 0 && header.depth > 1;
}

/// The faces that the file holds, 0 when it is no cube.
std::uint32_t FacesOf(const Header& header) {
    constexpr std::uint32_t all = (1u << kFaces) - 1;
    // The extension has no way to leave faces out.
    if (header.IsExtended() && (header.misc & kMiscCube) != 0) return all;
    if ((header.caps2 & kCapsCube) == 0) return 0;
    const std::uint32_t faces = (header.caps2 & kCapsAllFaces) / kCapsFirstFace;
    return faces == 0 ? all : faces;
}

int LevelsOf(const Header& header, const Extent& size) {
    const bool meant = (header.flags & kHasMipCount) != 0 || (header.caps1 & kCapsMipmaps) != 0;
    const auto full = static_cast<std::uint32_t>(FullChain(size));
    return meant ? static_cast<int>(std::clamp(header.mipCount, 1u, full)) : 1;
}

std::uint64_t Units(int pixels, int unit) {
    return (static_cast<std::uint64_t>(pixels) + static_cast<std::uint64_t>(unit) - 1) / static_cast<unsigned>(unit);
}

std::uint64_t LevelsBytes(const PixelLayout& layout, const Extent& size, int levels) {
    std::uint64_t bytes = 0;
    for (int level = 0; level < levels; ++level)
        bytes += StoredLevelBytes(layout, LevelSize(size, level));
    return bytes;
}

}  // namespace

bool IsSane(std::int64_t width, std::int64_t height, std::int64_t depth) {
    return width >= 1 && width <= kMaxSide && height >= 1 && height <= kMaxSide && depth >= 1 && depth <= kMaxDepth;
}

int FullChain(const Extent& size) {
    return std::bit_width(static_cast<unsigned>(std::max({size.width, size.height, size.depth})));
}

Extent LevelSize(const Extent& size, int level) {
    return {std::max(size.width >> level, 1), std::max(size.height >> level, 1), std::max(size.depth >> level, 1)};
}

std::optional<Shape> ShapeOf(const Header& header) {
    const bool volume = IsVolume(header);
    const std::uint32_t depth = volume ? std::max(header.depth, 1u) : 1;
    if (!IsSane(header.width, header.height, depth)) return std::nullopt;
    const std::uint32_t faces = volume ? 0 : FacesOf(header);
    if (faces != 0 && header.width != header.height) return std::nullopt;

    const Extent size{static_cast<int>(header.width), static_cast<int>(header.height), static_cast<int>(depth)};
    const ETextureType type = volume ? kTextureVolume : faces != 0 ? kTextureCube : kTexture2D;
    return Shape{size, LevelsOf(header, size), type, faces == 0 ? 1 : faces};
}

std::uint64_t StoredRowBytes(const PixelLayout& layout, int width) {
    return Units(width, layout.unitWidth) * layout.unitBytes;
}

std::uint64_t StoredLevelBytes(const PixelLayout& layout, const Extent& levelSize) {
    return StoredRowBytes(layout, levelSize.width) * Units(levelSize.height, layout.unitHeight) *
           static_cast<std::uint64_t>(levelSize.depth);
}

std::uint64_t StoredChainBytes(const PixelLayout& layout, const Shape& shape) {
    return LevelsBytes(layout, shape.size, shape.levels);
}

std::uint64_t LevelOffset(const PixelLayout& layout, const Shape& shape, int face, int level) {
    const std::uint32_t before = shape.faces & ((1u << face) - 1);
    return static_cast<unsigned>(std::popcount(before)) * StoredChainBytes(layout, shape) +
           LevelsBytes(layout, shape.size, level);
}

}  // namespace Kavra::Devices::Dds
