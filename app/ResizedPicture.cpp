#include "ResizedPicture.h"

#include "Picture.h"
#include "PixelConversion.h"
#include "Sizes.h"

#include <cstring>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

using Size = vec2<long long>;

bool IsOfSize(const ImageDescription& desc, Size size) {
    return desc.width == size.x && desc.height == size.y;
}

const unsigned char* Bytes(const LoadedImage& image) {
    return static_cast<const unsigned char*>(image.block->mData);
}

/// Whether there can be such a picture; a failure is said in the report.
bool CanBe(Report& report, const ImageDescription& desc, Size size) {
    const std::string obstacle = SizeObstacle(size.x, size.y, desc.format);
    if (!obstacle.empty()) report.Fail("cannot be resized: " + obstacle);
    return obstacle.empty();
}

/// Each face or slice in a call of its own; `block` is null when one of them gave none.
LoadedImage ResizeLayers(IImageHandler& handler, const LoadedImage& image, vec2<int> size, EImageFilterType filter) {
    ImageDescription flat = image.desc;
    flat.dataSize = LayerBytes(flat);
    const std::size_t layers = LayerCount(image.desc);
    LoadedImage result;
    for (std::size_t i = 0; i < layers; ++i) {
        const unsigned char* const data = Bytes(image) + i * LayerBytes(image.desc);
        LoadedImage layer = CallResize(handler, flat, data, size, kResizeFilter, filter);
        if (layer.block == nullptr) return {};
        if (layers == 1) {
            result = std::move(layer);
            break;
        }
        if (i == 0) result = NewPictureLike(image.desc, size.x, size.y);
        const std::size_t bytes = LayerBytes(result.desc);
        std::memcpy(static_cast<unsigned char*>(result.block->mData) + i * bytes, layer.block->mData, bytes);
    }
    return result;
}

LoadedImage MiddleOf(const LoadedImage& image, vec2<int> size) {
    const ImageDescription& from = image.desc;
    LoadedImage middle = NewPictureLike(from, size.x, size.y);
    const auto pitch = static_cast<std::size_t>(from.rowPitch);
    const auto rowBytes = static_cast<std::size_t>(middle.desc.rowPitch);
    const std::size_t pixelBytes = rowBytes / static_cast<std::size_t>(size.x);
    const auto left = static_cast<std::size_t>((from.width - size.x) / 2);
    const auto top = static_cast<std::size_t>((from.height - size.y) / 2);
    auto* out = static_cast<unsigned char*>(middle.block->mData);
    for (std::size_t layer = 0; layer < LayerCount(from); ++layer) {
        const unsigned char* row = Bytes(image) + layer * LayerBytes(from) + top * pitch + left * pixelBytes;
        for (int y = 0; y < size.y; ++y, row += pitch, out += rowBytes)
            std::memcpy(out, row, rowBytes);
    }
    LookAtAlphaAgain(middle);
    return middle;
}

}  // namespace

LoadedImage CallResize(IImageHandler& handler, const ImageDescription& desc, const void* data, vec2<int> size,
                       EResizeMethod method, EImageFilterType filter) {
    LoadedImage result;
    result.desc = desc;
    SetPackedSize(result.desc, size.x, size.y);
    result.block.reset(handler.Resize(method, data, desc.dataSize, desc.rowPitch, {desc.width, desc.height, 1},
                                      desc.format, kTexture2D, {size.x, size.y, 1}, result.desc.rowPitch, filter));
    return result;
}

LoadedImage Resampled(IImageHandler& handler, Report& report, const LoadedImage& image, Size size,
                      const Resampling& resampling) {
    if (!HasPixels(report, image, "resized") || !CanBe(report, image.desc, size)) return {};
    if (image.desc.format == kR32G32B32F) {  // which the handler takes for nothing
        const LoadedImage resized = Resampled(handler, report, *ToFormat(image, kR32G32B32A32F), size, resampling);
        return resized.block != nullptr ? *ToFormat(resized, kR32G32B32F) : LoadedImage();
    }
    const std::size_t mark = report.Mark();
    const MessageScope scope(report);
    const LoadPreferencesScope preferences(resampling.ForService(report.File()));
    LoadedImage result =
        ResizeLayers(handler, image, {static_cast<int>(size.x), static_cast<int>(size.y)}, resampling.ServiceFilter());
    if (result.block == nullptr) {
        report.FailUnlessSaid(mark, "cannot be resized");
    } else {
        LookAtAlphaAgain(result);
    }
    return result;
}

LoadedImage BroughtTo(IImageHandler& handler, Report& report, LoadedImage image, const TargetSize& target,
                      const Resampling& resampling) {
    if (!IsOfSize(image.desc, target.scaled)) image = Resampled(handler, report, image, target.scaled, resampling);
    if (image.block == nullptr || IsOfSize(image.desc, target.kept)) return image;
    if (!HasPixels(report, image, "cut")) return {};
    return MiddleOf(image, {static_cast<int>(target.kept.x), static_cast<int>(target.kept.y)});
}

}  // namespace Kavra::App
