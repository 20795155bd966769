#include "common/resample/RowAccumulator.h"

#include "common/Limits.h"
#include "common/ParallelRange.h"
#include "common/resample/FilterMethod.h"

#include <algorithm>

namespace Kavra::Common {

namespace {

constexpr std::uint64_t kMaxKeptBytes = std::uint64_t{32} << 20;
constexpr std::size_t kBandBytes = std::size_t{8} << 20;
constexpr std::size_t kMaxBandRows = 64;
constexpr std::size_t kRowsAtOnce = 4;

AxisPlan PlanDown(const Resampling& resampling) {
    return {resampling.y, resampling.FilterAlong(resampling.y), resampling.Radius(), false};
}

/// Rows of the source under the filter for one row of the result.
std::uint64_t RowsUnderFilter(const Resampling& resampling) {
    const double width = static_cast<double>(resampling.FilterAlong(resampling.y).width);
    return static_cast<std::uint64_t>(width / static_cast<double>(resampling.y.Ratio())) + 1;
}

}  // namespace

bool RowAccumulator::IsBetter(const Resampling& resampling) {
    if (resampling.LooksAtPoints() || resampling.y.Ratio() >= 1.0F) return false;
    const std::uint64_t kept = Product<std::uint64_t>(RowsUnderFilter(resampling), resampling.FromRowBytes());
    if (kept <= kMaxKeptBytes) return false;
    return FilterMethod::TieBound(resampling) == 0.0F;
}

std::size_t RowAccumulator::BandRows(const Resampling& resampling) {
    return std::clamp<std::size_t>(kBandBytes / resampling.FromRowBytes(), 1, kMaxBandRows);
}

std::uint64_t RowAccumulator::BytesFor(const Resampling& resampling) {
    constexpr std::uint64_t kSums = 8;  // rows of the result that overlap, and those that a band completes
    const std::uint64_t rowFloats =
        static_cast<std::uint64_t>(resampling.x.toCount) * static_cast<std::uint64_t>(resampling.pixels.channels) * 3;
    const std::uint64_t rows = BandRows(resampling);
    const std::size_t threads = ThreadsFor(rows, kRowsAtOnce);
    const std::uint64_t sums = Product<std::uint64_t>(2 * rows + kSums, rowFloats * sizeof(float));
    return Sum<std::uint64_t>(Product<std::uint64_t>(rows, resampling.FromRowBytes()),
                              Sum<std::uint64_t>(sums, BytesOfGroups(resampling, threads, kRowsAtOnce)));
}

RowAccumulator::RowAccumulator(const Resampling& resampling, RowSink& out)
    : mResampling(resampling),
      mOut(out),
      mColours(resampling.pixels, resampling.options),
      mAcross(resampling),
      mRows(PlanDown(resampling)),
      mElements(static_cast<std::size_t>(resampling.x.toCount) * static_cast<std::size_t>(resampling.pixels.channels)),
      mStride(mElements + kSlack),
      mBand(BandRows(resampling) * mStride),
      mLow(resampling.KeepsRange() ? mBand.size() : 0),
      mHigh(mLow.size()) {}

RowAccumulator::RowSum RowAccumulator::NewSum(std::size_t y) const {
    const Reach& reach = mRows.ReachOf(y);
    const RowSpan span = ClampedSpan(reach, mResampling.y.fromCount);
    RowSum sum{.first = static_cast<std::size_t>(span.first),
               .weights = std::vector<float>(static_cast<std::size_t>(span.end - span.first)),
               .values = std::vector<float>(mStride),
               .low = std::vector<float>(mLow.empty() ? 0 : mStride),
               .high = std::vector<float>(mHigh.empty() ? 0 : mStride)};
    for (int i = 0; i < reach.count; ++i) {
        const auto row = std::clamp<std::int64_t>(reach.first + i, span.first, span.end - 1) - span.first;
        sum.weights[static_cast<std::size_t>(row)] += mRows.WeightsOf(y)[i];
    }
    return sum;
}

/// Rows of the band, four at a time.
void RowAccumulator::FilterRows(const unsigned char* rows, std::size_t begin, std::size_t end) {
    const std::size_t rowBytes = mResampling.FromRowBytes(), elements = mResampling.FromRowFloats();
    const std::size_t most = std::min(kRowsAtOnce, RowsOfGroup(mAcross.Stride()));
    std::vector<float> floats(most * mAcross.Stride());
    for (std::size_t y = begin; y < end; y += most) {
        const std::size_t together = std::min(most, end - y);
        for (std::size_t i = 0; i < together; ++i) {
            float* const row = floats.data() + i * mAcross.Stride();
            float* const own = row + mAcross.Left();
            mColours.Decode(rows + (y + i) * rowBytes, elements, own);
            if (!mLow.empty()) {
                mAcross.ExtendEdges(row);
                mAcross.Range(row, row, Filtered(mLow, y + i), Filtered(mHigh, y + i));
            }
            if (mColours.IsWeighted()) mColours.Weight(own, elements);
            mAcross.ExtendEdges(row);
        }
        mAcross.Sum({{floats.data(), mAcross.Stride()}, {Filtered(mBand, y), mStride}, together});
    }
}

void RowAccumulator::FilterBand(const unsigned char* rows, std::size_t count) {
    ForEachRange(count, kRowsAtOnce, [&](std::size_t begin, std::size_t end) { FilterRows(rows, begin, end); });
}

void RowAccumulator::AddBand(RowSum& sum, std::size_t count) const {
    const ResampleKernels& kernels = GetResampleKernels();
    const std::size_t begin = std::max(sum.first, mTaken), end = std::min(sum.End(), mTaken + count);
    if (begin >= end) return;
    const float* const weights = sum.weights.data() + (begin - sum.first);
    const auto rowsOf = [&](const std::vector<float>& band) {
        return FloatRows{const_cast<float*>(band.data()) + (begin - mTaken) * mStride, mStride};
    };
    const bool begins = begin == sum.first;
    kernels.addRows(rowsOf(mBand), weights, end - begin, mElements, sum.values.data(), begins);
    if (mLow.empty()) return;
    std::vector<float> unused(mStride);
    kernels.rangeRows(rowsOf(mLow), weights, end - begin, mElements, sum.low.data(), unused.data(), begins);
    kernels.rangeRows(rowsOf(mHigh), weights, end - begin, mElements, unused.data(), sum.high.data(), begins);
}

void RowAccumulator::Give(RowSum& sum) {
    float* const values = sum.values.data();
    if (mColours.IsWeighted()) mColours.Unweight(values, mElements);
    if (!mLow.empty() && !sum.weights.empty()) ClampToRange(sum.low.data(), sum.high.data(), mElements, values);
    mColours.Encode(values, mElements);
    const std::span<unsigned char> row = mOut.NextRows(1);
    if (!row.empty()) GetResampleKernels().store(mResampling.pixels.element, values, mElements, row.data());
}

void RowAccumulator::Take(const unsigned char* rows, std::size_t count) {
    FilterBand(rows, count);
    for (; mBegun < mRows.Size(); ++mBegun) {
        const RowSpan span = ClampedSpan(mRows.ReachOf(mBegun), mResampling.y.fromCount);
        if (static_cast<std::size_t>(span.first) >= mTaken + count) break;
        mSums.push_back(NewSum(mBegun));
    }
    ForEachRange(mSums.size(), 0, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            AddBand(mSums[i], count);
    });
    mTaken += count;
    for (; !mSums.empty() && mSums.front().End() <= mTaken; mSums.pop_front())
        Give(mSums.front());
}

}  // namespace Kavra::Common
