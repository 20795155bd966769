/// Colours out of luminance and chroma.
#pragma once

#include "frame/host/devices/ExrPicture.h"

#include <ImfInputPart.h>

namespace Kavra::Devices {

/// Fills `picture`, which has the size of the part's data window, from the channels Y, RY and BY - the chroma is there
/// for every second pixel of every second row - and A where the picture has alpha. At half precision, by the library's
/// own filters (https://openexr.com/en/latest/TechnicalIntroduction.html#luminance-chroma-images). Throws what reading
/// throws.
void ReadLuminanceChroma(Imf::InputPart& part, ExrPicture& picture);

}  // namespace Kavra::Devices
