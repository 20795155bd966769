#include "Picture.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "PixelConversion.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

EDataOrientation OwnOrientation(IImageHandler& handler, Report& report) {
    const MessageScope scope(report);
    const Owned<ImageDesc> desc(handler.GetImageDesc(OS::FromUtf8(report.File().c_str()).c_str()));
    return desc == nullptr ? kTopLeft : desc->orientation;
}

std::size_t Bytes(const ImageDescription& desc) {
    return static_cast<std::size_t>(desc.rowPitch) * static_cast<std::size_t>(desc.height);
}

}  // namespace

LoadedImage NewPicture(int width, int height, EFormat format) {
    using Wrapper = Objects::MemoryArrayWrapper<void, unsigned char>;
    LoadedImage image;
    ImageDescription& desc = image.desc;
    desc.width = width;
    desc.height = height;
    desc.depth = 1;
    desc.format = format;
    desc.rowPitch = width * Utilities::AFormatConvertor::BytesPerPixel(format);
    desc.dataSize = Bytes(desc);
    desc.textureType = kTexture2D;
    desc.defaultOrientation = true;
    desc.gamma = 2.2;
    auto wrapper = std::make_unique<Wrapper>();
    wrapper->mData = Objects::NewZeroed(desc.dataSize, Objects::ObjModel::mDefaultAllocator);
    image.block.reset(wrapper.release());
    return image;
}

LoadedImage LoadUpright(IImageHandler& handler, Report& report, int frame, int width, int height, bool smooth) {
    const std::size_t mark = report.Mark();
    LoadOptions options;
    options.width = width;
    options.height = height;
    options.highQuality = smooth;
    if (LowerExtension(report.File()) == ".exr") options.orientation = OwnOrientation(handler, report);
    LoadedImage image = Load(handler, report, options, frame);
    image.desc.orientation = kTopLeft;
    image.desc.defaultOrientation = true;
    if (image.block == nullptr) FailToRead(report, mark);
    return image;
}

LoadedImage LoadFlat(IImageHandler& handler, Report& report, int frame) {
    LoadedImage image = LoadUpright(handler, report, frame);
    if (image.block == nullptr) return image;
    if (image.desc.textureType == kTextureCube) report.Say("note", "a cube map; only its first face is used");
    if (image.desc.textureType == kTextureVolume) report.Say("note", "a volume; only its first slice is used");
    KeepFirst(image);
    return image;
}

void KeepFirst(LoadedImage& image) {
    if (image.desc.rowPitch > 0) image.desc.dataSize = Bytes(image.desc);
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
