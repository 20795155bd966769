#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc4Encoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/BlockEncoders.h"
#include "common/blocks/BlockLines-inl.h"

#include <cmath>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

/// The values of one channel, and the least and the largest that there is.
struct Channel {
    const LaneBlocks& blocks;
    std::size_t channel;
    float low, high;

    HWY_INLINE Value At(std::size_t pixel) const { return blocks.At(pixel, channel); }
};

/// Both ends of a line, whole numbers, of which `a` comes first.
struct Line {
    Value a, b;
    Value error;
};

/// Blocks hold a line of eight values, or one of six beside the least and the largest value that there is.
template <int kLast>
inline constexpr bool kHasLimits = kLast == 5;

constexpr float kAtLow = 6, kAtHigh = 7;  // steps of values beside a line of six: as its indices are numbered

/// Gives each pixel the nearest value; returns the error.
template <int kLast, bool kWithSteps>
HWY_INLINE Value Assign(const Channel& channel, Value a, Value b, Steps* steps) {
    const Value direction = hn::Sub(b, a);
    const auto isLine = hn::Ne(direction, Same(0));
    const Value perStep = hn::IfThenElseZero(isLine, hn::Div(Same(kLast), direction));
    const Value step = hn::Mul(direction, Same(1.0F / kLast));
    Value error = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Value value = channel.At(i), offset = hn::Sub(value, a);
        Value at = Clamped(hn::Round(hn::Mul(offset, perStep)), 0, kLast);
        const Value left = hn::Sub(offset, hn::Mul(step, at));
        Value square = hn::Mul(left, left);
        if constexpr (kHasLimits<kLast>) {
            const auto take = [&](float limit, float index) {
                const Value beside = hn::Sub(value, Same(limit)), other = hn::Mul(beside, beside);
                const auto isNearer = hn::Lt(other, square);
                square = hn::IfThenElse(isNearer, other, square);
                if constexpr (kWithSteps) at = hn::IfThenElse(isNearer, Same(index), at);
            };
            take(channel.low, kAtLow);
            take(channel.high, kAtHigh);
        }
        error = hn::Add(error, square);
        if constexpr (kWithSteps) (*steps)[i] = at;
    }
    return error;
}

template <int kLast>
HWY_INLINE Line LineOf(const Channel& channel, Value a, Value b) {
    const auto whole = [&](Value end) { return Clamped(hn::Round(end), channel.low, channel.high); };
    Line ends{whole(a), whole(b), Same(0)};
    ends.error = Assign<kLast, false>(channel, ends.a, ends.b, nullptr);
    return ends;
}

HWY_INLINE void KeepBetter(Line& best, const Line& other) {
    const auto isBetter = hn::Lt(other.error, best.error);
    best.a = hn::IfThenElse(isBetter, other.a, best.a);
    best.b = hn::IfThenElse(isBetter, other.b, best.b);
    best.error = hn::IfThenElse(isBetter, other.error, best.error);
}

/// From the least to the largest value of the block, of those that are not at a limit anyway.
template <int kLast>
HWY_INLINE Line Guess(const Channel& channel) {
    Value low = Same(channel.high), high = Same(channel.low);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Value value = channel.At(i);
        Value toLow = value, toHigh = value;
        if constexpr (kHasLimits<kLast>) {
            constexpr float kNear = 2;
            const auto isAtLimit =
                hn::Or(hn::Lt(value, Same(channel.low + kNear)), hn::Gt(value, Same(channel.high - kNear)));
            toLow = hn::IfThenElse(isAtLimit, Same(channel.high), value);
            toHigh = hn::IfThenElse(isAtLimit, Same(channel.low), value);
        }
        low = hn::Min(low, toLow);
        high = hn::Max(high, toHigh);
    }
    return LineOf<kLast>(channel, low, hn::Max(low, high));
}

/// The ends that are best for pixels that stay at their steps (least squares); no better ones where all are at one.
template <int kLast>
HWY_INLINE Line Refined(const Channel& channel, const Line& ends) {
    Steps steps;
    (void)Assign<kLast, true>(channel, ends.a, ends.b, &steps);
    std::array<Value, kBlockPixels> onLine;
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        onLine[i] = hn::IfThenElseZero(hn::Le(steps[i], Same(kLast)), Same(1));
        steps[i] = hn::Min(steps[i], Same(kLast));
    }
    const Points<1> points{channel.blocks, {channel.channel}, {1}, &onLine};
    const BestEnds<1> best = LeastSquares(points, steps, kLast);
    Line refined = LineOf<kLast>(channel, best.ends.a[0], best.ends.b[0]);
    refined.error = hn::IfThenElse(best.isKnown, refined.error, Same(HUGE_VALF));
    return refined;
}

/// Moves both ends by up to `reach`, and keeps what is better.
template <int kLast>
HWY_INLINE void Nudge(const Channel& channel, Line& ends, int reach) {
    const Line before = ends;
    for (int a = -reach; a <= reach; ++a)
        for (int b = -reach; b <= reach; ++b)
            if (a != 0 || b != 0)
                KeepBetter(ends, LineOf<kLast>(channel, hn::Add(before.a, Same(static_cast<float>(a))),
                                               hn::Add(before.b, Same(static_cast<float>(b)))));
}

