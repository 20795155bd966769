#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc7Encoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/Bc7Encoder.h"
#include "common/blocks/Bc7Lines-inl.h"
#include "common/blocks/Bc7Packing.h"
#include "common/blocks/BlockPartitions-inl.h"

#include <cmath>
#include <utility>
#include <vector>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

using namespace Bc7Lines;

// --- The best block of each lane -------------------------------------------------------------------------------------

class BestBlocks {
public:
    explicit BestBlocks(std::size_t count) : mCount(count) { mErrors.fill(HUGE_VALF); }

    /// Calls `make(lane, block)` for the lanes in which an error is smaller than what there is, to fill the block in.
    template <class Make>
    HWY_INLINE void Offer(Value error, const Make& make) {
        HWY_ALIGN float errors[kMaxLanes];
        hn::Store(error, Lanes(), errors);
        for (std::size_t lane = 0; lane < mCount; ++lane) {
            if (!(errors[lane] < mErrors[lane])) continue;
            mErrors[lane] = errors[lane];
            mBlocks[lane] = {};
            make(lane, mBlocks[lane]);
        }
    }

    void Store(unsigned char* const* places) {
        for (std::size_t lane = 0; lane < mCount; ++lane) {
            TurnEndsOfBc7(mBlocks[lane]);
            PackBc7(mBlocks[lane], places[lane]);
        }
    }

private:
    std::size_t mCount;
    std::array<float, kMaxLanes> mErrors;
    std::array<Bc7Block, kMaxLanes> mBlocks;
};

/// Vectors as numbers of their lanes.
struct LaneBytes {
    HWY_ALIGN std::int32_t lanes[kMaxLanes];

    HWY_INLINE LaneBytes() = default;
    HWY_INLINE explicit LaneBytes(Value value) { hn::Store(hn::ConvertTo(Whole(), value), Whole(), lanes); }
    std::uint8_t operator[](std::size_t lane) const { return static_cast<std::uint8_t>(lanes[lane]); }
};

template <std::size_t kChannels>
struct LineBytes {
    std::array<LaneBytes, kChannels> a, b;
    LaneBytes lowA, lowB;
    std::array<LaneBytes, kBlockPixels> steps;

    HWY_INLINE LineBytes(const Points<kChannels>& points, const Grid<kChannels>& grid, const Line<kChannels>& line) {
        Steps assigned;
        (void)Assign<true>(points, grid, line, &assigned);
        for (std::size_t c = 0; c < kChannels; ++c) {
            a[c] = LaneBytes(line.a[c]);
            b[c] = LaneBytes(line.b[c]);
        }
        lowA = LaneBytes(line.lowA);
        lowB = LaneBytes(line.lowB);
        for (std::size_t i = 0; i < kBlockPixels; ++i)
            steps[i] = LaneBytes(assigned[i]);
    }

    /// Fills in both ends of a subset.
    void FillEnds(std::size_t lane, std::size_t subset, const std::array<std::size_t, kChannels>& slots,
                  Bc7Block& block) const {
        for (std::size_t c = 0; c < kChannels; ++c) {
            block.ends[2 * subset][slots[c]] = a[c][lane];
            block.ends[2 * subset + 1][slots[c]] = b[c][lane];
        }
        block.lowBits[2 * subset] = lowA[lane];
        block.lowBits[2 * subset + 1] = lowB[lane];
    }
};

// --- Modes -----------------------------------------------------------------------------------------------------------

/// What is tried for a group of blocks of which all or none are opaque.
struct Group {
    const LaneBlocks& blocks;
    std::array<float, 4> weights;
    bool isOpaque;
    BestBlocks& best;
};

template <std::size_t kChannels>
Grid<kChannels> GridOf(const Bc7Mode& mode, bool isLowSet) {
    Grid<kChannels> grid{{}, mode.lowBits, mode.indexBits, isLowSet};
    for (std::size_t c = 0; c < kChannels; ++c)
        grid.bits[c] = c < 3 ? mode.colourBits : mode.alphaBits;
    return grid;
}

