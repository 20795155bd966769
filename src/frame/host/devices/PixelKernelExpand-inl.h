// Kernels that widen, copy and reorder channels without arithmetic. Compiled once per vector width.
#if defined(KAVRA_PIXEL_KERNEL_EXPAND_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_PIXEL_KERNEL_EXPAND_INL
#undef KAVRA_PIXEL_KERNEL_EXPAND_INL
#else
#define KAVRA_PIXEL_KERNEL_EXPAND_INL
#endif

#include "common/PixelRounding-inl.h"
#include "common/PixelRun-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

using namespace Kavra::Common::HWY_NAMESPACE;

struct SwapRedBlueKernel {
    static constexpr std::size_t kInBytes = 4, kOutBytes = 4, kMaxStep = kVectorBytes / 4;
    static std::size_t StepUnits() { return hn::Lanes(TagU32()); }
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        store(TagU8(), SwapRedBlue(LoadBytes(TagU8(), in)), out);
    }
};

/// One element to one vector lane that is wider, by `Widen(lane)`.
template <class From, class To, class Widen>
struct LaneKernel {
    static constexpr std::size_t kInBytes = sizeof(From), kOutBytes = sizeof(To), kMaxStep = kVectorBytes / sizeof(To);
    Widen widen;

    static std::size_t StepUnits() { return hn::Lanes(hn::ScalableTag<To>()); }
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const hn::ScalableTag<To> d;
        store(d, widen(d, hn::PromoteTo(d, LoadBytes(hn::Rebind<From, decltype(d)>(), in))), out);
    }
};

/// v, v: two copies of a lane's lower half.
struct Twice {
    template <class D, class V>
    HWY_INLINE V operator()(D, V v) const {
        return hn::Or(v, hn::ShiftLeft<sizeof(hn::TFromD<D>) * 4>(v));
    }
};
/// A byte four times: the same 16-bit number twice.
struct FourTimes {
    template <class D, class V>
    HWY_INLINE V operator()(D d, V v) const {
        const V pair = hn::Or(v, hn::ShiftLeft<8>(v));
        return Twice()(d, pair);
    }
};
/// v, v, v, 255.
struct OpaqueGrey {
    template <class D, class V>
    HWY_INLINE V operator()(D d, V v) const {
        const V pair = hn::Or(v, hn::ShiftLeft<8>(v));
        return hn::Or(hn::Or(pair, hn::ShiftLeft<16>(v)), hn::Set(d, 0xFF000000U));
    }
};
/// round(v / 257) as an opaque grey: (255 v + 32895) >> 16 is exact for every 16-bit v.
struct OpaqueGreyOf16 {
    template <class D, class V>
    HWY_INLINE V operator()(D d, V v) const {
        const V scaled = hn::Sub(hn::ShiftLeft<8>(v), v);
        return OpaqueGrey()(d, hn::ShiftRight<16>(hn::Add(scaled, hn::Set(d, 32895U))));
    }
};
/// v, v, v, alpha.
struct ThriceAndAlpha {
    std::uint64_t alphaOnTop;

    template <class D, class V>
    HWY_INLINE V operator()(D d, V v) const {
        const V pair = hn::Or(v, hn::ShiftLeft<16>(v));
        return hn::Or(hn::Or(pair, hn::ShiftLeft<32>(v)), hn::Set(d, alphaOnTop));
    }
};

struct Three16Kernel {
    static constexpr std::size_t kInBytes = 2, kOutBytes = 6, kMaxStep = kVectorBytes / 2;
    static std::size_t StepUnits() { return hn::Lanes(TagU16()); }
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store) const {
        const auto v = LoadBytes(TagU16(), in);
        hn::StoreInterleaved3(v, v, v, TagU16(), reinterpret_cast<std::uint16_t*>(out));
    }
};

/// Lane i of output vector k takes 32-bit lane (k * lanes + i) / `kChannels` of the input.
template <std::size_t kChannels>
struct Repeat32Kernel {
    static constexpr std::size_t kInBytes = 4, kOutBytes = 4 * kChannels, kMaxStep = kVectorBytes / 4;
    hn::VFromD<TagU32> alpha;

    explicit Repeat32Kernel(std::uint32_t alphaBits) : alpha(hn::Set(TagU32(), alphaBits)) {}
    static std::size_t StepUnits() { return hn::Lanes(TagU32()); }

    template <class Store>
    HWY_INLINE void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const TagU32 d;
        const auto v = LoadBytes(d, in);
        const std::size_t lanes = hn::Lanes(d);
        const auto lane = hn::Iota(d, 0U);
        for (std::size_t k = 0; k < kChannels; ++k) {
            const auto source = Source(hn::Add(lane, hn::Set(d, static_cast<std::uint32_t>(k * lanes))));
            auto repeated = hn::TableLookupLanes(v, hn::IndicesFromVec(d, source));
            if constexpr (kChannels == 4) {
                const auto isAlpha = hn::Eq(hn::And(lane, hn::Set(d, 3U)), hn::Set(d, 3U));
                repeated = hn::IfThenElse(isAlpha, alpha, repeated);
            }
            store(d, repeated, out + k * lanes * 4);
        }
    }

private:
    /// i / kChannels; for 3 by a multiplication that is exact for every lane number there can be.
    static HWY_INLINE hn::VFromD<TagU32> Source(hn::VFromD<TagU32> i) {
        if constexpr (kChannels == 4)
            return hn::ShiftRight<2>(i);
        else
            return hn::ShiftRight<16>(hn::Mul(i, hn::Set(TagU32(), 21846U)));
    }
};

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
