// The wider variants of AVX-512 have nothing that these kernels would use, and SSSE3 alone is rare.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_AVX3_ZEN4 | HWY_AVX3_SPR | HWY_AVX10_2)

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc1Encoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/BlockEncoders.h"
#include "common/blocks/BlockLines-inl.h"

#include <cmath>
#include <cstdint>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

using Colour = Vector<3>;
using Pixels = Points<3>;

// --- The colours of a block ------------------------------------------------------------------------------------------

constexpr std::array<float, 3> kTop = {31, 63, 31};  // of a component of an end

/// What a decoder makes of a component of 5 or 6 bits: the nearest of 8. Some repeat the high bits below the low ones
/// instead, which is off by one for a few.
HWY_INLINE Value Widened(Value bits, std::size_t channel) {
    return hn::Round(hn::Mul(bits, Same(255 / kTop[channel])));
}

HWY_INLINE Colour Widened(const Colour& bits) {
    return {Widened(bits[0], 0), Widened(bits[1], 1), Widened(bits[2], 2)};
}

HWY_INLINE Colour Narrowed(const Colour& colour) {
    Colour bits;
    for (std::size_t c = 0; c < 3; ++c)
        bits[c] = Clamped(hn::Round(hn::Mul(colour[c], Same(kTop[c] / 255))), 0, kTop[c]);
    return bits;
}

// --- Lines through colours -------------------------------------------------------------------------------------------

/// Both ends of a line as a block holds them, and which of the evenly spaced colours from `a` to `b` each pixel gets.
struct Line {
    Colour a, b;  ///< of 5, 6 and 5 bits
    Value error;  ///< summed over the pixels that count
};

/// Gives each pixel the nearest of `last` + 1 colours; returns the error.
template <bool kWithSteps>
HWY_INLINE Value Assign(const Pixels& pixels, const Colour& aBits, const Colour& bBits, float last, Steps* steps) {
    const Colour a = Widened(aBits);
    const Colour direction = Difference(Widened(bBits), a);
    const Colour weighted = Weighted(pixels, direction);
    const Value length = Dot(direction, weighted);
    const Value perLength = hn::IfThenElseZero(hn::Gt(length, Same(0)), hn::Div(Same(last), length));
    Value error = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Colour offset = Difference(pixels.At(i), a);
        const Value step = Clamped(hn::Round(hn::Mul(Dot(offset, weighted), perLength)), 0, last);
        const Value share = hn::Mul(step, Same(-1 / last));
        const Colour left = Along(offset, direction, share);
        error = hn::Add(error, pixels.Counted(i, Dot(left, Weighted(pixels, left))));
        if constexpr (kWithSteps) (*steps)[i] = step;
    }
    return error;
}

HWY_INLINE Line LineOf(const Pixels& pixels, const Ends<3>& ends, float last) {
    Line line{Narrowed(ends.a), Narrowed(ends.b), Same(0)};
    line.error = Assign<false>(pixels, line.a, line.b, last, nullptr);
    return line;
}

/// In each lane the line with the smaller error.
HWY_INLINE void KeepBetter(Line& best, const Line& other) {
    const auto isBetter = hn::Lt(other.error, best.error);
    for (std::size_t c = 0; c < 3; ++c) {
        best.a[c] = hn::IfThenElse(isBetter, other.a[c], best.a[c]);
        best.b[c] = hn::IfThenElse(isBetter, other.b[c], best.b[c]);
    }
    best.error = hn::IfThenElse(isBetter, other.error, best.error);
}

/// The line that is best for pixels that stay at their steps.
HWY_INLINE Line Refined(const Pixels& pixels, const Line& line, float last) {
    Steps steps;
    (void)Assign<true>(pixels, line.a, line.b, last, &steps);
    const BestEnds<3> best = LeastSquares(pixels, steps, last);
    Line refined = LineOf(pixels, best.ends, last);
    refined.error = hn::IfThenElse(best.isKnown, refined.error, Same(HUGE_VALF));
    return refined;
}

/// Moves each component of both ends by one, and keeps what is better. Whether anything was.
HWY_INLINE bool Nudge(const Pixels& pixels, Line& line, float last) {
    const Value before = line.error;
    for (std::size_t c = 0; c < 6; ++c) {
        for (const float by : {-1.0F, 1.0F}) {
            Line moved = line;
            Value& component = c < 3 ? moved.a[c] : moved.b[c - 3];
            component = Clamped(hn::Add(component, Same(by)), 0, kTop[c % 3]);
            moved.error = Assign<false>(pixels, moved.a, moved.b, last, nullptr);
            KeepBetter(line, moved);
        }
    }
    return !hn::AllTrue(Lanes(), hn::Ge(line.error, before));
}

