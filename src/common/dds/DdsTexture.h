/// Whole textures: what a file says of one, beyond what a picture has.
#pragma once

#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <cstdint>
#include <expected>
#include <string>

namespace Kavra::Devices::Dds {

/// Elements of an array: more than any program takes, and few enough to keep every product of sizes within 64 bits.
inline constexpr std::uint32_t kMaxElements = 1U << 16;

/// A texture as a file holds it, whatever the kind of file.
struct StoredTexture {
    StoredLayout layout;
    Shape shape;
    int elements = 1;
    bool isSrgb = false;  ///< by the file's word
    AlphaMode alpha = kAlphaModeUnknown;

    int FacesInFile() const;
    /// Where a face is among those in the file.
    int FaceInFile(int face) const;
    /// Stored bytes of one element: its faces with their levels.
    std::uint64_t ElementBytes() const;
};

/// A texture in a DDS file.
struct Texture : StoredTexture {
    std::uint64_t pixelsBegin = 0;  ///< bytes before the first pixel
    bool isGreenFirst = false;      ///< of BC5: the halves of each block are in the other order

    /// Where a level of a face that is in the file begins.
    std::uint64_t Offset(int element, int face, int level) const;
};

/// No, and why, for people.
using Refusal = std::unexpected<std::string>;

/// What a header describes, of a file of so many bytes: its flags mended, each code by what its writers mean. A file
/// that ends early is refused as well as one that cannot be read.
std::expected<Texture, std::string> TextureOf(const Header& header, std::uint64_t fileBytes);

}  // namespace Kavra::Devices::Dds
