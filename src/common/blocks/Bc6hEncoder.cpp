#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc6hEncoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/Bc6hEncoder.h"
#include "common/blocks/Bc6hLayout.h"
#include "common/blocks/BlockPartitions-inl.h"

#include <cmath>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

using Colour = Vector<3>;
using Pixels = Points<3>;

/// How numbers of halves become what ends are interpolated in, and back.
struct Scale {
    bool isSigned;

    float Wide() const { return isSigned ? 32.0F / 31 : 64.0F / 31; }
    float Top() const { return isSigned ? 32767.0F : 65535.0F; }
    float Low() const { return isSigned ? -32767.0F : 0.0F; }
};

HWY_INLINE Value WithSignOf(Value size, Value from) {
    return hn::CopySign(size, from);
}

// --- Ends as they are stored -----------------------------------------------------------------------------------------

HWY_INLINE float PowerOfTwo(int exponent) {
    return exponent >= 0 ? static_cast<float>(1 << exponent) : 1.0F / static_cast<float>(1 << -exponent);
}

/// The stored component nearest to a wide one.
HWY_INLINE Value Stored(Value wide, int bits, Scale scale) {
    if (bits >= 16) return hn::Round(Clamped(wide, scale.Low(), scale.Top()));
    const Value size = hn::Min(hn::Abs(wide), Same(scale.Top()));
    const Value cut = hn::Floor(hn::Mul(size, Same(PowerOfTwo(bits - 16))));
    const float top = PowerOfTwo(scale.isSigned ? bits - 1 : bits) - 1;
    const Value stored = hn::Min(cut, Same(top));
    return scale.isSigned ? WithSignOf(stored, wide) : hn::IfThenElseZero(hn::Gt(wide, Same(0)), stored);
}

/// A stored component as a decoder widens it (`WidenedHdr`).
HWY_INLINE Value Widened(Value stored, int bits, Scale scale) {
    if (bits >= (scale.isSigned ? 16 : 15)) return stored;
    const Value size = hn::Abs(stored);
    const float top = PowerOfTwo(scale.isSigned ? bits - 1 : bits) - 1;
    const float step = PowerOfTwo(16 - bits);
    Value widened = hn::Add(hn::Mul(size, Same(step)), Same(step / 2));
    widened = hn::IfThenElse(hn::Ge(size, Same(top)), Same(scale.Top()), widened);
    widened = hn::IfThenElseZero(hn::Gt(size, Same(0)), widened);
    return scale.isSigned ? WithSignOf(widened, stored) : widened;
}

// --- Regions ---------------------------------------------------------------------------------------------------------

/// The pixels of a region, and which of them lacks a bit of its index.
struct Region {
    Pixels pixels;                             ///< wide
    std::array<Value, kBlockPixels> isAnchor;  ///< 1 for one pixel in each lane
    Scale scale;
};

/// Gives each pixel the nearest colour between two wide ends; returns the error in numbers of halves. The anchor gets one
/// of the first half.
template <bool kWithSteps>
HWY_INLINE Value Assign(const Region& region, const Colour& a, const Colour& b, float last, Steps* steps) {
    const Colour direction = Difference(b, a);
    const Colour weighted = Weighted(region.pixels, direction);
    const Value length = Dot(direction, weighted);
    const Value perLength = hn::IfThenElseZero(hn::Gt(length, Same(0)), hn::Div(Same(last), length));
    const Value narrow = Same(1 / region.scale.Wide());
    const Value half = Same((last + 1) / 2);
    Value error = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Colour point = region.pixels.At(i);
        Value step = Clamped(hn::Round(hn::Mul(Dot(Difference(point, a), weighted), perLength)), 0, last);
        step = hn::Min(step, hn::Sub(Same(last), hn::Mul(region.isAnchor[i], half)));
        const Value share = hn::Mul(hn::Round(hn::Mul(step, Same(64 / last))), Same(1.0F / 64));
        const Colour off = Difference(point, Along(a, direction, share));
        const Colour narrowed = {hn::Mul(off[0], narrow), hn::Mul(off[1], narrow), hn::Mul(off[2], narrow)};
        error = hn::Add(error, region.pixels.Counted(i, Dot(narrowed, Weighted(region.pixels, narrowed))));
        if constexpr (kWithSteps) (*steps)[i] = step;
    }
    return error;
}

