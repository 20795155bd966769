#include "load/geometry/AdaptiveResize.h"

#include "load/geometry/ResizeSteps.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace Kavra::Devices {
namespace {

using OIIO::ImageBuf;
using OIIO::ImageSpec;

constexpr int kMaxChannels = 4;  // that are resampled together

bool HasFlatPixels(const ImageBuf& image) {
    if (!image.initialized()) return false;
    const ImageSpec& spec = image.spec();
    return !spec.deep && spec.format.basetype != OIIO::TypeDesc::UNKNOWN && spec.depth <= 1 && spec.width > 0 &&
           spec.height > 0 && spec.full_width > 0 && spec.full_height > 0;
}

bool AreResizable(const ImageBuf& dst, const ImageBuf& src) {
    return HasFlatPixels(dst) && HasFlatPixels(src) && dst.nchannels() == src.nchannels();
}

ElementType ElementOf(OIIO::TypeDesc type) {
    if (type == OIIO::TypeUInt8) return ElementType::kUInt8;
    if (type == OIIO::TypeUInt16) return ElementType::kUInt16;
    if (type == OIIO::TypeHalf) return ElementType::kHalf;
    if (type == OIIO::TypeFloat) return ElementType::kFloat;
    return ElementType::kNone;
}

SizeChange ChangeOf(const ImageSpec& to, const ImageSpec& from, ElementType element, int channels) {
    return {{.element = element, .channels = channels},
            {from.full_x, from.full_width, from.x, from.width, to.full_x, to.full_width, to.x, to.width},
            {from.full_y, from.full_height, from.y, from.height, to.full_y, to.full_height, to.y, to.height}};
}

bool LieInMemory(const ImageBuf& dst, const ImageBuf& src) {
    const auto pixelBytes = static_cast<OIIO::stride_t>(src.spec().pixel_bytes());
    return src.localpixels() != nullptr && dst.localpixels() != nullptr && src.pixel_stride() == pixelBytes &&
           dst.contiguous() && src.scanline_stride() > 0;
}

/// The pixels where they lie.
void ResizeInPlace(ImageBuf& dst, const ImageBuf& src, const ResizeSteps& steps) {
    RunSteps(steps, static_cast<const unsigned char*>(src.localpixels()),
             static_cast<std::size_t>(src.scanline_stride()), static_cast<unsigned char*>(dst.localpixels()));
}

/// Up to four channels as floats, whatever the images' types and memory.
bool ResizeChannels(ImageBuf& dst, const ImageBuf& src, int begin, int end, const ResizeSteps& steps) {
    const auto regionOf = [&](const ImageBuf& image) {
        OIIO::ROI region = image.roi();
        region.chbegin = begin;
        region.chend = end;
        return region;
    };
    const auto channels = static_cast<std::size_t>(end - begin);
    const auto floats = [&](const ImageSpec& spec) { return static_cast<std::size_t>(spec.image_pixels()) * channels; };
    std::vector<float> from(floats(src.spec())), to(floats(dst.spec()));
    if (!src.get_pixels(regionOf(src), OIIO::make_span(from))) return false;
    RunSteps(steps, reinterpret_cast<const unsigned char*>(from.data()), steps.first.FromRowBytes(),
             reinterpret_cast<unsigned char*>(to.data()));
    return dst.set_pixels(regionOf(dst), OIIO::make_span(to));
}

}  // namespace

bool AdaptiveResize(ImageBuf& dst, const ImageBuf& src, bool highQuality) {
    if (!AreResizable(dst, src)) return false;
    const Scaling scaling = highQuality ? Scaling::kMitchell : Scaling::kAdaptive;
    const ElementType element = ElementOf(src.spec().format);
    const int channels = src.nchannels();
    const bool isDirect = element != ElementType::kNone && dst.spec().format == src.spec().format &&
                          channels <= kMaxChannels && LieInMemory(dst, src);
    if (isDirect) {
        const auto steps = PlanResize(ChangeOf(dst.spec(), src.spec(), element, channels), scaling, {});
        if (steps) ResizeInPlace(dst, src, *steps);
        return steps.has_value();
    }
    for (int begin = 0; begin < channels; begin += kMaxChannels) {
        const int end = std::min(channels, begin + kMaxChannels);
        const auto steps = PlanResize(ChangeOf(dst.spec(), src.spec(), ElementType::kFloat, end - begin), scaling, {});
        if (!steps || !ResizeChannels(dst, src, begin, end, *steps)) return false;
    }
    return true;
}

}  // namespace Kavra::Devices
