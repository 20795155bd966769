#include "common/resample/FilterMethod.h"

#include "common/PixelFormats.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace Kavra::Common {

namespace {

using Devices::ElementType;

constexpr std::size_t kBlockFloats = 512;  // across: these and the sums above them stay in the nearest cache
constexpr std::size_t kBlockRows = 16;
constexpr std::size_t kGroupBytes = 1 << 20;  // of sums: they stay in the next one
constexpr std::size_t kRowsAtOnce = 4;

bool IsInteger(ElementType element) {
    return element == ElementType::kUInt8 || element == ElementType::kUInt16;
}

/// Asks for the next block of a row: the processor's own reading ahead loses a row over all the others in between.
/// Asking for what lies behind the source is harmless.
void ReadAhead(const unsigned char* next, std::size_t bytes) {
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(next);
    for (std::size_t line = 0; line < bytes; line += 64)
        hwy::Prefetch(reinterpret_cast<const unsigned char*>(ahead + line));  // NOLINT(performance-no-int-to-ptr)
}

float BoundOfTies(const AxisPlan::Sums& across, const AxisPlan::Sums& down) {
    constexpr double kUnit = 1.0 / (1 << 24), kQuarter = 0.25;
    const double a = across.total, b = down.total;
    const double library = 4 * a * b + across.count * a * down.before + b * across.cumulative + 1;
    const double here = a * (down.cumulative + b) + b * (across.cumulative + a);
    const double bound = 1.01 * kUnit * (255 * (library + here) + 2 * 256);
    return bound < kQuarter ? static_cast<float>(bound) : 0.0F;
}

}  // namespace

// --- What is known before a row is -----------------------------------------------------------------------------------

FilterMethod::FilterMethod(const Resampling& resampling)
    : mPixels(resampling.pixels),
      mColours(resampling.pixels, resampling.options),
      mColumns(resampling.x, resampling.FilterAlong(resampling.x), resampling.Radius(),
               !IsInteger(resampling.pixels.element)),
      mRows(resampling.y, resampling.FilterAlong(resampling.y), resampling.Radius(), false),
      mFromColumns(resampling.x.fromCount),
      mFromRows(resampling.y.fromCount),
      mChannels(static_cast<std::size_t>(resampling.pixels.channels)),
      mFromElements(static_cast<std::size_t>(resampling.x.fromCount) * mChannels),
      mToElements(static_cast<std::size_t>(resampling.x.toCount) * mChannels),
      mElementBytes(resampling.PixelBytes() / mChannels),
      mLeft(static_cast<std::size_t>(std::max<std::int64_t>(-mColumns.First(), 0))),
      mRight(static_cast<std::size_t>(std::max<std::int64_t>(mColumns.End() - mFromColumns, 0))),
      mStride((mLeft + mRight) * mChannels + mFromElements + kSlack),
      mBounds(resampling.options.bounded && !IsInteger(resampling.pixels.element)) {
    for (std::size_t x = 0; x < mColumns.Size(); ++x) {
        const Reach& reach = mColumns.ReachOf(x);
        const std::int64_t begin = reach.count > 0 ? reach.first + static_cast<std::int64_t>(mLeft) : 0;
        mBegins.push_back(static_cast<std::uint32_t>(begin) * static_cast<std::uint32_t>(mChannels));
        mCounts.push_back(static_cast<std::uint32_t>(reach.count));
    }
    const bool isExact = mPixels.element == ElementType::kUInt8 && !resampling.options.linearLight;
    // Weighting and taking the weights away again are roundings more, of which the plain bound has one to spare.
    constexpr float kWeightedBounds = 2.0F;
    if (isExact) mTieBound = BoundOfTies(mColumns.LargestSums(), mRows.LargestSums());
    if (mColours.IsWeighted()) mTieBound *= kWeightedBounds;
    mGroup = static_cast<int>(std::clamp<std::size_t>(kGroupBytes / (mStride * sizeof(float)) / kRowsAtOnce, 1, 8) *
                              kRowsAtOnce);
}

/// Reaches within the picture, at its edge where they lie beyond it.
int FilterMethod::RowWithin(std::int64_t row) const {
    return static_cast<int>(std::clamp<std::int64_t>(row, 0, mFromRows - 1));
}

RowSpan FilterMethod::Needs(int y) const {
    return ClampedSpan(mRows.ReachOf(static_cast<std::size_t>(y)), mFromRows);
}

// --- What a thread works in ------------------------------------------------------------------------------------------

struct FilterMethod::Scratch {
    Scratch(const FilterMethod& method, std::size_t group)
        : loaded(kBlockRows * kLoadedStride),
          weighted(method.mColours.IsWeighted() ? loaded.size() : 0),
          sums(group * method.mStride),
          low(method.mBounds ? sums.size() : 0),
          high(low.size()),
          across(kRowsAtOnce * (method.mToElements + kSlack)),
          ties(method.mTieBound > 0 ? method.mColumns.Size() : 0) {}

