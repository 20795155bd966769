/// What a DDS file's texture looks like: its size, levels and faces, and where each of them lies.
#pragma once

#include "common/dds/DdsCodeTable.h"
#include "common/dds/DdsHeader.h"

#include <kavra/devices/ETextureType.h>

#include <cstdint>
#include <optional>

namespace Kavra::Devices::Dds {

/// Bounds that keep every product of sizes within 64 bits and a row's bytes within 31.
inline constexpr std::uint32_t kMaxSide = 1U << 20;
inline constexpr std::uint32_t kMaxDepth = 1U << 16;

struct Extent {
    int width;
    int height;
    int depth;
    bool operator==(const Extent&) const = default;
};

struct Shape {
    Extent size;          ///< of level 0, of one face; depth 1 unless a volume
    int levels;           ///< 1 to `FullMipChain(size)`
    ETextureType type;    ///< 2-D, cube or volume
    std::uint32_t faces;  ///< bit i: face i is in the file; 1 unless a cube

    bool operator==(const Shape&) const = default;

    int FaceCount() const { return Devices::FaceCount(type); }
    bool HasFace(int face) const { return (faces >> face & 1) != 0; }
    bool HasAllFaces() const { return faces == (1U << FaceCount()) - 1; }
};

/// Whether the sides are at least 1 and within the bounds.
bool IsSane(std::int64_t width, std::int64_t height, std::int64_t depth);

/// Mip levels from this size down to 1 x 1 x 1, each half the one before. Sizes below 1 count as 1.
int FullMipChain(const Extent& size);

/// The size of a level of 0 and up: halved so often, never below 1.
Extent LevelSize(const Extent& size, int level);

/// What the header describes. Nothing for a size out of bounds or a cube whose faces are not square.
///
/// A DX10 header says cube or volume by its own fields too. An array is read as its first element, whose bytes
/// come first. Levels beyond the full chain are not counted.
std::optional<Shape> ShapeOf(const Header& header);

/// The shape that a header describes (`ShapeOf`). Levels that no flag means count where the file is so long that it has
/// `bytes` for them.
std::optional<Shape> CommonShapeOf(const Header& header, const StoredUnit& unit, std::uint64_t bytes);

/// The number of levels, at most the full chain, of a header that says `claimed`.
int ClampLevels(std::uint32_t claimed, const Extent& size);

/// Stored bytes of one row of pixels or blocks, of one slice of a level, and of all slices of one face of a level.
std::uint64_t StoredRowBytes(const StoredUnit& unit, int width);
std::uint64_t StoredSliceBytes(const StoredUnit& unit, const Extent& levelSize);
std::uint64_t StoredLevelBytes(const StoredUnit& unit, const Extent& levelSize);

/// Stored bytes of all levels of one face.
std::uint64_t StoredChainBytes(const StoredUnit& unit, const Shape& shape);

/// Where a level of a face begins, counted from the first pixel. A face's levels lie together, absent faces take no
/// bytes.
std::uint64_t LevelOffset(const StoredUnit& unit, const Shape& shape, int face, int level);

/// Where the last face of a level ends, counted from the first pixel: a file that is shorter does not hold the level.
std::uint64_t LevelEnd(const StoredUnit& unit, const Shape& shape, int level);

/// Rows of pixels of a level, of all slices and faces one after the other.
struct RowCount {
    std::int32_t there;  ///< from the first on that are whole; absent faces count as there
    std::int32_t all;
};

/// How many rows of a level there are in `bytes` bytes, counted from the first pixel. At most 2^31 - 1.
RowCount RowsWithin(const StoredUnit& unit, const Shape& shape, int level, std::uint64_t bytes);

}  // namespace Kavra::Devices::Dds
