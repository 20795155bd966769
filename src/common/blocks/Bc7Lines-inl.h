// The lines of BC7: ends of some bits, and as many colours between them as indices tell. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BC7_LINES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BC7_LINES_INL
#undef KAVRA_BC7_LINES_INL
#else
#define KAVRA_BC7_LINES_INL
#endif

#include "common/blocks/Bc7Layout.h"
#include "common/blocks/BlockLines-inl.h"

#include <array>
#include <cmath>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE::Bc7Lines {

/// How the ends of a line are stored, and how many colours lie between them.
template <std::size_t kChannels>
struct Grid {
    std::array<int, kChannels> bits;  ///< of each channel, without the low bit
    LowBits lowBits;
    int indexBits;
    bool isLowSet = false;  ///< whether the low bits are 1 in any case

    float Last() const { return static_cast<float>((1 << indexBits) - 1); }
};

/// Both ends of a line as they are stored.
template <std::size_t kChannels>
struct Line {
    Vector<kChannels> a, b;  ///< whole numbers, without the low bits
    Value lowA, lowB;        ///< 0 or 1
    Value error;
};

// --- Ends as they are stored -----------------------------------------------------------------------------------------

HWY_INLINE float PowerOfTwo(int exponent) {
    return exponent >= 0 ? static_cast<float>(1 << exponent) : 1.0F / static_cast<float>(1 << -exponent);
}

/// A stored component as a decoder widens it to 8 bits.
template <std::size_t kChannels>
HWY_INLINE Value Decoded(const Grid<kChannels>& grid, std::size_t c, Value stored, Value low) {
    const bool hasLow = grid.lowBits != LowBits::kNone;
    const int bits = grid.bits[c] + (hasLow ? 1 : 0);
    const Value full = hasLow ? hn::Add(hn::Add(stored, stored), low) : stored;
    if (bits == 8) return full;
    return hn::Add(hn::Mul(full, Same(PowerOfTwo(8 - bits))), hn::Floor(hn::Mul(full, Same(PowerOfTwo(8 - 2 * bits)))));
}

template <std::size_t kChannels>
HWY_INLINE Vector<kChannels> Decoded(const Grid<kChannels>& grid, const Vector<kChannels>& stored, Value low) {
    return EachChannel<kChannels>([&](std::size_t c) { return Decoded(grid, c, stored[c], low); });
}

/// The stored component nearest to a value of 0 to 255.
template <std::size_t kChannels>
HWY_INLINE Value Stored(const Grid<kChannels>& grid, std::size_t c, Value value, Value low) {
    const auto top = static_cast<float>((1 << grid.bits[c]) - 1);
    if (grid.lowBits == LowBits::kNone) return Clamped(hn::Round(hn::Mul(value, Same(top / 255))), 0, top);
    const float full = 2 * top + 1;
    return Clamped(hn::Round(hn::Mul(hn::Sub(hn::Mul(value, Same(full / 255)), low), Same(0.5F))), 0, top);
}

template <std::size_t kChannels>
HWY_INLINE Vector<kChannels> Stored(const Grid<kChannels>& grid, const Vector<kChannels>& end, Value low) {
    return EachChannel<kChannels>([&](std::size_t c) { return Stored(grid, c, end[c], low); });
}

/// How far an end is from where it is stored with a low bit.
template <std::size_t kChannels>
HWY_INLINE Value Loss(const Points<kChannels>& points, const Grid<kChannels>& grid, const Vector<kChannels>& end,
                      Value low) {
    const Vector<kChannels> off = Difference(Decoded(grid, Stored(grid, end, low), low), end);
    return Dot(off, Weighted(points, off));
}

