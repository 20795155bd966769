/// The picture that the chunks of an animation change.
#pragma once

#include "common/PixelBlock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Red, green and blue of each of 256 indices.
using FlicPalette = std::array<unsigned char, 768>;

/// One flat block of palette indices, rows without gaps: what is written past the end of a row goes on in the next,
/// what is written past the end of the frame is dropped.
class FlicFrame {
public:
    /// All indices 0. Throws `std::bad_alloc`.
    FlicFrame(std::uint32_t width, std::uint32_t height);

    /// What a frame of this size takes.
    static std::uint64_t BytesOf(std::uint32_t width, std::uint32_t height);

    std::uint32_t Width() const { return mWidth; }
    std::uint32_t Height() const { return mHeight; }
    std::span<const unsigned char> Indices() const { return {mIndices.get(), mSize}; }

    /// Those of `count` indices from `offset` on that lie in the frame, to be written.
    std::span<unsigned char> At(std::uint64_t offset, std::uint64_t count);

    /// Sets all indices to 0. Takes time for what was written since the last time, not for the whole frame: a file may
    /// ask for it in every few bytes.
    void Clear();

private:
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::size_t mSize;
    Common::PixelBlock mIndices;
    std::vector<std::uint64_t> mWritten;  // a bit for each stretch of indices
};

}  // namespace Kavra::Devices
