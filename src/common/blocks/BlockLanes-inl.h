// Blocks of 4 x 4 pixels, one in each lane. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_BLOCK_LANES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_BLOCK_LANES_INL
#undef KAVRA_BLOCK_LANES_INL
#else
#define KAVRA_BLOCK_LANES_INL
#endif

#include "common/blocks/BlockEncoders.h"

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::ScalableTag<float>;
using Value = hn::Vec<Lanes>;

inline constexpr std::size_t kMaxLanes = HWY_MAX_BYTES / sizeof(float);

HWY_INLINE std::size_t LaneCount() {
    return hn::Lanes(Lanes());
}

HWY_INLINE Value Same(float value) {
    return hn::Set(Lanes(), value);
}

HWY_INLINE Value Clamped(Value value, float low, float high) {
    return hn::Min(hn::Max(value, Same(low)), Same(high));
}

/// The pixels of as many blocks as there are lanes.
class LaneBlocks {
public:
    /// Lanes beyond `count` hold the last block again.
    LaneBlocks(const float* blocks, std::size_t count) : mLanes(LaneCount()) {
        for (std::size_t lane = 0; lane < mLanes; ++lane) {
            const float* const block = blocks + std::min(lane, count - 1) * kBlockFloats;
            for (std::size_t i = 0; i < kBlockFloats; ++i)
                mValues[i * mLanes + lane] = block[i];
        }
    }

    HWY_INLINE Value At(std::size_t pixel, std::size_t channel) const {
        return hn::Load(Lanes(), mValues + (4 * pixel + channel) * mLanes);
    }

private:
    std::size_t mLanes;
    HWY_ALIGN float mValues[kBlockFloats * kMaxLanes];
};

/// Calls `encode(blocks, count, places)` for as many blocks at a time as there are lanes.
template <class Encode>
HWY_INLINE void InLanes(const float* blocks, std::size_t count, BlockPlaces out, const Encode& encode) {
    const std::size_t lanes = LaneCount();
    for (std::size_t at = 0; at < count; at += lanes) {
        const BlockPlaces some = {out.first + at * out.stride, out.stride};
        encode(blocks + at * kBlockFloats, std::min(lanes, count - at), some);
    }
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