/// The line between two ends, with the low bits that fit them best.
template <std::size_t kChannels>
HWY_INLINE Line<kChannels> Narrowed(const Points<kChannels>& points, const Grid<kChannels>& grid,
                                    const Ends<kChannels>& ends) {
    const Vector<kChannels>&a = ends.a, &b = ends.b;
    Line<kChannels> line;
    line.lowA = line.lowB = Same(grid.isLowSet ? 1 : 0);
    if (grid.lowBits != LowBits::kNone && !grid.isLowSet) {
        Value gainA = hn::Sub(Loss(points, grid, a, Same(0)), Loss(points, grid, a, Same(1)));
        Value gainB = hn::Sub(Loss(points, grid, b, Same(0)), Loss(points, grid, b, Same(1)));
        if (grid.lowBits == LowBits::kPerSubset) gainA = gainB = hn::Add(gainA, gainB);
        line.lowA = hn::IfThenElseZero(hn::Gt(gainA, Same(0)), Same(1));
        line.lowB = hn::IfThenElseZero(hn::Gt(gainB, Same(0)), Same(1));
    }
    line.a = Stored(grid, a, line.lowA);
    line.b = Stored(grid, b, line.lowB);
    return line;
}

// --- Errors ----------------------------------------------------------------------------------------------------------

/// Gives each pixel the nearest colour of the line; returns the error of those that count, as a decoder rounds them.
template <bool kWithSteps, std::size_t kChannels>
HWY_INLINE Value Assign(const Points<kChannels>& points, const Grid<kChannels>& grid, const Line<kChannels>& line,
                        Steps* steps) {
    const float last = grid.Last();
    const Vector<kChannels> a = Decoded(grid, line.a, line.lowA);
    const Vector<kChannels> direction = Difference(Decoded(grid, line.b, line.lowB), a);
    const Vector<kChannels> weighted = Weighted(points, direction);
    const Value length = Dot(direction, weighted);
    const Value perLength = hn::IfThenElseZero(hn::Gt(length, Same(0)), hn::Div(Same(last), length));
    Value error = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Vector<kChannels> point = points.At(i);
        const Value step = Clamped(hn::Round(hn::Mul(Dot(Difference(point, a), weighted), perLength)), 0, last);
        const Value share = hn::Round(hn::Mul(step, Same(64 / last)));  // of 64
        Vector<kChannels> off;
        for (std::size_t c = 0; c < kChannels; ++c) {
            const Value between = hn::Mul(hn::Add(hn::Mul(direction[c], share), Same(32)), Same(1.0F / 64));
            off[c] = hn::Sub(point[c], hn::Add(a[c], hn::Floor(between)));
        }
        error = hn::Add(error, points.Counted(i, Dot(off, Weighted(points, off))));
        if constexpr (kWithSteps) (*steps)[i] = step;
    }
    return error;
}

template <std::size_t kChannels>
HWY_INLINE Line<kChannels> LineOf(const Points<kChannels>& points, const Grid<kChannels>& grid,
                                  const Ends<kChannels>& ends) {
    Line<kChannels> line = Narrowed(points, grid, ends);
    line.error = Assign<false>(points, grid, line, nullptr);
    return line;
}

/// In each lane the line with the smaller error.
template <std::size_t kChannels>
HWY_INLINE void KeepBetter(Line<kChannels>& best, const Line<kChannels>& other) {
    const Mask isBetter = hn::Lt(other.error, best.error);
    for (std::size_t c = 0; c < kChannels; ++c) {
        best.a[c] = hn::IfThenElse(isBetter, other.a[c], best.a[c]);
        best.b[c] = hn::IfThenElse(isBetter, other.b[c], best.b[c]);
    }
    best.lowA = hn::IfThenElse(isBetter, other.lowA, best.lowA);
    best.lowB = hn::IfThenElse(isBetter, other.lowB, best.lowB);
    best.error = hn::IfThenElse(isBetter, other.error, best.error);
}

// --- Fitting ---------------------------------------------------------------------------------------------------------

/// The line that is best for pixels that stay at their steps.
template <std::size_t kChannels>
HWY_INLINE Line<kChannels> Refined(const Points<kChannels>& points, const Grid<kChannels>& grid,
                                   const Line<kChannels>& line) {
    Steps steps;
    (void)Assign<true>(points, grid, line, &steps);
    BestEnds<kChannels> best = LeastSquares(points, steps, grid.Last());
    for (std::size_t c = 0; c < kChannels; ++c) {
        best.ends.a[c] = Clamped(best.ends.a[c], 0, 255);
        best.ends.b[c] = Clamped(best.ends.b[c], 0, 255);
    }
    Line<kChannels> refined = LineOf(points, grid, best.ends);
    refined.error = hn::IfThenElse(best.isKnown, refined.error, Same(HUGE_VALF));
    return refined;
}

