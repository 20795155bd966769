#include "common/ktx/KtxTexture.h"

#include "common/Limits.h"
#include "common/ktx/KtxDescriptor.h"
#include "common/ktx/KtxFormats.h"
#include "common/ktx/KtxSwizzle.h"

#include <algorithm>
#include <bit>
#include <format>
#include <utility>

namespace Kavra::Devices::Ktx {

namespace {

using Dds::Refusal;
using Bytes = std::vector<unsigned char>;

/// More than any descriptor or set of texts that is not made to harm.
constexpr std::uint64_t kMaxDescriptorBytes = 1U << 16, kMaxTextsBytes = 1U << 24;

/// Zstandard makes at most 128 KiB of the four bytes of its smallest block.
constexpr std::uint64_t kMaxInflation = 1U << 15;

class FilePart {
public:
    FilePart(std::FILE* file, std::uint64_t fileBytes) : mFile(file), mFileBytes(fileBytes) {}

    bool Has(std::uint64_t offset, std::uint64_t bytes) const {
        return offset <= mFileBytes && bytes <= mFileBytes - offset;
    }
    /// Nothing where the file does not have these bytes.
    std::optional<Bytes> Read(std::uint64_t offset, std::uint64_t bytes) const {
        if (!Has(offset, bytes) || fseeko(mFile, static_cast<off_t>(offset), SEEK_SET) != 0) return std::nullopt;
        Bytes part(bytes);
        if (std::fread(part.data(), 1, part.size(), mFile) != part.size()) return std::nullopt;
        return part;
    }

private:
    std::FILE* mFile;
    std::uint64_t mFileBytes;
};

std::string NoScheme(std::uint32_t scheme) {
    const char* const name = scheme == kSchemeBasisLZ ? " (BasisLZ)" : scheme == kSchemeZlib ? " (ZLIB)" : "";
    return std::format("supercompression of kind {}{} is not supported", scheme, name);
}

std::expected<Dds::Shape, std::string> ShapeOf(const Header& header) {
    const std::uint32_t height = std::max(header.height, 1U), depth = std::max(header.depth, 1U);
    const bool isCube = header.faces == kCubeFaces, isVolume = header.depth > 0;
    if (!Dds::IsSane(header.width, height, depth))
        return Refusal(std::format("a size of {} x {} x {} is not supported", header.width, height, depth));
    if (header.faces != 1 && !isCube) return Refusal(std::format("a cube of {} faces is not supported", header.faces));
    if (isCube && (header.width != height || isVolume)) return Refusal("its cube is not square");
    if (isVolume && header.layers > 0) return Refusal("arrays of volumes are not supported");
    const Dds::Extent size{static_cast<int>(header.width), static_cast<int>(height), static_cast<int>(depth)};
    const std::uint32_t levels = std::max(header.levels, 1U);
    if (levels > static_cast<std::uint32_t>(Dds::FullMipChain(size)))
        return Refusal(std::format("{} levels are more than its size has", levels));
    const ETextureType type = isVolume ? kTextureVolume : isCube ? kTextureCube : kTexture2D;
    return Dds::Shape{size, static_cast<int>(levels), type, isCube ? Dds::kAllFaces : 1};
}

/// Layers that are the faces of cubes which do not have all.
std::expected<void, std::string> MakeIncompleteCube(std::uint32_t faces, Texture& texture) {
    const int count = std::popcount(faces);
    const bool isCube = texture.shape.type == kTexture2D && texture.shape.size.width == texture.shape.size.height;
    if (!isCube || faces > Dds::kAllFaces || texture.elements % count != 0)
        return Refusal("its cube contradicts itself");
    texture.shape.type = kTextureCube;
    texture.shape.faces = faces;
    texture.elements /= count;
    return {};
}

std::expected<void, std::string> ApplyTexts(const FilePart& file, const Header& header, Texture& texture) {
    if (header.textsBytes == 0) return {};
    const bool isSane = header.textsBytes <= kMaxTextsBytes;
    const std::optional<Bytes> bytes = isSane ? file.Read(header.textsOffset, header.textsBytes) : std::nullopt;
    const std::optional<Texts> texts = bytes ? ParseTexts(*bytes) : std::nullopt;
    if (!texts) return Refusal("its keys and values contradict each other");
    if (texts->orientation.size() > 1) texture.isBottomUp = texts->orientation[1] == 'u';
    if (!ApplySwizzle(texts->swizzle, texture))
        return Refusal(std::format("the channel order \"{}\" is not supported", PrintableSwizzle(texts->swizzle)));
    if (texts->facesInFile != 0) return MakeIncompleteCube(texts->facesInFile, texture);
    return {};
}

std::expected<void, std::string> ApplyFormat(const FilePart& file, const Header& header, Texture& texture) {
    const std::optional<FormatMeaning> format = MeaningOf(header.vkFormat);
    if (!format) return Refusal(std::format("VkFormat {} is not supported", header.vkFormat));
    const bool isSane = header.descriptorBytes <= kMaxDescriptorBytes;
    const std::optional<Bytes> bytes =
        isSane ? file.Read(header.descriptorOffset, header.descriptorBytes) : std::nullopt;
    const std::optional<ColourMeaning> colour = bytes ? ParseDescriptor(*bytes) : std::nullopt;
    if (!colour) return Refusal("its data format descriptor contradicts itself");
    texture.layout = format->layout;
    texture.isSrgb = format->isSrgb || (colour->isSrgb && !format->hasSrgbTwin);
    texture.alpha = colour->isPremultiplied ? Dds::kAlphaModePremultiplied : Dds::kAlphaModeStraight;
    if (format->isOpaque) texture.alpha = Dds::kAlphaModeOpaque;
    return {};
}

/// Whether a part begins before the one in front of it ends.
bool Overlap(std::vector<std::pair<std::uint64_t, std::uint64_t>> parts) {
    std::ranges::sort(parts);
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].first - parts[i - 1].first < parts[i - 1].second) return true;
    }
    return false;
}

