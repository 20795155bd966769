#include "common/mips/MipFilter.h"

#include "common/WatchedRange.h"
#include "common/resample/ResampleMethod.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Kavra::Common {

namespace {

constexpr std::size_t kBlockFloats = 512;  // across: these and the sums above them stay in the nearest cache
constexpr std::size_t kBlockRows = 16;
constexpr std::size_t kRowsAtOnce = 4;
constexpr std::size_t kSerialFloats = 1 << 15;  // of a result: less is not worth waking a worker
constexpr std::size_t kLoadedStride = kBlockFloats + kSlack;

}  // namespace

struct MipFilter::Scratch {
    explicit Scratch(const MipFilter& filter)
        : loaded(kBlockRows * kLoadedStride),
          sums(filter.mGroup * filter.mAcross.Stride()),
          low(filter.mIsBounded ? sums.size() : 0),
          high(low.size()),
          least(filter.mIsBounded ? filter.mToFloats : 0),
          most(least.size()),
          across(kRowsAtOnce * (filter.mToFloats + kSlack)) {}

    std::vector<float> loaded;           ///< a block of the source
    std::vector<float> sums, low, high;  ///< rows of the source's width and of the result's height
    std::vector<float> least, most;      ///< a row of the result
    std::vector<float> across;           ///< rows of the result
};

MipFilter::MipFilter(Size from, Size to, int channels, Devices::EResampleFilter filter, bool isBounded)
    : mRows(AxisPlan::Precise(from.height, to.height, filter)),
      mAcross(AxisPlan::Precise(from.width, to.width, filter), channels, from.width),
      mChannels(channels),
      mIsBounded(isBounded),
      mToFloats(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(channels)),
      mPixels((mAcross.Stride() - kSlack) / static_cast<std::size_t>(channels)),
      mGroup(std::min(RowsOfGroup(mAcross.Stride()), static_cast<std::size_t>(to.height))) {}

void MipFilter::SumBlock(const MipPlane& source, std::size_t y, std::size_t count, const Block& block,
                         Scratch& scratch) const {
    const ResampleKernels& kernels = GetResampleKernels();
    const auto channels = static_cast<std::size_t>(mChannels);
    const std::int64_t column =
        static_cast<std::int64_t>(block.begin) - static_cast<std::int64_t>(mAcross.Left() / channels);
    std::int64_t first = std::numeric_limits<std::int64_t>::max(), end = std::numeric_limits<std::int64_t>::min();
    for (std::size_t i = y; i < y + count; ++i) {
        first = std::min(first, mRows.ReachOf(i).first);
        end = std::max(end, mRows.ReachOf(i).first + mRows.ReachOf(i).count);
    }
    for (std::int64_t row = first; row < end; row += kBlockRows) {
        const std::int64_t rowEnd = std::min<std::int64_t>(row + kBlockRows, end);
        for (std::int64_t i = row; i < rowEnd; ++i)
            source.Read(i, column, block.width,
                        scratch.loaded.data() + static_cast<std::size_t>(i - row) * kLoadedStride);
        for (std::size_t i = 0; i < count; ++i) {
            const Reach& reach = mRows.ReachOf(y + i);
            const std::int64_t from = std::max(row, reach.first), to = std::min(rowEnd, reach.first + reach.count);
            if (from >= to) continue;
            const FloatRows loaded{scratch.loaded.data() + static_cast<std::size_t>(from - row) * kLoadedStride,
                                   kLoadedStride};
            const float* const weights = mRows.WeightsOf(y + i) + (from - reach.first);
            const auto used = static_cast<std::size_t>(to - from);
            const std::size_t at = i * mAcross.Stride() + block.begin * channels, width = block.width * channels;
            const bool begins = from == reach.first;
            kernels.addRowsUnfused(loaded, weights, used, width, scratch.sums.data() + at, begins);
            if (mIsBounded)
                kernels.rangeRows(loaded, weights, used, width, scratch.low.data() + at, scratch.high.data() + at,
                                  begins);
        }
    }
}

/// Blocks from left to right: what a block writes behind its end is the beginning of the next.
void MipFilter::SumDown(const MipPlane& source, std::size_t y, std::size_t count, Scratch& scratch) const {
    const std::size_t width = kBlockFloats / static_cast<std::size_t>(mChannels);
    for (std::size_t begin = 0; begin < mPixels; begin += width)
        SumBlock(source, y, count, {begin, std::min(width, mPixels - begin)}, scratch);
}

/// Up to four rows of sums, from `row` on, to rows of the result.
void MipFilter::SumAcross(std::size_t row, std::size_t count, Scratch& scratch) const {
    const std::size_t stride = mToFloats + kSlack, first = row * mAcross.Stride();
    GetResampleKernels().filterRowsUnfused(
        mChannels, {{scratch.sums.data() + first, mAcross.Stride()}, {scratch.across.data(), stride}, count},
        mAcross.Weights());
    if (!mIsBounded) return;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = first + i * mAcross.Stride();
        mAcross.Range(scratch.low.data() + at, scratch.high.data() + at, scratch.least.data(), scratch.most.data());
        ClampToRange(scratch.least.data(), scratch.most.data(), mToFloats, scratch.across.data() + i * stride);
    }
}

void MipFilter::MakeRows(const MipPlane& source, std::size_t begin, std::size_t end, float* out) const {
    Scratch scratch(*this);
    for (std::size_t group = begin; group < end; group += mGroup) {
        const std::size_t rows = std::min(mGroup, end - group);
        SumDown(source, group, rows, scratch);
        for (std::size_t four = 0; four < rows; four += kRowsAtOnce) {
            const std::size_t together = std::min(kRowsAtOnce, rows - four);
            SumAcross(four, together, scratch);
            for (std::size_t i = 0; i < together; ++i) {
                std::memcpy(out + (group + four + i) * mToFloats, scratch.across.data() + i * (mToFloats + kSlack),
                            mToFloats * sizeof(float));
            }
        }
    }
}

void MipFilter::Make(const MipPlane& source, float* out) const {
    const std::size_t serial = kSerialFloats / std::max(mToFloats, mPixels) + 1;
    ForEachRangeOf(Devices::kProgressResizing, mRows.Size(), serial,
                   [&](std::size_t begin, std::size_t end) { MakeRows(source, begin, end, out); });
}

}  // namespace Kavra::Common
