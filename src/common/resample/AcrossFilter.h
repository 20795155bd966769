/// Filtering along rows.
#pragma once

#include "common/resample/ResampleKernels.h"
#include "common/resample/ResampleMethod.h"

#include <cstdint>
#include <vector>

namespace Kavra::Common {

/// The horizontal half of a filter: takes rows of floats of the source's width and gives rows of the result's width.
/// Rows have the edge pixels again on both sides, as far as any reach goes beyond them: `Stride` floats, of which the
/// first `Left` stand before the source's own.
class AcrossFilter {
public:
    explicit AcrossFilter(const Resampling& resampling);
    /// By the plan of a row of `fromCount` pixels.
    AcrossFilter(AxisPlan plan, int channels, int fromCount);

    const AxisPlan& Plan() const { return mPlan; }
    std::size_t Stride() const { return mStride; }
    std::size_t Left() const { return mLeft * mChannels; }

    /// Fills in what stands on both sides of a row whose own floats are there.
    void ExtendEdges(float* row) const;

    /// What the kernels take.
    RowWeights Weights() const;

    /// Filters up to four rows, which share their weights.
    void Sum(const FilteredRows& rows) const;

    /// The least and the largest value under the filter, of rows of least and largest values.
    void Range(const float* low, const float* high, float* least, float* most) const;

private:
    AxisPlan mPlan;
    std::size_t mChannels, mFromElements;
    std::size_t mLeft;    ///< pixels of the edge that stand again before the first one
    std::size_t mRight;   ///< and behind the last one
    std::size_t mStride;  ///< floats of a row with both
    std::vector<std::uint32_t> mBegins, mCounts;
};

/// Brings values into their ranges. A value that is no number stays one, and an empty range binds nothing.
void ClampToRange(const float* least, const float* most, std::size_t count, float* values);

}  // namespace Kavra::Common
