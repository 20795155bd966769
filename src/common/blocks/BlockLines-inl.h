// Lines through the colours of blocks. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BLOCK_LINES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BLOCK_LINES_INL
#undef KAVRA_BLOCK_LINES_INL
#else
#define KAVRA_BLOCK_LINES_INL
#endif

#include "common/blocks/BlockLanes-inl.h"

#include <array>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

using Whole = hn::RebindToSigned<Lanes>;
using WholeValue = hn::Vec<Whole>;
using Mask = hn::Mask<Lanes>;

template <std::size_t kChannels>
using Vector = std::array<Value, kChannels>;

/// Some channels of the pixels of a subset, a different subset in each lane.
template <std::size_t kChannels>
struct Points {
    const LaneBlocks& blocks;
    std::array<std::size_t, kChannels> channels;
    std::array<float, kChannels> weights;
    const std::array<Value, kBlockPixels>* counts = nullptr;  ///< 1 for the pixels of the subset; null: all are

    HWY_INLINE Vector<kChannels> At(std::size_t pixel) const {
        Vector<kChannels> point;
        for (std::size_t c = 0; c < kChannels; ++c)
            point[c] = blocks.At(pixel, channels[c]);
        return point;
    }
    HWY_INLINE Value Counted(std::size_t pixel, Value value) const {
        return counts == nullptr ? value : hn::Mul(value, (*counts)[pixel]);
    }
    HWY_INLINE Value Counts(std::size_t pixel) const { return counts == nullptr ? Same(1) : (*counts)[pixel]; }
};

template <std::size_t kChannels>
HWY_INLINE Value Dot(const Vector<kChannels>& a, const Vector<kChannels>& b) {
    Value sum = hn::Mul(a[0], b[0]);
    for (std::size_t c = 1; c < kChannels; ++c)
        sum = hn::Add(sum, hn::Mul(a[c], b[c]));
    return sum;
}

/// The vector whose component of each channel is `of(channel)`.
template <std::size_t kChannels, class Of>
HWY_INLINE Vector<kChannels> EachChannel(const Of& of) {
    Vector<kChannels> vector;
    for (std::size_t c = 0; c < kChannels; ++c)
        vector[c] = of(c);
    return vector;
}

template <std::size_t kChannels>
HWY_INLINE Vector<kChannels> Difference(const Vector<kChannels>& a, const Vector<kChannels>& b) {
    return EachChannel<kChannels>([&](std::size_t c) { return hn::Sub(a[c], b[c]); });
}

template <std::size_t kChannels>
HWY_INLINE Vector<kChannels> Along(const Vector<kChannels>& from, const Vector<kChannels>& direction, Value by) {
    return EachChannel<kChannels>([&](std::size_t c) { return hn::Add(from[c], hn::Mul(direction[c], by)); });
}

template <std::size_t kChannels>
HWY_INLINE Vector<kChannels> Weighted(const Points<kChannels>& points, const Vector<kChannels>& vector) {
    return EachChannel<kChannels>([&](std::size_t c) { return hn::Mul(vector[c], Same(points.weights[c])); });
}

template <std::size_t kChannels>
struct Shape {
    Vector<kChannels> mean;
    Vector<kChannels> axis;  ///< the direction in which the points differ most, of any length
};

