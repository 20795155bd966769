/// \file
/// Row and column order of pixel data.
#pragma once

namespace Kavra::Devices {

/// How the rows and columns of a block lie, with the Exif "Orientation" number that says the same
/// (CIPA DC-008, tag 0x0112; OpenImageIO counts likewise). A load is asked for one and delivers the pixels so;
/// `kTopLeft` is what a screen or a texture without further rotation wants.
///
/// The first word is the edge of the displayed picture at which the first row of memory lies, the second the one at
/// which its first column lies: `kBottomLeft` begins with the bottom row. From 4 on the rows of memory are columns of
/// the picture, so width and height of the block are exchanged. Values outside 0 to 7 count as 0.
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
