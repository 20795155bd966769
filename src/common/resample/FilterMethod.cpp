#include "common/resample/FilterMethod.h"

#include "common/PixelFormats.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace Kavra::Common {

namespace {

using Devices::ElementType;

constexpr std::size_t kBlockFloats = 512;  // across: these and the sums above them stay in the nearest cache
constexpr std::size_t kBlockRows = 16;
constexpr std::size_t kRowsAtOnce = 4;

/// Asks for the next block of a row: the processor's own reading ahead loses a row over all the others in between.
/// Asking for what lies behind the source is harmless.
void ReadAhead(const unsigned char* next, std::size_t bytes) {
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(next);
    for (std::size_t line = 0; line < bytes; line += 64)
        hwy::Prefetch(reinterpret_cast<const unsigned char*>(ahead + line));  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

// --- What a thread works in ------------------------------------------------------------------------------------------

struct FilterMethod::Scratch {
    explicit Scratch(const FilterMethod& method)
        : loaded(kBlockRows * kLoadedStride),
          weighted(method.mColours.IsWeighted() ? loaded.size() : 0),
          sums(static_cast<std::size_t>(method.mGroup) * method.mAcross.Stride()),
          low(method.mBounds ? sums.size() : 0),
          high(low.size()),
          least(method.mBounds ? method.mToElements : 0),
          most(least.size()),
          across(kRowsAtOnce * (method.mToElements + kSlack)),
          ties(method.mTieBound > 0 ? method.mAcross.Plan().Size() : 0) {}

    static constexpr std::size_t kLoadedStride = kBlockFloats + kSlack;

    std::vector<float> loaded, weighted;  ///< a block of the source
    std::vector<float> sums, low, high;   ///< rows of the source's width and of the result's height
    std::vector<float> least, most;       ///< a row of the result's width
    std::vector<float> across;            ///< rows of the result
    std::vector<std::uint32_t> ties;
};

// --- What is known before a row is -----------------------------------------------------------------------------------

FilterMethod::FilterMethod(const Resampling& resampling)
    : mPixels(resampling.pixels),
      mColours(resampling.pixels, resampling.options),
      mAcross(resampling),
      mRows(resampling.y, resampling.FilterAlong(resampling.y), resampling.Radius(), false),
      mFromColumns(resampling.x.fromCount),
      mFromRows(resampling.y.fromCount),
      mChannels(static_cast<std::size_t>(resampling.pixels.channels)),
      mFromElements(static_cast<std::size_t>(resampling.x.fromCount) * mChannels),
      mToElements(static_cast<std::size_t>(resampling.x.toCount) * mChannels),
      mElementBytes(resampling.PixelBytes() / mChannels),
      mBounds(resampling.KeepsRange()),
      mTieBound(TieBound(resampling, mAcross.Plan(), mRows)),
      mGroup(std::min(static_cast<int>(RowsOfGroup(mAcross.Stride())), resampling.y.toCount)) {}

float FilterMethod::TieBound(const Resampling& resampling, const AxisPlan& across, const AxisPlan& down) {
    constexpr double kUnit = 1.0 / (1 << 24), kLargest = 0.125;
    const ResampleOptions& options = resampling.options;
    if (resampling.pixels.element != ElementType::kUInt8 || options.linearLight) return 0.0F;
    const AxisPlan::Sums x = across.LargestSums(), y = down.LargestSums();
    const double a = x.total, b = y.total;
    const double library = 4 * a * b + x.count * a * y.before + b * x.cumulative + 1;
    const double here = a * (y.cumulative + b) + b * (x.cumulative + a);
    const double bound = 1.01 * kUnit * (255 * (library + here) + 2 * 256);
    const double needed = WorkingColours::Weights(resampling.pixels, options) ? 2 * bound : bound;
    return needed < kLargest ? static_cast<float>(needed) : 0.0F;
}

float FilterMethod::TieBound(const Resampling& resampling) {
    const AxisPlan down(resampling.y, resampling.FilterAlong(resampling.y), resampling.Radius(), false);
    return TieBound(resampling, AcrossFilter(resampling).Plan(), down);
}

/// Reaches within the picture, at its edge where they lie beyond it.
int FilterMethod::RowWithin(std::int64_t row) const {
    return static_cast<int>(std::clamp<std::int64_t>(row, 0, mFromRows - 1));
}

RowSpan FilterMethod::Needs(int y) const {
    return ClampedSpan(mRows.ReachOf(static_cast<std::size_t>(y)), mFromRows);
}

FilterMethod::~FilterMethod() = default;

std::unique_ptr<FilterMethod::Scratch> FilterMethod::TakeScratch() const {
    {
        const std::lock_guard lock(mMutex);
        if (!mScratches.empty()) {
            std::unique_ptr<Scratch> scratch = std::move(mScratches.back());
            mScratches.pop_back();
            return scratch;
        }
    }
    return std::make_unique<Scratch>(*this);
}

void FilterMethod::GiveBack(std::unique_ptr<Scratch> scratch) const {
    const std::lock_guard lock(mMutex);
    mScratches.push_back(std::move(scratch));
}

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
            const std::size_t at = i * mAcross.Stride() + mAcross.Left() + block.begin;
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
        const std::size_t at = i * mAcross.Stride();
        if (mRows.ReachOf(static_cast<std::size_t>(y) + i).count == 0) {
            std::fill_n(scratch.sums.begin() + static_cast<std::ptrdiff_t>(at), mAcross.Stride(), 0.0F);
            if (mBounds) std::fill_n(scratch.low.begin() + static_cast<std::ptrdiff_t>(at), mAcross.Stride(), 0.0F);
            if (mBounds) std::fill_n(scratch.high.begin() + static_cast<std::ptrdiff_t>(at), mAcross.Stride(), 0.0F);
        }
        mAcross.ExtendEdges(scratch.sums.data() + at);
        if (mBounds) mAcross.ExtendEdges(scratch.low.data() + at);
        if (mBounds) mAcross.ExtendEdges(scratch.high.data() + at);
    }
}