// --- Every division of the colours along their axis ------------------------------------------------------------------

/// The colours in the order in which they lie along an axis, and the sums of the first 0 to 16 of them.
struct SortedSums {
    std::array<Colour, kBlockPixels + 1> first;

    HWY_INLINE SortedSums(const Pixels& pixels, const Colour& axis) {
        const Colour weighted = Weighted(pixels, axis);
        std::array<Value, kBlockPixels> keys;
        std::array<Colour, kBlockPixels> colours;
        for (std::size_t i = 0; i < kBlockPixels; ++i) {
            colours[i] = pixels.At(i);
            keys[i] = Dot(colours[i], weighted);
        }
        // Batcher's odd-even merge sort: the same comparisons in every lane.
        for (std::size_t p = 1; p < kBlockPixels; p *= 2)
            for (std::size_t k = p; k >= 1; k /= 2)
                for (std::size_t j = k % p; j + k < kBlockPixels; j += 2 * k)
                    for (std::size_t i = 0; i < k && i + j + k < kBlockPixels; ++i)
                        if ((i + j) / (2 * p) == (i + j + k) / (2 * p)) Order(keys, colours, i + j, i + j + k);
        first[0] = {Same(0), Same(0), Same(0)};
        for (std::size_t i = 0; i < kBlockPixels; ++i)
            first[i + 1] = Along(first[i], colours[i], Same(1));
    }

private:
    HWY_INLINE static void Order(std::array<Value, kBlockPixels>& keys, std::array<Colour, kBlockPixels>& colours,
                                 std::size_t i, std::size_t j) {
        const auto isSwapped = hn::Gt(keys[i], keys[j]);
        const auto exchange = [&](Value& a, Value& b) {
            const Value low = hn::IfThenElse(isSwapped, b, a);
            b = hn::IfThenElse(isSwapped, a, b);
            a = low;
        };
        exchange(keys[i], keys[j]);
        for (std::size_t c = 0; c < 3; ++c)
            exchange(colours[i][c], colours[j][c]);
    }
};

/// What the sums of a division of 16 pixels among the steps of a line give; the same in all lanes.
struct Division {
    float nearA, nearB, both;  ///< sums of the squared shares of either end, and of their products

    bool IsSolvable() const { return nearA * nearB - both * both > 1e-3F; }
};

/// Tries the ends that are best for one division; `nearB` is the sum of the colours, each times its share of b.
HWY_INLINE void TryDivision(const Pixels& pixels, const Colour& all, const Colour& nearB, const Division& division,
                            Line& best) {
    const float scale = 1 / (division.nearA * division.nearB - division.both * division.both);
    Line line;
    line.error = Same(0);
    for (std::size_t c = 0; c < 3; ++c) {
        const Value ofB = nearB[c], ofA = hn::Sub(all[c], nearB[c]);
        const auto narrowed = [&](Value numerator) {
            return Clamped(hn::Round(hn::Mul(numerator, Same(scale * kTop[c] / 255))), 0, kTop[c]);
        };
        line.a[c] = narrowed(hn::Sub(hn::Mul(ofA, Same(division.nearB)), hn::Mul(ofB, Same(division.both))));
        line.b[c] = narrowed(hn::Sub(hn::Mul(ofB, Same(division.nearA)), hn::Mul(ofA, Same(division.both))));
        const Value a = Widened(line.a[c], c), b = Widened(line.b[c], c);
        // Without the sum of the squares of the colours, which all lines have.
        const Value squares =
            hn::Add(hn::Mul(hn::Mul(a, a), Same(division.nearA)), hn::Mul(hn::Mul(b, b), Same(division.nearB)));
        const Value cross =
            hn::Sub(hn::Mul(hn::Mul(a, b), Same(division.both)), hn::Add(hn::Mul(a, ofA), hn::Mul(b, ofB)));
        line.error = hn::Add(line.error, hn::Mul(hn::Add(squares, hn::Add(cross, cross)), Same(pixels.weights[c])));
    }
    KeepBetter(best, line);
}

