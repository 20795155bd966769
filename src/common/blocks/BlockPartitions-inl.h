// Which partitions divide blocks best. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BLOCK_PARTITIONS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BLOCK_PARTITIONS_INL
#undef KAVRA_BLOCK_PARTITIONS_INL
#else
#define KAVRA_BLOCK_PARTITIONS_INL
#endif

#include "common/blocks/Bc7Layout.h"
#include "common/blocks/BlockLines-inl.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

/// The numbers of partitions, one in each lane.
struct LanePartitions {
    HWY_ALIGN std::int32_t numbers[kMaxLanes];
};

/// For each subset of each lane's partition 1 for the pixels in it.
template <std::size_t kSubsets>
using SubsetCounts = std::array<std::array<Value, kBlockPixels>, kSubsets>;

template <std::size_t kSubsets>
HWY_INLINE SubsetCounts<kSubsets> CountsOf(const LanePartitions& partitions) {
    HWY_ALIGN std::int32_t patterns[kMaxLanes];
    for (std::size_t lane = 0; lane < LaneCount(); ++lane) {
        const auto number = static_cast<std::size_t>(partitions.numbers[lane]);
        patterns[lane] = static_cast<std::int32_t>(PartitionOf(kSubsets, number));
    }
    WholeValue pattern = hn::Load(Whole(), patterns);
    SubsetCounts<kSubsets> counts;
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        const WholeValue subset = hn::And(pattern, hn::Set(Whole(), 3));
        for (std::size_t s = 0; s < kSubsets; ++s) {
            const auto isIn = hn::Eq(subset, hn::Set(Whole(), static_cast<std::int32_t>(s)));
            counts[s][i] = hn::IfThenElseZero(hn::RebindMask(Lanes(), isIn), Same(1));
        }
        pattern = hn::ShiftRight<2>(pattern);
    }
    return counts;
}

/// Of each pixel its channels and the products of each two, and their sums over all.
template <std::size_t kChannels>
struct Products {
    static constexpr std::size_t kCount = kChannels + kChannels * (kChannels + 1) / 2;
    std::array<std::array<Value, kCount>, kBlockPixels> pixels;
    std::array<Value, kCount> all;

    HWY_INLINE Products(const LaneBlocks& blocks, const float* weights) {
        all.fill(Same(0));
        Vector<kChannels> middle;  // so that what is subtracted later is small
        for (std::size_t r = 0; r < kChannels; ++r) {
            middle[r] = Same(0);
            for (std::size_t i = 0; i < kBlockPixels; ++i)
                middle[r] = hn::Add(middle[r], hn::Mul(blocks.At(i, r), Same(1.0F / kBlockPixels)));
        }
        for (std::size_t i = 0; i < kBlockPixels; ++i) {
            std::size_t at = kChannels;
            for (std::size_t r = 0; r < kChannels; ++r)
                pixels[i][r] = hn::Mul(hn::Sub(blocks.At(i, r), middle[r]), Same(std::sqrt(weights[r])));
            for (std::size_t r = 0; r < kChannels; ++r)
                for (std::size_t c = r; c < kChannels; ++c)
                    pixels[i][at++] = hn::Mul(pixels[i][r], pixels[i][c]);
            for (std::size_t k = 0; k < kCount; ++k)
                all[k] = hn::Add(all[k], pixels[i][k]);
        }
    }
};

