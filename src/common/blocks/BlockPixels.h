/// The pixels of pictures as blocks that are to be encoded.
#pragma once

#include "common/PixelFormats.h"
#include "common/blocks/BlockEncoders.h"

#include <cstddef>
#include <vector>

namespace Kavra::Common {

/// What the floats of a block stand for.
enum class BlockScale {
    kUnsigned,  ///< 0 to 255 for 0 to 1
    kSigned,    ///< -127 to 127 for -1 to 1: of integers 0 to their maximum, of floats these
    kHalfBits,  ///< the bits of halves of 0 and more as whole numbers
    kSignedHalfBits,
};

/// A picture in memory: rows of pixels of a format that has pixels, `pitch` bytes apart.
struct BlockPicture {
    const unsigned char* rows;
    std::size_t pitch;
    int width, height;
    const PixelFormat& format;
};

constexpr std::size_t BlocksAlong(int pixels) {
    return (static_cast<std::size_t>(pixels) + 3) / 4;
}

/// Fills `blocks` with one row of blocks, `BlocksAlong(width)` of `kBlockFloats` floats. Pixels beyond the edges are the
/// last row and column again. Grey is red, green and blue at once; what has no alpha is opaque; `kA8` is red too.
void GatherBlocks(const BlockPicture& picture, std::size_t blockRow, BlockScale scale, std::vector<float>& blocks);

}  // namespace Kavra::Common
