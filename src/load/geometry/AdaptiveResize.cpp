#include "load/geometry/AdaptiveResize.h"

#include "load/geometry/NewImage.h"

#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace Kavra::Devices {
namespace {

using OIIO::ImageBuf;
using OIIO::ImageSpec;

constexpr double kSamplingLimit = 0.1;  // smaller changes of size are sampled, not filtered
constexpr int kMinFiltered = 100;       // pixels a side; smaller results are never filtered in two steps
constexpr int kAllChannels = 10000;
constexpr int kMaxSide = 1 << 30;
constexpr double kFilterWidth = 4;    // pixels of the source or of the result, whichever are larger
constexpr double kMaxTaps = 1 << 17;  // floats that the filter may put on the stack

bool HasFlatPixels(const ImageBuf& image) {
    if (!image.initialized()) return false;
    const ImageSpec& spec = image.spec();
    return !spec.deep && spec.format.basetype != OIIO::TypeDesc::UNKNOWN && spec.depth <= 1 && spec.width > 0 &&
           spec.height > 0 && spec.full_width > 0 && spec.full_height > 0;
}

/// Whether the library may be given the two. It reads and writes out of bounds where the channel counts differ.
bool AreResizable(const ImageBuf& dst, const ImageBuf& src) {
    return HasFlatPixels(dst) && HasFlatPixels(src) && dst.nchannels() == src.nchannels();
}

bool IsSmallChange(int to, int from) {
    const auto change = static_cast<float>(std::abs(static_cast<std::int64_t>(to) - from));
    return static_cast<double>(change / static_cast<float>(to)) < kSamplingLimit;
}

/// Source pixels that the filter wants under one pixel of the result. Single precision throughout decides here: from 60
/// to 12 pixels the footprint is 63 (with a double 4.0 it were 60), from 42 to 12 it is 42 (all in double it were 45).
std::int64_t Footprint(int to, int from) {
    const float scale = static_cast<float>(to) / static_cast<float>(from);
    return 3 * static_cast<std::int64_t>(std::trunc(4.0F / scale + 1.0F));
}

bool Sample(ImageBuf& dst, const ImageBuf& src) {
    return OIIO::ImageBufAlgo::resample(dst, src, false, OIIO::ROI::All(), 0);
}

double Scale(int to, int from) {
    return static_cast<double>(to) / from;
}

/// Pixels of the source, along each side, that the library looks at for one pixel of the result. Most of them may weigh
/// nothing: along both sides it goes as far as a filter reaches that is as wide as the growth of the WIDTH demands.
struct Taps {
    double across, down;
};

Taps TapsOf(const ImageSpec& to, const ImageSpec& from) {
    const double width = Scale(to.full_width, from.full_width), height = Scale(to.full_height, from.full_height);
    const double reach = kFilterWidth * std::max(1.0, width);
    return {reach / width + 1, reach / height + 1};
}

double Pixels(const ImageSpec& spec) {
    return static_cast<double>(spec.width) * spec.height;
}

/// Whether the library takes far longer than the two images are large, or more of its stack than there is.
bool IsBeyondLibrary(const ImageSpec& to, const ImageSpec& from) {
    constexpr double kFewLooks = 1 << 28, kLooksPerPixel = 512;
    const Taps taps = TapsOf(to, from);
    const double looks = Pixels(to) * taps.across * taps.down;
    return taps.down > kMaxTaps || (looks > kFewLooks && looks > kLooksPerPixel * (Pixels(to) + Pixels(from)));
}

bool Mitchell(ImageBuf& dst, const ImageBuf& src) {
    return OIIO::ImageBufAlgo::resize(dst, src, {{"filtername", "mitchell"}}, OIIO::ROI::All(), 0);
}

/// Filters, or samples where the library could not filter: it keeps a column's weights on the stack, and ends the
/// process over too many. What takes too long is interpolated.
bool Filter(ImageBuf& dst, const ImageBuf& src) {
    const ImageSpec &to = dst.spec(), &from = src.spec();
    if (kFilterWidth / Scale(to.full_height, from.full_height) > kMaxTaps) return Sample(dst, src);
    if (!IsBeyondLibrary(to, from)) return Mitchell(dst, src);
    return OIIO::ImageBufAlgo::resample(dst, src, true, OIIO::ROI::All(), 0);
}

/// Samples a region as high as the filter's footprint, of the result's proportions, and filters that.
bool SampleThenFilter(ImageBuf& dst, const ImageBuf& src, std::int64_t footprint) {
    if (footprint > kMaxSide) return false;
    const float proportion = static_cast<float>(dst.spec().width) / static_cast<float>(dst.spec().height);
    const float wantedWidth = std::trunc(proportion * static_cast<float>(footprint));
    // The library ends the process over a region without width.
    const int width = static_cast<int>(std::clamp(wantedWidth, 1.0F, static_cast<float>(kMaxSide)));
    const int height = static_cast<int>(footprint);

    ImageSpec spec = src.spec();
    spec.width = width;
    spec.height = height;
    const std::size_t bytes = PixelBytes(spec);
    if (bytes == 0) return false;
    if (!CanAllocate(bytes)) throw std::bad_alloc();
    const ImageBuf region =
        OIIO::ImageBufAlgo::resample(src, false, OIIO::ROI(0, width, 0, height, 0, 1, 0, kAllChannels), 0);
    return !region.has_error() && Filter(dst, region);
}

}  // namespace

bool AdaptiveResize(ImageBuf& dst, const ImageBuf& src, bool highQuality) {
    if (!AreResizable(dst, src)) return false;
    if (highQuality) return Filter(dst, src);

    const ImageSpec& to = dst.spec();
    const ImageSpec& from = src.spec();
    if (IsSmallChange(to.full_width, from.full_width) && IsSmallChange(to.full_height, from.full_height)) {
        return Sample(dst, src);
    }
    const std::int64_t footprintX = Footprint(to.full_width, from.full_width);
    const std::int64_t footprintY = Footprint(to.full_height, from.full_height);
    if (footprintX <= from.full_width && footprintY <= from.full_height) return Filter(dst, src);
    if (to.width >= kMinFiltered && to.height >= kMinFiltered) {
        return SampleThenFilter(dst, src, footprintY);
    }
    return Sample(dst, src);
}

}  // namespace Kavra::Devices
