/// JPEG files decoded at a fraction of their size.
#pragma once

#include "common/ByteSource.h"

#include <OpenImageIO/imageio.h>

#include <memory>

namespace Kavra::Devices {

/// Sides of a JPEG that is decoded at one part in `denominator` (1, 2, 4 or 8): rounded up.
constexpr int ScaledJpegSide(int side, int denominator) {
    return (side + denominator - 1) / denominator;
}

/// Opens a JPEG file as a picture of one part in `denominator` of its width and height, which the JPEG library computes
/// from the lower frequencies of each block: for less than decoding all of it, and with each pixel the mean of those that
/// it stands for. `spec` is the picture's own as the image library has it; the input's is the same with other sides.
///
/// The input gives each row once, from the top down, and ends at the first thing that is wrong with the file, where a
/// decoder would go on with what it has. Null where the picture is neither plain grey nor of three colours, and where
/// `spec` says otherwise. Throws `std::bad_alloc`.
std::unique_ptr<OIIO::ImageInput> OpenScaledJpeg(Common::ByteSource file, const OIIO::ImageSpec& spec, int denominator);

}  // namespace Kavra::Devices
