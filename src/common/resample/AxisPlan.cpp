#include "common/resample/AxisPlan.h"

#include <algorithm>
#include <cmath>
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