    static constexpr std::size_t kLoadedStride = kBlockFloats + kSlack;

    std::vector<float> loaded, weighted;  ///< a block of the source
    std::vector<float> sums, low, high;   ///< rows of the source's width and of the result's height
    std::vector<float> across;            ///< rows of the result
    std::vector<std::uint32_t> ties;
    std::vector<const unsigned char*> rows;
};

// --- Down ------------------------------------------------------------------------------------------------------------

/// Floats that can be summed where they lie: whole vectors of them are read, so not at the end of a row.
std::optional<FloatRows> FilterMethod::BlockInPlace(const SourceRows& source, std::int64_t row, std::size_t rows,
                                                    const Block& block) const {
    if (mPixels.element != ElementType::kFloat || !mColours.IsPlain()) return std::nullopt;
    if (row < 0 || row + static_cast<std::int64_t>(rows) > mFromRows) return std::nullopt;
    if (block.begin + block.width + kSlack > mFromElements) return std::nullopt;
    if (static_cast<std::size_t>(row) % source.capacity + rows > source.capacity) return std::nullopt;
    const unsigned char* const first = source.Row(static_cast<std::size_t>(row)) + block.begin * mElementBytes;
    const bool isAligned = reinterpret_cast<std::uintptr_t>(first) % sizeof(float) == 0;
    if (!isAligned || source.pitch % sizeof(float) != 0) return std::nullopt;
    for (std::size_t i = 0; i < rows; ++i)
        ReadAhead(first + i * source.pitch + block.width * mElementBytes, block.width * mElementBytes);
    return FloatRows{const_cast<float*>(reinterpret_cast<const float*>(first)), source.pitch / sizeof(float)};
}

/// Rows of the source from `row` on, which may lie beyond its ends, as floats in the scratch.
FloatRows FilterMethod::LoadBlock(const SourceRows& source, std::int64_t row, std::size_t rows, const Block& block,
                                  Scratch& scratch) const {
    const std::size_t bytes = block.width * mElementBytes;
    for (std::size_t i = 0; i < rows; ++i) {
        float* const loaded = scratch.loaded.data() + i * Scratch::kLoadedStride;
        const auto from = static_cast<std::size_t>(RowWithin(row + static_cast<std::int64_t>(i)));
        const unsigned char* const in = source.Row(from) + block.begin * mElementBytes;
        ReadAhead(in + bytes, bytes);
        mColours.Decode(in, block.width, loaded);
        if (!mColours.IsWeighted()) continue;
        float* const weighted = scratch.weighted.data() + i * Scratch::kLoadedStride;
        std::copy_n(loaded, block.width, weighted);
        mColours.Weight(weighted, block.width);
    }
    return {mColours.IsWeighted() ? scratch.weighted.data() : scratch.loaded.data(), Scratch::kLoadedStride};
}

/// The rows of the source that rows `y` to `y + count - 1` of the result are made of.
FilterMethod::Rows FilterMethod::ReachOf(int y, int count) const {
    Rows all{std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    for (int i = y; i < y + count; ++i) {
        const Reach& reach = mRows.ReachOf(static_cast<std::size_t>(i));
        if (reach.count == 0) continue;
        all = {std::min(all.first, reach.first), std::max(all.end, reach.first + reach.count)};
    }
    return all;
}

void FilterMethod::SumBlock(const SourceRows& source, int y, int count, const Block& block, Scratch& scratch) const {
    const ResampleKernels& kernels = GetResampleKernels();
    const Rows all = ReachOf(y, count);
    for (std::int64_t row = all.first; row < all.end; row += kBlockRows) {
        const auto rows = static_cast<std::size_t>(std::min<std::int64_t>(kBlockRows, all.end - row));
        const std::optional<FloatRows> inPlace = BlockInPlace(source, row, rows, block);
        const FloatRows values = inPlace ? *inPlace : LoadBlock(source, row, rows, block, scratch);
        const FloatRows colours = inPlace ? *inPlace : FloatRows{scratch.loaded.data(), Scratch::kLoadedStride};
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const std::size_t result = static_cast<std::size_t>(y) + i;
            const Reach& reach = mRows.ReachOf(result);
            const std::int64_t from = std::max(row, reach.first);
            const std::int64_t to = std::min(row + static_cast<std::int64_t>(rows), reach.first + reach.count);
            if (from >= to) continue;
            const auto skipped = static_cast<std::size_t>(from - row), used = static_cast<std::size_t>(to - from);
            const float* const weights = mRows.WeightsOf(result) + (from - reach.first);
            const std::size_t at = i * mStride + mLeft * mChannels + block.begin;
            const bool begins = from == reach.first;
            kernels.addRows({values.Row(skipped), values.stride}, weights, used, block.width, scratch.sums.data() + at,
                            begins);
            if (mBounds) {
                kernels.rangeRows({colours.Row(skipped), colours.stride}, weights, used, block.width,
                                  scratch.low.data() + at, scratch.high.data() + at, begins);
            }
        }
    }
}

