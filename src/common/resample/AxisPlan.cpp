#include "common/resample/AxisPlan.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <ranges>

namespace Kavra::Common {

namespace {

ResampleAxis::Position Split(float coordinate, int start) {
    const float whole = std::floor(coordinate);
    return {static_cast<std::int64_t>(whole) - start, coordinate - whole};
}

}  // namespace

// --- Positions -------------------------------------------------------------------------------------------------------

float ResampleAxis::Coordinate(int to) const {
    const float step = 1.0F / static_cast<float>(toFull);
    const float s = (static_cast<float>(toStart + to) - static_cast<float>(toFullStart) + 0.5F) * step;
    return static_cast<float>(fromFullStart) + s * static_cast<float>(fromFull);
}

ResampleAxis::Position ResampleAxis::At(int to) const {
    return Split(Coordinate(to), fromStart);
}

ResampleAxis::Position ResampleAxis::BetweenCentres(int to) const {
    return Split(Coordinate(to) - 0.5F, fromStart);
}

// --- Weights ---------------------------------------------------------------------------------------------------------

namespace {

/// The taps, of 0 to 2 x `radius` source pixels, that may weigh anything: the filter's own width decides, with a pixel
/// to spare at either end.
struct TapRange {
    std::int64_t begin, end;

    TapRange(double ratio, double radius, double filterRadius, double fraction) {
        const double reach = std::ceil(radius / ratio), centre = reach + fraction - 0.5, own = filterRadius / ratio + 2;
        begin = static_cast<std::int64_t>(std::max(0.0, std::floor(centre - own)));
        end = static_cast<std::int64_t>(std::min(2 * reach + 1, std::ceil(centre + own) + 1));
    }
};

}  // namespace

AxisPlan::AxisPlan(const ResampleAxis& axis, const ResampleFilter& filter, float radius, bool keepsZeros) {
    const double own = std::min<double>(radius, filter.width / 2.0);
    mStride = static_cast<std::size_t>(2 * (std::ceil(own / static_cast<double>(axis.Ratio())) + 3) + 1);
    mReaches.reserve(static_cast<std::size_t>(axis.toCount));
    mWeights.resize(static_cast<std::size_t>(axis.toCount) * mStride);
    for (int to = 0; to < axis.toCount; ++to)
        Add(axis, filter, radius, keepsZeros, to);

    const int longest = std::ranges::max(mReaches, {}, &Reach::count).count;
    const auto stride = static_cast<std::size_t>(std::max(longest, 1));
    for (std::size_t to = 1; stride < mStride && to < mReaches.size(); ++to)
        std::copy_n(mWeights.begin() + static_cast<std::ptrdiff_t>(to * mStride), stride,
                    mWeights.begin() + static_cast<std::ptrdiff_t>(to * stride));
    mStride = stride;
    mWeights.resize(mReaches.size() * mStride);
    mWeights.shrink_to_fit();

    FindEnds();
}

void AxisPlan::FindEnds() {
    mFirst = std::ranges::min(mReaches, {}, &Reach::first).first;
    mEnd = std::ranges::max(mReaches | std::views::transform([](const Reach& r) { return r.first + r.count; }));
}

void AxisPlan::Add(const ResampleAxis& axis, const ResampleFilter& filter, float radius, bool keepsZeros, int to) {
    const float ratio = axis.Ratio();
    const auto [pixel, fraction] = axis.At(to);
    const std::int64_t reach = static_cast<std::int64_t>(std::ceil(radius / ratio));
    const TapRange taps(ratio, radius, filter.width / 2, fraction);
    float* const weights = mWeights.data() + mReaches.size() * mStride;
    Reach result{pixel - reach + taps.begin, 0};
    float total = 0.0F;
    for (std::int64_t tap = taps.begin; tap < taps.end; ++tap) {
        const float weight = filter.Weight(ratio * (static_cast<float>(tap - reach) - (fraction - 0.5F)));
        total += weight;
        const bool isOuterZero = weight == 0.0F && result.count == 0;
        if (isOuterZero && !keepsZeros) {
            ++result.first;
        } else if (static_cast<std::size_t>(result.count) < mStride) {
            weights[result.count++] = weight;
        }
    }
    if (!keepsZeros) {
        while (result.count > 0 && weights[result.count - 1] == 0.0F)
            --result.count;
    }
    if (total == 0.0F) result.count = 0;
    for (int i = 0; i < result.count; ++i)
        weights[i] /= total;
    std::fill(weights + result.count, weights + mStride, 0.0F);
    mReaches.push_back(result);
}

// --- Precise weights -------------------------------------------------------------------------------------------------

namespace {

/// What a pixel of the result covers of each pixel of the source, in parts of `to` a pixel.
Reach Covered(std::int64_t from, std::int64_t to, std::int64_t pixel, std::vector<double>& weights) {
    const std::int64_t begin = pixel * from, end = begin + from;
    const Reach reach{begin / to, static_cast<int>((end + to - 1) / to - begin / to)};
    for (std::int64_t i = reach.first; i < reach.first + reach.count; ++i)
        weights.push_back(static_cast<double>(std::min(end, (i + 1) * to) - std::max(begin, i * to)));
    return reach;
}

/// What lies under a filter of `width` pixels of the result.
Reach Under(const ResampleFilter& filter, double ratio, int pixel, std::vector<double>& weights) {
    const double centre = (pixel + 0.5) / ratio, radius = static_cast<double>(filter.width) / 2 / ratio;
    Reach reach{static_cast<std::int64_t>(std::ceil(centre - radius - 0.5)), 0};
    for (std::int64_t i = reach.first; static_cast<double>(i) + 0.5 <= centre + radius; ++i) {
        const double distance = (static_cast<double>(i) + 0.5 - centre) * ratio;
        const float weight = filter.Weight(static_cast<float>(distance));
        if (weight == 0.0F && weights.empty()) {
            ++reach.first;
        } else {
            weights.push_back(static_cast<double>(weight));
        }
    }
    while (weights.back() == 0.0)
        weights.pop_back();
    reach.count = static_cast<int>(weights.size());
    return reach;
}

}  // namespace

void AxisPlan::AddPrecise(const Reach& reach, const std::vector<double>& weights) {
    const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
    for (const double weight : weights)
        mWeights.push_back(static_cast<float>(weight / total));
    mWeights.resize((mReaches.size() + 1) * mStride);
    mReaches.push_back(reach);
}

AxisPlan AxisPlan::Precise(int from, int to, Devices::EResampleFilter kind) {
    constexpr float kNoGrowth = 1;
    const ResampleFilter filter(kind, kNoGrowth);
    const bool isCovered = kind == Devices::kResampleBox || from == to;
    const double ratio = static_cast<double>(to) / from;
    AxisPlan plan;
    // The pixels under the filter, and those that it touches at both ends.
    plan.mStride = from == to ? 1 : static_cast<std::size_t>(static_cast<double>(filter.width) / ratio) + 2;
    std::vector<double> weights;
    for (int pixel = 0; pixel < to; ++pixel) {
        weights.clear();
        const Reach reach = isCovered ? Covered(from, to, pixel, weights) : Under(filter, ratio, pixel, weights);
        plan.AddPrecise(reach, weights);
    }
    plan.FindEnds();
    return plan;
}

// --- Errors ----------------------------------------------------------------------------------------------------------

AxisPlan::Sums AxisPlan::LargestSums() const {
    Sums largest;
    for (std::size_t to = 0; to < mReaches.size(); ++to) {
        Sums sums;
        for (int i = 0; i < mReaches[to].count; ++i) {
            const double weight = std::fabs(static_cast<double>(WeightsOf(to)[i]));
            sums.count += weight != 0;
            sums.before += sums.total;
            sums.total += weight;
            sums.cumulative += sums.total;
        }
        largest = {std::max(largest.count, sums.count), std::max(largest.total, sums.total),
                   std::max(largest.cumulative, sums.cumulative), std::max(largest.before, sums.before)};
    }
    return largest;
}

}  // namespace Kavra::Common
