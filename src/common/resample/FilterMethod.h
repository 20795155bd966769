/// Resampling with a separable filter: down first, which takes the most values and goes along memory, then across.
///
/// The library sums all pixels under the filter in one go, row by row. Two passes give the same sums but for their last
/// bits, and an 8-bit value differs where the true one lies within those of a tie. Values so near to a tie are summed
/// again in the library's own order, so that the bytes are the same.
///
/// The bound on the difference, in steps of 8 bits, with u = 2^-24 and all sums over absolute weights, A and B those of
/// a row and a column, n the weights of a row, and C(...) the sum of partial sums, of which each addition can lose a
/// u-th part:
///   the library: four roundings a product, the additions, the scaling:  u 255 (4 A B + n A C(B without its last) +
///                                                                       B C(A) + 1)
///   here: products and additions of either pass:                        u 255 (A (C(B) + B) + B (C(A) + A))
///   the half that is added before both round down:                      2 u 256
/// Where that reaches an eighth, as in shrinking thirtyfold, every fourth value would be summed again, each over
/// thousands of pixels. Small pictures are then summed in the library's order outright (`OrderedMethod`); for all others
/// the promise is to differ by 1 at most, and none is summed again.
///
/// Physical limit: reading the source once. Each value of it is turned into a float once or a little more, and is
/// multiplied and added as often as filters overlap along a column: four times for the cubics.
#pragma once

#include "common/resample/AcrossFilter.h"
#include "common/resample/ResampleKernels.h"
#include "common/resample/ResampleMethod.h"
#include "common/resample/WorkingColours.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Kavra::Common {

class FilterMethod final : public ResampleMethod {
public:
    explicit FilterMethod(const Resampling& resampling);

    RowSpan Needs(int y) const override;
    void Make(const SourceRows& source, int y, int count, unsigned char* out) const override;
    int GroupRows() const override { return mGroup; }

    /// The bound above, doubled where colours are weighted, of which it has the roundings to spare; 0: no value is
    /// summed again.
    static float TieBound(const Resampling& resampling, const AxisPlan& across, const AxisPlan& down);
    static float TieBound(const Resampling& resampling);

    ~FilterMethod() override;

private:
    struct Scratch;
    /// A scratch that nobody works in, or a new one; the system's fresh pages cost more than the work of a few rows.
    std::unique_ptr<Scratch> TakeScratch() const;
    void GiveBack(std::unique_ptr<Scratch> scratch) const;

    /// Floats of a row, whole pixels.
    struct Block {
        std::size_t begin, width;
    };
    struct Rows {
        std::int64_t first, end;
    };

    void SumDown(const SourceRows& source, int y, int count, Scratch& scratch) const;
    void SumBlock(const SourceRows& source, int y, int count, const Block& block, Scratch& scratch) const;
    std::optional<FloatRows> BlockInPlace(const SourceRows& source, std::int64_t row, std::size_t rows,
                                          const Block& block) const;
    FloatRows LoadBlock(const SourceRows& source, std::int64_t row, std::size_t rows, const Block& block,
                        Scratch& scratch) const;
    Rows ReachOf(int y, int count) const;
    void Finish(const SourceRows& source, int y, Scratch& scratch, std::size_t row, unsigned char* out) const;
    void SumTiesAgain(const SourceRows& source, int y, const Scratch& scratch, std::size_t ties,
                      unsigned char* out) const;
    void SumAgain(const std::vector<const unsigned char*>& rows, int y, std::size_t x, unsigned char* out) const;
    bool IsOpaque(const std::vector<const unsigned char*>& rows, std::size_t x) const;
    bool IsInside(std::size_t x) const;
    int RowWithin(std::int64_t row) const;

    ResamplePixels mPixels;
    WorkingColours mColours;
    AcrossFilter mAcross;
    AxisPlan mRows;
    int mFromColumns, mFromRows;
    std::size_t mChannels, mFromElements, mToElements, mElementBytes;
    bool mBounds;
    float mTieBound = 0.0F;  ///< how far, in steps of 8 bits, the two ways may be apart; 0: nothing is summed again
    int mGroup;              ///< rows of the result at a time
    mutable std::mutex mMutex;
    mutable std::vector<std::unique_ptr<Scratch>> mScratches;  ///< that nobody works in
};

}  // namespace Kavra::Common
