#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/resample/ResampleKernels.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/PixelScaling-inl.h"
#include "common/resample/ResampleKernels.h"

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

using Devices::ElementType;
using Four = hn::FixedTag<float, 4>;

// --- Elements and floats ---------------------------------------------------------------------------------------------

/// Whole vectors first, then the rest by way of a buffer, so that nothing is read beyond the elements.
template <class T>
void ToFloats(const unsigned char* in, std::size_t count, float* out) {
    const TagF32 df;
    const std::size_t lanes = hn::Lanes(df);
    std::size_t at = 0;
    for (; at + lanes <= count; at += lanes)
        hn::StoreU(LoadFloats<T>(in + at * sizeof(T)), df, out + at);
    if (at == count) return;
    HWY_ALIGN unsigned char rest[kVectorBytes] = {};
    std::memcpy(rest, in + at * sizeof(T), (count - at) * sizeof(T));
    hn::StoreU(LoadFloats<T>(rest), df, out + at);
}

void ToFloatsOf(ElementType element, const unsigned char* in, std::size_t count, float* out) {
    switch (element) {
        case ElementType::kUInt8:
            return ToFloats<std::uint8_t>(in, count, out);
        case ElementType::kUInt16:
            return ToFloats<std::uint16_t>(in, count, out);
        case ElementType::kHalf:
            return ToFloats<hwy::float16_t>(in, count, out);
        case ElementType::kFloat:
            std::memcpy(out, in, count * sizeof(float));
            return;
        case ElementType::kNone:
            return;
    }
}

HWY_INLINE Ints Rounded(const float* in, float limit) {
    return RoundHalfUp(hn::LoadU(TagF32(), in), limit);
}

/// Calls `step(in, out)` for every `units` floats; the last, incomplete one goes through a buffer.
template <class Element, class Step>
void StoreSteps(const float* in, std::size_t count, unsigned char* out, std::size_t units, Step step) {
    std::size_t at = 0;
    HWY_ALIGN float rest[4 * kVectorBytes / sizeof(float)];
    HWY_ALIGN unsigned char results[4 * kVectorBytes];
    for (; at + units <= count; at += units)
        step(in + at, out + at * sizeof(Element));
    if (at == count) return;
    std::fill(std::begin(rest), std::end(rest), 0.0F);
    std::copy(in + at, in + count, rest);
    step(rest, results);
    std::memcpy(out + at * sizeof(Element), results, (count - at) * sizeof(Element));
}

void Store(ElementType element, const float* in, std::size_t count, unsigned char* out) {
    const std::size_t n = hn::Lanes(TagF32());
    switch (element) {
        case ElementType::kUInt8:
            return StoreSteps<std::uint8_t>(in, count, out, 4 * n, [n](const float* from, unsigned char* to) {
                const auto bytes = Bytes(Rounded(from, 255.0F), Rounded(from + n, 255.0F),
                                         Rounded(from + 2 * n, 255.0F), Rounded(from + 3 * n, 255.0F));
                hn::StoreU(bytes, TagU8(), to);
            });
        case ElementType::kUInt16:
            return StoreSteps<std::uint16_t>(in, count, out, 2 * n, [n](const float* from, unsigned char* to) {
                const auto words = Words(Rounded(from, 65535.0F), Rounded(from + n, 65535.0F));
                hn::StoreU(words, TagU16(), reinterpret_cast<std::uint16_t*>(to));
            });
        case ElementType::kHalf:
            return StoreSteps<std::uint16_t>(in, count, out, 2 * n, [n](const float* from, unsigned char* to) {
                const auto halves = Halves(hn::LoadU(TagF32(), from), hn::LoadU(TagF32(), from + n));
                hn::StoreU(halves, TagU16(), reinterpret_cast<std::uint16_t*>(to));
            });
        case ElementType::kFloat:
            std::memcpy(out, in, count * sizeof(float));
            return;
        case ElementType::kNone:
            return;
    }
}

// --- Down ------------------------------------------------------------------------------------------------------------

/// Whether a product is added before it is rounded, where the machine has an instruction for it, or after.
enum class Products : bool { kFused, kUnfused };

template <Products kProducts, class V>
HWY_INLINE V AddProduct(V a, V b, V sum) {
    if constexpr (kProducts == Products::kFused)
        return hn::MulAdd(a, b, sum);
    else
        return hn::Add(hn::Mul(a, b), sum);
}

