/// Decoding an OpenEXR file into one block of floats.
#pragma once

#include "common/PixelBlock.h"

#include <Imath/ImathBox.h>
#include <ImfInputPart.h>

namespace Kavra::Devices {

class ExrStream;

struct ExrPicture {
    int width = 0;
    int height = 0;
    bool alpha = false;         ///< four floats a pixel, else three
    Common::PixelBlock pixels;  ///< top row first
};

/// The first part of the file, its data window, level 0 where there are several. The colours are, in this order of
/// preference: R, G, B (those that are missing are 0); luminance with chroma (at half precision, which is what
/// the library's chroma filters have); luminance alone; the colours of the first layer that has any ("name.R");
/// the first channel there is, whatever it means, as grey. Alpha is "A" of the same layer, where there is one.
///
/// Throws for everything that cannot be read whole: deep data, missing rows or tiles, subsampled colours, sizes
/// beyond the block ceiling, and sizes that no file of this length could hold.
ExrPicture ReadExrPicture(ExrStream& stream);

/// Reads all rows of a data window into the frame buffer of `part`, a part of them at a time where somebody watches.
void ReadExrRows(Imf::InputPart& part, const Imath::Box2i& window);

}  // namespace Kavra::Devices
