// The wider variants of AVX-512 have nothing that these kernels would use, and SSSE3 alone is rare.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_AVX3_ZEN4 | HWY_AVX3_SPR | HWY_AVX10_2)

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/blocks/Bc7Encoder.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/blocks/Bc7Encoder.h"

#include "common/blocks/Bc7Packing.h"
#include "common/blocks/BlockPartitions-inl.h"

#include <cmath>
#include <utility>
#include <vector>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {
namespace {

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
    Vector<kChannels> decoded;
    for (std::size_t c = 0; c < kChannels; ++c)
        decoded[c] = Decoded(grid, c, stored[c], low);
    return decoded;
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
    Vector<kChannels> stored;
    for (std::size_t c = 0; c < kChannels; ++c)
        stored[c] = Stored(grid, c, end[c], low);
    return stored;
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
