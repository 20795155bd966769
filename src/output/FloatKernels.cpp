#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "output/FloatKernels.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "output/FloatKernels.h"

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// At most a group wide, whatever the processor has.
using TagF32 = hn::CappedTag<float, kFloatGroup>;
using TagF64 = hn::CappedTag<double, kFloatGroup / 2>;

using Group = std::array<float, kFloatGroup>;

/// `count` values, fewer than a group; the rest is NaN, which no extreme takes.
Group LoadPart(const unsigned char* values, std::size_t count) {
    Group group;
    group.fill(std::numeric_limits<float>::quiet_NaN());
    std::memcpy(group.data(), values, count * sizeof(float));
    return group;
}

void WidenByGroup(FloatExtremes& extremes, const float* values) {
    const TagF32 d;
    for (std::size_t i = 0; i < kFloatGroup; i += hn::Lanes(d)) {
        const auto v = hn::LoadU(d, values + i);
        const auto minimum = hn::Load(d, extremes.minimum.data() + i);
        const auto maximum = hn::Load(d, extremes.maximum.data() + i);
        // Not Min and Max: what those give for NaN differs from processor to processor.
        hn::Store(hn::IfThenElse(hn::Lt(v, minimum), v, minimum), d, extremes.minimum.data() + i);
        hn::Store(hn::IfThenElse(hn::Gt(v, maximum), v, maximum), d, extremes.maximum.data() + i);
    }
}

void Widen(FloatExtremes& extremes, const unsigned char* values, std::size_t count) {
    FloatExtremes local = extremes;
    std::size_t done = 0;
    for (; done + kFloatGroup <= count; done += kFloatGroup)
        WidenByGroup(local, reinterpret_cast<const float*>(values + done * sizeof(float)));
    if (done < count) WidenByGroup(local, LoadPart(values + done * sizeof(float), count - done).data());
    extremes = local;
}

/// Dividing by a power of two is multiplying by its inverse, which takes a fraction of the time.
struct ByInverse {
    FloatMapping mapping;  // whose spans are the inverses
    template <class V>
    HWY_INLINE V Scale(V v, V span) const {
        return hn::Mul(v, span);
    }
};
struct BySpan {
    FloatMapping mapping;
    template <class V>
    HWY_INLINE V Scale(V v, V span) const {
        return hn::Div(v, span);
    }
};

template <class Scaling>
HWY_INLINE void ShowGroup(const Scaling& scaling, const float* values, unsigned char* out) {
    const TagF64 d;
    const hn::Rebind<float, TagF64> df;
    const hn::Rebind<std::int32_t, TagF64> di;
    const hn::Rebind<std::uint8_t, TagF64> db;
    for (std::size_t i = 0; i < kFloatGroup; i += hn::Lanes(d)) {
        const auto v = hn::PromoteTo(d, hn::LoadU(df, values + i));
        const auto above = hn::Sub(v, hn::Load(d, scaling.mapping.minimum.data() + i));
        const auto scaled =
            scaling.Scale(hn::Mul(above, hn::Set(d, 255.0)), hn::Load(d, scaling.mapping.span.data() + i));
        const auto positive = hn::IfThenElseZero(hn::Gt(scaled, hn::Zero(d)), scaled);  // NaN is not
        const auto byte = hn::DemoteTo(di, hn::Min(positive, hn::Set(d, 255.0)));
        hn::StoreU(hn::DemoteTo(db, byte), db, out + i);
    }
}

template <class Scaling>
void ShowAll(const Scaling& scaling, const unsigned char* values, std::size_t count, unsigned char* out) {
    std::size_t done = 0;
    for (; done + kFloatGroup <= count; done += kFloatGroup)
        ShowGroup(scaling, reinterpret_cast<const float*>(values + done * sizeof(float)), out + done);
    if (done == count) return;
    std::array<unsigned char, kFloatGroup> bytes;
    ShowGroup(scaling, LoadPart(values + done * sizeof(float), count - done).data(), bytes.data());
    std::memcpy(out + done, bytes.data(), count - done);
}

bool IsPowerOfTwo(double span) {
    int exponent = 0;
    return std::frexp(span, &exponent) == 0.5;
}

void Show(const FloatMapping& mapping, const unsigned char* values, std::size_t count, unsigned char* out) {
    if (!std::ranges::all_of(mapping.span, IsPowerOfTwo)) return ShowAll(BySpan{mapping}, values, count, out);
    ByInverse scaling{mapping};
    for (double& span : scaling.mapping.span)
        span = 1 / span;
    ShowAll(scaling, values, count, out);
}

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Devices {

HWY_EXPORT(Widen);
HWY_EXPORT(Show);

void WidenExtremes(FloatExtremes& extremes, const unsigned char* values, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(Widen)(extremes, values, count);
}

void ShowFloats(const FloatMapping& mapping, const unsigned char* values, std::size_t count, unsigned char* out) {
    HWY_DYNAMIC_DISPATCH(Show)(mapping, values, count, out);
}

}  // namespace Kavra::Devices
#endif
