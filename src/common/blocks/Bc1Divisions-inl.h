// Every division of the colours of a block along their axis. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BC1_DIVISIONS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BC1_DIVISIONS_INL
#undef KAVRA_BC1_DIVISIONS_INL
#else
#define KAVRA_BC1_DIVISIONS_INL
#endif

#include "common/blocks/Bc1Lines-inl.h"

#include <array>
#include <cmath>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE::Bc1Lines {

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

}  // namespace Kavra::Common::HWY_NAMESPACE::Bc1Lines
HWY_AFTER_NAMESPACE();

#endif
