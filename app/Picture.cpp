#include "Picture.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "PixelConversion.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <format>
#include <memory>

namespace Kavra::App {

using namespace Devices;

namespace {

EDataOrientation OwnOrientation(IImageHandler& handler, Report& report) {
    const Owned<ImageDesc> desc = Describe(handler, report);
    return desc == nullptr ? kTopLeft : desc->orientation;
}

}  // namespace

ImageDescription FlatDescription(int width, int height, EFormat format) {
    ImageDescription desc;
    desc.depth = 1;
    desc.format = format;
    desc.textureType = kTexture2D;
    desc.defaultOrientation = true;
    desc.gamma = 2.2;
    SetPackedSize(desc, width, height);
    return desc;
}

void SetPackedSize(ImageDescription& desc, int width, int height) {
    desc.width = width;
    desc.height = height;
    desc.rowPitch = width * Utilities::AFormatConvertor::BytesPerPixel(desc.format);
    desc.dataSize = LayerBytes(desc) * static_cast<std::size_t>(std::max(desc.depth, 1));
}

std::size_t LayerCount(const ImageDescription& desc) {
    return static_cast<std::size_t>(FaceCount(desc.textureType) * std::max(desc.depth, 1));
}

std::size_t LayerBytes(const ImageDescription& desc) {
    return static_cast<std::size_t>(desc.rowPitch) * static_cast<std::size_t>(desc.height);
}

LoadedImage NewPicture(int width, int height, EFormat format) {
    return NewPictureLike(FlatDescription(width, height, format), width, height);
}

LoadedImage NewPictureLike(const ImageDescription& desc, int width, int height) {
    using Wrapper = Objects::MemoryArrayWrapper<void, unsigned char>;
    LoadedImage image;
    image.desc = desc;
    SetPackedSize(image.desc, width, height);
    auto wrapper = std::make_unique<Wrapper>();
    wrapper->mData = Objects::NewZeroed(image.BlockSize(), Objects::ObjModel::mDefaultAllocator);
    image.block.reset(wrapper.release());
    return image;
}

LoadedImage LoadUpright(IImageHandler& handler, Report& report, LoadOptions options) {
    const std::size_t mark = report.Mark();
    options.orientation = IsOpenExr(report.File()) ? OwnOrientation(handler, report) : kTopLeft;
    LoadedImage image = Load(handler, report, options);
    image.desc.orientation = kTopLeft;
    image.desc.defaultOrientation = true;
    if (image.block == nullptr) FailToRead(report, mark);
    return image;
}

LoadedImage LoadFlat(IImageHandler& handler, Report& report, const LoadOptions& options) {
    LoadedImage image = LoadUpright(handler, report, options);
    if (image.block == nullptr) return image;
    if (image.desc.textureType == kTextureCube) report.Say("note", "a cube map; only its first face is used");
    if (image.desc.textureType == kTextureVolume) report.Say("note", "a volume; only its first slice is used");
    KeepFirst(image);
    return image;
}

void KeepFirst(LoadedImage& image) {
    if (image.desc.rowPitch > 0) image.desc.dataSize = LayerBytes(image.desc);
    image.desc.depth = 1;
    image.desc.textureType = kTexture2D;
    if (image.desc.format == kR32G32B32F) image = *ToFormat(image, kR32G32B32A32F);
}

bool HasPixels(Report& report, const LoadedImage& image, std::string_view what) {
    if (Utilities::AFormatConvertor::BytesPerPixel(image.desc.format) > 0) return true;
    report.Fail(std::format("cannot be {}: {} is block-compressed", what, Enumerator(image.desc.format)));
    return false;
}

}  // namespace Kavra::App