/// Four vectors of sums stay in registers while the rows pass under them.
template <Products kProducts>
void AddRows(const FloatRows& rows, const float* weights, std::size_t count, std::size_t width, float* sums,
             bool begins) {
    const TagF32 df;
    const std::size_t n = hn::Lanes(df);
    for (std::size_t x = 0; x < width; x += 4 * n) {
        float* const out = sums + x;
        Floats a = hn::Zero(df), b = a, c = a, d = a;
        if (!begins) {
            a = hn::LoadU(df, out);
            b = hn::LoadU(df, out + n);
            c = hn::LoadU(df, out + 2 * n);
            d = hn::LoadU(df, out + 3 * n);
        }
        for (std::size_t y = 0; y < count; ++y) {
            if (weights[y] == 0.0F) continue;
            const Floats weight = hn::Set(df, weights[y]);
            const float* const in = rows.Row(y) + x;
            a = AddProduct<kProducts>(hn::LoadU(df, in), weight, a);
            b = AddProduct<kProducts>(hn::LoadU(df, in + n), weight, b);
            c = AddProduct<kProducts>(hn::LoadU(df, in + 2 * n), weight, c);
            d = AddProduct<kProducts>(hn::LoadU(df, in + 3 * n), weight, d);
        }
        hn::StoreU(a, df, out);
        hn::StoreU(b, df, out + n);
        hn::StoreU(c, df, out + 2 * n);
        hn::StoreU(d, df, out + 3 * n);
    }
}

/// NaNs are in no range.
void RangeRows(const FloatRows& rows, const float* weights, std::size_t count, std::size_t width, float* low,
               float* high, bool begins) {
    const TagF32 df;
    const Floats least = hn::Neg(hn::Inf(df)), most = hn::Inf(df);
    for (std::size_t x = 0; x < width; x += hn::Lanes(df)) {
        Floats min = begins ? most : hn::LoadU(df, low + x), max = begins ? least : hn::LoadU(df, high + x);
        for (std::size_t y = 0; y < count; ++y) {
            if (weights[y] == 0.0F) continue;
            const Floats v = hn::LoadU(df, rows.Row(y) + x);
            min = hn::IfThenElse(hn::Lt(v, min), v, min);
            max = hn::IfThenElse(hn::Gt(v, max), v, max);
        }
        hn::StoreU(min, df, low + x);
        hn::StoreU(max, df, high + x);
    }
}

// --- Across ----------------------------------------------------------------------------------------------------------

/// Three or four channels: a pixel is a vector. Of three, the fourth lane is the next pixel's, and is written over.
template <Products kProducts, int kChannels, std::size_t kRows>
void FilterPixels(const FilteredRows& rows, const RowWeights& plan) {
    const Four d;
    for (std::size_t x = 0; x < plan.size; ++x) {
        const float* const weights = plan.weights + x * plan.stride;
        const float* const in = rows.from.first + plan.begins[x];
        const std::size_t stride = rows.from.stride;
        auto a = hn::Zero(d), b = a, c = a, e = a;
        for (std::size_t tap = 0; tap < plan.counts[x]; ++tap) {
            const auto weight = hn::Set(d, weights[tap]);
            const float* const at = in + tap * kChannels;
            a = AddProduct<kProducts>(hn::LoadU(d, at), weight, a);
            if constexpr (kRows > 1) b = AddProduct<kProducts>(hn::LoadU(d, at + stride), weight, b);
            if constexpr (kRows > 2) c = AddProduct<kProducts>(hn::LoadU(d, at + 2 * stride), weight, c);
            if constexpr (kRows > 3) e = AddProduct<kProducts>(hn::LoadU(d, at + 3 * stride), weight, e);
        }
        hn::StoreU(a, d, rows.to.Row(0) + x * kChannels);
        if constexpr (kRows > 1) hn::StoreU(b, d, rows.to.Row(1) + x * kChannels);
        if constexpr (kRows > 2) hn::StoreU(c, d, rows.to.Row(2) + x * kChannels);
        if constexpr (kRows > 3) hn::StoreU(e, d, rows.to.Row(3) + x * kChannels);
    }
}

/// The sum of four lanes: in whatever order the machine adds them, or in one.
template <Products kProducts, class V>
HWY_INLINE float SumOfLanes(V v) {
    if constexpr (kProducts == Products::kFused) return hn::ReduceSum(Four(), v);
    const auto halves = hn::Add(v, hn::Shuffle1032(v));
    return hn::GetLane(hn::Add(halves, hn::Shuffle2301(halves)));
}

