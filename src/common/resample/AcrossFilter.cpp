#include "common/resample/AcrossFilter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Kavra::Common {

AcrossFilter::AcrossFilter(const Resampling& resampling)
    : AcrossFilter(
          {resampling.x, resampling.FilterAlong(resampling.x), resampling.Radius(), !resampling.IsOfIntegers()},
          resampling.pixels.channels, resampling.x.fromCount) {}

AcrossFilter::AcrossFilter(AxisPlan plan, int channels, int fromCount)
    : mPlan(std::move(plan)),
      mChannels(static_cast<std::size_t>(channels)),
      mFromElements(static_cast<std::size_t>(fromCount) * mChannels),
      mLeft(static_cast<std::size_t>(std::max<std::int64_t>(-mPlan.First(), 0))),
      mRight(static_cast<std::size_t>(std::max<std::int64_t>(mPlan.End() - fromCount, 0))),
      mStride((mLeft + mRight) * mChannels + mFromElements + kSlack) {
    for (std::size_t x = 0; x < mPlan.Size(); ++x) {
        const Reach& reach = mPlan.ReachOf(x);
        const std::int64_t begin = reach.count > 0 ? reach.first + static_cast<std::int64_t>(mLeft) : 0;
        mBegins.push_back(static_cast<std::uint32_t>(begin) * static_cast<std::uint32_t>(mChannels));
        mCounts.push_back(static_cast<std::uint32_t>(reach.count));
    }
}

void AcrossFilter::ExtendEdges(float* row) const {
    float* const first = row + mLeft * mChannels;
    for (float* pixel = row; pixel < first; pixel += mChannels)
        std::copy_n(first, mChannels, pixel);
    float* const end = first + mFromElements;
    for (std::size_t i = 0; i < mRight; ++i)
        std::copy_n(end - mChannels, mChannels, end + i * mChannels);
}

RowWeights AcrossFilter::Weights() const {
    return {.begins = mBegins.data(),
            .counts = mCounts.data(),
            .weights = mPlan.WeightsOf(0),
            .stride = static_cast<std::size_t>(mPlan.MaxCount()),
            .size = mPlan.Size()};
}

void AcrossFilter::Sum(const FilteredRows& rows) const {
    GetResampleKernels().filterRows(static_cast<int>(mChannels), rows, Weights());
}

void AcrossFilter::Range(const float* low, const float* high, float* least, float* most) const {
    for (std::size_t x = 0; x < mPlan.Size(); ++x) {
        const float* const weights = mPlan.WeightsOf(x);
        for (std::size_t c = 0; c < mChannels; ++c, ++least, ++most) {
            *least = std::numeric_limits<float>::infinity();
            *most = -*least;
            for (std::size_t tap = 0; tap < mCounts[x]; ++tap) {
                if (weights[tap] == 0.0F) continue;
                const std::size_t at = mBegins[x] + tap * mChannels + c;
                *least = std::min(*least, low[at]);
                *most = std::max(*most, high[at]);
            }
        }
    }
}

void ClampToRange(const float* least, const float* most, std::size_t count, float* values) {
    for (std::size_t i = 0; i < count; ++i) {
        if (least[i] > most[i]) continue;
        if (values[i] < least[i]) values[i] = least[i];
        if (values[i] > most[i]) values[i] = most[i];
    }
}

}  // namespace Kavra::Common
