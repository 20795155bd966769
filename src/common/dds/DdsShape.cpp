#include "common/dds/DdsShape.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices::Dds {
namespace {

bool IsVolume(const Header& header) {
    if ((header.caps2 & kCapsVolume) != 0) return true;
    if (header.isExtended) return header.dimension == kDimensionVolume;
    return (header.flags & kHasDepth) != 0 && header.depth > 1;
}

/// The faces that the file holds, 0 when it is no cube.
std::uint32_t FacesOf(const Header& header) {
    // The extension has no way to leave faces out.
    if (header.isExtended && (header.misc & kMiscCube) != 0) return kAllFaces;
    if ((header.caps2 & kCapsCube) == 0) return 0;
    const std::uint32_t faces = header.NamedFaces();
    return faces == 0 ? kAllFaces : faces;
}

std::uint64_t Units(int pixels, std::uint8_t unit) {
    return (static_cast<std::uint64_t>(pixels) + unit - 1) / unit;
}

std::uint64_t LevelsBytes(const StoredUnit& unit, const Extent& size, int levels) {
    std::uint64_t bytes = 0;
    for (int level = 0; level < levels; ++level)
        bytes += StoredLevelBytes(unit, LevelSize(size, level));
    return bytes;
}

}  // namespace

bool IsSane(std::int64_t width, std::int64_t height, std::int64_t depth) {
    return width >= 1 && width <= kMaxSide && height >= 1 && height <= kMaxSide && depth >= 1 && depth <= kMaxDepth;
}

int FullMipChain(const Extent& size) {
    return std::bit_width(static_cast<unsigned>(std::max({size.width, size.height, size.depth, 1})));
}

Extent LevelSize(const Extent& size, int level) {
    const int halvings = std::min(level, 31);
    const auto halved = [&](int side) { return std::max(side >> halvings, 1); };
    return {halved(size.width), halved(size.height), halved(size.depth)};
}

std::optional<Shape> ShapeOf(const Header& header) {
    const bool volume = IsVolume(header);
    const std::uint32_t depth = volume ? std::max(header.depth, 1U) : 1;
    if (!IsSane(header.width, header.height, depth)) return std::nullopt;
    const std::uint32_t faces = volume ? 0 : FacesOf(header);
    if (faces != 0 && header.width != header.height) return std::nullopt;

    const Extent size{static_cast<int>(header.width), static_cast<int>(header.height), static_cast<int>(depth)};
    const bool levelsMeant = (header.flags & kHasMipCount) != 0 || (header.caps1 & kCapsMipmaps) != 0;
    const int levels = levelsMeant ? ClampLevels(header.mipCount, size) : 1;
    const ETextureType type = volume ? kTextureVolume : faces != 0 ? kTextureCube : kTexture2D;
    return Shape{size, levels, type, faces == 0 ? 1 : faces};
}

int ClampLevels(std::uint32_t claimed, const Extent& size) {
    return static_cast<int>(std::clamp(claimed, 1U, static_cast<std::uint32_t>(FullMipChain(size))));
}

std::uint64_t StoredRowBytes(const StoredUnit& unit, int width) {
    return Units(width, unit.width) * unit.bytes;
}

std::uint64_t StoredSliceBytes(const StoredUnit& unit, const Extent& levelSize) {
    return StoredRowBytes(unit, levelSize.width) * Units(levelSize.height, unit.height);
}

std::uint64_t StoredLevelBytes(const StoredUnit& unit, const Extent& levelSize) {
    return StoredSliceBytes(unit, levelSize) * static_cast<std::uint64_t>(levelSize.depth);
}

std::uint64_t StoredChainBytes(const StoredUnit& unit, const Shape& shape) {
    return LevelsBytes(unit, shape.size, shape.levels);
}

std::uint64_t LevelOffset(const StoredUnit& unit, const Shape& shape, int face, int level) {
    const std::uint32_t before = shape.faces & ((1U << face) - 1);
    return static_cast<unsigned>(std::popcount(before)) * StoredChainBytes(unit, shape) +
           LevelsBytes(unit, shape.size, level);
}

std::uint64_t LevelEnd(const StoredUnit& unit, const Shape& shape, int level) {
    const int lastFace = std::bit_width(shape.faces) - 1;
    return LevelOffset(unit, shape, lastFace, level) + StoredLevelBytes(unit, LevelSize(shape.size, level));
}

RowCount RowsWithin(const StoredUnit& unit, const Shape& shape, int level, std::uint64_t bytes) {
    const Extent size = LevelSize(shape.size, level);
    const std::uint64_t rowBytes = StoredRowBytes(unit, size.width), sliceRows = Units(size.height, unit.height);
    const std::uint64_t faceRows = static_cast<std::uint64_t>(size.height) * static_cast<unsigned>(size.depth);
    std::uint64_t there = 0;
    for (int face = 0; face < shape.FaceCount(); ++face) {
        const std::uint64_t begin = LevelOffset(unit, shape, face, level);
        std::uint64_t rows = faceRows;
        if (shape.HasFace(face)) {
            const std::uint64_t stored = bytes > begin ? (bytes - begin) / rowBytes : 0;
            const std::uint64_t rest =
                std::min(stored % sliceRows * unit.height, static_cast<std::uint64_t>(size.height));
            rows = std::min(faceRows, stored / sliceRows * static_cast<unsigned>(size.height) + rest);
        }
        there += rows;
        if (rows < faceRows) break;
    }
    constexpr std::uint64_t kMax = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t all = faceRows * static_cast<unsigned>(shape.FaceCount());
    return {static_cast<std::int32_t>(std::min(there, kMax)), static_cast<std::int32_t>(std::min(all, kMax))};
}

std::optional<Shape> CommonShapeOf(const Header& header, const StoredUnit& unit, std::uint64_t bytes) {
    const std::optional<Shape> flagged = ShapeOf(header);
    if (!flagged || flagged->levels > 1 || header.mipCount < 2) return flagged;
    Header meant = header;
    meant.flags |= kHasMipCount;
    const std::optional<Shape> shape = ShapeOf(meant);
    return LevelEnd(unit, *shape, shape->levels - 1) <= bytes ? shape : flagged;
}

}  // namespace Kavra::Devices::Dds