std::expected<void, std::string> CheckLevels(const FilePart& file, const Header& header, const Texture& texture) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> parts = {
        {0, kHeaderBytes + texture.levels.size() * kPlaceBytes},
        {header.descriptorOffset, header.descriptorBytes},
        {header.textsOffset, header.textsBytes}};
    std::erase_if(parts, [](const auto& part) { return part.second == 0; });
    for (int level = 0; level < texture.shape.levels; ++level) {
        const LevelPlace& place = texture.levels[static_cast<std::size_t>(level)];
        const std::uint64_t faces =
            static_cast<unsigned>(texture.elements) * static_cast<unsigned>(texture.FacesInFile());
        const std::uint64_t bytes = Common::Product<std::uint64_t>(texture.FaceBytes(level), faces);
        const bool isPacked = texture.scheme != kSchemeNone;
        if (!file.Has(place.offset, place.bytes)) return Refusal(std::format("the file ends within level {}", level));
        const bool fits = isPacked
                              ? Common::CanHold(Common::Product<std::uint64_t>(place.bytes, kMaxInflation), bytes, 1)
                              : place.bytes == bytes;
        if (place.unpackedBytes != bytes || !fits)
            return Refusal(std::format("level {} has another length than its size asks for", level));
        parts.emplace_back(place.offset, place.bytes);
    }
    if (Overlap(std::move(parts))) return Refusal("parts of the file overlap");
    return {};
}

}  // namespace

std::uint64_t Texture::FaceBytes(int level) const {
    return Dds::StoredLevelBytes(layout.unit, Dds::LevelSize(shape.size, level));
}

std::uint64_t Texture::OffsetInLevel(int element, int face, int level) const {
    const std::uint64_t before = static_cast<unsigned>(element) * static_cast<std::uint64_t>(FacesInFile()) +
                                 static_cast<unsigned>(FaceInFile(face));
    return before * FaceBytes(level);
}

std::expected<Texture, std::string> ReadTexture(std::FILE* stream, std::uint64_t fileBytes) {
    const FilePart file(stream, fileBytes);
    const std::optional<Bytes> start = file.Read(0, kHeaderBytes);
    const std::optional<Header> header = start ? ParseHeader(*start) : std::nullopt;
    if (!header) return Refusal("the file ends within its header");
    if (header->scheme != kSchemeNone && header->scheme != kSchemeZstandard) return Refusal(NoScheme(header->scheme));

    Texture texture;
    texture.scheme = static_cast<Supercompression>(header->scheme);
    const std::expected<Dds::Shape, std::string> shape = ShapeOf(*header);
    if (!shape) return Refusal(shape.error());
    texture.shape = *shape;
    if (header->layers > Dds::kMaxElements)
        return Refusal(std::format("an array of {} elements is not supported", header->layers));
    texture.elements = static_cast<int>(std::max(header->layers, 1U));
    const std::optional<Bytes> places =
        file.Read(kHeaderBytes, kPlaceBytes * static_cast<std::size_t>(texture.shape.levels));
    if (!places) return Refusal("the file ends within its index");
    texture.levels = ParsePlaces(*places);
    for (const auto step : {ApplyFormat, ApplyTexts}) {
        if (const auto applied = step(file, *header, texture); !applied) return Refusal(applied.error());
    }
    // What the descriptor says of alpha counts only where there is one, which the channel order may have made.
    if (!texture.layout.hasAlpha) texture.alpha = Dds::kAlphaModeUnknown;
    if (const auto checked = CheckLevels(file, *header, texture); !checked) return Refusal(checked.error());
    return texture;
}

}  // namespace Kavra::Devices::Ktx
