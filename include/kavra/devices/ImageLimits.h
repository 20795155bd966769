/// \file
/// How large a picture a host wants to have loaded.
#pragma once

#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// Bounds on one picture, for files that nobody vouches for. A load of a picture beyond a bound answers as one of a
/// file that cannot be read; but for what only the host's own readers of OpenEXR and DDS can read, it does so before it
/// takes memory for the pixels.
///
/// A bound that is set holds for every picture that a module loads, whatever its file: for its pixels as the file has
/// them, in the format of the file and in the one that is asked for, before any of them is resized away.
///
/// While both are 0, a module bounds by itself only the pictures whose size a few bytes can claim (the old rasters):
/// to 2 GiB of all that their load holds at a time, which for one at a smaller size is far less than the picture, and
/// to 4,000,000,000 pixels as the file has them. As soon as either is set, these no longer hold. Whatever is set, such
/// a picture never gets more than half of the memory of the machine, or of the control group of the process where that
/// is less.
///
///     Kavra::Devices::ImageLimits limits;
///     limits.maxBytes = std::uint64_t{256} << 20;
///     Kavra::Devices::SetImageLimits(limits);
struct ImageLimits {
    std::uint32_t size = sizeof(ImageLimits);  ///< of the structure as its user knows it, in bytes
    std::uint64_t maxBytes = 0;   ///< of the block; of old rasters, of all that a load holds but a few rows; 0: not set
    std::uint64_t maxPixels = 0;  ///< columns x rows x slices, of all faces of a cube map; 0: not set
};

/// Sets the limits of the process. Loads that have begun may go by the ones before. Fields beyond `limits.size` count
/// as 0. Threads: any.
KAVRA_DEVICES_API void SetImageLimits(const ImageLimits& limits);

/// Fills `limits`, as far as its `size` goes, with the limits of the process: both fields as of one call of
/// `SetImageLimits`. Threads: any.
KAVRA_DEVICES_API void GetImageLimits(ImageLimits& limits);

/// Returns the limits of the process.
inline ImageLimits GetImageLimits() {
    ImageLimits limits;
    GetImageLimits(limits);
    return limits;
}

}  // namespace Kavra::Devices