/// A mode whose channels share their indices, in partitions of one, two or three subsets.
template <std::size_t kChannels, std::size_t kSubsets>
void TryMode(const Group& group, int number, const LanePartitions& partitions, const Budget& budget) {
    const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(number)];
    // What is opaque stays so exactly.
    const Grid<kChannels> grid = GridOf<kChannels>(mode, kChannels == 4 && group.isOpaque);
    Points<kChannels> points{group.blocks, {}, {}, nullptr};
    for (std::size_t c = 0; c < kChannels; ++c) {
        points.channels[c] = c;
        points.weights[c] = group.weights[c];
    }
    SubsetCounts<kSubsets> counts;
    if constexpr (kSubsets > 1) counts = CountsOf<kSubsets>(partitions);
    std::array<Line<kChannels>, kSubsets> lines;
    Value error = Same(0);
    for (std::size_t s = 0; s < kSubsets; ++s) {
        points.counts = kSubsets > 1 ? &counts[s] : nullptr;
        lines[s] = Fitted(points, grid, budget);
        error = hn::Add(error, lines[s].error);
    }
    std::array<LineBytes<kChannels>, kSubsets> bytes = [&]<std::size_t... kS>(std::index_sequence<kS...>) {
        return std::array<LineBytes<kChannels>, kSubsets>{LineBytes<kChannels>(points, grid, lines[kS])...};
    }(std::make_index_sequence<kSubsets>());
    group.best.Offer(error, [&](std::size_t lane, Bc7Block& block) {
        block.mode = number;
        block.partition = kSubsets > 1 ? partitions.numbers[lane] : 0;
        const Partition partition = PartitionOf(kSubsets, static_cast<std::size_t>(block.partition));
        for (std::size_t s = 0; s < kSubsets; ++s)
            bytes[s].FillEnds(lane, s, points.channels, block);
        for (std::size_t i = 0; i < kBlockPixels; ++i)
            block.indices[i] = bytes[SubsetOf(partition, i)].steps[i][lane];
    });
}

/// A mode whose alpha, or the channel in whose place it is rotated, has indices of its own.
void TryTwoIndices(const Group& group, int number, std::size_t rotation, bool isSelected, const Budget& budget) {
    const Bc7Mode& mode = kBc7Modes[static_cast<std::size_t>(number)];
    std::array<std::size_t, 4> channels = {0, 1, 2, 3};
    if (rotation > 0) std::swap(channels[3], channels[rotation - 1]);
    Grid<3> colours = GridOf<3>(mode, false);
    Grid<1> alone{{mode.alphaBits}, mode.lowBits, mode.alphaIndexBits, false};
    if (isSelected) std::swap(colours.indexBits, alone.indexBits);
    const auto weight = [&](std::size_t c) { return group.weights[channels[c]]; };
    const Points<3> three{group.blocks, {channels[0], channels[1], channels[2]}, {weight(0), weight(1), weight(2)}};
    const Points<1> one{group.blocks, {channels[3]}, {weight(3)}};
    const Line<3> line = Fitted(three, colours, budget);
    const Line<1> aloneLine = Fitted(one, alone, budget);
    const LineBytes<3> bytes(three, colours, line);
    const LineBytes<1> aloneBytes(one, alone, aloneLine);
    group.best.Offer(hn::Add(line.error, aloneLine.error), [&](std::size_t lane, Bc7Block& block) {
        block.mode = number;
        block.rotation = static_cast<int>(rotation);
        block.selection = isSelected ? 1 : 0;
        bytes.FillEnds(lane, 0, {0, 1, 2}, block);
        aloneBytes.FillEnds(lane, 0, {3}, block);
        for (std::size_t i = 0; i < kBlockPixels; ++i) {
            (isSelected ? block.alphaIndices : block.indices)[i] = bytes.steps[i][lane];
            (isSelected ? block.indices : block.alphaIndices)[i] = aloneBytes.steps[i][lane];
        }
    });
}

// --- Groups of blocks ------------------------------------------------------------------------------------------------

constexpr LanePartitions kWhole{};

/// For lines through parts of a block.
constexpr Budget BudgetOf(BlockEffort effort) {
    return effort == BlockEffort::kFast   ? Budget{1, 0}
           : effort == BlockEffort::kBest ? Budget{3, 4, 4}
                                          : Budget{1, 1, 5};
}

/// For the one line through all of it, which costs least of all and is right for most blocks.
constexpr Budget BudgetOfWhole(BlockEffort effort) {
    return effort == BlockEffort::kFast   ? Budget{1, 0}
           : effort == BlockEffort::kBest ? Budget{3, 8, kStarts.size(), true}
                                          : Budget{2, 4, 4, true};
}

