#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc1Encoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/Bc1Divisions-inl.h"
#include "common/blocks/Bc1Packing.h"
#include "common/blocks/BlockEncoders.h"

#include <cstdint>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

using namespace Bc1Lines;

/// The best line that is found in an effort.
HWY_INLINE Line Fitted(const Pixels& pixels, float last, BlockEffort effort) {
    Line best = LineOf(pixels, ExtentOf(pixels), last);
    if (effort == BlockEffort::kBest && pixels.counts == nullptr) {
        const SortedSums sums(pixels, ShapeOf(pixels).axis);
        Line divided = last == 3 ? BestOfFour(pixels, sums) : BestOfThree(pixels, sums);
        divided.error = Assign<false>(pixels, divided.a, divided.b, last, nullptr);
        KeepBetter(best, divided);
    }
    const int refinements = effort == BlockEffort::kFast ? 1 : 3;
    for (int turn = 0; turn < refinements; ++turn)
        KeepBetter(best, Refined(pixels, best, last));
    const int nudges = effort == BlockEffort::kFast ? 0 : effort == BlockEffort::kGood ? 1 : 8;
    for (int turn = 0; turn < nudges; ++turn) {
        if (!Nudge(pixels, best, last)) break;
    }
    return best;
}

/// The lines of the lanes as numbers, each with the steps of its pixels.
struct LinesAsNumbers {
    HWY_ALIGN std::int32_t a[kMaxLanes], b[kMaxLanes];
    HWY_ALIGN std::int32_t steps[kBlockPixels][kMaxLanes];
    HWY_ALIGN float error[kMaxLanes];

    HWY_INLINE LinesAsNumbers(const Pixels& pixels, const Line& line, float last) {
        const hn::RebindToSigned<Lanes> whole;
        const auto packed = [&](const Colour& c) {
            const Value number = hn::Add(hn::Add(hn::Mul(c[0], Same(2048)), hn::Mul(c[1], Same(32))), c[2]);
            return hn::ConvertTo(whole, number);
        };
        Steps assigned;
        hn::Store(Assign<true>(pixels, line.a, line.b, last, &assigned), Lanes(), error);
        hn::Store(packed(line.a), whole, a);
        hn::Store(packed(line.b), whole, b);
        for (std::size_t i = 0; i < kBlockPixels; ++i)
            hn::Store(hn::ConvertTo(whole, assigned[i]), whole, steps[i]);
    }
};

/// A block of four colours. Those of BC1 have the larger number first, else they would be of three.
void StoreFour(const LinesAsNumbers& lines, std::size_t lane, bool inOrder, unsigned char* out) {
    constexpr std::array<std::uint32_t, 4> kIndexOfStep = {0, 2, 3, 1};
    auto first = static_cast<std::uint32_t>(lines.a[lane]), second = static_cast<std::uint32_t>(lines.b[lane]);
    const bool isTurned = inOrder && first < second;
    const bool isOne = first == second;
    if (isTurned) std::swap(first, second);
    std::uint32_t indices = 0;
    for (std::size_t i = 0; i < kBlockPixels && !isOne; ++i) {
        const auto step = static_cast<std::size_t>(lines.steps[i][lane]);
        indices |= kIndexOfStep[isTurned ? 3 - step : step] << 2 * i;
    }
    PackBc1(first, second, indices, out);
}

bool IsOne(const float* block) {
    for (std::size_t i = 1; i < kBlockPixels; ++i)
        for (std::size_t c = 0; c < 3; ++c)
            if (block[4 * i + c] != block[c]) return false;
    return true;
}

/// A block of three colours and transparent black, which has the smaller number first.
void StoreThree(const LinesAsNumbers& lines, std::size_t lane, std::uint32_t transparent, unsigned char* out) {
    constexpr std::array<std::uint32_t, 3> kIndexOfStep = {0, 2, 1};
    auto first = static_cast<std::uint32_t>(lines.a[lane]), second = static_cast<std::uint32_t>(lines.b[lane]);
    const bool isTurned = first > second;
    if (isTurned) std::swap(first, second);
    std::uint32_t indices = 0;
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const auto step = static_cast<std::size_t>(lines.steps[i][lane]);
        const bool isTransparent = (transparent >> i & 1) != 0;
        indices |= (isTransparent ? 3U : kIndexOfStep[isTurned ? 2 - step : step]) << 2 * i;
    }
    PackBc1(first, second, indices, out);
}

