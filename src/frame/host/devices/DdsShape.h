/// What a DDS file's texture looks like: its size, levels and faces, and where each of them lies.
#pragma once

#include "frame/host/devices/DdsHeader.h"
#include "frame/host/devices/DdsPixelLayouts.h"

#include <kavra/devices/ETextureType.h>

#include <cstdint>
#include <optional>

namespace Kavra::Devices::Dds {

/// Bounds that keep every product of sizes within 64 bits and a row's bytes within 31.
inline constexpr std::uint32_t kMaxSide = 1u << 20;
inline constexpr std::uint32_t kMaxDepth = 1u << 16;

inline constexpr int kFaces = 6;

struct Extent {
    int width;
    int height;
    int depth;
    bool operator==(const Extent&) const = default;
};

struct Shape {
    Extent size;          ///< of level 0, of one face; depth 1 unless a volume
    int levels;           ///< 1 to `FullChain(size)`
    ETextureType type;    ///< 2-D, cube or volume
    std::uint32_t faces;  ///< bit i: face i is in the file; 1 unless a cube
    int FaceCount() const { return type == kTextureCube ? kFaces : 1; }
};

/// Whether the sides are at least 1 and within the bounds.
bool IsSane(std::int64_t width, std::int64_t height, std::int64_t depth);

/// Levels from this size down to 1 x 1 x 1, each half the one before.
int FullChain(const Extent& size);

Extent LevelSize(const Extent& size, int level);

/// What the header describes. Nothing for a size out of bounds or a cube whose faces are not square.
///
/// A DX10 header says cube or volume by its own fields too. An array is read as its first element, whose bytes
/// come first. Levels beyond the full chain are not counted.
std::optional<Shape> ShapeOf(const Header& header);

/// Stored bytes of one row of pixels or blocks, and of one face of one level with all its slices.
std::uint64_t StoredRowBytes(const PixelLayout& layout, int width);
std::uint64_t StoredLevelBytes(const PixelLayout& layout, const Extent& levelSize);

/// Stored bytes of all levels of one face.
std::uint64_t StoredChainBytes(const PixelLayout& layout, const Shape& shape);

/// Where a level of a face begins, counted from the first pixel. A face's levels lie together, absent faces take no
/// room.
std::uint64_t LevelOffset(const PixelLayout& layout, const Shape& shape, int face, int level);

}  // namespace Kavra::Devices::Dds
