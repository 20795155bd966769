/// \file
/// Ways to bring a pixel block to another size.
#pragma once

namespace Kavra::Devices {

/// What `IImageHandler::Resize` does with a block. Other values raise "wrong resize method!".
enum EResizeMethod : int {
    /// Copies the block, byte for byte. All sizes, the format and the type are ignored.
    kResizeCopy = 0,
    /// Resamples the picture with an `EImageFilterType`, to any larger or smaller size; width and height change
    /// independently. Takes flat pictures of the formats that the image library holds: no block-compressed ones, no
    /// `kR32G32B32F`, no `kR8G8B8A8Alt`.
    kResizeFilter = 1,
    /// Keeps the pixels at their size and cuts the block off, or fills it up with zeros, at the right and the bottom.
    /// Works on rows of bytes, with two things to know. A result with fewer rows that are longer than the source's
    /// shows the beginning of the next source row at the end of each. A result with as many or more rows that are
    /// shorter shows the surplus of the last source row at the beginning of the row behind it, where there is one.
    kResizeCropOrPad = 2,
};

/// How `kResizeFilter` computes a pixel. Channels are filtered one by one as they are stored: without regard to alpha,
/// and without undoing a gamma curve. Other values raise "invalid input parameter".
enum EImageFilterType : int {
    kFilterNearest = 0,  ///< takes the nearest pixel; introduces no new values
    /// The cubic of D. Mitchell and A. Netravali, "Reconstruction Filters in Computer Graphics", 1988 (B = C = 1/3),
    /// widened by as much as the picture shrinks, so no pixel is skipped. May overshoot: integer channels are clamped,
    /// floats not.
    kFilterMitchell = 1,
    kFilterBilinear = 2,  ///< blends the four nearest pixels, also when shrinking, where it skips the others
};

}  // namespace Kavra::Devices