/// Blocks from left to right: what a block writes behind its end is the beginning of the next.
void FilterMethod::SumDown(const SourceRows& source, int y, int count, Scratch& scratch) const {
    const std::size_t blockFloats = kBlockFloats / mChannels * mChannels;
    for (std::size_t begin = 0; begin < mFromElements; begin += blockFloats)
        SumBlock(source, y, count, {begin, std::min(blockFloats, mFromElements - begin)}, scratch);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        const std::size_t at = i * mStride;
        if (mRows.ReachOf(static_cast<std::size_t>(y) + i).count == 0) {
            std::fill_n(scratch.sums.begin() + static_cast<std::ptrdiff_t>(at), mStride, 0.0F);
            if (mBounds) std::fill_n(scratch.low.begin() + static_cast<std::ptrdiff_t>(at), mStride, 0.0F);
            if (mBounds) std::fill_n(scratch.high.begin() + static_cast<std::ptrdiff_t>(at), mStride, 0.0F);
        }
        ExtendEdges(scratch.sums.data() + at);
        if (mBounds) ExtendEdges(scratch.low.data() + at);
        if (mBounds) ExtendEdges(scratch.high.data() + at);
    }
}

/// The first and the last pixel of a row again, as far as any reach goes beyond them.
void FilterMethod::ExtendEdges(float* row) const {
    float* const first = row + mLeft * mChannels;
    for (float* pixel = row; pixel < first; pixel += mChannels)
        std::copy_n(first, mChannels, pixel);
    float* const end = first + mFromElements;
    for (std::size_t i = 0; i < mRight; ++i)
        std::copy_n(end - mChannels, mChannels, end + i * mChannels);
}

// --- Across ----------------------------------------------------------------------------------------------------------

/// Brings a row of the result into the range of what lies under the filter. A value that is no number stays one.
void FilterMethod::Bound(const float* low, const float* high, float* row) const {
    for (std::size_t x = 0; x < mColumns.Size(); ++x) {
        const float* const weights = mColumns.WeightsOf(x);
        for (std::size_t c = 0; c < mChannels; ++c) {
            float least = std::numeric_limits<float>::infinity(), most = -least;
            for (std::size_t tap = 0; tap < mCounts[x]; ++tap) {
                if (weights[tap] == 0.0F) continue;
                const std::size_t at = mBegins[x] + tap * mChannels + c;
                least = std::min(least, low[at]);
                most = std::max(most, high[at]);
            }
            float& value = row[x * mChannels + c];
            if (least > most) continue;
            if (value < least) value = least;
            if (value > most) value = most;
        }
    }
}

bool FilterMethod::IsInside(std::size_t x) const {
    const std::int64_t first = mColumns.ReachOf(x).first;
    return mCounts[x] > 0 && first >= 0 && first + mColumns.MaxCount() <= mFromColumns;
}

/// One pixel in the library's order of operations, in single precision: row by row, rows that weigh nothing left out.
void FilterMethod::SumAgain(const std::vector<const unsigned char*>& rows, int y, std::size_t x,
                            unsigned char* out) const {
    const Reach& reach = mColumns.ReachOf(x);
    const float* const rowWeights = mRows.WeightsOf(static_cast<std::size_t>(y));
    const float* const weights = mColumns.WeightsOf(x);
    std::array<float, 4> totals{};
    for (std::size_t j = 0; j < rows.size(); ++j) {
        if (rowWeights[j] == 0.0F) continue;
        for (int i = 0; i < reach.count; ++i) {
            const std::int64_t column = std::clamp<std::int64_t>(reach.first + i, 0, mFromColumns - 1);
            const unsigned char* const pixel = rows[j] + static_cast<std::size_t>(column) * mChannels;
            const float weight = rowWeights[j] * weights[i];
            for (std::size_t c = 0; c < mChannels; ++c)
                totals[c] += weight * (static_cast<float>(pixel[c]) * (1.0F / 255.0F));
        }
    }
    for (std::size_t c = 0; c < mChannels; ++c)
        out[c] = static_cast<unsigned char>(std::clamp(totals[c] * 255.0F + 0.5F, 0.0F, 255.0F));
}

