#include "ImageObject.h"

#include "Picture.h"

#include <kavra/devices/LastFailure.h>

namespace Kavra::App {

using namespace Devices;

namespace {

/// The image with a reference, if it has pixels: the handler also hands out images that have none.
ImageRef Keep(IImage* image) {
    if (image == nullptr) return nullptr;
    image->AddRef();
    ImageRef kept(image);
    if (LastFailure().kind != kFailureNone) return nullptr;  // which stays, as asking for a pixel would have its own
    const LoadedImage pixel = Fetch(*kept, {0, 0}, {1, 1}, {1, 1}, kTopLeft);
    return pixel.block != nullptr ? std::move(kept) : nullptr;
}

}  // namespace

IMappedMemory* BlockTarget::MemoryWrapper(int index) {
    return index == 0 ? this : nullptr;
}

void* BlockTarget::Map(int mode, int& pitch) {
    pitch = mImage.desc.rowPitch;
    return mode == kMapRead ? mImage.block->mData : nullptr;
}

ImageRef MakeBlankImage(IImageHandler& handler, int width, int height, EFormat format) {
    return Keep(handler.CreateImage(width, height, format));
}

ImageRef MakeImage(IImageHandler& handler, const LoadedImage& image) {
    BlockTarget target(image);
    return Keep(handler.CreateImage(&target));
}

LoadedImage Fetch(IImage& image, vec2<int> origin, vec2<int> size, vec2<int> outSize, EDataOrientation orientation) {
    LoadedImage result;
    result.desc = FlatDescription(outSize.x, outSize.y, image.Format());
    result.block.reset(image.LoadRect(result.desc, origin, size, outSize, image.Format(), orientation));
    return result;
}

}  // namespace Kavra::App
