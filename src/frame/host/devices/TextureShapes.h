/// Shapes of textures as callers fill them, and as files have them.
#pragma once

#include "common/dds/DdsShape.h"

#include <kavra/devices/TextureFile.h>

#include <optional>

namespace Kavra::Devices {

/// A shape that can be, in the words of files. sRGB is said by the flag and by the format, where it can.
struct KnownTexture {
    TextureShape shape;
    Dds::Shape stored;
    Dds::StoredUnit unit;

    std::uint64_t LevelBytes(int level) const {
        return Dds::StoredLevelBytes(unit, Dds::LevelSize(stored.size, level));
    }
    std::uint64_t ElementBytes() const {
        return Dds::StoredChainBytes(unit, stored) * static_cast<unsigned>(stored.FaceCount());
    }
    std::uint64_t Bytes() const { return ElementBytes() * static_cast<unsigned>(shape.elements); }
    bool Has(int element, int face, int level) const;
    /// Of a level that there is.
    std::uint64_t Offset(int element, int face, int level) const {
        return ElementBytes() * static_cast<unsigned>(element) + Dds::LevelOffset(unit, stored, face, level);
    }
};

/// Nothing for a shape that cannot be. Fields that the caller does not know are as they stand in the structure.
std::optional<KnownTexture> KnownTextureOf(const TextureShape& shape);

}  // namespace Kavra::Devices