/// Whether nothing transparent lies under the filter: then colours are those of the plain filter, ties and all.
bool FilterMethod::IsOpaque(const std::vector<const unsigned char*>& rows, std::size_t x) const {
    const Reach& reach = mColumns.ReachOf(x);
    const auto alpha = static_cast<std::size_t>(mPixels.alphaChannel);
    return std::ranges::all_of(rows, [&](const unsigned char* row) {
        for (int i = 0; i < reach.count; ++i) {
            const std::int64_t column = std::clamp<std::int64_t>(reach.first + i, 0, mFromColumns - 1);
            if (row[static_cast<std::size_t>(column) * mChannels + alpha] != 255) return false;
        }
        return true;
    });
}

void FilterMethod::SumTiesAgain(const SourceRows& source, int y, const Scratch& scratch, std::size_t ties,
                                unsigned char* out) const {
    const Reach& reach = mRows.ReachOf(static_cast<std::size_t>(y));
    std::vector<const unsigned char*> rows(static_cast<std::size_t>(reach.count));
    for (std::size_t j = 0; j < rows.size(); ++j)
        rows[j] = source.Row(static_cast<std::size_t>(RowWithin(reach.first + static_cast<std::int64_t>(j))));

    std::array<ExactSum, 4> sums{};
    std::array<unsigned char*, 4> results{};
    std::array<std::vector<const unsigned char*>, 4> starts;
    for (auto& list : starts)
        list.resize(rows.size());
    std::size_t waiting = 0;
    for (std::size_t i = 0; i < ties; ++i) {
        const std::size_t x = scratch.ties[i];
        if (mColours.IsWeighted() && !IsOpaque(rows, x)) continue;
        if (mChannels != 4 || !IsInside(x)) {
            SumAgain(rows, y, x, out + x * mChannels);
            continue;
        }
        const std::size_t offset = static_cast<std::size_t>(mColumns.ReachOf(x).first) * mChannels;
        for (std::size_t j = 0; j < rows.size(); ++j)
            starts[waiting][j] = rows[j] + offset;
        sums[waiting] = {.rows = starts[waiting].data(),
                         .rowWeights = mRows.WeightsOf(static_cast<std::size_t>(y)),
                         .rowCount = rows.size(),
                         .weights = mColumns.WeightsOf(x),
                         .count = static_cast<std::size_t>(mColumns.MaxCount())};
        results[waiting] = out + x * mChannels;
        if (++waiting < sums.size()) continue;
        GetResampleKernels().exactFour(sums.data(), waiting, results.data());
        waiting = 0;
    }
    if (waiting > 0) GetResampleKernels().exactFour(sums.data(), waiting, results.data());
}

/// From floats across to elements.
void FilterMethod::Finish(const SourceRows& source, int y, Scratch& scratch, std::size_t row,
                          unsigned char* out) const {
    const ResampleKernels& kernels = GetResampleKernels();
    float* const values = scratch.across.data() + row % kRowsAtOnce * (mToElements + kSlack);
    if (mColours.IsWeighted()) mColours.Unweight(values, mToElements);
    if (mBounds) Bound(scratch.low.data() + row * mStride, scratch.high.data() + row * mStride, values);
    mColours.Encode(values, mToElements);
    kernels.store(mPixels.element, values, mToElements, out);
    if (mTieBound <= 0.0F) return;
    const std::size_t ties =
        kernels.findTies(values, mToElements, static_cast<int>(mChannels), mTieBound, scratch.ties.data());
    if (ties > 0) SumTiesAgain(source, y, scratch, ties, out);
}

void FilterMethod::Make(const SourceRows& source, int y, int count, unsigned char* out) const {
    const ResampleKernels& kernels = GetResampleKernels();
    Scratch scratch(*this, static_cast<std::size_t>(std::min(count, mGroup)));
    const RowWeights across{.begins = mBegins.data(),
                            .counts = mCounts.data(),
                            .weights = mColumns.WeightsOf(0),
                            .stride = static_cast<std::size_t>(mColumns.MaxCount()),
                            .size = mColumns.Size()};
    for (int group = y; group < y + count; group += mGroup) {
        const int rows = std::min(mGroup, y + count - group);
        SumDown(source, group, rows, scratch);
        for (int four = 0; four < rows; four += static_cast<int>(kRowsAtOnce)) {
            const auto together = std::min(kRowsAtOnce, static_cast<std::size_t>(rows - four));
            float* const sums = scratch.sums.data() + static_cast<std::size_t>(four) * mStride;
            kernels.filterRows(static_cast<int>(mChannels),
                               {{sums, mStride}, {scratch.across.data(), mToElements + kSlack}, together}, across);
            for (std::size_t i = 0; i < together; ++i) {
                Finish(source, group + four + static_cast<int>(i), scratch, static_cast<std::size_t>(four) + i, out);
                out += mToElements * mElementBytes;
            }
        }
    }
}

}  // namespace Kavra::Common
