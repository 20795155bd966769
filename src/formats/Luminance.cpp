#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "formats/Luminance.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/PixelRounding-inl.h"
#include "common/PixelRun-inl.h"
#include "formats/Luminance.h"

HWY_BEFORE_NAMESPACE();
namespace Kavra::Formats::HWY_NAMESPACE {

using namespace Kavra::Common::HWY_NAMESPACE;

struct GreyKernel {
    static constexpr std::size_t kInBytes = 4, kOutBytes = 1, kMaxStep = kVectorBytes;
    float firstWeight, thirdWeight;  // of a pixel's first and third byte

    static std::size_t StepUnits() { return hn::Lanes(TagU8()); }
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const std::size_t bytes = hn::Lanes(TagU8());
        const Ints a = Greys(in);
        const Ints b = Greys(in + bytes);
        const Ints c = Greys(in + 2 * bytes);
        const Ints d = Greys(in + 3 * bytes);
        store(TagU8(), Bytes(a, b, c, d), out);
    }

private:
    /// One byte of every pixel as a float.
    template <int kShift>
    static HWY_INLINE Floats Channel(Ints pixels) {
        const TagI32 di;
        return hn::ConvertTo(TagF32(), hn::And(hn::ShiftRight<kShift>(pixels), hn::Set(di, 255)));
    }

    /// The greys of one vector of pixels. The sum is rounded without double precision: it and its fraction are exact.
    HWY_INLINE Ints Greys(const unsigned char* in) const {
        const TagI32 di;
        const TagF32 df;
        const Ints pixels = hn::BitCast(di, LoadBytes(TagU8(), in));
        const Floats green = hn::Mul(Channel<8>(pixels), hn::Set(df, 0.587F));
        const Floats first = hn::Mul(Channel<0>(pixels), hn::Set(df, firstWeight));
        const Floats third = hn::Mul(Channel<16>(pixels), hn::Set(df, thirdWeight));
        const Floats sum = hn::Add(hn::Add(green, first), third);
        const Ints whole = hn::ConvertInRangeTo(di, sum);
        const auto isUp = hn::Ge(hn::Sub(sum, hn::ConvertTo(df, whole)), hn::Set(df, 0.5F));
        return hn::Sub(whole, hn::VecFromMask(di, hn::RebindMask(di, isUp)));
    }
};

void Grey(const Common::PixelRun& run, ColourOrder order) {
    Convert(order == ColourOrder::kRedFirst ? GreyKernel{0.299F, 0.114F} : GreyKernel{0.114F, 0.299F}, run);
}

}  // namespace Kavra::Formats::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Formats {

HWY_EXPORT(Grey);

void GreyFromColours(const Common::PixelRun& run, ColourOrder order) {
    HWY_DYNAMIC_DISPATCH(Grey)(run, order);
}

}  // namespace Kavra::Formats
#endif
