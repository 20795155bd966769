/// The handler's editable pictures.
#pragma once

#include "LoadOptions.h"

#include <kavra/devices/ATarget.h>
#include <kavra/devices/IImage.h>
#include <kavra/devices/IImageHandler.h>

#include <memory>

namespace Kavra::App {

/// A loaded flat picture seen as a render target. It borrows the block, and is only read.
class BlockTarget final : public Devices::ATarget, private Devices::IMappedMemory {
public:
    explicit BlockTarget(const LoadedImage& image) : mImage(image) {}

    int Width() const override { return mImage.desc.width; }
    int Height() const override { return mImage.desc.height; }
    Devices::EFormat Format() const override { return mImage.desc.format; }
    Devices::IMappedMemory* MemoryWrapper(int index) override;

private:
    void* Map(int mode, int& pitch) override;
    void Unmap() override {}
    void Release() override {}

    const LoadedImage& mImage;
};

struct ReleaseReference {
    void operator()(Devices::IImage* image) const { image->ReleaseRef(); }
};
/// An image with one reference.
using ImageRef = std::unique_ptr<Devices::IImage, ReleaseReference>;

/// A picture of zeros; null when the handler has none of this format or size.
ImageRef MakeBlankImage(Devices::IImageHandler& handler, int width, int height, Devices::EFormat format);

/// A copy of a loaded flat picture; null when the handler has none of its format. Blue-first pictures become red-first.
ImageRef MakeImage(Devices::IImageHandler& handler, const LoadedImage& image);

/// A rectangle of an image in the image's own format, in another size if `outSize` says so; `block` is null when that
/// failed. The rectangle is inside the image and no size is below 1.
LoadedImage Fetch(Devices::IImage& image, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                  Devices::EDataOrientation orientation);

}  // namespace Kavra::App