/// One channel, four taps to a vector; the taps behind the last whole vector one by one, since a value that is not in
/// the reach may be no number.
template <Products kProducts>
void FilterGrey(const float* row, float* out, const RowWeights& plan) {
    const Four d;
    for (std::size_t x = 0; x < plan.size; ++x) {
        const float* const weights = plan.weights + x * plan.stride;
        const float* const in = row + plan.begins[x];
        const std::size_t count = plan.counts[x], whole = count & ~std::size_t{3};
        auto sums = hn::Zero(d);
        for (std::size_t tap = 0; tap < whole; tap += 4)
            sums = AddProduct<kProducts>(hn::LoadU(d, in + tap), hn::LoadU(d, weights + tap), sums);
        float sum = whole > 0 ? SumOfLanes<kProducts>(sums) : 0.0F;
        for (std::size_t tap = whole; tap < count; ++tap)
            sum += in[tap] * weights[tap];
        out[x] = sum;
    }
}

/// Two channels, two taps to a vector.
template <Products kProducts>
void FilterPairs(const float* row, float* out, const RowWeights& plan) {
    const Four d;
    const hn::FixedTag<float, 2> half;
    for (std::size_t x = 0; x < plan.size; ++x) {
        const float* const weights = plan.weights + x * plan.stride;
        const float* const in = row + plan.begins[x];
        const std::size_t count = plan.counts[x], whole = count & ~std::size_t{1};
        auto sums = hn::Zero(d);
        for (std::size_t tap = 0; tap < whole; tap += 2) {
            const auto pair = hn::LoadU(half, weights + tap);
            const auto twice =
                hn::Combine(d, hn::InterleaveUpper(half, pair, pair), hn::InterleaveLower(half, pair, pair));
            sums = AddProduct<kProducts>(hn::LoadU(d, in + 2 * tap), twice, sums);
        }
        auto sum = hn::Add(hn::LowerHalf(half, sums), hn::UpperHalf(half, sums));
        if (whole < count)
            sum = AddProduct<kProducts>(hn::LoadU(half, in + 2 * whole), hn::Set(half, weights[whole]), sum);
        hn::StoreU(sum, half, out + 2 * x);
    }
}

template <Products kProducts, int kChannels>
void FilterUpToFour(const FilteredRows& rows, const RowWeights& plan) {
    switch (rows.count) {
        case 1:
            return FilterPixels<kProducts, kChannels, 1>(rows, plan);
        case 2:
            return FilterPixels<kProducts, kChannels, 2>(rows, plan);
        case 3:
            return FilterPixels<kProducts, kChannels, 3>(rows, plan);
        default:
            return FilterPixels<kProducts, kChannels, 4>(rows, plan);
    }
}

template <Products kProducts>
void FilterRows(int channels, const FilteredRows& rows, const RowWeights& plan) {
    if (channels == 4) return FilterUpToFour<kProducts, 4>(rows, plan);
    if (channels == 3) return FilterUpToFour<kProducts, 3>(rows, plan);
    for (std::size_t y = 0; y < rows.count; ++y) {
        if (channels == 2)
            FilterPairs<kProducts>(rows.from.Row(y), rows.to.Row(y), plan);
        else
            FilterGrey<kProducts>(rows.from.Row(y), rows.to.Row(y), plan);
    }
}

// --- Ties ------------------------------------------------------------------------------------------------------------

/// A value is near a tie when it and a half more are near a whole number.
std::size_t FindTies(const float* values, std::size_t count, int channels, float bound, std::uint32_t* pixels) {
    const TagF32 df;
    const std::size_t n = hn::Lanes(df);
    const Floats limit = hn::Set(df, bound), half = hn::Set(df, 0.5F);
    const auto perPixel = static_cast<std::size_t>(channels);
    std::size_t found = 0;
    for (std::size_t at = 0; at < count; at += n) {
        const Floats shifted = hn::Add(hn::LoadU(df, values + at), half);
        const auto near = hn::Lt(hn::Abs(hn::Sub(shifted, hn::Round(shifted))), limit);
        if (hn::AllFalse(df, near)) continue;
        HWY_ALIGN float flags[kVectorBytes / sizeof(float)];
        hn::Store(hn::IfThenElseZero(near, hn::Set(df, 1.0F)), df, flags);
        for (std::size_t lane = 0; lane < std::min(n, count - at); ++lane) {
            const auto pixel = static_cast<std::uint32_t>((at + lane) / perPixel);
            if (flags[lane] != 0.0F && (found == 0 || pixels[found - 1] != pixel)) pixels[found++] = pixel;
        }
    }
    return found;
}

/// As many taps as a vector has pixels of four floats: each product by itself, to be added one after the other.
using Several = hn::CappedTag<float, 16>;

