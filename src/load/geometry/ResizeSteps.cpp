#include "load/geometry/ResizeSteps.h"

#include "common/PixelFormats.h"
#include "common/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace Kavra::Devices {

namespace {

using Common::ResampleAxis;
using Common::Resampling;

constexpr double kSamplingLimit = 0.1;  // smaller changes of size are sampled, not filtered
constexpr int kMinFiltered = 100;       // pixels a side; smaller results are never filtered in two steps
constexpr int kMaxSide = 1 << 30;

bool IsSmallChange(const ResampleAxis& axis) {
    const auto change = static_cast<float>(std::abs(std::int64_t{axis.toFull} - axis.fromFull));
    return static_cast<double>(change / static_cast<float>(axis.toFull)) < kSamplingLimit;
}

/// Source pixels that the filter wants under one pixel of the result. Single precision throughout decides here: from 60
/// to 12 pixels the footprint is 63 (with a double 4.0 it were 60), from 42 to 12 it is 42 (all in double it were 45).
std::int64_t Footprint(const ResampleAxis& axis) {
    return 3 * static_cast<std::int64_t>(std::trunc(4.0F / axis.Ratio() + 1.0F));
}

ResampleOptions With(const ResampleOptions& options, EResampleFilter filter) {
    ResampleOptions result = options;
    result.filter = filter;
    return result;
}

/// Sampled where the filter would reach over more than a row of floats may hold.
std::optional<ResizeSteps> OneStep(const SizeChange& change, EResampleFilter filter, const ResampleOptions& options) {
    for (const EResampleFilter possible : {filter, kResampleNearest}) {
        const Resampling only{change.pixels, change.x, change.y, With(options, possible)};
        if (only.IsPossible()) return ResizeSteps{only, std::nullopt};
    }
    return std::nullopt;
}

/// From the source to a region of its own, and from that on.
ResampleAxis ToRegion(const ResampleAxis& axis, int size) {
    return {axis.fromFullStart, axis.fromFull, axis.fromStart, axis.fromCount, 0, size, 0, size};
}
ResampleAxis FromRegion(const ResampleAxis& axis, int size) {
    return {0, size, 0, size, axis.toFullStart, axis.toFull, axis.toStart, axis.toCount};
}

/// Samples a region as high as the filter's footprint, of the result's proportions, and filters that.
std::optional<ResizeSteps> SampleThenFilter(const SizeChange& change, const ResampleOptions& options) {
    const std::int64_t footprint = Footprint(change.y);
    if (footprint > kMaxSide) return std::nullopt;
    const float proportion = static_cast<float>(change.x.toCount) / static_cast<float>(change.y.toCount);
    const float wantedWidth = std::trunc(proportion * static_cast<float>(footprint));
    const int width = static_cast<int>(std::clamp(wantedWidth, 1.0F, static_cast<float>(kMaxSide)));
    const int height = static_cast<int>(footprint);
    const ResizeSteps steps{
        {change.pixels, ToRegion(change.x, width), ToRegion(change.y, height), With(options, kResampleNearest)},
        Resampling{change.pixels, FromRegion(change.x, width), FromRegion(change.y, height),
                   With(options, kResampleMitchell)}};
    if (!steps.first.IsPossible() || !steps.second->IsPossible()) return std::nullopt;
    return steps;
}

std::optional<ResizeSteps> Adaptive(const SizeChange& change, const ResampleOptions& options) {
    const ResampleAxis &x = change.x, &y = change.y;
    if (IsSmallChange(x) && IsSmallChange(y)) return OneStep(change, kResampleNearest, options);
    if (Footprint(x) <= x.fromFull && Footprint(y) <= y.fromFull) return OneStep(change, kResampleMitchell, options);
    if (x.toCount >= kMinFiltered && y.toCount >= kMinFiltered) return SampleThenFilter(change, options);
    return OneStep(change, kResampleNearest, options);
}

}  // namespace

SizeChange ChangeOf(const Raster& raster, int width, int height) {
    const Common::PixelFormat& facts = Common::FactsOf(raster.format);
    const bool hasAlpha = facts.hasAlpha && facts.channels > 1;
    return {{.element = facts.element, .channels = facts.channels, .alphaChannel = hasAlpha ? facts.channels - 1 : -1},
            Common::ResampleAxis::Whole(raster.width, width),
            Common::ResampleAxis::Stacked(raster.height, height, raster.faces)};
}

std::optional<ResizeSteps> PlanResize(const SizeChange& change, Scaling scaling, const ResampleOptions& options) {
    switch (scaling) {
        case Scaling::kAdaptive:
            return Adaptive(change, options);
        case Scaling::kMitchell:
            return OneStep(change, kResampleMitchell, options);
        case Scaling::kBilinear:
            return OneStep(change, kResampleBilinear, options);
        case Scaling::kNearest:
            return OneStep(change, kResampleNearest, options);
        case Scaling::kChosen:
            return OneStep(change, options.filter, options);
    }
    return std::nullopt;
}

void RunSteps(const ResizeSteps& steps, const unsigned char* from, std::size_t pitch, unsigned char* to) {
    if (!steps.second) return Common::Resample(steps.first, from, pitch, to, steps.first.ToRowBytes());
    const std::size_t rowBytes = steps.second->ToRowBytes();
    Common::BlockRows out({to, static_cast<std::size_t>(steps.second->y.toCount) * rowBytes}, rowBytes);
    Common::RowResampler filter(*steps.second, out);
    Common::ProgressMeter meter(kProgressResizing, 1);
    meter.Expect(1);
    Common::ResampleInto(steps.first, from, pitch, filter);
    filter.Finish();
    meter.Advance(1);
}

}  // namespace Kavra::Devices
