#include "common/resample/OrderedMethod.h"

#include "common/Limits.h"
#include "common/PixelFormats.h"
#include "common/resample/ResampleKernels.h"

#include <algorithm>
#include <array>

namespace Kavra::Common {

namespace {

constexpr double kMaxLooks = 1 << 23;  // at pixels of the source: some milliseconds

double Taps(const Resampling& resampling, const ResampleAxis& axis) {
    return static_cast<double>(resampling.FilterAlong(axis).width) / static_cast<double>(axis.Ratio()) + 1;
}

}  // namespace

OrderedMethod::OrderedMethod(const Resampling& resampling)
    : mElement(resampling.pixels.element),
      mColumns(resampling.x, resampling.FilterAlong(resampling.x), resampling.Radius(), true),
      mRows(resampling.y, resampling.FilterAlong(resampling.y), resampling.Radius(), false),
      mFromColumns(resampling.x.fromCount),
      mFromRows(resampling.y.fromCount),
      mChannels(static_cast<std::size_t>(resampling.pixels.channels)),
      mElementBytes(resampling.PixelBytes() / mChannels),
      mFull(FullScale(resampling.pixels.element)) {}

bool OrderedMethod::IsWorthIt(const Resampling& resampling) {
    const double pixels = static_cast<double>(resampling.x.toCount) * resampling.y.toCount;
    return pixels * Taps(resampling, resampling.x) * Taps(resampling, resampling.y) <= kMaxLooks;
}

std::uint64_t OrderedMethod::BytesOfThread(const Resampling& resampling) {
    const auto rows = static_cast<std::uint64_t>(Taps(resampling, resampling.y)) + 1;
    return Product<std::uint64_t>(rows, (resampling.FromRowFloats() + kSlack) * sizeof(float));
}

RowSpan OrderedMethod::Needs(int y) const {
    return ClampedSpan(mRows.ReachOf(static_cast<std::size_t>(y)), mFromRows);
}

/// In single precision, nothing fused, as the library computes.
void OrderedMethod::MakeRow(const std::vector<const float*>& rows, const float* rowWeights, float* out) const {
    for (std::size_t x = 0; x < mColumns.Size(); ++x) {
        const Reach& reach = mColumns.ReachOf(x);
        const float* const weights = mColumns.WeightsOf(x);
        std::array<float, 4> totals{};
        for (std::size_t j = 0; j < rows.size(); ++j) {
            if (rowWeights[j] == 0.0F) continue;
            for (int i = 0; i < reach.count; ++i) {
                const auto column = std::clamp<std::int64_t>(reach.first + i, 0, mFromColumns - 1);
                const float* const pixel = rows[j] + static_cast<std::size_t>(column) * mChannels;
                const float weight = rowWeights[j] * weights[i];
                for (std::size_t c = 0; c < mChannels; ++c)
                    totals[c] += weight * pixel[c];
            }
        }
        for (std::size_t c = 0; c < mChannels; ++c)
            *out++ = totals[c] * mFull;
    }
}

void OrderedMethod::Make(const SourceRows& source, int y, int count, unsigned char* out) const {
    const ResampleKernels& kernels = GetResampleKernels();
    const std::size_t fromElements = static_cast<std::size_t>(mFromColumns) * mChannels;
    const std::size_t elements = mColumns.Size() * mChannels, stride = fromElements + kSlack;
    std::vector<float> floats(static_cast<std::size_t>(mRows.MaxCount()) * stride), result(elements + kSlack);
    std::vector<const float*> rows;
    for (int i = y; i < y + count; ++i, out += elements * mElementBytes) {
        const Reach& reach = mRows.ReachOf(static_cast<std::size_t>(i));
        rows.clear();
        for (int j = 0; j < reach.count; ++j) {
            const auto row = static_cast<std::size_t>(std::clamp<std::int64_t>(reach.first + j, 0, mFromRows - 1));
            float* const values = floats.data() + static_cast<std::size_t>(j) * stride;
            kernels.toFloats(mElement, source.Row(row), fromElements, values);
            for (std::size_t k = 0; mFull != 1.0F && k < fromElements; ++k)
                values[k] *= 1.0F / mFull;
            rows.push_back(values);
        }
        MakeRow(rows, mRows.WeightsOf(static_cast<std::size_t>(i)), result.data());
        kernels.store(mElement, result.data(), elements, out);
    }
}

}  // namespace Kavra::Common