/// The ends of a line, so that the anchor lies in the half of the first one.
HWY_INLINE Ends<3> TurnedToAnchor(const Region& region, Ends<3> ends) {
    const Colour direction = Difference(ends.b, ends.a);
    Value offset = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Value along = Dot(Difference(region.pixels.At(i), ends.a), Weighted(region.pixels, direction));
        offset = hn::Add(offset, hn::Mul(along, region.isAnchor[i]));
    }
    const Value length = Dot(direction, Weighted(region.pixels, direction));
    const Mask isBeyond = hn::Gt(hn::Add(offset, offset), length);
    for (std::size_t c = 0; c < 3; ++c) {
        const Value a = ends.a[c];
        ends.a[c] = hn::IfThenElse(isBeyond, ends.b[c], a);
        ends.b[c] = hn::IfThenElse(isBeyond, a, ends.b[c]);
    }
    return ends;
}

HWY_INLINE Ends<3> Fitted(const Region& region, float last, int refinements) {
    Ends<3> best = TurnedToAnchor(region, ExtentOf(region.pixels));
    Value error = Assign<false>(region, best.a, best.b, last, nullptr);
    for (int turn = 0; turn < refinements; ++turn) {
        Steps steps;
        (void)Assign<true>(region, best.a, best.b, last, &steps);
        BestEnds<3> refined = LeastSquares(region.pixels, steps, last);
        for (std::size_t c = 0; c < 3; ++c) {
            refined.ends.a[c] = Clamped(refined.ends.a[c], region.scale.Low(), region.scale.Top());
            refined.ends.b[c] = Clamped(refined.ends.b[c], region.scale.Low(), region.scale.Top());
        }
        const Value now = Assign<false>(region, refined.ends.a, refined.ends.b, last, nullptr);
        const Mask isBetter = hn::And(refined.isKnown, hn::Lt(now, error));
        for (std::size_t c = 0; c < 3; ++c) {
            best.a[c] = hn::IfThenElse(isBetter, refined.ends.a[c], best.a[c]);
            best.b[c] = hn::IfThenElse(isBetter, refined.ends.b[c], best.b[c]);
        }
        error = hn::IfThenElse(isBetter, now, error);
    }
    return best;
}

// --- Modes -----------------------------------------------------------------------------------------------------------

template <std::size_t kRegions>
using AllEnds = std::array<Ends<3>, kRegions>;

template <std::size_t kRegions>
using AllRegions = std::array<Region, kRegions>;

/// Ends as a mode stores them, and what they cost.
template <std::size_t kRegions>
struct Trial {
    AllEnds<kRegions> ends;
    Value error;
};

template <std::size_t kRegions>
HWY_INLINE Ends<3> WideEnds(const Trial<kRegions>& trial, std::size_t r, const Bc6hMode& mode, Scale scale) {
    Ends<3> wide;
    for (std::size_t c = 0; c < 3; ++c) {
        wide.a[c] = Widened(trial.ends[r].a[c], mode.endBits, scale);
        wide.b[c] = Widened(trial.ends[r].b[c], mode.endBits, scale);
    }
    return wide;
}

/// The error of ends as they are stored; endless where their differences do not fit.
template <std::size_t kRegions>
HWY_INLINE void Judge(const AllRegions<kRegions>& regions, const Bc6hMode& mode, Trial<kRegions>& trial) {
    const float last = kRegions == 2 ? 7 : 15;
    trial.error = Same(0);
    for (std::size_t r = 0; r < kRegions; ++r) {
        const Ends<3> wide = WideEnds(trial, r, mode, regions[r].scale);
        trial.error = hn::Add(trial.error, Assign<false>(regions[r], wide.a, wide.b, last, nullptr));
    }
    if (!mode.isDelta) return;
    for (std::size_t c = 0; c < 3; ++c) {
        const float reach = PowerOfTwo(mode.deltaBits[c] - 1);
        const auto check = [&](Value end) {
            const Value delta = hn::Sub(end, trial.ends[0].a[c]);
            const Mask fits = hn::And(hn::Ge(delta, Same(-reach)), hn::Lt(delta, Same(reach)));
            trial.error = hn::IfThenElse(fits, trial.error, Same(HUGE_VALF));
        };
        for (std::size_t r = 0; r < kRegions; ++r) {
            if (r > 0) check(trial.ends[r].a[c]);
            check(trial.ends[r].b[c]);
        }
    }
}

