// Kernels that pack pixels of four floats. Compiled once per vector width.
#if defined(KAVRA_PIXEL_KERNEL_PACK_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_PIXEL_KERNEL_PACK_INL
#undef KAVRA_PIXEL_KERNEL_PACK_INL
#else
#define KAVRA_PIXEL_KERNEL_PACK_INL
#endif

#include "common/PixelRounding-inl.h"
#include "common/PixelRun-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

using namespace Kavra::Common::HWY_NAMESPACE;

/// The first `kChannels` of every pixel, packed, one vector after another.
template <std::size_t kChannels>
struct Channels {
    const unsigned char* in;

    HWY_INLINE Floats operator[](std::size_t k) const {
        const std::size_t vectors = 4 / kChannels;
        const unsigned char* from = in + k * vectors * hn::Lanes(TagF32()) * 4;
        if constexpr (kChannels == 4) return Vector(from, 0);
        if constexpr (kChannels == 2) return Pairs(Vector(from, 0), Vector(from, 1));
        if constexpr (kChannels == 1) {
            const Floats low = Evens(Vector(from, 0), Vector(from, 1));
            const Floats high = Evens(Vector(from, 2), Vector(from, 3));
            return Evens(low, high);
        }
    }

private:
    static HWY_INLINE Floats Vector(const unsigned char* from, std::size_t i) {
        return LoadBytes(TagF32(), from + i * hn::Lanes(TagF32()) * 4);
    }
    static HWY_INLINE Floats Evens(Floats low, Floats high) { return hn::ConcatEven(TagF32(), high, low); }
    static HWY_INLINE Floats Pairs(Floats low, Floats high) {
        const TagU64 d;
        return hn::BitCast(TagF32(), hn::ConcatEven(d, hn::BitCast(d, high), hn::BitCast(d, low)));
    }
};

/// `maximum` times a channel that is first limited to 0..1, NaN giving 0; rounded half up.
HWY_INLINE Ints Quantised(Floats v, float maximum) {
    const TagF32 df;
    const Floats positive = hn::IfThenElseZero(hn::Gt(v, hn::Zero(df)), v);
    const Floats scaled = hn::Mul(hn::Min(positive, hn::Set(df, 1.0F)), hn::Set(df, maximum));
    return hn::ConvertInRangeTo(TagI32(), hn::Add(scaled, hn::Set(df, 0.5F)));
}

template <class Element, std::size_t kChannels>
struct PackingKernel {
    static constexpr std::size_t kInBytes = 16, kOutBytes = sizeof(Element) * kChannels;
    static constexpr std::size_t kMaxStep = kVectorBytes / kOutBytes;
    static std::size_t StepUnits() { return hn::Lanes(TagU8()) / kOutBytes; }
};

template <std::size_t kChannels, bool kBlueFirst = false>
struct PackBytes : PackingKernel<std::uint8_t, kChannels> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const Channels<kChannels> v{in};
        const Ints a = Quantised(v[0], 255.0F);
        const Ints b = Quantised(v[1], 255.0F);
        const Ints c = Quantised(v[2], 255.0F);
        const Ints d = Quantised(v[3], 255.0F);
        auto bytes = Bytes(a, b, c, d);
        if constexpr (kBlueFirst) bytes = SwapRedBlue(bytes);
        store(TagU8(), bytes, out);
    }
};

template <std::size_t kChannels>
struct PackWords : PackingKernel<std::uint16_t, kChannels> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const Channels<kChannels> v{in};
        const Ints low = Quantised(v[0], 65535.0F);
        store(TagU16(), Words(low, Quantised(v[1], 65535.0F)), out);
    }
};

template <std::size_t kChannels>
struct PackHalves : PackingKernel<std::uint16_t, kChannels> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const Channels<kChannels> v{in};
        const Floats low = v[0];
        store(TagU16(), Halves(low, v[1]), out);
    }
};

template <std::size_t kChannels>
struct PackFloats : PackingKernel<float, kChannels> {
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        store(TagF32(), Channels<kChannels>{in}[0], out);
    }
};

/// Four vectors of pixels make three without their alpha. Every output vector lies across two neighbours of the input.
struct DropAlpha {
    static constexpr std::size_t kInBytes = 16, kOutBytes = 12, kMaxStep = kVectorBytes / 4;
    static std::size_t StepUnits() { return hn::Lanes(TagF32()); }

    /// Output float i is input float i + i / 3, counted from the first of the two vectors.
    static HWY_INLINE auto Indices(std::size_t k) {
        const TagU32 du;
        const auto first = hn::Set(du, static_cast<std::uint32_t>(k * hn::Lanes(du)));
        const auto i = hn::Add(hn::Iota(du, 0U), first);
        const auto third = hn::ShiftRight<16>(hn::Mul(i, hn::Set(du, 21846U)));
        return hn::IndicesFromVec(TagF32(), hn::Sub(hn::Add(i, third), first));
    }

    template <class Store>
    HWY_INLINE void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const TagF32 df;
        const std::size_t lanes = hn::Lanes(df);
        for (std::size_t k = 0; k < 3; ++k) {
            const unsigned char* from = in + k * lanes * 4;
            store(df, hn::TwoTablesLookupLanes(df, LoadBytes(df, from), LoadBytes(df, from + lanes * 4), Indices(k)),
                  out + k * lanes * 4);
        }
    }
};

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