/// The weights of the taps of a vector, each four times.
HWY_INLINE hn::VFromD<Several> SpreadWeights(const float* weights, float rowWeight) {
    const Several d;
    if constexpr (HWY_MAX_LANES_D(Several) == 4) {
        return hn::Set(d, weights[0] * rowWeight);
    } else {
        const hn::CappedTag<float, HWY_MAX_LANES_D(Several) / 4> few;
        const hn::RebindToSigned<Several> di;
        const auto products = hn::Mul(hn::LoadU(few, weights), hn::Set(few, rowWeight));
        const auto order = hn::IndicesFromVec(d, hn::ShiftRight<2>(hn::Iota(di, 0)));
        return hn::TableLookupLanes(hn::ResizeBitCast(d, products), order);
    }
}

/// Adds the pixels of a vector in their order.
HWY_INLINE hn::VFromD<Four> AddInOrder(hn::VFromD<Four> total, hn::VFromD<Several> products) {
    total = hn::Add(total, hn::ExtractBlock<0>(products));
    if constexpr (HWY_MAX_LANES_D(Several) >= 8) total = hn::Add(total, hn::ExtractBlock<1>(products));
    if constexpr (HWY_MAX_LANES_D(Several) >= 16) {
        total = hn::Add(total, hn::ExtractBlock<2>(products));
        total = hn::Add(total, hn::ExtractBlock<3>(products));
    }
    return total;
}

/// 8-bit values as the library has them, 0 to 1.
template <class D>
HWY_INLINE hn::VFromD<D> UnitValues(D d, const unsigned char* bytes) {
    const hn::Rebind<std::int32_t, D> di;
    const auto values = hn::PromoteTo(di, hn::LoadU(hn::Rebind<std::uint8_t, D>(), bytes));
    return hn::Mul(hn::ConvertTo(d, values), hn::Set(d, 1.0F / 255.0F));
}

template <std::size_t kPixels>
void Exact(const ExactSum* sums, unsigned char* const* out) {
    const Four d;
    constexpr std::size_t kTaps = HWY_MAX_LANES_D(Several) / 4;
    hn::VFromD<Four> totals[kPixels];
    for (std::size_t p = 0; p < kPixels; ++p)
        totals[p] = hn::Zero(d);
    for (std::size_t y = 0; y < sums[0].rowCount; ++y) {
        const float rowWeight = sums[0].rowWeights[y];
        if (rowWeight == 0.0F) continue;
        std::size_t x = 0;
        for (; x + kTaps <= sums[0].count; x += kTaps) {
            for (std::size_t p = 0; p < kPixels; ++p) {
                const auto weights = SpreadWeights(sums[p].weights + x, rowWeight);
                const auto products = hn::Mul(weights, UnitValues(Several(), sums[p].rows[y] + 4 * x));
                totals[p] = AddInOrder(totals[p], products);
            }
        }
        for (; x < sums[0].count; ++x) {
            for (std::size_t p = 0; p < kPixels; ++p) {
                const auto weight = hn::Set(d, sums[p].weights[x] * rowWeight);
                totals[p] = hn::Add(totals[p], hn::Mul(weight, UnitValues(d, sums[p].rows[y] + 4 * x)));
            }
        }
    }
    const hn::Rebind<std::int32_t, Four> di;
    const hn::Rebind<std::uint8_t, Four> db;
    for (std::size_t p = 0; p < kPixels; ++p) {
        const auto rounded = hn::Add(hn::Mul(totals[p], hn::Set(d, 255.0F)), hn::Set(d, 0.5F));
        const auto limited = hn::Min(hn::Max(rounded, hn::Zero(d)), hn::Set(d, 255.0F));
        hn::StoreU(hn::DemoteTo(db, hn::ConvertTo(di, limited)), db, out[p]);
    }
}

void ExactFour(const ExactSum* sums, std::size_t count, unsigned char* const* out) {
    switch (count) {
        case 1:
            return Exact<1>(sums, out);
        case 2:
            return Exact<2>(sums, out);
        case 3:
            return Exact<3>(sums, out);
        default:
            return Exact<4>(sums, out);
    }
}

const ResampleKernels& ResampleTable() {
    static constexpr ResampleKernels kTable = {.toFloats = ToFloatsOf,
                                               .addRows = AddRows<Products::kFused>,
                                               .rangeRows = RangeRows,
                                               .filterRows = FilterRows<Products::kFused>,
                                               .addRowsUnfused = AddRows<Products::kUnfused>,
                                               .filterRowsUnfused = FilterRows<Products::kUnfused>,
                                               .store = Store,
                                               .findTies = FindTies,
                                               .exactFour = ExactFour};
    return kTable;
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Common {

HWY_EXPORT(ResampleTable);

const ResampleKernels& GetResampleKernels() {
    return HWY_DYNAMIC_DISPATCH(ResampleTable)();
}

}  // namespace Kavra::Common
#endif
