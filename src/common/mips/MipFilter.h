/// A picture at the size of the next level.
#pragma once

#include "common/mips/MipPictures.h"
#include "common/resample/AcrossFilter.h"
#include "common/resample/AxisPlan.h"

#include <cstddef>
#include <vector>

namespace Kavra::Common {

/// Filters floats as `FilterMethod` does, down and then across, but for planes that go on beyond their edges, with precise
/// weights, and in sums that are the same on every machine.
class MipFilter {
public:
    struct Size {
        int width, height;
    };
    /// `isBounded`: values stay between the least and the largest under the filter.
    MipFilter(Size from, Size to, int channels, Devices::EResampleFilter filter, bool isBounded);

    /// Makes all rows, packed, at `out`, on all cores. Throws `std::bad_alloc`.
    void Make(const MipPlane& source, float* out) const;

private:
    struct Scratch;
    /// Pixels of a row with what it has beyond its edges, from the first of these on.
    struct Block {
        std::size_t begin, width;
    };

    void MakeRows(const MipPlane& source, std::size_t begin, std::size_t end, float* out) const;
    void SumDown(const MipPlane& source, std::size_t y, std::size_t count, Scratch& scratch) const;
    void SumBlock(const MipPlane& source, std::size_t y, std::size_t count, const Block& block, Scratch& scratch) const;
    void SumAcross(std::size_t row, std::size_t count, Scratch& scratch) const;

    AxisPlan mRows;
    AcrossFilter mAcross;
    int mChannels;
    bool mIsBounded;
    std::size_t mToFloats;  ///< of a row of the result
    std::size_t mPixels;    ///< of a row of the source, with those beyond its edges
    std::size_t mGroup;     ///< rows of the result at a time
};

}  // namespace Kavra::Common