template <int kLast>
HWY_INLINE Line Fitted(const Channel& channel, BlockEffort effort) {
    Line best = Guess<kLast>(channel);
    const int refinements = effort == BlockEffort::kFast ? 1 : 2;
    for (int turn = 0; turn < refinements; ++turn)
        KeepBetter(best, Refined<kLast>(channel, best));
    if (effort == BlockEffort::kFast) return best;
    if (effort == BlockEffort::kGood) {
        Nudge<kLast>(channel, best, 1);
        return best;
    }
    // Until nothing is found any more: what a lane finds does not depend on how long others go on.
    for (int turn = 0; turn < 6; ++turn) {
        const Value before = best.error;
        KeepBetter(best, Refined<kLast>(channel, best));
        Nudge<kLast>(channel, best, 3);
        if (hn::AllTrue(Lanes(), hn::Ge(best.error, before))) break;
    }
    return best;
}

/// The ends of the lanes as numbers, each with the steps of its pixels.
struct LinesAsNumbers {
    HWY_ALIGN std::int32_t a[kMaxLanes], b[kMaxLanes];
    HWY_ALIGN std::int32_t steps[kBlockPixels][kMaxLanes];
    HWY_ALIGN float error[kMaxLanes];
};

template <int kLast>
HWY_INLINE LinesAsNumbers Numbers(const Channel& channel, const Line& ends) {
    const hn::RebindToSigned<Lanes> whole;
    LinesAsNumbers numbers;
    Steps steps;
    hn::Store(Assign<kLast, true>(channel, ends.a, ends.b, &steps), Lanes(), numbers.error);
    hn::Store(hn::ConvertTo(whole, ends.a), whole, numbers.a);
    hn::Store(hn::ConvertTo(whole, ends.b), whole, numbers.b);
    for (std::size_t i = 0; i < kBlockPixels; ++i)
        hn::Store(hn::ConvertTo(whole, steps[i]), whole, numbers.steps[i]);
    return numbers;
}

/// A line of eight has the larger end first, one of six the smaller one or two equal ones.
template <int kLast>
HWY_INLINE void StoreEnds(const LinesAsNumbers& numbers, std::size_t lane, unsigned char* out) {
    int first = numbers.a[lane], second = numbers.b[lane];
    const bool isTurned = kHasLimits<kLast> ? first > second : first < second;
    const bool isOne = first == second;
    if (isTurned) std::swap(first, second);
    std::uint64_t indices = 0;
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const std::int32_t assigned = numbers.steps[i][lane];
        std::uint64_t index = static_cast<std::uint64_t>(assigned);
        if (assigned <= kLast) {
            const int step = isOne ? 0 : isTurned ? kLast - assigned : assigned;
            index = step == 0 ? 0 : step == kLast ? 1 : static_cast<std::uint64_t>(step) + 1;
        }
        indices |= index << 3 * i;
    }
    out[0] = static_cast<unsigned char>(first);
    out[1] = static_cast<unsigned char>(second);
    for (unsigned i = 0; i < 6; ++i)
        out[2 + i] = static_cast<unsigned char>(indices >> 8 * i);
}

HWY_INLINE void EncodeChannel(const Channel& channel, std::size_t count, BlockPlaces out, BlockEffort effort) {
    const LinesAsNumbers eight = Numbers<7>(channel, Fitted<7>(channel, effort));
    const LinesAsNumbers six = Numbers<5>(channel, Fitted<5>(channel, effort));
    for (std::size_t lane = 0; lane < count; ++lane) {
        unsigned char* const block = out.first + lane * out.stride;
        six.error[lane] < eight.error[lane] ? StoreEnds<5>(six, lane, block) : StoreEnds<7>(eight, lane, block);
    }
}

}  // namespace

void Bc4(const float* blocks, std::size_t count, std::size_t channel, bool isSigned, BlockPlaces out,
         BlockEffort effort) {
    InLanes(blocks, count, out, [&](const float* some, std::size_t n, BlockPlaces to) {
        const LaneBlocks lanes(some, n);
        EncodeChannel({lanes, channel, isSigned ? -127.0F : 0.0F, isSigned ? 127.0F : 255.0F}, n, to, effort);
    });
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Common {

HWY_EXPORT(Bc4);

void EncodeBc4(const float* blocks, std::size_t count, std::size_t channel, bool isSigned, BlockPlaces out,
               BlockEffort effort) {
    HWY_DYNAMIC_DISPATCH(Bc4)(blocks, count, channel, isSigned, out, effort);
}

void EncodeBc2Alpha(const float* blocks, std::size_t count, BlockPlaces out) {
    for (std::size_t block = 0; block < count; ++block) {
        const auto bits = [&](std::size_t pixel) {
            const float alpha = blocks[block * kBlockFloats + 4 * pixel + 3];
            return static_cast<unsigned>(std::lround(std::clamp(alpha, 0.0F, 255.0F) * (15.0F / 255)));
        };
        for (std::size_t i = 0; i < kBlockPixels; i += 2)
            out.first[block * out.stride + i / 2] = static_cast<unsigned char>(bits(i) | bits(i + 1) << 4);
    }
}

}  // namespace Kavra::Common
#endif