template <std::size_t kRegions>
HWY_INLINE Trial<kRegions> TrialOf(const AllRegions<kRegions>& regions, const AllEnds<kRegions>& wide,
                                   const Bc6hMode& mode) {
    Trial<kRegions> trial;
    for (std::size_t r = 0; r < kRegions; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
            trial.ends[r].a[c] = Stored(wide[r].a[c], mode.endBits, regions[r].scale);
            trial.ends[r].b[c] = Stored(wide[r].b[c], mode.endBits, regions[r].scale);
        }
    Judge(regions, mode, trial);
    return trial;
}

template <std::size_t kRegions>
HWY_INLINE void KeepBetter(Trial<kRegions>& best, const Trial<kRegions>& other) {
    const Mask isBetter = hn::Lt(other.error, best.error);
    for (std::size_t r = 0; r < kRegions; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
            best.ends[r].a[c] = hn::IfThenElse(isBetter, other.ends[r].a[c], best.ends[r].a[c]);
            best.ends[r].b[c] = hn::IfThenElse(isBetter, other.ends[r].b[c], best.ends[r].b[c]);
        }
    best.error = hn::IfThenElse(isBetter, other.error, best.error);
}

/// Moves each component of each end by one, and keeps what is better. Whether anything was.
template <std::size_t kRegions>
HWY_INLINE bool Nudge(const AllRegions<kRegions>& regions, const Bc6hMode& mode, Trial<kRegions>& trial) {
    const Value before = trial.error;
    const Scale scale = regions[0].scale;
    const float top = PowerOfTwo(scale.isSigned ? mode.endBits - 1 : mode.endBits) - 1;
    for (std::size_t k = 0; k < 6 * kRegions; ++k) {
        for (const float by : {-1.0F, 1.0F}) {
            Trial<kRegions> moved = trial;
            Ends<3>& ends = moved.ends[k / 6];
            Value& component = k % 6 < 3 ? ends.a[k % 3] : ends.b[k % 3];
            component = Clamped(hn::Add(component, Same(by)), scale.isSigned ? -top : 0, top);
            Judge(regions, mode, moved);
            KeepBetter(trial, moved);
        }
    }
    return !hn::AllTrue(Lanes(), hn::Ge(trial.error, before));
}

// --- The best block of each lane -------------------------------------------------------------------------------------

class BestBlocks {
public:
    explicit BestBlocks(std::size_t count) : mCount(count) { mErrors.fill(HUGE_VALF); }

    template <std::size_t kRegions>
    HWY_INLINE void Offer(const AllRegions<kRegions>& regions, int number, const LanePartitions& partitions,
                          const Trial<kRegions>& trial) {
        HWY_ALIGN float errors[kMaxLanes];
        hn::Store(trial.error, Lanes(), errors);
        bool isAny = false;
        for (std::size_t lane = 0; lane < mCount; ++lane)
            isAny |= errors[lane] < mErrors[lane];
        if (!isAny) return;
        const Bc6hMode& mode = kBc6hModes[static_cast<std::size_t>(number)];
        HWY_ALIGN std::int32_t ends[2 * kRegions][3][kMaxLanes];
        HWY_ALIGN std::int32_t steps[kRegions][kBlockPixels][kMaxLanes];
        for (std::size_t r = 0; r < kRegions; ++r) {
            Steps assigned;
            const Ends<3> wide = WideEnds(trial, r, mode, regions[r].scale);
            (void)Assign<true>(regions[r], wide.a, wide.b, kRegions == 2 ? 7 : 15, &assigned);
            for (std::size_t i = 0; i < kBlockPixels; ++i)
                hn::Store(hn::ConvertTo(Whole(), assigned[i]), Whole(), steps[r][i]);
            for (std::size_t c = 0; c < 3; ++c) {
                hn::Store(hn::ConvertTo(Whole(), trial.ends[r].a[c]), Whole(), ends[2 * r][c]);
                hn::Store(hn::ConvertTo(Whole(), trial.ends[r].b[c]), Whole(), ends[2 * r + 1][c]);
            }
        }
        for (std::size_t lane = 0; lane < mCount; ++lane) {
            if (!(errors[lane] < mErrors[lane])) continue;
            mErrors[lane] = errors[lane];
            Bc6hBlock& block = mBlocks[lane];
            block.mode = number;
            block.partition = kRegions == 2 ? partitions.numbers[lane] : 0;
            const Partition partition = PartitionOf(kRegions, static_cast<std::size_t>(block.partition));
            for (std::size_t end = 0; end < 2 * kRegions; ++end)
                for (std::size_t c = 0; c < 3; ++c)
                    block.ends[end][c] = ends[end][c][lane];
            for (std::size_t i = 0; i < kBlockPixels; ++i)
                block.indices[i] = static_cast<std::uint8_t>(steps[SubsetOf(partition, i)][i][lane]);
        }
    }