/// Four colours, or three where those are nearer.
HWY_INLINE void EncodeOpaque(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    const LaneBlocks lanes(blocks, count);
    const Pixels pixels{lanes, {0, 1, 2}, fit.weights};
    const LinesAsNumbers four(pixels, Fitted(pixels, 3, fit.effort), 3);
    const bool isFast = fit.effort == BlockEffort::kFast;
    const LinesAsNumbers three = isFast ? four : LinesAsNumbers(pixels, Fitted(pixels, 2, fit.effort), 2);
    for (std::size_t lane = 0; lane < count; ++lane) {
        unsigned char* const place = out.first + lane * out.stride;
        const float* const block = blocks + lane * kBlockFloats;
        if (IsOne(block)) {
            PackOneColour(block, true, place);
        } else if (three.error[lane] < four.error[lane]) {
            StoreThree(three, lane, 0, place);
        } else {
            StoreFour(four, lane, true, place);
        }
    }
}

HWY_INLINE std::uint32_t TransparentOf(const float* block) {
    std::uint32_t transparent = 0;
    for (std::size_t i = 0; i < kBlockPixels; ++i)
        if (!(block[4 * i + 3] >= 128)) transparent |= 1U << i;
    return transparent;
}

HWY_INLINE void EncodeCutOut(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    const LaneBlocks lanes(blocks, count);
    std::array<std::uint32_t, kMaxLanes> transparent{};
    std::uint32_t any = 0;
    for (std::size_t lane = 0; lane < count; ++lane)
        any |= transparent[lane] = TransparentOf(blocks + lane * kBlockFloats);
    EncodeOpaque(blocks, count, out, fit);
    if (any == 0) return;
    std::array<Value, kBlockPixels> counts;
    for (std::size_t i = 0; i < kBlockPixels; ++i)
        counts[i] = hn::IfThenElseZero(hn::Ge(lanes.At(i, 3), Same(128)), Same(1));
    const Pixels pixels{lanes, {0, 1, 2}, fit.weights, &counts};
    const LinesAsNumbers three(pixels, Fitted(pixels, 2, fit.effort), 2);
    for (std::size_t lane = 0; lane < count; ++lane)
        if (transparent[lane] != 0) StoreThree(three, lane, transparent[lane], out.first + lane * out.stride);
}

}  // namespace

void Bc1(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    InLanes(blocks, count, out,
            [&](const float* some, std::size_t n, BlockPlaces to) { EncodeOpaque(some, n, to, fit); });
}

void Bc1Alpha(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    InLanes(blocks, count, out,
            [&](const float* some, std::size_t n, BlockPlaces to) { EncodeCutOut(some, n, to, fit); });
}

void Bc3Colour(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    InLanes(blocks, count, out, [&](const float* some, std::size_t n, BlockPlaces to) {
        const LaneBlocks lanes(some, n);
        const Pixels pixels{lanes, {0, 1, 2}, fit.weights};
        const LinesAsNumbers four(pixels, Fitted(pixels, 3, fit.effort), 3);
        for (std::size_t lane = 0; lane < n; ++lane) {
            const float* const block = some + lane * kBlockFloats;
            unsigned char* const place = to.first + lane * to.stride;
            IsOne(block) ? PackOneColour(block, false, place) : StoreFour(four, lane, false, place);
        }
    });
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Common {

HWY_EXPORT(Bc1);
HWY_EXPORT(Bc1Alpha);
HWY_EXPORT(Bc3Colour);

void EncodeBc1(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    HWY_DYNAMIC_DISPATCH(Bc1)(blocks, count, out, fit);
}

void EncodeBc1Alpha(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    HWY_DYNAMIC_DISPATCH(Bc1Alpha)(blocks, count, out, fit);
}

void EncodeBc3Colour(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit) {
    HWY_DYNAMIC_DISPATCH(Bc3Colour)(blocks, count, out, fit);
}

}  // namespace Kavra::Common
#endif