template <std::size_t kChannels>
HWY_INLINE Shape<kChannels> ShapeOf(const Points<kChannels>& points) {
    Shape<kChannels> shape;
    Value count = Same(0);
    shape.mean.fill(Same(0));
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        count = hn::Add(count, points.Counts(i));
        shape.mean = Along(shape.mean, points.At(i), points.Counts(i));
    }
    const Value perCount = hn::Div(Same(1), hn::Max(count, Same(1)));
    for (Value& mean : shape.mean)
        mean = hn::Mul(mean, perCount);
    std::array<Vector<kChannels>, kChannels> rows;
    for (Vector<kChannels>& row : rows)
        row.fill(Same(0));
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Vector<kChannels> off = Difference(points.At(i), shape.mean);
        for (std::size_t r = 0; r < kChannels; ++r)
            for (std::size_t c = r; c < kChannels; ++c)
                rows[r][c] = hn::Add(rows[r][c], points.Counted(i, hn::Mul(off[r], off[c])));
    }
    for (std::size_t r = 0; r < kChannels; ++r)
        for (std::size_t c = 0; c < r; ++c)
            rows[r][c] = rows[c][r];
    // From the row of the channel that differs most, a few multiplications with the covariances.
    shape.axis = rows[0];
    Value most = rows[0][0];
    for (std::size_t r = 1; r < kChannels; ++r) {
        const Mask isMore = hn::Gt(rows[r][r], most);
        most = hn::Max(most, rows[r][r]);
        for (std::size_t c = 0; c < kChannels; ++c)
            shape.axis[c] = hn::IfThenElse(isMore, rows[r][c], shape.axis[c]);
    }
    for (int turn = 0; turn < 4; ++turn) {
        const Vector<kChannels> weighted = Weighted(points, shape.axis);
        Value largest = Same(0);
        for (std::size_t c = 0; c < kChannels; ++c) {
            shape.axis[c] = Dot(rows[c], weighted);
            largest = hn::Max(largest, hn::Abs(shape.axis[c]));
        }
        const Value shrink = hn::IfThenElseZero(hn::Gt(largest, Same(1e-20F)), hn::Div(Same(1), largest));
        for (Value& component : shape.axis)
            component = hn::Mul(component, shrink);
    }
    return shape;
}

/// Ends of a line.
template <std::size_t kChannels>
struct Ends {
    Vector<kChannels> a, b;
};

/// From the first to the last point along their axis.
template <std::size_t kChannels>
HWY_INLINE Ends<kChannels> ExtentOf(const Points<kChannels>& points) {
    const Shape<kChannels> shape = ShapeOf(points);
    const Vector<kChannels> weighted = Weighted(points, shape.axis);
    const Value length = Dot(shape.axis, weighted);
    Value low = Same(0), high = Same(0);
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Value at = points.Counted(i, Dot(Difference(points.At(i), shape.mean), weighted));
        low = hn::Min(low, at);
        high = hn::Max(high, at);
    }
    const Value perLength = hn::IfThenElseZero(hn::Gt(length, Same(0)), hn::Div(Same(1), length));
    return {Along(shape.mean, shape.axis, hn::Mul(low, perLength)),
            Along(shape.mean, shape.axis, hn::Mul(high, perLength))};
}

/// Which of the evenly spaced values of a line, from `a` on, each pixel has.
using Steps = std::array<Value, kBlockPixels>;

template <std::size_t kChannels>
struct BestEnds {
    Ends<kChannels> ends;
    Mask isKnown;  ///< not where all points are at one step, or none is
};

/// The ends that are best for points that stay at their steps of 0 to `last`: least squares.
template <std::size_t kChannels>
HWY_INLINE BestEnds<kChannels> LeastSquares(const Points<kChannels>& points, const Steps& steps, float last) {
    Value count = Same(0), sum = Same(0), squares = Same(0);
    Vector<kChannels> all, ofB;
    all.fill(Same(0));
    ofB.fill(Same(0));
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const Value share = points.Counted(i, hn::Mul(steps[i], Same(1 / last)));
        count = hn::Add(count, points.Counts(i));
        sum = hn::Add(sum, share);
        squares = hn::Add(squares, hn::Mul(share, share));
        all = Along(all, points.At(i), points.Counts(i));
        ofB = Along(ofB, points.At(i), share);
    }
    const Value both = hn::Sub(sum, squares);                                 // shares of a times shares of b
    const Value nearA = hn::Add(hn::Sub(count, hn::Add(sum, sum)), squares);  // shares of a, squared
    const Value determinant = hn::Sub(hn::Mul(nearA, squares), hn::Mul(both, both));
    BestEnds<kChannels> best;
    best.isKnown = hn::Gt(determinant, Same(1e-3F));
    const Value scale = hn::IfThenElseZero(best.isKnown, hn::Div(Same(1), determinant));
    for (std::size_t c = 0; c < kChannels; ++c) {
        const Value ofA = hn::Sub(all[c], ofB[c]);
        best.ends.a[c] = hn::Mul(hn::Sub(hn::Mul(ofA, squares), hn::Mul(ofB[c], both)), scale);
        best.ends.b[c] = hn::Mul(hn::Sub(hn::Mul(ofB[c], nearA), hn::Mul(ofA, both)), scale);
    }
    return best;
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