    void Store(unsigned char* out) const {
        for (std::size_t lane = 0; lane < mCount; ++lane)
            PackBc6h(mBlocks[lane], out + 16 * lane);
    }

private:
    std::size_t mCount;
    std::array<float, kMaxLanes> mErrors;
    std::array<Bc6hBlock, kMaxLanes> mBlocks;
};

// --- Groups of blocks ------------------------------------------------------------------------------------------------

/// All modes of one or two regions.
template <std::size_t kRegions>
void TryModes(const AllRegions<kRegions>& regions, const LanePartitions& partitions, BlockEffort effort,
              BestBlocks& best) {
    const float last = kRegions == 2 ? 7 : 15;
    AllEnds<kRegions> wide;
    for (std::size_t r = 0; r < kRegions; ++r)
        wide[r] = Fitted(regions[r], last, effort == BlockEffort::kFast ? 1 : 2);
    const int nudges = effort == BlockEffort::kFast ? 0 : effort == BlockEffort::kGood ? 1 : 4;
    const int first = kRegions == 2 ? 0 : 10, end = kRegions == 2 ? 10 : 14;
    for (int number = first; number < end; ++number) {
        const Bc6hMode& mode = kBc6hModes[static_cast<std::size_t>(number)];
        Trial<kRegions> trial = TrialOf(regions, wide, mode);
        if (effort == BlockEffort::kBest || kRegions == 1)
            for (int turn = 0; turn < nudges && Nudge(regions, mode, trial); ++turn) {
            }
        best.Offer(regions, number, partitions, trial);
    }
}

void EncodeGroup(const LaneBlocks& blocks, std::size_t count, unsigned char* out, Scale scale, const BlockFit& fit) {
    BestBlocks best(count);
    AllRegions<1> whole = {{{{blocks, {0, 1, 2}, fit.weights}, {}, scale}}};
    whole[0].isAnchor.fill(Same(0));
    whole[0].isAnchor[0] = Same(1);
    TryModes(whole, {}, fit.effort, best);
    if (fit.effort != BlockEffort::kFast) {
        constexpr std::size_t kMaxKept = 4;
        const Products<3> products(blocks, fit.weights.data());
        const auto ranking = Ranked<kMaxKept, 2>(products, kBc6hPartitions);
        for (std::size_t rank = 0; rank < (fit.effort == BlockEffort::kBest ? kMaxKept : 1); ++rank) {
            const LanePartitions partitions = ranking.At(rank);
            const SubsetCounts<2> counts = CountsOf<2>(partitions);
            HWY_ALIGN std::int32_t anchors[kMaxLanes];
            for (std::size_t lane = 0; lane < LaneCount(); ++lane)
                anchors[lane] = kAnchorOfTwo[static_cast<std::size_t>(partitions.numbers[lane])];
            const Value anchor = hn::ConvertTo(Lanes(), hn::Load(Whole(), anchors));
            AllRegions<2> two = {{whole[0], whole[0]}};
            for (std::size_t i = 0; i < kBlockPixels; ++i)
                two[1].isAnchor[i] = hn::IfThenElseZero(hn::Eq(anchor, Same(static_cast<float>(i))), Same(1));
            two[0].pixels.counts = &counts[0];
            two[1].pixels.counts = &counts[1];
            TryModes(two, partitions, fit.effort, best);
        }
    }
    best.Store(out);
}

}  // namespace

void Bc6h(const float* blocks, std::size_t count, unsigned char* out, bool isSigned, const BlockFit& fit) {
    const Scale scale{isSigned};
    const std::size_t lanes = LaneCount();
    HWY_ALIGN float wide[kBlockFloats * kMaxLanes];
    for (std::size_t at = 0; at < count; at += lanes) {
        const std::size_t some = std::min(lanes, count - at);
        for (std::size_t i = 0; i < some * kBlockFloats; ++i)
            wide[i] = std::clamp(blocks[at * kBlockFloats + i] * scale.Wide(), scale.Low(), scale.Top());
        EncodeGroup(LaneBlocks(wide, some), some, out + 16 * at, scale, fit);
    }
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Common {

HWY_EXPORT(Bc6h);

void EncodeBc6h(const float* blocks, std::size_t count, unsigned char* out, bool isSigned, const BlockFit& fit) {
    HWY_DYNAMIC_DISPATCH(Bc6h)(blocks, count, out, isSigned, fit);
}

}  // namespace Kavra::Common
#endif
