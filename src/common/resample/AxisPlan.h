/// Which pixels of a row or column a resampled one is made of, and what each of them weighs.
#pragma once

#include "common/resample/ResampleFilter.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Common {

/// One side of a picture and of its resampled one. Proportions are those of the two `Full` windows; pixels are there
/// from `Start` on.
struct ResampleAxis {
    int fromFullStart, fromFull, fromStart, fromCount;
    int toFullStart, toFull, toStart, toCount;

    static constexpr ResampleAxis Whole(int from, int to) { return {0, from, 0, from, 0, to, 0, to}; }
    /// Pictures on one another that are resampled as one, in the proportions of one.
    static constexpr ResampleAxis Stacked(int from, int to, int count) {
        return {0, from, 0, from * count, 0, to, 0, to * count};
    }

    float Ratio() const { return static_cast<float>(toFull) / static_cast<float>(fromFull); }

    /// Where the centre of a pixel of the result lies in the source, from the source's first pixel on: whole pixels and
    /// the rest. In single precision as the image library has it, so that it is the same number.
    struct Position {
        std::int64_t pixel;
        float fraction;
    };
    Position At(int to) const;

    /// The same half a pixel further up, between the centres of two pixels.
    Position BetweenCentres(int to) const;

private:
    float Coordinate(int to) const;
};

/// The pixels of the source that one pixel of the result is made of: `first` to `first + count - 1`, which may lie
/// beyond the ends, where the last pixel stands again. None: the result is 0.
struct Reach {
    std::int64_t first = 0;
    int count = 0;
};

/// The reaches and weights of all pixels along one side.
class AxisPlan {
public:
    /// `radius`: half of the filter's width in pixels of the result, as far as the library looks to either side; it takes
    /// that of the horizontal filter for both axes. Weights of 0 at the ends of a reach are left out unless
    /// `keepsZeros`, as a value that is no number counts even there.
    AxisPlan(const ResampleAxis& axis, const ResampleFilter& filter, float radius, bool keepsZeros);

    /// Of a side that shrinks from `from` to `to` pixels or stays, apart from the library's ways: positions in double
    /// precision, of a box the share of each pixel that is covered. A side that stays is not filtered.
    static AxisPlan Precise(int from, int to, Devices::EResampleFilter filter);

    std::size_t Size() const { return mReaches.size(); }
    const Reach& ReachOf(std::size_t to) const { return mReaches[to]; }
    /// As many as the longest reach has, those behind the reach's own 0.
    const float* WeightsOf(std::size_t to) const { return mWeights.data() + to * mStride; }
    int MaxCount() const { return static_cast<int>(mStride); }
    std::int64_t First() const { return mFirst; }  ///< of all reaches
    std::int64_t End() const { return mEnd; }      ///< behind all reaches

    /// What bounds of rounding errors are made of: the largest of each over all pixels.
    struct Sums {
        double count = 0;       ///< weights
        double total = 0;       ///< of their absolute values
        double cumulative = 0;  ///< sum of their partial sums, each with its own weight
        double before = 0;      ///< the same, each without its own weight
    };
    Sums LargestSums() const;

private:
    AxisPlan() = default;

    void Add(const ResampleAxis& axis, const ResampleFilter& filter, float radius, bool keepsZeros, int to);
    void AddPrecise(const Reach& reach, const std::vector<double>& weights);
    void FindEnds();

    std::vector<Reach> mReaches;
    std::vector<float> mWeights;
    std::size_t mStride = 0;
    std::int64_t mFirst = 0, mEnd = 0;
};

}  // namespace Kavra::Common
