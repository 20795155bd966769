/// How large an image a file may claim to be.
#pragma once

#include <cstdint>

namespace Kavra::Devices {

/// Columns or rows of an image.
inline constexpr int kMostSide = 1'000'000;

/// A block up to this size is given to any file; a larger one only to a file that is long enough to fill it: a
/// compressed drawing of E size scanned at 600 dpi (2.2 GB) comes from 68 KB or more.
inline constexpr std::uint64_t kFreeBlockBytes = std::uint64_t{256} << 20;
inline constexpr std::uint64_t kMostBytesPerFileByte = 32'768;

/// Whether a block for an image of `width` x `height` pixels in rows of `rowPitch` bytes may be allocated for a file of
/// `fileBytes` bytes. Asked before the allocation, since memory that was given out and is not there when it is touched
/// ends the process.
bool WithinLimits(int width, int height, int rowPitch, std::uint64_t fileBytes);

}  // namespace Kavra::Devices
