#include "common/dds/DdsTexture.h"

#include "common/Limits.h"
#include "common/dds/DdsMendedHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <format>

namespace Kavra::Devices::Dds {

namespace {

/// The header by which pixels are looked up.
Header Meant(const Header& header) {
    Header meant = Mended(header);
    if (const std::optional<Dxgi> number = WritersNumber(meant)) {
        meant.isExtended = true;
        meant.dxgiFormat = *number;
    }
    return meant;
}

std::string CodeName(std::uint32_t code) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(code >> shift & 0xFF);
    const bool isText = std::ranges::all_of(text, [](unsigned char c) { return std::isprint(c) != 0; });
    return isText ? std::format("the code \"{}\"", text) : std::format("the code {}", code);
}

std::string NoLayout(const Header& header) {
    if (header.isExtended) return std::format("DXGI format {} is not supported", header.dxgiFormat);
    if (header.HasFourCC()) return CodeName(header.fourCC) + " is not supported";
    if ((header.pixelFlags & kPixelPalette) != 0) return "palettes are not supported";
    return std::format("its channels, in pixels of {} bits, are not supported", header.bitCount);
}

std::string NoShape(const Header& header) {
    const bool isSane = IsSane(header.width, header.height, 1);
    if (isSane && header.width != header.height && header.depth <= kMaxDepth) return "its cube is not square";
    return std::format("a size of {} x {} x {} is not supported", header.width, header.height, header.depth);
}

AlphaMode AlphaOf(const Header& header) {
    if (header.isExtended) return header.Alpha() <= kAlphaModeCustom ? header.Alpha() : kAlphaModeUnknown;
    if (!header.HasFourCC()) return kAlphaModeUnknown;
    switch (header.fourCC) {
        case kFourCCDXT2:
        case kFourCCDXT4:
            return kAlphaModePremultiplied;
        case kFourCCRXGB:
            return kAlphaModeCustom;  // red
        default:
            return kAlphaModeUnknown;
    }
}

/// Which level the file ends in.
std::string TooShort(const Texture& texture, std::uint64_t fileBytes) {
    for (int element = 0; element < texture.elements; ++element) {
        const bool isWhole = texture.pixelsBegin + texture.ElementBytes() * (element + 1U) <= fileBytes;
        for (int face = 0; !isWhole && face < texture.shape.FaceCount(); ++face) {
            for (int level = 0; texture.shape.HasFace(face) && level < texture.shape.levels; ++level) {
                const std::uint64_t bytes = StoredLevelBytes(texture.layout.unit, LevelSize(texture.shape.size, level));
                if (texture.Offset(element, face, level) + bytes <= fileBytes) continue;
                std::string where = std::format("the file ends within level {}", level);
                if (texture.shape.FaceCount() > 1) where += std::format(" of face {}", face);
                if (texture.elements > 1) where += std::format(" of element {}", element);
                return where;
            }
        }
    }
    return "the file ends early";
}

}  // namespace

int StoredTexture::FacesInFile() const {
    return std::popcount(shape.faces);
}

int StoredTexture::FaceInFile(int face) const {
    return std::popcount(shape.faces & ((1U << face) - 1));
}

std::uint64_t StoredTexture::ElementBytes() const {
    return StoredChainBytes(layout.unit, shape) * static_cast<unsigned>(FacesInFile());
}

std::uint64_t Texture::Offset(int element, int face, int level) const {
    return pixelsBegin + ElementBytes() * static_cast<unsigned>(element) + LevelOffset(layout.unit, shape, face, level);
}

std::expected<Texture, std::string> TextureOf(const Header& header, std::uint64_t fileBytes) {
    const Header meant = Meant(header);
    const std::optional<StoredLayout> layout = FindLayout(meant);
    if (!layout) return Refusal(NoLayout(meant));

    Texture texture;
    texture.layout = *layout;
    texture.pixelsBegin = header.Bytes();
    const std::uint64_t bytes = fileBytes - std::min<std::uint64_t>(fileBytes, texture.pixelsBegin);
    // There are no arrays of volumes.
    const bool isArray = header.isExtended && header.dimension != kDimensionVolume && header.arraySize > 1;
    const std::uint32_t elements = isArray ? header.arraySize : 1;
    if (elements > kMaxElements) return Refusal(std::format("an array of {} elements is not supported", elements));
    const std::optional<Shape> shape = CommonShapeOf(header, layout->unit, bytes / elements);
    if (!shape) return Refusal(NoShape(header));
    texture.shape = *shape;
    texture.elements = shape->type == kTextureVolume ? 1 : static_cast<int>(elements);

    const bool isLegacyPair = !header.isExtended && meant.HasFourCC() && meant.fourCC == kFourCCATI2;
    texture.isGreenFirst = isLegacyPair && header.bitCount != kFourCCA2XY;
    const DxgiRow* const row = meant.isExtended ? FindDxgi(meant.dxgiFormat) : nullptr;
    texture.isSrgb = row != nullptr && row->isSrgb;
    texture.alpha = AlphaOf(meant.isExtended && !header.isExtended ? Header{} : meant);
    if (!Common::CanHold(bytes, static_cast<unsigned>(texture.elements), texture.ElementBytes()))
        return Refusal(TooShort(texture, fileBytes));
    return texture;
}

}  // namespace Kavra::Devices::Dds