/// How much is tried for a line.
struct Budget {
    int refinements;
    int nudges;
    std::size_t starts = 1;  ///< up to `kStarts.size()`
    bool inPairs = false;    ///< whether components of both ends are also moved at once
};

/// By how many steps the ends of the first line lie beyond the points: each gives the pixels other steps, from which the
/// refinement goes elsewhere. A few of them are worth more than more turns or more partitions.
constexpr std::array<std::array<float, 2>, 7> kStarts = {
    {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {-0.5F, -0.5F}, {2, 0}, {0, 2}}};

/// By how much the components of both ends are moved: one of them, then both.
constexpr std::array<std::array<float, 2>, 8> kMoves = {
    {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, 1}, {-1, 1}, {1, -1}}};
constexpr std::size_t kMovesOfOne = 4;

/// Moves the stored components of the ends by one, and turns each low bit, and keeps what is better. Whether anything was.
template <std::size_t kChannels>
HWY_INLINE bool Nudge(const Points<kChannels>& points, const Grid<kChannels>& grid, bool inPairs,
                      Line<kChannels>& line) {
    const Value before = line.error;
    const auto consider = [&](Line<kChannels>& moved) {
        moved.error = Assign<false>(points, grid, moved, nullptr);
        KeepBetter(line, moved);
    };
    // Low bits that are set in any case are those of blocks whose alpha is 255, and stays so.
    for (std::size_t c = 0; c < (grid.isLowSet ? kChannels - 1 : kChannels); ++c) {
        const auto top = static_cast<float>((1 << grid.bits[c]) - 1);
        for (std::size_t move = 0; move < (inPairs ? kMoves.size() : kMovesOfOne); ++move) {
            Line<kChannels> moved = line;
            moved.a[c] = Clamped(hn::Add(moved.a[c], Same(kMoves[move][0])), 0, top);
            moved.b[c] = Clamped(hn::Add(moved.b[c], Same(kMoves[move][1])), 0, top);
            consider(moved);
        }
    }
    if (grid.lowBits != LowBits::kNone && !grid.isLowSet) {
        const bool isShared = grid.lowBits == LowBits::kPerSubset;
        for (int end = 0; end < (isShared ? 1 : 2); ++end) {
            Line<kChannels> turned = line;
            if (isShared || end == 0) turned.lowA = hn::Sub(Same(1), line.lowA);
            if (isShared || end == 1) turned.lowB = hn::Sub(Same(1), line.lowB);
            consider(turned);
        }
    }
    return !hn::AllTrue(Lanes(), hn::Ge(line.error, before));
}

/// The refined line from a longer or shorter first one.
template <std::size_t kChannels>
HWY_INLINE Line<kChannels> FittedFrom(const Points<kChannels>& points, const Grid<kChannels>& grid,
                                      const Ends<kChannels>& extent, std::size_t start, int refinements) {
    const Vector<kChannels> direction = Difference(extent.b, extent.a);
    const float perStep = 1 / grid.Last();
    const Ends<kChannels> ends{Along(extent.a, direction, Same(-kStarts[start][0] * perStep)),
                               Along(extent.b, direction, Same(kStarts[start][1] * perStep))};
    Line<kChannels> best = LineOf(points, grid, ends);
    for (int turn = 0; turn < refinements; ++turn)
        KeepBetter(best, Refined(points, grid, best));
    return best;
}

template <std::size_t kChannels>
HWY_INLINE Line<kChannels> Fitted(const Points<kChannels>& points, const Grid<kChannels>& grid, const Budget& budget) {
    const Ends<kChannels> extent = ExtentOf(points);
    Line<kChannels> best = FittedFrom(points, grid, extent, 0, budget.refinements);
    for (std::size_t start = 1; start < budget.starts; ++start)
        KeepBetter(best, FittedFrom(points, grid, extent, start, budget.refinements));
    for (int turn = 0; turn < budget.nudges && Nudge(points, grid, budget.inPairs, best); ++turn) {
    }
    return best;
}

}  // namespace Kavra::Common::HWY_NAMESPACE::Bc7Lines
HWY_AFTER_NAMESPACE();

#endif
