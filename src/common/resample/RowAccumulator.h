/// Resampling of rows that are never kept.
///
/// Where a row of the result is made of hundreds of rows, a ring of them is large. Here each row that comes is filtered
/// across at once and added to the few rows of the result that it counts for, each of which is given as soon as its last
/// row has come. Across before down: the last bits are others than where whole rows are at hand, so this is for sums in
/// which they do not show, or differ from the library's anyway.
#pragma once

#include "common/RowSink.h"
#include "common/resample/AcrossFilter.h"
#include "common/resample/WorkingColours.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace Kavra::Common {

class RowAccumulator {
public:
    /// Gives its rows to `out`, which lives longer. Throws `std::bad_alloc`.
    RowAccumulator(const Resampling& resampling, RowSink& out);

    /// Whether rows are better added up than kept: where a picture shrinks down so far that those under the filter would
    /// take more than some megabytes, and no 8-bit value can be held to the library's byte.
    static bool IsBetter(const Resampling& resampling);

    /// As many rows as it takes at a time at most.
    static std::size_t BandRows(const Resampling& resampling);

    /// Takes the next `count` rows of the source, packed, and gives what rows of the result they complete.
    void Take(const unsigned char* rows, std::size_t count);

    /// Bytes that it holds at most, with a band of the source.
    static std::uint64_t BytesFor(const Resampling& resampling);

private:
    /// A row of the result that rows of the source still count for.
    struct RowSum {
        std::size_t first;           ///< of those rows
        std::vector<float> weights;  ///< of each; the edge's have those of what lies beyond it, too
        std::vector<float> values, low, high;

        std::size_t End() const { return first + weights.size(); }
    };

    RowSum NewSum(std::size_t y) const;
    void FilterBand(const unsigned char* rows, std::size_t count);
    void FilterRows(const unsigned char* rows, std::size_t begin, std::size_t end);
    void AddBand(RowSum& sum, std::size_t count) const;
    void Give(RowSum& sum);
    float* Filtered(std::vector<float>& band, std::size_t row) const { return band.data() + row * mStride; }

    Resampling mResampling;
    RowSink& mOut;
    WorkingColours mColours;
    AcrossFilter mAcross;
    AxisPlan mRows;
    std::size_t mElements, mStride;         ///< floats of a row of the result, and with what lies between two
    std::vector<float> mBand, mLow, mHigh;  ///< rows of the band, filtered across
    std::deque<RowSum> mSums;
    std::size_t mTaken = 0, mBegun = 0;  ///< rows of the source; rows of the result
};

}  // namespace Kavra::Common