void EncodeOpaque(const Group& group, BlockEffort effort) {
    const bool isFast = effort == BlockEffort::kFast, isBest = effort == BlockEffort::kBest;
    const Budget budget = BudgetOf(effort);
    TryMode<4, 1>(group, 6, kWhole, BudgetOfWhole(effort));
    const Products<3> products(group.blocks, group.weights.data());
    if (isFast) {
        const auto ranking = Ranked<1, 2>(products, 16);
        TryMode<3, 2>(group, 1, ranking.At(0), budget);
        return;
    }
    constexpr std::size_t kMaxKept = 8;
    const std::size_t tried = isBest ? kMaxKept : 2;
    const auto two = Ranked<kMaxKept, 2>(products, 64);
    for (std::size_t rank = 0; rank < tried; ++rank) {
        TryMode<3, 2>(group, 1, two.At(rank), budget);
        TryMode<3, 2>(group, 3, two.At(rank), budget);
    }
    const auto zero = Ranked<kMaxKept, 3>(products, 16);
    const auto three = Ranked<kMaxKept, 3>(products, 64);
    for (std::size_t rank = 0; rank < tried / 2; ++rank) {
        TryMode<3, 3>(group, 0, zero.At(rank), budget);
        TryMode<3, 3>(group, 2, three.At(rank), budget);
    }
    for (std::size_t rotation = 1; rotation < 4; ++rotation) {
        TryTwoIndices(group, 5, rotation, false, budget);
        TryTwoIndices(group, 4, rotation, false, budget);
        TryTwoIndices(group, 4, rotation, true, budget);
    }
}

void EncodeWithAlpha(const Group& group, BlockEffort effort) {
    const bool isFast = effort == BlockEffort::kFast, isBest = effort == BlockEffort::kBest;
    const Budget budget = BudgetOf(effort);
    TryMode<4, 1>(group, 6, kWhole, BudgetOfWhole(effort));
    for (std::size_t rotation = 0; rotation < (isFast ? 1U : 4U); ++rotation) {
        TryTwoIndices(group, 5, rotation, false, budget);
        if (isFast) continue;
        TryTwoIndices(group, 4, rotation, false, budget);
        TryTwoIndices(group, 4, rotation, true, budget);
    }
    if (isFast) return;
    const Products<4> products(group.blocks, group.weights.data());
    constexpr std::size_t kMaxKept = 8;
    const auto two = Ranked<kMaxKept, 2>(products, 64);
    for (std::size_t rank = 0; rank < (isBest ? kMaxKept : 2); ++rank)
        TryMode<4, 2>(group, 7, two.At(rank), budget);
}

bool IsOpaque(const float* block) {
    for (std::size_t i = 0; i < kBlockPixels; ++i)
        if (!(block[4 * i + 3] >= 254.5F)) return false;
    return true;
}

/// Blocks of one kind, wherever they stand.
void EncodeAlike(const std::vector<std::uint32_t>& numbers, bool isOpaque, const float* blocks, unsigned char* out,
                 const Bc7Fit& fit) {
    const std::size_t lanes = LaneCount();
    for (std::size_t at = 0; at < numbers.size(); at += lanes) {
        const std::size_t count = std::min(lanes, numbers.size() - at);
        HWY_ALIGN float gathered[kBlockFloats * kMaxLanes];
        std::array<unsigned char*, kMaxLanes> places{};
        for (std::size_t i = 0; i < count; ++i) {
            std::copy_n(blocks + numbers[at + i] * kBlockFloats, kBlockFloats, gathered + i * kBlockFloats);
            places[i] = out + std::size_t{16} * numbers[at + i];
        }
        const LaneBlocks laneBlocks(gathered, count);
        BestBlocks best(count);
        const Group group{laneBlocks, fit.weights, isOpaque, best};
        isOpaque ? EncodeOpaque(group, fit.effort) : EncodeWithAlpha(group, fit.effort);
        best.Store(places.data());
    }
}

}  // namespace

void Bc7(const float* blocks, std::size_t count, unsigned char* out, const Bc7Fit& fit) {
    std::array<std::vector<std::uint32_t>, 2> numbers;  // a block is the same whatever stands beside it
    for (std::size_t block = 0; block < count; ++block)
        numbers[IsOpaque(blocks + block * kBlockFloats) ? 1 : 0].push_back(static_cast<std::uint32_t>(block));
    EncodeAlike(numbers[0], false, blocks, out, fit);
    EncodeAlike(numbers[1], true, blocks, out, fit);
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Common {

HWY_EXPORT(Bc7);

void EncodeBc7(const float* blocks, std::size_t count, unsigned char* out, const Bc7Fit& fit) {
    HWY_DYNAMIC_DISPATCH(Bc7)(blocks, count, out, fit);
}

}  // namespace Kavra::Common
#endif
