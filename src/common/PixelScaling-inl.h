// Kernels that multiply each element by a factor. Compiled once per vector width.
#if defined(KAVRA_PIXEL_SCALING_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_PIXEL_SCALING_INL
#undef KAVRA_PIXEL_SCALING_INL
#else
#define KAVRA_PIXEL_SCALING_INL
#endif

#include "common/PixelRounding-inl.h"
#include "common/PixelRun-inl.h"

#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

/// A vector of floats from halves. Where Highway emulates the conversion, infinities and NaNs come out as numbers from
/// 65536 on, which no finite half is; a full exponent puts them right and changes nothing elsewhere. The instructions
/// of x86 from AVX2 on need no such help.
HWY_INLINE Floats LoadHalves(const unsigned char* in) {
    const TagF32 df;
    const auto bits = LoadBytes(HalfTagU16(), in);
    const Floats v = hn::PromoteTo(df, hn::BitCast(hn::Rebind<hwy::float16_t, TagF32>(), bits));
    if constexpr (HWY_ARCH_X86 && HWY_TARGET < HWY_SSE4) return v;
    const auto isSpecial = hn::Ge(hn::Abs(v), hn::Set(df, 65536.0F));
    return hn::Or(v, hn::IfThenElseZero(isSpecial, hn::BitCast(df, hn::Set(TagU32(), 0x7F800000U))));
}

/// A vector of floats from integers of type `T`, or from halves.
template <class T>
HWY_INLINE Floats LoadFloats(const unsigned char* in) {
    if constexpr (std::is_same_v<T, hwy::float16_t>)
        return LoadHalves(in);
    else
        return hn::ConvertTo(TagF32(), hn::PromoteTo(TagI32(), LoadBytes(hn::Rebind<T, TagI32>(), in)));
}

/// Whether a kernel takes elements one by one, or pixels of four whose first and third change places.
enum class ChannelOrder : bool { kKept, kRedBlueSwapped };

template <class In, class Out, ChannelOrder kOrder>
struct ScalingKernel {
    static constexpr std::size_t kElements = kOrder == ChannelOrder::kKept ? 1 : 4;
    static constexpr std::size_t kInBytes = kElements * sizeof(In), kOutBytes = kElements * sizeof(Out);
    static constexpr std::size_t kMaxStep = kVectorBytes / kOutBytes;
    float factor;

    static std::size_t StepUnits() { return hn::Lanes(TagU8()) / kOutBytes; }

    /// The `k`th vector of scaled floats.
    HWY_INLINE Floats Scaled(const unsigned char* in, std::size_t k) const {
        const Floats v = LoadFloats<In>(in + k * hn::Lanes(TagF32()) * sizeof(In));
        const Floats scaled = hn::Mul(v, hn::Set(TagF32(), factor));
        if constexpr (kOrder == ChannelOrder::kRedBlueSwapped)
            return hn::Per4LaneBlockShuffle<3, 0, 1, 2>(scaled);
        else
            return scaled;
    }
};

template <class In, ChannelOrder kOrder = ChannelOrder::kKept>
struct FloatKernel : ScalingKernel<In, float, kOrder> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        store(TagF32(), this->Scaled(in, 0), out);
    }
};

template <class In, ChannelOrder kOrder = ChannelOrder::kKept>
struct HalfKernel : ScalingKernel<In, std::uint16_t, kOrder> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const Floats low = this->Scaled(in, 0);
        store(TagU16(), Halves(low, this->Scaled(in, 1)), out);
    }
};

template <ChannelOrder kOrder = ChannelOrder::kKept>
struct ByteFromWordKernel : ScalingKernel<std::uint16_t, std::uint8_t, kOrder> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const Ints a = RoundHalfUp(this->Scaled(in, 0), 255.0F);
        const Ints b = RoundHalfUp(this->Scaled(in, 1), 255.0F);
        const Ints c = RoundHalfUp(this->Scaled(in, 2), 255.0F);
        const Ints d = RoundHalfUp(this->Scaled(in, 3), 255.0F);
        store(TagU8(), Bytes(a, b, c, d), out);
    }
};

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
