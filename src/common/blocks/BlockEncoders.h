/// Encoding blocks of 4 x 4 pixels as BC1 to BC5.
///
/// The formats are those of Microsoft, "Direct3D 11.3 Functional Specification", section 19.5: BC1 is two colours of 5, 6
/// and 5 bits and 16 indices of 2 bits into the line between them, BC4 two values of 8 bits and 16 indices of 3 bits.
///
/// Several blocks are worked on at a time, one in each lane of a vector, and nothing crosses from lane to lane: a block
/// comes out the same whatever the width of vectors, and whatever stands beside it. No product is fused with a sum, for
/// the same reason.
#pragma once

#include <array>
#include <cstddef>

namespace Kavra::Common {

/// A block before it is encoded: 16 pixels in rows of four, from the top left, each red, green, blue and alpha as floats,
/// 0 to 255 for 0 to 1 (signed formats: -127 to 127 for -1 to 1).
inline constexpr std::size_t kBlockPixels = 16;
inline constexpr std::size_t kBlockFloats = 4 * kBlockPixels;

enum class BlockEffort {
    kFast,  ///< one guess, improved once
    kGood,  ///< improved as long as that costs little
    kBest,  ///< every way to divide the colours along their axis is tried
};

struct BlockFit {
    BlockEffort effort = BlockEffort::kGood;
    /// What an error in red, green and blue counts, each above 0.
    std::array<float, 3> weights = {1, 1, 1};
};

/// Where blocks go: the first one, and how many bytes from one to the next.
struct BlockPlaces {
    unsigned char* first;
    std::size_t stride;
};

/// Encodes `count` blocks of `kBlockFloats` floats each into 8 bytes each. Alpha is not looked at: all indices are
/// opaque, and none is one that other formats read as black.
void EncodeBc1(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit);

/// The same with transparent pixels: those whose alpha is below 128 get the index that is transparent black.
void EncodeBc1Alpha(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit);

/// The colour half of BC2 and BC3 blocks, 8 bytes: always four colours, whatever the order of the ends.
void EncodeBc3Colour(const float* blocks, std::size_t count, BlockPlaces out, const BlockFit& fit);

/// The alpha half of BC2 blocks, 8 bytes: 4 bits a pixel.
void EncodeBc2Alpha(const float* blocks, std::size_t count, BlockPlaces out);

/// One channel, 0 to 3, as 8 bytes: BC4, each half of BC5, and the alpha half of BC3. Signed values are -127 to 127.
void EncodeBc4(const float* blocks, std::size_t count, std::size_t channel, bool isSigned, BlockPlaces out,
               BlockEffort effort);

}  // namespace Kavra::Common