/// How far points are from the line through them: the sum of their variances less the largest along any axis.
template <std::size_t kChannels>
HWY_INLINE Value OffLine(const std::array<Value, Products<kChannels>::kCount>& sums, float count) {
    std::array<Vector<kChannels>, kChannels> rows;
    std::size_t at = kChannels;
    Value trace = Same(0);
    for (std::size_t r = 0; r < kChannels; ++r) {
        for (std::size_t c = r; c < kChannels; ++c)
            rows[r][c] = rows[c][r] = hn::Sub(sums[at++], hn::Mul(hn::Mul(sums[r], sums[c]), Same(1 / count)));
        trace = hn::Add(trace, rows[r][r]);
    }
    Vector<kChannels> axis = rows[0];
    Value most = rows[0][0];
    for (std::size_t r = 1; r < kChannels; ++r) {
        const Mask isMore = hn::Gt(rows[r][r], most);
        most = hn::Max(most, rows[r][r]);
        for (std::size_t c = 0; c < kChannels; ++c)
            axis[c] = hn::IfThenElse(isMore, rows[r][c], axis[c]);
    }
    // Rayleigh's quotient after two multiplications.
    Vector<kChannels> next;
    for (int turn = 0; turn < 2; ++turn) {
        if (turn > 0) axis = next;
        const Value largest = hn::Max(most, Same(1e-6F));
        const Value shrink = hn::Div(Same(1), largest);
        for (Value& component : axis)
            component = hn::Mul(component, shrink);
        for (std::size_t c = 0; c < kChannels; ++c)
            next[c] = Dot(rows[c], axis);
    }
    const Value length = Dot(axis, axis);
    const Value along = hn::IfThenElseZero(hn::Gt(length, Same(1e-12F)), hn::Div(Dot(axis, next), length));
    return hn::Max(hn::Sub(trace, along), Same(0));
}

/// The numbers of the partitions that divide each lane's pixels best, the best first.
template <std::size_t kMaxKept>
struct Ranking {
    std::array<Value, kMaxKept> errors;
    std::array<Value, kMaxKept> numbers;

    HWY_INLINE Ranking() {
        errors.fill(Same(HUGE_VALF));
        numbers.fill(Same(0));
    }
    HWY_INLINE void Insert(Value error, float number) {
        Value at = Same(number);
        for (std::size_t rank = 0; rank < kMaxKept; ++rank) {
            const Mask isBefore = hn::Lt(error, errors[rank]);
            const Value pushed = errors[rank], pushedNumber = numbers[rank];
            errors[rank] = hn::IfThenElse(isBefore, error, pushed);
            numbers[rank] = hn::IfThenElse(isBefore, at, pushedNumber);
            error = hn::IfThenElse(isBefore, pushed, error);
            at = hn::IfThenElse(isBefore, pushedNumber, at);
        }
    }
    HWY_INLINE LanePartitions At(std::size_t rank) const {
        LanePartitions partitions;
        hn::Store(hn::ConvertTo(Whole(), numbers[rank]), Whole(), partitions.numbers);
        return partitions;
    }
};

template <std::size_t kMaxKept, std::size_t kSubsets, std::size_t kChannels>
HWY_INLINE Ranking<kMaxKept> Ranked(const Products<kChannels>& products, std::size_t partitions) {
    constexpr std::size_t kCount = Products<kChannels>::kCount;
    Ranking<kMaxKept> ranking;
    for (std::size_t number = 0; number < partitions; ++number) {
        const Partition partition = PartitionOf(kSubsets, number);
        std::array<std::array<Value, kCount>, kSubsets> sums;
        std::array<float, kSubsets> counts{};
        for (std::size_t s = 1; s < kSubsets; ++s)
            sums[s].fill(Same(0));
        for (std::size_t i = 0; i < kBlockPixels; ++i) {
            const std::size_t s = SubsetOf(partition, i);
            ++counts[s];
            if (s == 0) continue;
            for (std::size_t k = 0; k < kCount; ++k)
                sums[s][k] = hn::Add(sums[s][k], products.pixels[i][k]);
        }
        sums[0] = products.all;
        for (std::size_t s = 1; s < kSubsets; ++s)
            for (std::size_t k = 0; k < kCount; ++k)
                sums[0][k] = hn::Sub(sums[0][k], sums[s][k]);
        Value error = Same(0);
        for (std::size_t s = 0; s < kSubsets; ++s)
            error = hn::Add(error, OffLine<kChannels>(sums[s], counts[s]));
        ranking.Insert(error, static_cast<float>(number));
    }
    return ranking;
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
