#include "common/resample/ResampleMethod.h"

#include "common/Limits.h"
#include "common/PixelFormats.h"
#include "common/resample/FilterMethod.h"
#include "common/resample/OrderedMethod.h"
#include "common/resample/PointMethods.h"
#include "common/resample/WorkingColours.h"

#include <algorithm>
#include <cmath>

namespace Kavra::Common {

namespace {

using Devices::ElementType;

constexpr int kMaxPosition = 1 << 30;
constexpr double kMaxRowFloats = 1 << 26;  // a quarter of a gigabyte, and no more for the weights

bool IsPossible(const ResampleAxis& axis) {
    const auto isSize = [](int size) { return size >= 1 && size <= kMaxPosition; };
    const auto isStart = [](int start) { return start >= -kMaxPosition && start <= kMaxPosition; };
    if (!isSize(axis.fromFull) || !isSize(axis.fromCount) || !isSize(axis.toFull) || !isSize(axis.toCount))
        return false;
    if (!isStart(axis.fromFullStart) || !isStart(axis.fromStart)) return false;
    if (!isStart(axis.toFullStart) || !isStart(axis.toStart)) return false;
    // Windows that lie far apart would be pixels made of an edge that is clamped for ever.
    constexpr std::int64_t kSpare = 1 << 20;
    const std::int64_t first = axis.At(0).pixel, last = axis.At(axis.toCount - 1).pixel;
    return first >= -axis.fromCount - kSpare && last <= std::int64_t{2} * axis.fromCount + kSpare;
}

}  // namespace

std::size_t Resampling::PixelBytes() const {
    return static_cast<std::size_t>(pixels.channels) * static_cast<std::size_t>(BytesOf(pixels.element));
}

bool Resampling::IsPossible() const {
    if (pixels.channels < 1 || pixels.channels > 4 || BytesOf(pixels.element) == 0) return false;
    if (pixels.alphaChannel >= pixels.channels) return false;
    if (options.filter < Devices::kResampleNearest || options.filter > Devices::kResampleLanczos3) return false;
    if (!Common::IsPossible(x) || !Common::IsPossible(y)) return false;
    // The reach of the widest filter lies on either side of the row.
    const double reach = LooksAtPoints() ? 2.0 : 6.0 * std::max(1.0, 1.0 / static_cast<double>(x.Ratio()));
    return (x.fromCount + 2 * reach) * pixels.channels < kMaxRowFloats;
}

float FullScale(ElementType element) {
    if (element == ElementType::kUInt8) return 255.0F;
    return element == ElementType::kUInt16 ? 65535.0F : 1.0F;
}

std::size_t RowsOfGroup(std::size_t rowFloats) {
    constexpr std::size_t kCacheBytes = std::size_t{1} << 19, kMaxBytes = std::size_t{16} << 20;
    const std::size_t rowBytes = rowFloats * sizeof(float);
    const std::size_t cached = std::clamp<std::size_t>(kCacheBytes / rowBytes / 4, 1, 8) * 4;
    return std::clamp<std::size_t>(kMaxBytes / rowBytes, 1, cached);
}

std::uint64_t BytesOfGroups(const Resampling& resampling, std::size_t threads, std::size_t rows) {
    // Pixels of the edges stand again beyond them, as far as the filter reaches.
    const double across = static_cast<double>(resampling.FilterAlong(resampling.x).width);
    const std::uint64_t beyond = static_cast<std::uint64_t>(across / static_cast<double>(resampling.x.Ratio())) + 2;
    const std::uint64_t rowFloats =
        resampling.FromRowFloats() + beyond * static_cast<std::uint64_t>(resampling.pixels.channels);
    const std::uint64_t group = std::min(RowsOfGroup(rowFloats), rows) * (resampling.KeepsRange() ? 3 : 1);
    return Product<std::uint64_t>(threads * group * sizeof(float), rowFloats);
}

RowSpan ClampedSpan(const Reach& reach, int rows) {
    if (reach.count == 0) return {0, 0};
    const auto within = [&](std::int64_t row) { return static_cast<int>(std::clamp<std::int64_t>(row, 0, rows - 1)); };
    return {within(reach.first), within(reach.first + reach.count - 1) + 1};
}

namespace {

/// Whether values are filtered as they are stored, each channel by itself.
bool IsPlain(const Resampling& resampling) {
    return !WorkingColours::Weights(resampling.pixels, resampling.options) &&
           !WorkingColours::UndoesCurve(resampling.pixels, resampling.options);
}

/// Whether another order of adding up can show: in 8 bits only where shrinking takes so many terms that ties are not
/// summed again.
bool ShowsLastBits(const Resampling& resampling) {
    return resampling.pixels.element != ElementType::kUInt8 || FilterMethod::TieBound(resampling) == 0.0F;
}

}  // namespace

bool IsOrdered(const Resampling& resampling) {
    if (resampling.LooksAtPoints() || resampling.KeepsRange() || !IsPlain(resampling)) return false;
    return OrderedMethod::IsWorthIt(resampling) && ShowsLastBits(resampling);
}

std::unique_ptr<ResampleMethod> NewResampleMethod(const Resampling& resampling) {
    const Devices::EResampleFilter filter = resampling.options.filter;
    if (filter == Devices::kResampleNearest) return std::make_unique<NearestMethod>(resampling);
    if (filter == Devices::kResampleBilinear && IsPlain(resampling))
        return std::make_unique<BilinearMethod>(resampling);
    if (IsOrdered(resampling)) return std::make_unique<OrderedMethod>(resampling);
    return std::make_unique<FilterMethod>(resampling);
}

}  // namespace Kavra::Common