// --- Across ----------------------------------------------------------------------------------------------------------

bool FilterMethod::IsInside(std::size_t x) const {
    const std::int64_t first = mAcross.Plan().ReachOf(x).first;
    return mAcross.Plan().ReachOf(x).count > 0 && first >= 0 && first + mAcross.Plan().MaxCount() <= mFromColumns;
}

/// One pixel in the library's order of operations, in single precision: row by row, rows that weigh nothing left out.
void FilterMethod::SumAgain(const std::vector<const unsigned char*>& rows, int y, std::size_t x,
                            unsigned char* out) const {
    const Reach& reach = mAcross.Plan().ReachOf(x);
    const float* const rowWeights = mRows.WeightsOf(static_cast<std::size_t>(y));
    const float* const weights = mAcross.Plan().WeightsOf(x);
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
    const Reach& reach = mAcross.Plan().ReachOf(x);
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
        const std::size_t offset = static_cast<std::size_t>(mAcross.Plan().ReachOf(x).first) * mChannels;
        for (std::size_t j = 0; j < rows.size(); ++j)
            starts[waiting][j] = rows[j] + offset;
        sums[waiting] = {.rows = starts[waiting].data(),
                         .rowWeights = mRows.WeightsOf(static_cast<std::size_t>(y)),
                         .rowCount = rows.size(),
                         .weights = mAcross.Plan().WeightsOf(x),
                         .count = static_cast<std::size_t>(mAcross.Plan().MaxCount())};
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
    if (mBounds) {
        const std::size_t at = row * mAcross.Stride();
        mAcross.Range(scratch.low.data() + at, scratch.high.data() + at, scratch.least.data(), scratch.most.data());
        ClampToRange(scratch.least.data(), scratch.most.data(), mToElements, values);
    }
    mColours.Encode(values, mToElements);
    kernels.store(mPixels.element, values, mToElements, out);
    if (mTieBound <= 0.0F) return;
    const std::size_t ties =
        kernels.findTies(values, mToElements, static_cast<int>(mChannels), mTieBound, scratch.ties.data());
    if (ties > 0) SumTiesAgain(source, y, scratch, ties, out);
}

void FilterMethod::Make(const SourceRows& source, int y, int count, unsigned char* out) const {
    std::unique_ptr<Scratch> taken = TakeScratch();
    Scratch& scratch = *taken;
    for (int group = y; group < y + count; group += mGroup) {
        const int rows = std::min(mGroup, y + count - group);
        SumDown(source, group, rows, scratch);
        for (int four = 0; four < rows; four += static_cast<int>(kRowsAtOnce)) {
            const auto together = std::min(kRowsAtOnce, static_cast<std::size_t>(rows - four));
            float* const sums = scratch.sums.data() + static_cast<std::size_t>(four) * mAcross.Stride();
            mAcross.Sum({{sums, mAcross.Stride()}, {scratch.across.data(), mToElements + kSlack}, together});
            for (std::size_t i = 0; i < together; ++i) {
                Finish(source, group + four + static_cast<int>(i), scratch, static_cast<std::size_t>(four) + i, out);
                out += mToElements * mElementBytes;
            }
        }
    }
    GiveBack(std::move(taken));
}

}  // namespace Kavra::Common
