// From floats to the elements of pixels, a vector at a time. Compiled once per vector width.
#if defined(KAVRA_PIXEL_ROUNDING_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_PIXEL_ROUNDING_INL
#undef KAVRA_PIXEL_ROUNDING_INL
#else
#define KAVRA_PIXEL_ROUNDING_INL
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using TagU8 = hn::ScalableTag<std::uint8_t>;
using TagU16 = hn::ScalableTag<std::uint16_t>;
using TagU32 = hn::ScalableTag<std::uint32_t>;
using TagU64 = hn::ScalableTag<std::uint64_t>;
using TagI32 = hn::ScalableTag<std::int32_t>;
using TagF32 = hn::ScalableTag<float>;
using HalfTagU16 = hn::Rebind<std::uint16_t, TagF32>;  // as many lanes as a vector of floats has
using Floats = hn::VFromD<TagF32>;
using Ints = hn::VFromD<TagI32>;

/// floor(v + 0.5) limited to 0..`limit`, NaN giving 0.
HWY_INLINE Ints RoundHalfUp(Floats v, float limit) {
    const TagF32 df;
    const Floats sum = hn::Add(v, hn::Set(df, 0.5F));
    const Floats positive = hn::IfThenElseZero(hn::Gt(sum, hn::Zero(df)), sum);
    return hn::ConvertInRangeTo(TagI32(), hn::Min(positive, hn::Set(df, limit)));
}

/// The half that keeps what fits of a NaN's payload. Processors set the quiet bit as they convert; the reference
/// library does not, and one value must not depend on the vector width.
HWY_INLINE hn::VFromD<HalfTagU16> HalfBitsWithNaN(Floats v, hn::VFromD<HalfTagU16> converted) {
    const TagU32 du;
    const auto bits = hn::BitCast(du, v);
    const auto sign = hn::And(hn::ShiftRight<16>(bits), hn::Set(du, 0x8000U));
    const auto payload = hn::And(hn::ShiftRight<13>(bits), hn::Set(du, 0x3FFU));
    const auto kept = hn::Max(payload, hn::Set(du, 1U));
    const auto nan = hn::Or(hn::Or(sign, kept), hn::Set(du, 0x7C00U));
    const auto isNaN = hn::RebindMask(du, hn::IsNaN(v));
    return hn::DemoteTo(HalfTagU16(), hn::IfThenElse(isNaN, nan, hn::PromoteTo(du, converted)));
}

/// Rounded to half precision, nearest even.
HWY_INLINE hn::VFromD<HalfTagU16> HalfBits(Floats v) {
    const hn::Rebind<hwy::float16_t, TagF32> dh;
    const auto converted = hn::BitCast(HalfTagU16(), hn::DemoteTo(dh, v));
    if (HWY_UNLIKELY(!hn::AllFalse(TagF32(), hn::IsNaN(v)))) return HalfBitsWithNaN(v, converted);
    return converted;
}

/// Four vectors of 0..255 as one of bytes, two of 0..65535 as one of words, in order.
HWY_INLINE hn::VFromD<TagU8> Bytes(Ints a, Ints b, Ints c, Ints d) {
    const hn::ScalableTag<std::int16_t> dw;
    return hn::OrderedDemote2To(TagU8(), hn::OrderedDemote2To(dw, a, b), hn::OrderedDemote2To(dw, c, d));
}
HWY_INLINE hn::VFromD<TagU16> Words(Ints a, Ints b) {
    return hn::OrderedDemote2To(TagU16(), a, b);
}

HWY_INLINE hn::VFromD<TagU16> Halves(Floats a, Floats b) {
    return hn::Combine(TagU16(), HalfBits(b), HalfBits(a));
}

/// Bytes 0 and 2 of every group of four exchanged.
HWY_INLINE hn::VFromD<TagU8> SwapRedBlue(hn::VFromD<TagU8> v) {
    const auto order = hn::Dup128VecFromValues(TagU8(), 2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15);
    return hn::TableLookupBytes(v, order);
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
