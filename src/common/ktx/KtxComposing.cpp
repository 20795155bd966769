#include "common/PixelFormats.h"
#include "common/ktx/KtxDescriptor.h"
#include "common/ktx/KtxFormats.h"
#include "common/ktx/KtxSwizzle.h"
#include "common/ktx/KtxTexture.h"
#include "common/ktx/LittleBytes.h"

#include <algorithm>
#include <numeric>

namespace Kavra::Devices::Ktx {

namespace {

constexpr std::uint64_t kMinAlignment = 4;

std::uint64_t AlignedTo(std::uint64_t offset, std::uint64_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

/// Levels that are packed need no alignment; others that of their pixels or blocks and of four bytes.
std::uint64_t AlignmentOf(const TextureToWrite& texture) {
    if (texture.scheme != kSchemeNone) return 1;
    return std::lcm(std::uint64_t{Dds::UnitOf(texture.format).bytes}, kMinAlignment);
}

Header DescribeHeader(const TextureToWrite& texture, std::uint32_t vkFormat) {
    const Dds::Shape& shape = texture.shape;
    Header header;
    header.vkFormat = vkFormat;
    header.typeSize = static_cast<std::uint32_t>(std::max(Common::BytesOf(Common::FactsOf(texture.format).element), 1));
    header.width = static_cast<std::uint32_t>(shape.size.width);
    header.height = static_cast<std::uint32_t>(shape.size.height);
    header.depth = shape.type == kTextureVolume ? static_cast<std::uint32_t>(shape.size.depth) : 0;
    header.layers = texture.elements;
    header.faces = static_cast<std::uint32_t>(shape.FaceCount());
    header.levels = static_cast<std::uint32_t>(shape.levels);
    header.scheme = texture.scheme;
    return header;
}

std::vector<LevelPlace> PlaceLevels(const TextureToWrite& texture, const std::vector<std::uint64_t>& storedBytes,
                                    std::uint64_t begin) {
    const Dds::StoredUnit unit = Dds::UnitOf(texture.format);
    const std::uint64_t faces = std::max(texture.elements, 1U) * static_cast<std::uint64_t>(texture.shape.FaceCount());
    std::vector<LevelPlace> places(storedBytes.size());
    for (std::size_t level = places.size(); level-- > 0;) {
        begin = AlignedTo(begin, AlignmentOf(texture));
        const Dds::Extent size = Dds::LevelSize(texture.shape.size, static_cast<int>(level));
        places[level] = {begin, storedBytes[level], Dds::StoredLevelBytes(unit, size) * faces};
        begin += storedBytes[level];
    }
    return places;
}

}  // namespace

std::optional<Head> ComposeHead(const TextureToWrite& texture, const std::vector<std::uint64_t>& storedBytes) {
    const bool isOpaque = texture.alpha == Dds::kAlphaModeOpaque;
    const std::optional<std::uint32_t> vkFormat = NumberOf(texture.format, texture.isSrgb, isOpaque);
    if (!vkFormat) return std::nullopt;
    const std::vector<unsigned char> descriptor =
        ComposeDescriptor(texture.format, {.isSrgb = texture.isSrgb,
                                           .isPremultiplied = texture.alpha == Dds::kAlphaModePremultiplied,
                                           .isOpaque = isOpaque});
    Texts texts;
    texts.orientation = texture.shape.type == kTextureVolume ? "rdi" : "rd";
    texts.swizzle = SwizzleOf(texture.format, isOpaque);
    const std::vector<unsigned char> pairs = ComposeTexts(texts);

    Header header = DescribeHeader(texture, *vkFormat);
    header.descriptorOffset = static_cast<std::uint32_t>(kHeaderBytes + storedBytes.size() * kPlaceBytes);
    header.descriptorBytes = static_cast<std::uint32_t>(descriptor.size());
    header.textsOffset = header.descriptorOffset + header.descriptorBytes;
    header.textsBytes = static_cast<std::uint32_t>(pairs.size());

    Head head;
    head.levels = PlaceLevels(texture, storedBytes, std::uint64_t{header.textsOffset} + header.textsBytes);
    LittleBytes bytes;
    bytes.AddBytes(ComposeHeader(header));
    for (const LevelPlace& place : head.levels) {
        bytes.Add64(place.offset);
        bytes.Add64(place.bytes);
        bytes.Add64(place.unpackedBytes);
    }
    bytes.AddBytes(descriptor);
    bytes.AddBytes(pairs);
    head.bytes = std::move(bytes).Take();
    head.bytes.resize(head.levels.back().offset);
    return head;
}

}  // namespace Kavra::Devices::Ktx