/// The best of all divisions into four colours.
HWY_INLINE Line BestOfFour(const Pixels& pixels, const SortedSums& sums) {
    Line best{{Same(0), Same(0), Same(0)}, {Same(0), Same(0), Same(0)}, Same(HUGE_VALF)};
    const Colour& all = sums.first[kBlockPixels];
    for (std::size_t i = 0; i <= kBlockPixels; ++i) {
        for (std::size_t j = i; j <= kBlockPixels; ++j) {
            for (std::size_t k = j; k <= kBlockPixels; ++k) {
                const auto n0 = static_cast<float>(i), n1 = static_cast<float>(j - i), n2 = static_cast<float>(k - j),
                           n3 = static_cast<float>(kBlockPixels - k);
                const Division division{
                    .nearA = n0 + (4 * n1 + n2) / 9, .nearB = n3 + (4 * n2 + n1) / 9, .both = 2 * (n1 + n2) / 9};
                if (!division.IsSolvable()) continue;
                // Shares of b are 0, 1/3, 2/3, 1: a third of what lies behind each border.
                Colour nearB;
                for (std::size_t c = 0; c < 3; ++c) {
                    const Value borders = hn::Add(hn::Add(sums.first[i][c], sums.first[j][c]), sums.first[k][c]);
                    nearB[c] = hn::Sub(all[c], hn::Mul(borders, Same(1.0F / 3)));
                }
                TryDivision(pixels, all, nearB, division, best);
            }
        }
    }
    return best;
}

/// The best of all divisions into three colours.
HWY_INLINE Line BestOfThree(const Pixels& pixels, const SortedSums& sums) {
    Line best{{Same(0), Same(0), Same(0)}, {Same(0), Same(0), Same(0)}, Same(HUGE_VALF)};
    const Colour& all = sums.first[kBlockPixels];
    for (std::size_t i = 0; i <= kBlockPixels; ++i) {
        for (std::size_t j = i; j <= kBlockPixels; ++j) {
            const auto n0 = static_cast<float>(i), n1 = static_cast<float>(j - i),
                       n2 = static_cast<float>(kBlockPixels - j);
            const Division division{.nearA = n0 + n1 / 4, .nearB = n2 + n1 / 4, .both = n1 / 4};
            if (!division.IsSolvable()) continue;
            Colour nearB;
            for (std::size_t c = 0; c < 3; ++c)
                nearB[c] = hn::Sub(all[c], hn::Mul(hn::Add(sums.first[i][c], sums.first[j][c]), Same(0.5F)));
            TryDivision(pixels, all, nearB, division, best);
        }
    }
    return best;
}

// --- Blocks ----------------------------------------------------------------------------------------------------------

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

void StoreBlock(std::uint32_t first, std::uint32_t second, std::uint32_t indices, unsigned char* out) {
    const std::uint32_t ends = first | second << 16;
    for (unsigned i = 0; i < 4; ++i) {
        out[i] = static_cast<unsigned char>(ends >> 8 * i);
        out[4 + i] = static_cast<unsigned char>(indices >> 8 * i);
    }
}

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
    StoreBlock(first, second, indices, out);
}

/// For each value of 8 bits the ends of `kBits` bits of which a third of the way is nearest to it.
template <int kBits>
constexpr auto kEndsOfOne = [] {
    std::array<std::array<unsigned char, 2>, 256> table{};
    constexpr int kCount = 1 << kBits;
    const auto widened = [](int bits) { return (bits * 510 + kCount - 1) / (2 * (kCount - 1)); };
    for (int value = 0; value < 256; ++value) {
        int least = 1 << 20;
        for (int a = 0; a < kCount; ++a) {
            const int wanted = (3 * value - 2 * widened(a)) * (kCount - 1) / 255;
            for (int b = std::max(wanted - 1, 0); b <= std::min(wanted + 1, kCount - 1); ++b) {
                const int off = 2 * widened(a) + widened(b) - 3 * value;
                // Of equal ones the ends that are near each other, as decoders differ in how they round between them.
                const int cost = 64 * (off < 0 ? -off : off) + (a < b ? b - a : a - b);
                if (cost >= least) continue;
                least = cost;
                table[static_cast<std::size_t>(value)] = {static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b)};
            }
        }
    }
    return table;
}();

/// A block of one colour: all pixels a third of the way between two ends, which lies nearer to it than an end can.
void StoreOne(const float* colour, bool inOrder, unsigned char* out) {
    const auto value = [&](std::size_t c) {
        return static_cast<std::size_t>(std::lround(std::clamp(colour[c], 0.0F, 255.0F)));
    };
    const auto &red = kEndsOfOne<5>[value(0)], &green = kEndsOfOne<6>[value(1)], &blue = kEndsOfOne<5>[value(2)];
    const auto packed = [&](std::size_t end) {
        return static_cast<std::uint32_t>(red[end] << 11 | green[end] << 5 | blue[end]);
    };
    std::uint32_t first = packed(0), second = packed(1);
    std::uint32_t index = first == second ? 0 : 2;
    if (inOrder && first < second) {
        std::swap(first, second);
        index = 3;
    }
    StoreBlock(first, second, index * 0x55555555U, out);
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
    StoreBlock(first, second, indices, out);
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
            StoreOne(block, true, place);
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
            IsOne(block) ? StoreOne(block, false, place) : StoreFour(four, lane, false, place);
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
