#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "analysis/RowColours.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "analysis/RowColours.h"
#include "common/PixelScaling-inl.h"

#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Analysis::HWY_NAMESPACE {

using namespace Kavra::Common::HWY_NAMESPACE;

using TagF64 = hn::ScalableTag<double>;
using Doubles = hn::VFromD<TagF64>;

// The fetches: a vector of whole pixels as floats, red first.

struct FloatFetch {
    static HWY_INLINE Floats Load(const unsigned char* in) { return LoadBytes(TagF32(), in); }
};

struct HalfFetch {
    static HWY_INLINE Floats Load(const unsigned char* in) { return LoadHalves(in); }
};

struct RedFirstFetch {
    static HWY_INLINE Floats Load(const unsigned char* in) {
        return hn::Mul(LoadFloats<std::uint8_t>(in), hn::Set(TagF32(), kByteScale));
    }
};

struct BlueFirstFetch {
    static HWY_INLINE Floats Load(const unsigned char* in) {
        return hn::Per4LaneBlockShuffle<3, 0, 1, 2>(RedFirstFetch::Load(in));
    }
};

/// a < b ? b : a, which is what x86's instruction makes of (b, a); with NaNs other processors differ from that.
HWY_INLINE Floats Larger(Floats a, Floats b) {
    if constexpr (HWY_ARCH_X86)
        return hn::Max(b, a);
    else
        return hn::IfThenElse(hn::Lt(a, b), b, a);
}

/// Each pixel's fourth channel replaced by the brightest of the three others.
HWY_INLINE Floats WithBrightest(Floats pixels) {
    const TagF32 df;
    const Floats red = hn::Per4LaneBlockShuffle<0, 0, 0, 0>(pixels);
    const Floats green = hn::Per4LaneBlockShuffle<1, 1, 1, 1>(pixels);
    const Floats blue = hn::Per4LaneBlockShuffle<2, 2, 2, 2>(pixels);
    const auto isFourth = hn::RebindMask(df, hn::Ne(hn::Dup128VecFromValues(TagI32(), 0, 0, 0, 1), hn::Zero(TagI32())));
    return hn::IfThenElse(isFourth, Larger(Larger(red, green), blue), pixels);
}

/// Four pixels at a time, in one to four vectors; each of the sixteen channels has a sum of its own.
template <class Fetch, std::size_t kPixelBytes>
class GroupSums {
public:
    static constexpr std::size_t kPixels = 4;
    static constexpr std::size_t kBytes = kPixels * kPixelBytes;

    HWY_INLINE void Add(const unsigned char* group) {
        const TagF64 dd;
        HWY_UNROLL(4)
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Floats pixels = WithBrightest(Fetch::Load(group + i * (kBytes / kVectors)));
            mLow[i] = hn::Add(mLow[i], hn::PromoteLowerTo(dd, pixels));
            mHigh[i] = hn::Add(mHigh[i], hn::PromoteUpperTo(dd, pixels));
        }
    }

    ColourSums Total() const {
        const TagF64 dd;
        alignas(64) double sums[4 * kPixels];
        for (std::size_t i = 0; i < kVectors; ++i) {
            hn::StoreU(mLow[i], dd, sums + 2 * i * hn::Lanes(dd));
            hn::StoreU(mHigh[i], dd, sums + (2 * i + 1) * hn::Lanes(dd));
        }
        const auto total = [&sums](std::size_t channel) {
            return (sums[channel] + sums[4 + channel]) + (sums[8 + channel] + sums[12 + channel]);
        };
        return {total(0), total(1), total(2), total(3)};
    }

private:
    static constexpr std::size_t kVectors = 4 * kPixels / hn::MaxLanes(TagF32());
    Doubles mLow[kVectors] = {}, mHigh[kVectors] = {};
};

template <class Fetch, std::size_t kPixelBytes>
ColourSums Sum(const unsigned char* row, std::size_t width) {
    using Group = GroupSums<Fetch, kPixelBytes>;
    Group sums;
    const unsigned char* const end = row + width / Group::kPixels * Group::kBytes;
    for (; row != end; row += Group::kBytes) {
        ReadAhead(row, Group::kBytes);
        sums.Add(row);
    }
    if (const std::size_t rest = width % Group::kPixels; rest != 0) {
        unsigned char last[Group::kBytes] = {};  // black pixels add nothing
        std::memcpy(last, row, rest * kPixelBytes);
        sums.Add(last);
    }
    return sums.Total();
}

ColourSums SumPixels(const unsigned char* row, std::size_t width, PixelKind kind) {
    switch (kind) {
        case PixelKind::kRedFirstBytes:
            return Sum<RedFirstFetch, 4>(row, width);
        case PixelKind::kBlueFirstBytes:
            return Sum<BlueFirstFetch, 4>(row, width);
        case PixelKind::kHalves:
            return Sum<HalfFetch, 8>(row, width);
        default:
            return Sum<FloatFetch, 16>(row, width);
    }
}

}  // namespace Kavra::Analysis::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Analysis {

HWY_EXPORT(SumPixels);

ColourSums SumRow(const unsigned char* row, std::size_t width, PixelKind kind) {
    return HWY_DYNAMIC_DISPATCH(SumPixels)(row, width, kind);
}

}  // namespace Kavra::Analysis
#endif
