#include "PixelTexture.h"

#include "FormatNames.h"
#include "Picture.h"

#include <kavra/devices/TextureCompressor.h>

#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

struct Side {
    int width, height, depth;
};

Side SideOf(const TextureShape& shape, int level) {
    Side side{};
    GetTextureLevelSize(shape, level, side.width, side.height, side.depth);
    return side;
}

LoadedImage NewLevel(const TextureShape& shape, EFormat format, int level) {
    const Side side = SideOf(shape, level);
    ImageDescription desc = FlatDescription(side.width, side.height, format);
    desc.depth = side.depth;
    desc.textureType = shape.type;
    desc.hasAlpha = Facts(format).hasAlpha && shape.alpha != kTextureAlphaOpaque;
    return NewPictureLike(desc, side.width, side.height);
}

}  // namespace

bool DecodeFace(EFormat format, const unsigned char* blocks, const ImageDescription& desc, unsigned char* out) {
    const std::uint64_t sliceBlocks = BlockBytes(format, desc.width, desc.height);
    const auto pitch = static_cast<std::size_t>(desc.rowPitch);
    for (int slice = 0; slice < desc.depth; ++slice) {
        if (!DecompressPicture(format, blocks, desc.width, desc.height, out, pitch)) return false;
        blocks += sliceBlocks;
        out += LayerBytes(desc);
    }
    return true;
}

bool AreAlike(Report& report, const std::vector<LoadedImage>& images, bool mayDifferInSize) {
    const ImageDescription& first = images.front().desc;
    for (const LoadedImage& image : images) {
        const ImageDescription& desc = image.desc;
        const bool isOfSize = desc.width == first.width && desc.height == first.height && desc.depth == first.depth;
        if ((isOfSize || mayDifferInSize) && desc.textureType == first.textureType) continue;
        report.Fail(std::format("pictures of {} x {} and of {} x {} pixels make no texture together", first.width,
                                first.height, desc.width, desc.height));
        return false;
    }
    return true;
}

void PixelTexture::KeepLargest() {
    std::vector<LoadedImage> largest;
    largest.reserve(static_cast<std::size_t>(shape.elements));
    for (int element = 0; element < shape.elements; ++element)
        largest.push_back(std::move(Image(element, 0)));
    images = std::move(largest);
    shape.levels = 1;
}

void PixelTexture::TakeSizeOfImages() {
    const ImageDescription& first = images.front().desc;
    shape.format = first.format;
    shape.width = first.width;
    shape.height = first.height;
    shape.depth = first.depth;
}

LoadedImage ReadLevel(Report& report, StoredTexture& stored, int element, int level) {
    const TextureShape& shape = stored.shape;
    const EFormat decoded = DecodedFormat(shape.format);
    const bool hasBlocks = decoded != kUnknown;
    LoadedImage image = NewLevel(shape, hasBlocks ? decoded : shape.format, level);
    std::vector<unsigned char> blocks(hasBlocks ? TextureLevelBytes(shape, level) : 0);
    auto* out = static_cast<unsigned char*>(image.block->mData);
    for (int face = 0; face < FaceCount(shape.type); ++face, out += image.desc.dataSize) {
        if (!stored.reader.ReadLevel(element, face, level, hasBlocks ? blocks.data() : out)) {
            report.Fail(std::string("cannot be read: ") + stored.reader.Reason());
            return {};
        }
        if (hasBlocks && !DecodeFace(shape.format, blocks.data(), image.desc, out)) {
            report.Fail("cannot be read: its blocks cannot be decoded");
            return {};
        }
    }
    return image;
}

PixelTexture ReadPixels(Report& report, StoredTexture& stored) {
    PixelTexture texture{.shape = stored.shape, .images = {}, .saysCurve = true};
    for (int element = 0; element < stored.shape.elements; ++element) {
        for (int level = 0; level < stored.shape.levels; ++level) {
            texture.images.push_back(ReadLevel(report, stored, element, level));
            if (texture.images.back().block == nullptr) return {};
        }
    }
    texture.TakeSizeOfImages();
    return texture;
}

}  // namespace Kavra::App
