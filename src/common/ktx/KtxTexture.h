/// A texture in a KTX2 file: what its header, descriptor and texts say together, and the same the other way round.
#pragma once

#include "common/dds/DdsTexture.h"
#include "common/ktx/KtxHeader.h"

#include <cstdint>
#include <cstdio>
#include <expected>
#include <string>
#include <vector>

namespace Kavra::Devices::Ktx {

struct Texture : Dds::StoredTexture {
    Supercompression scheme = kSchemeNone;
    bool isBottomUp = false;         ///< the first row is the lowest, by the file's word
    std::vector<LevelPlace> levels;  ///< the largest first

    /// Stored bytes of one face of one element of a level, without a supercompression.
    std::uint64_t FaceBytes(int level) const;
    /// Where that begins in the level. The face is one that is in the file.
    std::uint64_t OffsetInLevel(int element, int face, int level) const;
};

/// Reads everything but the levels, of a file of so many bytes. Why not is told for people. Throws `std::bad_alloc`.
std::expected<Texture, std::string> ReadTexture(std::FILE* file, std::uint64_t fileBytes);

/// What is written.
struct TextureToWrite {
    EFormat format = kUnknown;
    Dds::Shape shape = {};
    std::uint32_t elements = 0;  ///< of an array; 0: no array
    bool isSrgb = false;
    Dds::AlphaMode alpha = Dds::kAlphaModeUnknown;
    Supercompression scheme = kSchemeNone;
};

/// The bytes before the levels, and where each of them goes. `storedBytes` has for each level, the largest first, what
/// it takes in the file. The last bytes are zeros up to the smallest level, which is the first in the file; between
/// levels there may be gaps for zeros.
struct Head {
    std::vector<unsigned char> bytes;
    std::vector<LevelPlace> levels;
};

/// Nothing for formats that Vulkan does not have.
std::optional<Head> ComposeHead(const TextureToWrite& texture, const std::vector<std::uint64_t>& storedBytes);

}  // namespace Kavra::Devices::Ktx
