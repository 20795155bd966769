/// Row and column order of pixel data.
#pragma once

namespace Kavra::Devices {

/// How the rows and columns of a block lie, with the Exif "Orientation" number that says the same
/// (CIPA DC-008, tag 0x0112; OpenImageIO counts likewise).
enum EDataOrientation : int {
    kTopLeft = 0,      ///< as displayed: top row first, left to right (Exif 1)
    kTopRight = 1,     ///< mirrored left to right (Exif 2)
    kBottomLeft = 2,   ///< upside down: bottom row first (Exif 4)
    kBottomRight = 3,  ///< rotated by 180 degrees (Exif 3)
    kLeftTop = 4,      ///< transposed (Exif 5)
    kRightTop = 5,     ///< needs a quarter turn clockwise to display (Exif 6)
    kLeftBottom = 6,   ///< needs a quarter turn anticlockwise to display (Exif 8)
    kRightBottom = 7,  ///< transverse (Exif 7)
};

}  // namespace Kavra::Devices
