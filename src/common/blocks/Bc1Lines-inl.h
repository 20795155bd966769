// The lines of BC1: ends of 5, 6 and 5 bits, and one or two colours between them. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BC1_LINES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BC1_LINES_INL
#undef KAVRA_BC1_LINES_INL
#else
#define KAVRA_BC1_LINES_INL
#endif

#include "common/blocks/BlockLines-inl.h"

#include <array>
#include <cmath>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE::Bc1Lines {

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

}  // namespace Kavra::Common::HWY_NAMESPACE::Bc1Lines
HWY_AFTER_NAMESPACE();

#endif
